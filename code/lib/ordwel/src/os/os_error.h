// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_OS_OS_ERROR_H
#define ORDWEL_SRC_OS_OS_ERROR_H

#include <string>

#include "platform/error.h"

namespace ordwel {

// The text of a failed platform call, as env::get_last_os_error words the last error: the
// platform's text without blanks around it, or "Unknown error <number>" where it has none.
std::string os_error_text(platform::status const &a_status);

} // namespace ordwel

#endif
