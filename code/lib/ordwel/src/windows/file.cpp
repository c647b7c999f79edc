// SPDX-License-Identifier: MIT
#include "platform/file.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include <io.h>
#include <windows.h>

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

namespace {

DWORD access_rights(file_access a_access)
{
    DWORD l_rights = 0;
    l_rights |= any(a_access & file_access::read) ? GENERIC_READ : 0;
    l_rights |= any(a_access & file_access::write) ? GENERIC_WRITE : 0;
    l_rights |= any(a_access & file_access::write_data) ? FILE_WRITE_DATA : 0;
    l_rights |= any(a_access & file_access::append_data) ? FILE_APPEND_DATA : 0;
    return l_rights;
}

DWORD share_mode(file_share a_share)
{
    return (any(a_share & file_share::read) ? FILE_SHARE_READ : 0) |
           (any(a_share & file_share::write) ? FILE_SHARE_WRITE : 0);
}

DWORD creation(file_disposition a_disposition)
{
    switch (a_disposition) {
    case file_disposition::create_new:
        return CREATE_NEW;
    case file_disposition::create_always:
        return CREATE_ALWAYS;
    case file_disposition::truncate_existing:
        return TRUNCATE_EXISTING;
    case file_disposition::open_existing:
        break;
    }
    return OPEN_EXISTING;
}

} // namespace

status file_open(std::string const &a_path, file_access a_access, file_share a_share, file_disposition a_disposition,
                 unsigned, sint64 &a_handle)
{
    wchar_t l_path[k_path_units];
    if (!wide_path(a_path, l_path)) {
        return last_failure();
    }
    HANDLE const l_handle = CreateFileW(l_path, access_rights(a_access), share_mode(a_share), nullptr,
                                        creation(a_disposition), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (l_handle == INVALID_HANDLE_VALUE) {
        return last_failure();
    }
    a_handle = static_cast<sint64>(reinterpret_cast<intptr_t>(l_handle));
    return status_done();
}

status file_close(sint64 a_handle)
{
    return CloseHandle(handle_of(a_handle)) != 0 ? status_done() : last_failure();
}

status file_read(sint64 a_handle, void *a_data, uint32 a_size, uint32 &a_done)
{
    DWORD l_done = 0;
    if (!ReadFile(handle_of(a_handle), a_data, a_size, &l_done, nullptr)) {
        return last_failure();
    }
    a_done = l_done;
    return status_done();
}

status file_write(sint64 a_handle, void const *a_data, uint32 a_size, uint32 &a_done)
{
    DWORD l_done = 0;
    if (!WriteFile(handle_of(a_handle), a_data, a_size, &l_done, nullptr)) {
        return last_failure();
    }
    a_done = l_done;
    return status_done();
}

status file_seek(sint64 a_handle, sint64 a_offset, file_origin a_origin, uint64 &a_position)
{
    DWORD l_method = FILE_BEGIN;
    if (a_origin == file_origin::current) {
        l_method = FILE_CURRENT;
    } else if (a_origin == file_origin::end) {
        l_method = FILE_END;
    }
    auto const l_offset = static_cast<uint64>(a_offset);
    LONG l_high = static_cast<LONG>(static_cast<uint32>(l_offset >> 32));
    SetLastError(NO_ERROR);
    DWORD const l_low =
        SetFilePointer(handle_of(a_handle), static_cast<LONG>(static_cast<uint32>(l_offset)), &l_high, l_method);
    if (l_low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR) {
        return last_failure();
    }
    a_position = (static_cast<uint64>(static_cast<uint32>(l_high)) << 32) | l_low;
    return status_done();
}

status file_size(sint64 a_handle, uint64 &a_size)
{
    DWORD l_high = 0;
    SetLastError(NO_ERROR);
    DWORD const l_low = GetFileSize(handle_of(a_handle), &l_high);
    if (l_low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) {
        return last_failure();
    }
    a_size = (static_cast<uint64>(l_high) << 32) | l_low;
    return status_done();
}

status file_examine(std::string const &a_path, file_attributes &a_attributes)
{
    wchar_t l_path[k_path_units];
    if (!wide_path(a_path, l_path)) {
        return last_failure();
    }
    DWORD const l_word = GetFileAttributesW(l_path);
    if (l_word == INVALID_FILE_ATTRIBUTES) {
        return last_failure();
    }
    file_attributes l_attributes = file_attributes::none;
    l_attributes |= (l_word & FILE_ATTRIBUTE_HIDDEN) != 0 ? file_attributes::hidden : file_attributes::none;
    l_attributes |= (l_word & FILE_ATTRIBUTE_SYSTEM) != 0 ? file_attributes::system : file_attributes::none;
    l_attributes |= (l_word & FILE_ATTRIBUTE_DIRECTORY) != 0 ? file_attributes::directory : file_attributes::none;
    l_attributes |= (l_word & FILE_ATTRIBUTE_NORMAL) != 0 ? file_attributes::normal : file_attributes::none;
    a_attributes = l_attributes;
    return status_done();
}

status file_unlink(char const *a_path)
{
    return _unlink(a_path) == 0 ? status_done() : status_failed_runtime(errno);
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

namespace {

void take_found(WIN32_FIND_DATAW const &a_found, directory_entry &a_entry)
{
    int const l_size = WideCharToMultiByte(CP_UTF8, 0, a_found.cFileName, -1, nullptr, 0, nullptr, nullptr);
    a_entry.m_name.assign(l_size > 0 ? static_cast<std::size_t>(l_size) : 1, '\0');
    if (l_size > 0) {
        WideCharToMultiByte(CP_UTF8, 0, a_found.cFileName, -1, &a_entry.m_name[0], l_size, nullptr, nullptr);
    }
    a_entry.m_name.resize(std::strlen(a_entry.m_name.c_str()));
    a_entry.m_attributes = a_found.dwFileAttributes;
}

} // namespace

status directory_first(char const *a_path, directory_handle &a_find, directory_entry &a_entry)
{
    wchar_t l_pattern[k_path_units] = {};
    // A path that does not fit leaves no room for the pattern and lists nothing.
    int const l_units = MultiByteToWideChar(CP_UTF8, 0, a_path, -1, l_pattern, k_path_units);
    int l_length = l_units > 0 ? l_units - 1 : 0;
    if (l_units == 0 && a_path[0] != '\0') {
        return last_failure();
    }
    wchar_t const l_suffix[] = L"\\*";
    for (wchar_t l_char : {l_suffix[0], l_suffix[1]}) {
        if (l_length < k_path_units - 1) {
            l_pattern[l_length++] = l_char;
        }
    }
    l_pattern[l_length] = L'\0';
    WIN32_FIND_DATAW l_found;
    HANDLE const l_find = FindFirstFileW(l_pattern, &l_found);
    if (l_find == INVALID_HANDLE_VALUE) {
        return last_failure();
    }
    take_found(l_found, a_entry);
    a_find = reinterpret_cast<directory_handle>(l_find);
    return status_done();
}

status directory_next(directory_handle a_find, directory_entry &a_entry)
{
    WIN32_FIND_DATAW l_found;
    if (!FindNextFileW(reinterpret_cast<HANDLE>(a_find), &l_found)) {
        return last_failure();
    }
    take_found(l_found, a_entry);
    return status_done();
}

void directory_close(directory_handle a_find)
{
    FindClose(reinterpret_cast<HANDLE>(a_find));
}

} // namespace platform
} // namespace ordwel
