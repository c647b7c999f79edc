#include <ordwel/file.h>

#include <ordwel/env.h>
#include <ordwel/es.h>

#include "platform/file.h"

namespace ordwel {

namespace {

// Raises es::file for a failed platform call. The reason is read first, before anything else
// can change the thread's last error.
[[noreturn]] void raise_failure(uint32 a_line, char const *a_operation, std::string const *a_subject = nullptr)
{
    std::string const l_reason = env::get_last_os_error();
    if (a_subject != nullptr) {
        es::file::raise(source_basename(__FILE__), a_line, l_reason, a_operation, *a_subject);
    }
    es::file::raise(source_basename(__FILE__), a_line, l_reason, a_operation);
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
    uint32 l_access = platform::k_generic_read;
    if (a_flags != 0) {
        // Any flag drops plain reading: the write bits ask for their rights, others for none.
        l_access = 0;
        if ((a_flags & file_write) != 0) {
            l_access |= platform::k_generic_write | platform::k_file_write_data | platform::k_file_append_data;
        }
        if ((a_flags & file_read_write) != 0) {
            l_access |= platform::k_generic_read | platform::k_generic_write | platform::k_file_write_data |
                        platform::k_file_append_data;
        }
    }
    uint32 const l_share = a_flags == 0 ? platform::k_share_read | platform::k_share_write : platform::k_share_read;
    uint32 l_disposition = platform::k_open_existing;
    if ((a_flags & file_exclusive) != 0) {
        l_disposition = platform::k_create_new;
    } else if ((a_flags & file_create) != 0) {
        l_disposition = platform::k_create_always;
    } else if ((a_flags & file_truncate) != 0) {
        l_disposition = platform::k_truncate_existing;
    }
    m_record->m_handle = platform::file_open(a_path, l_access, l_share, l_disposition, a_mode);
    if (m_record->m_handle == k_unopened) {
        raise_failure(__LINE__, "open", &a_path);
    }
}

void file::close()
{
    if (m_record->m_handle != k_closed && m_record->m_handle != k_unopened) {
        if (!platform::file_close(m_record->m_handle)) {
            raise_failure(__LINE__, "close");
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
    if (!platform::file_read(m_record->m_handle, a_data, static_cast<uint32>(a_size), l_done)) {
        raise_failure(__LINE__, "read");
    }
    return l_done;
}

uint64 file::write(void const *a_data, uint64 a_size)
{
    uint32 l_done = 0;
    if (!platform::file_write(m_record->m_handle, a_data, static_cast<uint32>(a_size), l_done)) {
        raise_failure(__LINE__, "write");
    }
    return l_done;
}

uint64 file::seek(uint64 a_offset, int a_whence)
{
    if (a_whence < 0 || a_whence > 2) {
        es::arg::raise(ORDWEL_HERE, "Invalid whence in seek()");
    }
    uint64 l_position = 0;
    if (!platform::file_seek(m_record->m_handle, static_cast<sint64>(a_offset), a_whence, l_position)) {
        raise_failure(__LINE__, "seek");
    }
    return l_position;
}

uint64 file::tell()
{
    uint64 l_position = 0;
    if (!platform::file_seek(m_record->m_handle, 0, 1, l_position)) {
        raise_failure(__LINE__, "tell");
    }
    return l_position;
}

uint64 file::size()
{
    uint64 l_size = 0;
    if (!platform::file_size(m_record->m_handle, l_size)) {
        raise_failure(__LINE__, "size");
    }
    return l_size;
}

void file::close_on_exec()
{
}

bool file::is_hidden_file(std::string const &a_path)
{
    uint32 const l_attributes = platform::file_attributes(a_path);
    return l_attributes == platform::k_invalid_attributes || (l_attributes & platform::k_attribute_hidden) != 0;
}

bool file::is_system_file(std::string const &a_path)
{
    uint32 const l_attributes = platform::file_attributes(a_path);
    return l_attributes == platform::k_invalid_attributes || (l_attributes & platform::k_attribute_system) != 0;
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
