#ifndef ORDWEL_PLATFORM_FILE_H
#define ORDWEL_PLATFORM_FILE_H

#include <string>

#include <ordwel/types.h>

// The file calls of class file, in the Windows terms that the portable code decides in: access
// rights, sharing and disposition. Every call that fails leaves the reason in the thread's last
// platform error (env::get_last_os_error) and returns at once.

namespace ordwel {
namespace platform {

constexpr uint32 k_generic_read = 0x80000000U;
constexpr uint32 k_generic_write = 0x40000000U;
constexpr uint32 k_file_write_data = 0x2U;
constexpr uint32 k_file_append_data = 0x4U;

constexpr uint32 k_share_read = 0x1U;
constexpr uint32 k_share_write = 0x2U;

constexpr uint32 k_create_new = 1;
constexpr uint32 k_create_always = 2;
constexpr uint32 k_open_existing = 3;
constexpr uint32 k_truncate_existing = 5;

constexpr uint32 k_attribute_hidden = 0x2U;
constexpr uint32 k_attribute_system = 0x4U;
constexpr uint32 k_attribute_directory = 0x10U;
constexpr uint32 k_attribute_normal = 0x80U;
constexpr uint32 k_invalid_attributes = 0xFFFFFFFFU;

// The handle value, or -1 on failure.
sint64 file_open(std::string const &a_path, uint32 a_access, uint32 a_share, uint32 a_disposition, unsigned a_mode);
bool file_close(sint64 a_handle);
bool file_read(sint64 a_handle, void *a_data, uint32 a_size, uint32 &a_done);
bool file_write(sint64 a_handle, void const *a_data, uint32 a_size, uint32 &a_done);
// Moves by a_offset from 0 start, 1 current, 2 end; the new position from the start.
bool file_seek(sint64 a_handle, sint64 a_offset, int a_whence, uint64 &a_position);
bool file_size(sint64 a_handle, uint64 &a_size);
// The attribute word of a path (POSIX: hidden for a name that starts with a dot, system for what
// is neither a regular file nor a directory); k_invalid_attributes when it cannot be examined.
uint32 file_attributes(std::string const &a_path);
// _unlink on the path's bytes: 0, or -1 with errno set.
int file_unlink(char const *a_path);

// The user and group data bases: the empty name for an unknown number, and the platform's "no
// such entry" number for an unknown name (Windows has no data base: "" and 0 always).
std::string user_name_with_id(int a_uid);
std::string group_name_with_id(int a_gid);
int user_id_with_name(char const *a_name);
int group_id_with_name(char const *a_name);

} // namespace platform
} // namespace ordwel

#endif
