// SPDX-License-Identifier: MIT
#include <ordwel/file.h>

#include <cstdlib>
#include <cstring>

#include <ordwel/es.h>

#include "os/os_error.h"
#include "platform/file.h"

namespace ordwel {

namespace {

// Raises es::file for a failed platform call.
[[noreturn]] void raise_failure(platform::status const &a_status, uint32 a_line, char const *a_operation,
                                std::string const *a_subject = nullptr)
{
    std::string const l_reason = os_error_text(a_status);
    if (a_subject != nullptr) {
        es::file::raise(source_basename(__FILE__), a_line, l_reason, a_operation, *a_subject);
    }
    es::file::raise(source_basename(__FILE__), a_line, l_reason, a_operation);
}

// Whether a path has an attribute; a path that cannot be examined counts as having it.
bool has_attribute(std::string const &a_path, platform::file_attributes a_attribute)
{
    platform::file_attributes l_attributes = platform::file_attributes::none;
    return platform::file_examine(a_path, l_attributes).failed() || platform::any(l_attributes & a_attribute);
}

// The handle values of a file that was never opened (or failed to open) and of a closed one.
constexpr sint64 k_unopened = -1;
constexpr sint64 k_closed = 0;

} // namespace

struct file::record {
    sint64 m_handle;
};

file::file(std::string const &a_path, unsigned a_flags, unsigned a_mode) : m_record(new record{k_unopened})
{
    open(a_path, a_flags, a_mode);
}

file::file(int a_handle) : m_record(new record{a_handle})
{
}

file::file(file const &a_other) : m_record(new record{a_other.m_record->m_handle})
{
}

file &file::operator=(file const &a_other)
{
    m_record->m_handle = a_other.m_record->m_handle;
    return *this;
}

file::~file() = default;

void file::open(std::string const &a_path, unsigned a_flags, unsigned a_mode)
{
    if (a_path.empty()) {
        return;
    }
    platform::file_access l_access = platform::file_access::read;
    if (a_flags != 0) {
        // Any flag drops plain reading: the write bits ask for their rights, others for none.
        platform::file_access const l_writing =
            platform::file_access::write | platform::file_access::write_data | platform::file_access::append_data;
        l_access = platform::file_access::none;
        if ((a_flags & file_write) != 0) {
            l_access |= l_writing;
        }
        if ((a_flags & file_read_write) != 0) {
            l_access |= platform::file_access::read | l_writing;
        }
    }
    platform::file_share const l_share =
        a_flags == 0 ? platform::file_share::read | platform::file_share::write : platform::file_share::read;
    platform::file_disposition l_disposition = platform::file_disposition::open_existing;
    if ((a_flags & file_exclusive) != 0) {
        l_disposition = platform::file_disposition::create_new;
    } else if ((a_flags & file_create) != 0) {
        l_disposition = platform::file_disposition::create_always;
    } else if ((a_flags & file_truncate) != 0) {
        l_disposition = platform::file_disposition::truncate_existing;
    }
    m_record->m_handle = k_unopened;
    platform::status const l_status =
        platform::file_open(a_path, l_access, l_share, l_disposition, a_mode, m_record->m_handle);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "open", &a_path);
    }
}

void file::close()
{
    if (m_record->m_handle != k_closed && m_record->m_handle != k_unopened) {
        platform::status const l_status = platform::file_close(m_record->m_handle);
        if (l_status.failed()) {
            raise_failure(l_status, __LINE__, "close");
        }
    }
    m_record->m_handle = k_closed;
}

bool file::is_open() const
{
    return m_record->m_handle != k_closed && m_record->m_handle != k_unopened;
}

int file::get_fd() const
{
    return static_cast<int>(static_cast<uint32>(static_cast<uint64>(m_record->m_handle)));
}

void file::set_fd(int a_handle)
{
    m_record->m_handle = a_handle;
}

uint64 file::read(void *a_data, uint64 a_size)
{
    uint32 l_done = 0;
    platform::status const l_status =
        platform::file_read(m_record->m_handle, a_data, static_cast<uint32>(a_size), l_done);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "read");
    }
    return l_done;
}

uint64 file::write(void const *a_data, uint64 a_size)
{
    uint32 l_done = 0;
    platform::status const l_status =
        platform::file_write(m_record->m_handle, a_data, static_cast<uint32>(a_size), l_done);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "write");
    }
    return l_done;
}

uint64 file::seek(uint64 a_offset, int a_whence)
{
    if (a_whence < 0 || a_whence > 2) {
        es::arg::raise(ORDWEL_HERE, "Invalid whence in seek()");
    }
    uint64 l_position = 0;
    platform::status const l_status = platform::file_seek(m_record->m_handle, static_cast<sint64>(a_offset),
                                                          static_cast<platform::file_origin>(a_whence), l_position);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "seek");
    }
    return l_position;
}

uint64 file::tell()
{
    uint64 l_position = 0;
    platform::status const l_status =
        platform::file_seek(m_record->m_handle, 0, platform::file_origin::current, l_position);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "tell");
    }
    return l_position;
}

uint64 file::size()
{
    uint64 l_size = 0;
    platform::status const l_status = platform::file_size(m_record->m_handle, l_size);
    if (l_status.failed()) {
        raise_failure(l_status, __LINE__, "size");
    }
    return l_size;
}

void file::close_on_exec()
{
}

bool file::is_hidden_file(std::string const &a_path)
{
    return has_attribute(a_path, platform::file_attributes::hidden);
}

bool file::is_system_file(std::string const &a_path)
{
    return has_attribute(a_path, platform::file_attributes::system);
}

bool file::is_alias(std::string const &)
{
    return false;
}

bool file::is_alias_to_file(std::string const &)
{
    return false;
}

bool file::is_alias_to_directory(std::string const &)
{
    return false;
}

std::string file::resolve_alias(std::string const &a_path)
{
    return a_path;
}

file_cmp &file_cmp::operator=(file_cmp const &)
{
    return *this;
}

bool file_cmp::operator()(file const &a_first, file const &a_second) const
{
    return a_first.get_fd() < a_second.get_fd();
}

std::string name_with_uid(int a_uid)
{
    return platform::user_name_with_id(a_uid);
}

std::string name_with_gid(int a_gid)
{
    return platform::group_name_with_id(a_gid);
}

int uid_with_name(char const *a_name)
{
    return platform::user_id_with_name(a_name);
}

int gid_with_name(char const *a_name)
{
    return platform::group_id_with_name(a_name);
}

} // namespace ordwel

#if defined(_WIN32)

// The directory walk over the platform's find calls.
struct DIR {
    // The first entry was read by opendir and not yet handed out.
    bool m_first_pending;
    dirent m_entry;
    ordwel::platform::directory_handle m_find;
};

namespace {

// An entry's name as dirent holds it: a name whose UTF-8 form does not fit 260 bytes is cut at
// the last whole character.
void fill_entry(DIR &a_dir, ordwel::platform::directory_entry const &a_found)
{
    std::size_t const l_room = sizeof a_dir.m_entry.d_name - 1;
    std::size_t l_length = a_found.m_name.size();
    if (l_length > l_room) {
        l_length = l_room;
        while (l_length > 0 && (static_cast<unsigned char>(a_found.m_name[l_length - 1]) & 0xC0) == 0x80) {
            --l_length;
        }
        if (l_length > 0 && static_cast<unsigned char>(a_found.m_name[l_length - 1]) >= 0xC0) {
            --l_length;
        }
    }
    std::memcpy(a_dir.m_entry.d_name, a_found.m_name.data(), l_length);
    a_dir.m_entry.d_name[l_length] = '\0';
    a_dir.m_entry.d_attributes = a_found.m_attributes;
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
    ordwel::platform::directory_entry l_found;
    if (ordwel::platform::directory_first(a_path, l_dir->m_find, l_found).failed()) {
        std::free(l_dir);
        return nullptr;
    }
    fill_entry(*l_dir, l_found);
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
    ordwel::platform::directory_entry l_found;
    if (ordwel::platform::directory_next(a_dir->m_find, l_found).failed()) {
        return nullptr;
    }
    fill_entry(*a_dir, l_found);
    return &a_dir->m_entry;
}

void closedir(DIR *a_dir)
{
    if (a_dir == nullptr) {
        return;
    }
    ordwel::platform::directory_close(a_dir->m_find);
    std::free(a_dir);
}

#endif
