#include "platform/error.h"

#include <cerrno>

#include "platform/systeminfo.h"

namespace ordwel {
namespace platform {

// strerror_r has a text for every number ("Unknown error 1234" for a foreign one) and no line end.
std::string last_error_text()
{
    return errno_text(errno);
}

} // namespace platform
} // namespace ordwel
