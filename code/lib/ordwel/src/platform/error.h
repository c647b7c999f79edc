#ifndef ORDWEL_SRC_PLATFORM_ERROR_H
#define ORDWEL_SRC_PLATFORM_ERROR_H

#include <string>

// The text of the calling thread's last platform error (errno on POSIX, GetLastError on Windows),
// one line as a failure message quotes it: without the line end and full stop that the platform's
// text may carry, "error <number>" when the platform has no text for it. Built on the error
// queries of systeminfo.h, so that each backend formats its errors in one place.

namespace ordwel {
namespace platform {

std::string last_error_text();

} // namespace platform
} // namespace ordwel

#endif
