#include "platform/file.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <io.h>
#include <windows.h>

#include <ordwel/file.h>

// The Win32 file calls. Paths go to the platform as UTF-16 through a buffer of 260 code units,
// terminator included; a path that does not fit fails as the platform fails a name that is too
// long (ERROR_FILENAME_EXCED_RANGE).
namespace ordwel {
namespace platform {

namespace {

constexpr int k_path_units = 260;

bool wide_path(std::string const &a_path, wchar_t (&a_wide)[k_path_units])
{
    if (MultiByteToWideChar(CP_UTF8, 0, a_path.c_str(), -1, a_wide, k_path_units) == 0) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    return true;
}

HANDLE handle_of(sint64 a_handle)
{
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(a_handle));
}

} // namespace

sint64 file_open(std::string const &a_path, uint32 a_access, uint32 a_share, uint32 a_disposition, unsigned)
{
    wchar_t l_path[k_path_units];
    if (!wide_path(a_path, l_path)) {
        return -1;
    }
    HANDLE const l_handle =
        CreateFileW(l_path, a_access, a_share, nullptr, a_disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (l_handle == INVALID_HANDLE_VALUE) {
        return -1;
    }
    return static_cast<sint64>(reinterpret_cast<intptr_t>(l_handle));
}

bool file_close(sint64 a_handle)
{
    return CloseHandle(handle_of(a_handle)) != 0;
}

bool file_read(sint64 a_handle, void *a_data, uint32 a_size, uint32 &a_done)
{
    DWORD l_done = 0;
    if (!ReadFile(handle_of(a_handle), a_data, a_size, &l_done, nullptr)) {
        return false;
    }
    a_done = l_done;
    return true;
}

bool file_write(sint64 a_handle, void const *a_data, uint32 a_size, uint32 &a_done)
{
    DWORD l_done = 0;
    if (!WriteFile(handle_of(a_handle), a_data, a_size, &l_done, nullptr)) {
        return false;
    }
    a_done = l_done;
    return true;
}

bool file_seek(sint64 a_handle, sint64 a_offset, int a_whence, uint64 &a_position)
{
    static DWORD const k_whence[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
    auto const l_offset = static_cast<uint64>(a_offset);
    LONG l_high = static_cast<LONG>(static_cast<uint32>(l_offset >> 32));
    SetLastError(NO_ERROR);
    DWORD const l_low = SetFilePointer(handle_of(a_handle), static_cast<LONG>(static_cast<uint32>(l_offset)), &l_high,
                                       k_whence[a_whence]);
    if (l_low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR) {
        return false;
    }
    a_position = (static_cast<uint64>(static_cast<uint32>(l_high)) << 32) | l_low;
    return true;
}

bool file_size(sint64 a_handle, uint64 &a_size)
{
    DWORD l_high = 0;
    SetLastError(NO_ERROR);
    DWORD const l_low = GetFileSize(handle_of(a_handle), &l_high);
    if (l_low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) {
        return false;
    }
    a_size = (static_cast<uint64>(l_high) << 32) | l_low;
    return true;
}

uint32 file_attributes(std::string const &a_path)
{
    wchar_t l_path[k_path_units];
    if (!wide_path(a_path, l_path)) {
        return k_invalid_attributes;
    }
    return GetFileAttributesW(l_path);
}

int file_unlink(char const *a_path)
{
    return _unlink(a_path);
}

std::string user_name_with_id(int)
{
    return std::string();
}

std::string group_name_with_id(int)
{
    return std::string();
}

int user_id_with_name(char const *)
{
    return 0;
}

int group_id_with_name(char const *)
{
    return 0;
}

} // namespace platform
} // namespace ordwel

// The directory walk over FindFirstFileW / FindNextFileW.
struct DIR {
    // The first entry was read by opendir and not yet handed out.
    bool m_first_pending;
    dirent m_entry;
    HANDLE m_find;
    WIN32_FIND_DATAW m_found;
};

namespace {

void fill_entry(DIR &a_dir)
{
    int const l_size = WideCharToMultiByte(CP_UTF8, 0, a_dir.m_found.cFileName, -1, a_dir.m_entry.d_name,
                                           static_cast<int>(sizeof a_dir.m_entry.d_name), nullptr, nullptr);
    if (l_size == 0) {
        // A name whose UTF-8 form does not fit 260 bytes is cut at the last whole character.
        a_dir.m_entry.d_name[sizeof a_dir.m_entry.d_name - 1] = '\0';
        std::size_t l_length = std::strlen(a_dir.m_entry.d_name);
        while (l_length > 0 && (static_cast<unsigned char>(a_dir.m_entry.d_name[l_length - 1]) & 0xC0) == 0x80) {
            --l_length;
        }
        if (l_length > 0 && static_cast<unsigned char>(a_dir.m_entry.d_name[l_length - 1]) >= 0xC0) {
            --l_length;
        }
        a_dir.m_entry.d_name[l_length] = '\0';
    }
    a_dir.m_entry.d_attributes = a_dir.m_found.dwFileAttributes;
}

} // namespace

DIR *opendir(char const *a_path)
{
    if (a_path == nullptr) {
        return nullptr;
    }
    DIR *const l_dir = static_cast<DIR *>(std::calloc(1, sizeof(DIR)));
    if (l_dir == nullptr) {
        return nullptr;
    }
    wchar_t l_pattern[260] = {};
    // A path that does not fit leaves no room for the pattern and lists nothing.
    int const l_units = MultiByteToWideChar(CP_UTF8, 0, a_path, -1, l_pattern, 260);
    int l_length = l_units > 0 ? l_units - 1 : 0;
    if (l_units == 0 && a_path[0] != '\0') {
        std::free(l_dir);
        return nullptr;
    }
    wchar_t const l_suffix[] = L"\\*";
    for (wchar_t l_char : {l_suffix[0], l_suffix[1]}) {
        if (l_length < 259) {
            l_pattern[l_length++] = l_char;
        }
    }
    l_pattern[l_length] = L'\0';
    l_dir->m_find = FindFirstFileW(l_pattern, &l_dir->m_found);
    if (l_dir->m_find == INVALID_HANDLE_VALUE) {
        std::free(l_dir);
        return nullptr;
    }
    fill_entry(*l_dir);
    l_dir->m_first_pending = true;
    return l_dir;
}

dirent *readdir(DIR *a_dir)
{
    if (a_dir == nullptr) {
        return nullptr;
    }
    if (a_dir->m_first_pending) {
        a_dir->m_first_pending = false;
        return &a_dir->m_entry;
    }
    if (!FindNextFileW(a_dir->m_find, &a_dir->m_found)) {
        return nullptr;
    }
    fill_entry(*a_dir);
    return &a_dir->m_entry;
}

void closedir(DIR *a_dir)
{
    if (a_dir == nullptr) {
        return;
    }
    FindClose(a_dir->m_find);
    std::free(a_dir);
}
