// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PLATFORM_CONSOLE_H
#define ORDWEL_PLATFORM_CONSOLE_H

#include <cstddef>

#include <ordwel/types.h>

// The terminal that the help writer of optparser uses when standard output is one. Every function
// takes the handle found by console_open; failures are ignored, as help text has no error path.
namespace ordwel {
namespace platform {

struct console_state {
    // Standard output's handle (Win32 HANDLE; on POSIX the address of a static descriptor).
    void *m_handle;
    // False when standard output is not a terminal or its size cannot be read.
    bool m_present;
    uint32 m_width;
    uint32 m_height;
    // The text attribute in effect at open time, restored by console_strong(false).
    uint16 m_attributes;
};

console_state console_open();
// Writes a_size bytes of text in order with everything written to standard output before.
void console_write(console_state const &a_console, char const *a_text, std::size_t a_size);
// Bright text on, or back to the attribute of open time.
void console_strong(console_state const &a_console, bool a_on);
// Blanks the whole screen buffer and puts the cursor at the top left; nothing without a terminal.
void console_clear(console_state const &a_console);

} // namespace platform
} // namespace ordwel

#endif
