// SPDX-License-Identifier: MIT
#include "platform/console.h"

#include <cstdio>

#include <windows.h>

// The Win32 console. Text reaches it by WriteConsoleA, which bypasses the C library's buffer of
// standard output, so every console call first flushes that buffer: whatever was printed before
// comes out before the text, the colour change or the clearing.
namespace ordwel {
namespace platform {

console_state console_open()
{
    console_state l_state{nullptr, false, 0, 0, 0};
    HANDLE const l_handle = GetStdHandle(STD_OUTPUT_HANDLE);
    l_state.m_handle = l_handle;
    CONSOLE_SCREEN_BUFFER_INFO l_info;
    if (l_handle != INVALID_HANDLE_VALUE && l_handle != nullptr && GetConsoleScreenBufferInfo(l_handle, &l_info)) {
        l_state.m_present = true;
        l_state.m_width = l_info.dwSize.X > 0 ? static_cast<uint32>(l_info.dwSize.X) : 0;
        l_state.m_height = l_info.dwSize.Y > 0 ? static_cast<uint32>(l_info.dwSize.Y) : 0;
        l_state.m_attributes = l_info.wAttributes;
    }
    return l_state;
}

void console_write(console_state const &a_console, char const *a_text, std::size_t a_size)
{
    std::fflush(stdout);
    // WriteConsoleA takes a 32-bit count: long texts go in pieces.
    while (a_size != 0) {
        DWORD const l_piece = a_size > 0x10000000u ? 0x10000000u : static_cast<DWORD>(a_size);
        DWORD l_written = 0;
        if (!WriteConsoleA(static_cast<HANDLE>(a_console.m_handle), a_text, l_piece, &l_written, nullptr)) {
            return;
        }
        a_text += l_piece;
        a_size -= l_piece;
    }
}

void console_strong(console_state const &a_console, bool a_on)
{
    if (!a_console.m_present) {
        return;
    }
    std::fflush(stdout);
    WORD const l_attributes = a_on ? static_cast<WORD>(a_console.m_attributes | FOREGROUND_INTENSITY)
                                   : static_cast<WORD>(a_console.m_attributes);
    SetConsoleTextAttribute(static_cast<HANDLE>(a_console.m_handle), l_attributes);
}

void console_clear(console_state const &a_console)
{
    std::fflush(stdout);
    HANDLE const l_handle = static_cast<HANDLE>(a_console.m_handle);
    COORD const l_origin = {0, 0};
    DWORD l_written = 0;
    FillConsoleOutputCharacterA(l_handle, ' ', static_cast<DWORD>(a_console.m_width) * a_console.m_height, l_origin,
                                &l_written);
    SetConsoleCursorPosition(l_handle, l_origin);
}

} // namespace platform
} // namespace ordwel
