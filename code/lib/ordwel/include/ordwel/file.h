// SPDX-License-Identifier: MIT
#ifndef ORDWEL_FILE_H
#define ORDWEL_FILE_H

#include <memory>
#include <string>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

#if !defined(_WIN32)
// POSIX has its own directory walk under these names; Windows gets the library's (below).
#include <dirent.h>
#endif

// Files: a thin handle over a platform file, whole-file helpers, a file-name cleaner, a directory
// walk and the user and group look-ups. Paths are UTF-8. Failed platform calls raise es::file with
// the platform's reason (env::get_last_os_error).

namespace ordwel {

/// Flags of file::open. No flag (0) opens for reading only; file_write opens for writing.
constexpr unsigned file_write = 0x001;
/// Opens for reading and writing.
constexpr unsigned file_read_write = 0x002;
/// Makes the file; an existing one is emptied.
constexpr unsigned file_create = 0x100;
/// Empties an existing file; fails when there is none.
constexpr unsigned file_truncate = 0x200;
/// Makes the file; fails when it exists.
constexpr unsigned file_exclusive = 0x400;

/// A handle over a platform file. The object owns a small record with the handle value, not the
/// platform's file: copies name the same open file, and neither a copy nor the destructor closes
/// it. Whoever opens a file calls close.
class ORDWEL_API file {
public:
    /// Opens a_path unless it is empty: the default object is not open. A failed open raises
    /// es::file with the word "open" and the path.
    explicit file(std::string const &a_path = std::string(), unsigned a_flags = 0, unsigned a_mode = 420);
    /// Wraps a handle number the caller has.
    explicit file(int a_handle);
    /// Copy the handle value: both objects name the same open file, and closing through one leaves
    /// the other with a stale value.
    ///@{
    file(file const &a_other);
    file &operator=(file const &a_other);
    ///@}
    /// Frees the record; the file stays open.
    ~file();

    /// An empty path does nothing. A file open through this object is not closed first. a_mode
    /// gives the permission bits of a file made on a platform that has them.
    void open(std::string const &a_path, unsigned a_flags = 0, unsigned a_mode = 420);
    /// Closes unless closed or never opened, and marks the object closed.
    void close();
    /// Whether the object holds a handle: false before the first open, after close and after a
    /// failed open. A copy closed elsewhere still counts as open.
    [[nodiscard]] bool is_open() const;
    /// The low 32 bits of the handle value.
    [[nodiscard]] int get_fd() const;
    /// Sign-extends a_handle into the handle value.
    void set_fd(int a_handle);

    /// One platform read or write of the low 32 bits of a_size bytes; the count done (0 at the end
    /// of the file). A failure raises es::file.
    ///@{
    uint64 read(void *a_data, uint64 a_size);
    uint64 write(void const *a_data, uint64 a_size);
    ///@}
    /// a_offset is a two's-complement value; a_whence 0 (start), 1 (current) or 2 (end), anything
    /// else raises es::arg. Gives the new position.
    uint64 seek(uint64 a_offset, int a_whence);
    /// The position. A failure raises es::file with the word "tell".
    [[nodiscard]] uint64 tell();
    /// The size of the open file. A failure raises es::file with the word "size".
    [[nodiscard]] uint64 size();
    /// Nothing to do: the library's handles are never inherited by child processes.
    void close_on_exec();

    /// Whether the file at a_path has the hidden or the system attribute. A path that cannot be
    /// examined counts as hidden and as system.
    ///@{
    [[nodiscard]] static bool is_hidden_file(std::string const &a_path);
    [[nodiscard]] static bool is_system_file(std::string const &a_path);
    ///@}
    /// Aliases are not followed: no path is an alias, and resolve_alias gives a_path itself.
    ///@{
    [[nodiscard]] static bool is_alias(std::string const &a_path);
    [[nodiscard]] static bool is_alias_to_file(std::string const &a_path);
    [[nodiscard]] static bool is_alias_to_directory(std::string const &a_path);
    [[nodiscard]] static std::string resolve_alias(std::string const &a_path);
    ///@}

private:
    struct record;
    std::unique_ptr<record> m_record;
};

/// Orders files by their signed get_fd values, so that file can key an ordered container.
class ORDWEL_API file_cmp {
public:
    /// The order has no state: constructing, copying and assigning do nothing.
    ///@{
    file_cmp() = default;
    file_cmp(file_cmp const &) = default;
    file_cmp &operator=(file_cmp const &);
    ///@}
    /// Whether a_first.get_fd() is less than a_second.get_fd(), as signed numbers.
    [[nodiscard]] bool operator()(file const &a_first, file const &a_second) const;
};

namespace fileutil {

/// One output byte per input byte: letters, digits and ! # % ( ) + - = @ [ ] stay, , . : ; become
/// '.', everything else '_'.
[[nodiscard]] ORDWEL_API std::string create_safe_filename(std::string const &a_name);
/// The first a_count bytes of a file (fewer when the file is shorter), replacing a_bytes' content.
/// A file that cannot be opened raises es::file.
ORDWEL_API void get_file_bytes(std::string const &a_path, uint64 a_count, buffer &a_bytes);
/// The whole file; the old content of the target is replaced. A file that cannot be opened raises
/// es::file; one that gives fewer bytes than its size raises es::call "failed to read file '<path>'".
///@{
ORDWEL_API void get_file_content(std::string const &a_path, std::string &a_content);
ORDWEL_API void get_file_content(std::string const &a_path, buffer &a_content);
///@}
/// The whole file as a string, as get_file_content.
[[nodiscard]] ORDWEL_API std::string string_with_file_content(std::string const &a_path);
/// Makes or empties the file and writes the bytes. A file that cannot be opened raises es::file.
///@{
ORDWEL_API void set_file_content(std::string const &a_path, std::string const &a_content);
ORDWEL_API void set_file_content(std::string const &a_path, buffer const &a_content);
///@}
/// Deletes a file; a failure raises es::arg "failed to remove file '<path>' (<reason>)".
ORDWEL_API void remove_file(std::string const &a_path);

} // namespace fileutil

/// The user and group data bases. Windows has none: names are empty and numbers 0 there. Elsewhere
/// an unknown number gives the empty name and an unknown (or null) name gives -1.
///@{
[[nodiscard]] ORDWEL_API std::string name_with_uid(int a_uid);
[[nodiscard]] ORDWEL_API std::string name_with_gid(int a_gid);
[[nodiscard]] ORDWEL_API int uid_with_name(char const *a_name);
[[nodiscard]] ORDWEL_API int gid_with_name(char const *a_name);
///@}

} // namespace ordwel

#if defined(_WIN32)

/// The directory walk of POSIX, over the Windows find calls. Do not include the C runtime's
/// <dirent.h> beside this header: it declares the same names.
struct DIR;

/// One entry of a directory walk.
struct dirent {
    /// The entry's name, NUL-terminated UTF-8.
    char d_name[260];
    /// The platform's attribute word of the entry.
    ordwel::uint32 d_attributes;
};

/// Null when the directory cannot be listed.
[[nodiscard]] ORDWEL_API DIR *opendir(char const *a_path);
/// The next entry ("." and ".." included), null at the end; good until the next readdir on a_dir.
ORDWEL_API dirent *readdir(DIR *a_dir);
/// Ends the walk and frees a_dir.
ORDWEL_API void closedir(DIR *a_dir);

#endif

#endif
