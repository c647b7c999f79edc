// SPDX-License-Identifier: MIT
#include "platform/console.h"

#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

// A terminal is standard output when isatty says so and TIOCGWINSZ gives its size. All output,
// terminal or not, goes through the one stdio stream of standard output, so text, emphasis marks
// and the caller's own printf output never overtake each other.
namespace ordwel {
namespace platform {

namespace {

int g_stdout_descriptor = STDOUT_FILENO;

void write_stdout(char const *a_text, std::size_t a_size)
{
    if (a_size != 0) {
        std::fwrite(a_text, 1, a_size, stdout);
    }
}

} // namespace

console_state console_open()
{
    console_state l_state{&g_stdout_descriptor, false, 0, 0, 0};
    struct winsize l_size {};
    if (isatty(STDOUT_FILENO) == 1 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &l_size) == 0) {
        l_state.m_present = true;
        l_state.m_width = l_size.ws_col;
        l_state.m_height = l_size.ws_row;
    }
    return l_state;
}

void console_write(console_state const &, char const *a_text, std::size_t a_size)
{
    write_stdout(a_text, a_size);
}

void console_strong(console_state const &a_console, bool a_on)
{
    if (!a_console.m_present) {
        return;
    }
    // Bold, and back to normal intensity (which leaves colours as they were).
    static char const k_on[] = "\x1b[1m";
    static char const k_off[] = "\x1b[22m";
    if (a_on) {
        write_stdout(k_on, sizeof k_on - 1);
    } else {
        write_stdout(k_off, sizeof k_off - 1);
    }
}

void console_clear(console_state const &)
{
    // Asked afresh: standard output may have been redirected since the parser was made.
    if (isatty(STDOUT_FILENO) != 1) {
        return;
    }
    static char const k_clear[] = "\x1b[2J\x1b[H";
    write_stdout(k_clear, sizeof k_clear - 1);
    std::fflush(stdout);
}

} // namespace platform
} // namespace ordwel
