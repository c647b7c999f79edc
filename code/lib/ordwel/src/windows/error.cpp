#include "platform/error.h"

#include "platform/systeminfo.h"

namespace ordwel {
namespace platform {

std::string last_error_text()
{
    unsigned long const l_error = last_error();
    std::string l_text = error_text(l_error);
    std::string::size_type l_size = l_text.size();
    while (l_size > 0 && (l_text[l_size - 1] == '\n' || l_text[l_size - 1] == '\r' || l_text[l_size - 1] == ' ' ||
                          l_text[l_size - 1] == '.')) {
        --l_size;
    }
    if (l_size == 0) {
        return "error " + std::to_string(l_error);
    }
    l_text.resize(l_size);
    return l_text;
}

} // namespace platform
} // namespace ordwel
