// SPDX-License-Identifier: MIT
#include "platform/drive.h"

namespace ordwel {
namespace platform {

unsigned current_drive()
{
    return 0;
}

} // namespace platform
} // namespace ordwel
