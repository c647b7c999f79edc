// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_PLATFORM_DRIVE_H
#define ORDWEL_SRC_PLATFORM_DRIVE_H

namespace ordwel {
namespace platform {

// The number of the current drive, 1 for A:; 0 on a platform without drives.
unsigned current_drive();

} // namespace platform
} // namespace ordwel

#endif
