// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PLATFORM_FILE_H
#define ORDWEL_PLATFORM_FILE_H

#include <cstdint>
#include <string>
#include <type_traits>

#include <ordwel/types.h>

#include "platform/error.h"

// The file calls of class file, in the terms that the portable code decides in: access rights,
// sharing and disposition. The Windows backend maps them to CreateFileW's constants, the POSIX
// backend to open() flags.

namespace ordwel {
namespace platform {

// A set of flags: an enum class whose values are bits, combined with | and tested with any().
template <class Flags> struct is_flag_set {
    static constexpr bool value = false;
};
template <class Flags, class = typename std::enable_if<is_flag_set<Flags>::value>::type>
constexpr Flags operator|(Flags a_first, Flags a_second)
{
    using bits = typename std::underlying_type<Flags>::type;
    return static_cast<Flags>(static_cast<bits>(a_first) | static_cast<bits>(a_second));
}
template <class Flags, class = typename std::enable_if<is_flag_set<Flags>::value>::type>
constexpr Flags operator&(Flags a_first, Flags a_second)
{
    using bits = typename std::underlying_type<Flags>::type;
    return static_cast<Flags>(static_cast<bits>(a_first) & static_cast<bits>(a_second));
}
template <class Flags, class = typename std::enable_if<is_flag_set<Flags>::value>::type>
Flags &operator|=(Flags &a_flags, Flags a_more)
{
    return a_flags = a_flags | a_more;
}
// Whether any flag of a set is present.
template <class Flags, class = typename std::enable_if<is_flag_set<Flags>::value>::type>
constexpr bool any(Flags a_flags)
{
    return static_cast<typename std::underlying_type<Flags>::type>(a_flags) != 0;
}

// The rights asked for: reading, writing the whole file (Windows' generic write), and writing or
// appending data. None at all opens the file to name and examine it only.
enum class file_access : unsigned { none = 0, read = 1, write = 2, write_data = 4, append_data = 8 };
template <> struct is_flag_set<file_access> {
    static constexpr bool value = true;
};
// What others may do with the file while it is open (not enforced on POSIX).
enum class file_share : unsigned { none = 0, read = 1, write = 2 };
template <> struct is_flag_set<file_share> {
    static constexpr bool value = true;
};
// What to do when the file exists or not.
enum class file_disposition { open_existing, create_new, create_always, truncate_existing };
// What a path names.
enum class file_attributes : unsigned { none = 0, hidden = 1, system = 2, directory = 4, normal = 8 };
template <> struct is_flag_set<file_attributes> {
    static constexpr bool value = true;
};
// Where a seek counts from.
enum class file_origin { begin, current, end };

// Opens a file into a_handle, with a_mode as POSIX permissions of a new file.
status file_open(std::string const &a_path, file_access a_access, file_share a_share, file_disposition a_disposition,
                 unsigned a_mode, sint64 &a_handle);
status file_close(sint64 a_handle);
status file_read(sint64 a_handle, void *a_data, uint32 a_size, uint32 &a_done);
status file_write(sint64 a_handle, void const *a_data, uint32 a_size, uint32 &a_done);
// Moves by a_offset; the new position from the start.
status file_seek(sint64 a_handle, sint64 a_offset, file_origin a_origin, uint64 &a_position);
status file_size(sint64 a_handle, uint64 &a_size);
// What a path names (POSIX: hidden for a name that starts with a dot, system for what is neither
// a regular file nor a directory); fails when the path cannot be examined.
status file_examine(std::string const &a_path, file_attributes &a_attributes);
// Removes a file (Windows: _unlink on the path's bytes, failing with a C runtime errno).
status file_unlink(char const *a_path);

// The find calls of Windows, under the directory walk that the library gives Windows (POSIX has
// its own). The first entry comes with the start: a_entry takes each entry's UTF-8 name and the
// platform's attribute word.
using directory_handle = std::intptr_t;
struct directory_entry {
    std::string m_name;
    uint32 m_attributes = 0;
};
status directory_first(char const *a_path, directory_handle &a_find, directory_entry &a_entry);
status directory_next(directory_handle a_find, directory_entry &a_entry);
void directory_close(directory_handle a_find);

// The user and group data bases: the empty name for an unknown number, and the platform's "no
// such entry" number for an unknown name (Windows has no data base: "" and 0 always).
std::string user_name_with_id(int a_uid);
std::string group_name_with_id(int a_gid);
int user_id_with_name(char const *a_name);
int group_id_with_name(char const *a_name);

} // namespace platform
} // namespace ordwel

#endif
