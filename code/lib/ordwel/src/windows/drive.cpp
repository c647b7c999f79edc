// SPDX-License-Identifier: MIT
#include "platform/drive.h"

#include <direct.h>

namespace ordwel {
namespace platform {

unsigned current_drive()
{
    int const l_drive = _getdrive();
    return l_drive > 0 ? static_cast<unsigned>(l_drive) : 0u;
}

} // namespace platform
} // namespace ordwel
