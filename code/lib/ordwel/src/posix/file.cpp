// SPDX-License-Identifier: MIT
#include "platform/file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

// The file calls on POSIX descriptors. Windows' access rights and dispositions map onto open()
// flags; sharing has no POSIX counterpart and is not enforced.
namespace ordwel {
namespace platform {

namespace {

int open_flags(file_access a_access, file_disposition a_disposition)
{
    bool const l_read = any(a_access & file_access::read);
    bool const l_write = any(a_access & (file_access::write | file_access::write_data));
    int l_flags = O_CLOEXEC;
    if (l_read && l_write) {
        l_flags |= O_RDWR;
    } else if (l_write) {
        l_flags |= O_WRONLY;
    } else if (l_read || a_disposition != file_disposition::open_existing) {
        l_flags |= O_RDONLY;
    } else {
        // No access rights: the file can be named and examined, not read or written.
#if defined(O_PATH)
        l_flags |= O_PATH;
#else
        l_flags |= O_RDONLY;
#endif
    }
    switch (a_disposition) {
    case file_disposition::create_new:
        l_flags |= O_CREAT | O_EXCL;
        break;
    case file_disposition::create_always:
        l_flags |= O_CREAT | O_TRUNC;
        break;
    case file_disposition::truncate_existing:
        l_flags |= O_TRUNC;
        break;
    case file_disposition::open_existing:
        break;
    }
    return l_flags;
}

// Handle 0 is a closed file's, as a null handle is on Windows: descriptor 0 (standard input) is
// never reached through it, and file_open never hands it out.
bool valid_handle(sint64 a_handle)
{
    return a_handle > 0 && a_handle <= INT_MAX;
}

// The most that one read or write of the kernel is asked to move: below its limit of 2 GiB less
// 4 KiB per call.
constexpr std::size_t k_max_piece = std::size_t(1) << 30;

// The number of a "no such entry" look-up by name.
constexpr int k_no_id = -1;

template <class Entry, class Lookup, class Field> bool lookup_entry(Lookup a_lookup, Field a_field)
{
    long const l_hint = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::size_t l_size = l_hint > 0 ? static_cast<std::size_t>(l_hint) : 1024;
    for (int l_try = 0; l_try < 8; ++l_try, l_size *= 4) {
        std::string l_storage(l_size, '\0');
        Entry l_entry{};
        Entry *l_result = nullptr;
        int const l_error = a_lookup(&l_entry, &l_storage[0], l_size, &l_result);
        if (l_error == ERANGE) {
            continue;
        }
        if (l_error != 0 || l_result == nullptr) {
            return false;
        }
        a_field(*l_result);
        return true;
    }
    return false;
}

} // namespace

status file_open(std::string const &a_path, file_access a_access, file_share, file_disposition a_disposition,
                 unsigned a_mode, sint64 &a_handle)
{
    int l_descriptor = -1;
    do {
        l_descriptor = ::open(a_path.c_str(), open_flags(a_access, a_disposition), static_cast<mode_t>(a_mode));
    } while (l_descriptor == -1 && errno == EINTR);
    if (l_descriptor == -1) {
        return last_failure();
    }
    if (l_descriptor == 0) {
        // Descriptor 0 would read as "closed": move the file to another number.
        int const l_moved = fcntl(0, F_DUPFD_CLOEXEC, 1);
        int const l_error = errno;
        ::close(0);
        if (l_moved == -1) {
            errno = l_error;
            return status_failed(static_cast<unsigned long>(l_error));
        }
        l_descriptor = l_moved;
    }
    a_handle = l_descriptor;
    return status_done();
}

status file_close(sint64 a_handle)
{
    if (!valid_handle(a_handle)) {
        errno = EBADF;
        return last_failure();
    }
    // Linux releases the descriptor even when close is interrupted, so EINTR counts as done.
    if (::close(static_cast<int>(a_handle)) == 0 || errno == EINTR) {
        return status_done();
    }
    return last_failure();
}

status file_read(sint64 a_handle, void *a_data, uint32 a_size, uint32 &a_done)
{
    if (!valid_handle(a_handle)) {
        errno = EBADF;
        return last_failure();
    }
    // One read of the kernel stops short of 2 GiB and may stop short anywhere on a signal, while
    // ReadFile on a disk file reads the whole count or to the end. So the count goes in pieces
    // of at most 1 GiB; a short piece of a regular file is read on from, a short piece of
    // anything else (a pipe, a terminal) ends the call with what came, as ReadFile does there.
    int const l_descriptor = static_cast<int>(a_handle);
    unsigned char *const l_data = static_cast<unsigned char *>(a_data);
    uint32 l_done = 0;
    int l_regular = -1; // unknown until the first short piece
    while (l_done < a_size) {
        std::size_t const l_piece = std::min<std::size_t>(a_size - l_done, k_max_piece);
        ssize_t const l_count = ::read(l_descriptor, l_data + l_done, l_piece);
        if (l_count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return last_failure();
        }
        if (l_count == 0) {
            break;
        }
        l_done += static_cast<uint32>(l_count);
        if (static_cast<std::size_t>(l_count) < l_piece) {
            if (l_regular < 0) {
                struct stat l_info {};
                l_regular = ::fstat(l_descriptor, &l_info) == 0 && S_ISREG(l_info.st_mode) ? 1 : 0;
            }
            if (l_regular == 0) {
                break;
            }
        }
    }
    a_done = l_done;
    return status_done();
}

status file_write(sint64 a_handle, void const *a_data, uint32 a_size, uint32 &a_done)
{
    if (!valid_handle(a_handle)) {
        errno = EBADF;
        return last_failure();
    }
    // Writes until all is written or the kernel names a reason, as WriteFile does on a disk
    // file: a short count (a full disk, the 2 GiB limit of one call, a signal) is written on from,
    // and the next write tells why it stopped. A write that moves nothing and names no reason
    // counts as a full device.
    int const l_descriptor = static_cast<int>(a_handle);
    unsigned char const *const l_data = static_cast<unsigned char const *>(a_data);
    uint32 l_done = 0;
    while (l_done < a_size) {
        std::size_t const l_piece = std::min<std::size_t>(a_size - l_done, k_max_piece);
        ssize_t const l_count = ::write(l_descriptor, l_data + l_done, l_piece);
        if (l_count < 0) {
            if (errno == EINTR) {
                continue;
            }
            a_done = l_done;
            return last_failure();
        }
        if (l_count == 0) {
            a_done = l_done;
            return status_failed(ENOSPC);
        }
        l_done += static_cast<uint32>(l_count);
    }
    a_done = l_done;
    return status_done();
}

status file_seek(sint64 a_handle, sint64 a_offset, file_origin a_origin, uint64 &a_position)
{
    if (!valid_handle(a_handle)) {
        errno = EBADF;
        return last_failure();
    }
    int l_whence = SEEK_SET;
    if (a_origin == file_origin::current) {
        l_whence = SEEK_CUR;
    } else if (a_origin == file_origin::end) {
        l_whence = SEEK_END;
    }
    off_t const l_position = ::lseek(static_cast<int>(a_handle), static_cast<off_t>(a_offset), l_whence);
    if (l_position == static_cast<off_t>(-1)) {
        return last_failure();
    }
    a_position = static_cast<uint64>(l_position);
    return status_done();
}

status file_size(sint64 a_handle, uint64 &a_size)
{
    if (!valid_handle(a_handle)) {
        errno = EBADF;
        return last_failure();
    }
    struct stat l_info {};
    if (::fstat(static_cast<int>(a_handle), &l_info) != 0) {
        return last_failure();
    }
    a_size = static_cast<uint64>(l_info.st_size);
    return status_done();
}

status file_examine(std::string const &a_path, file_attributes &a_attributes)
{
    struct stat l_info {};
    if (a_path.empty()) {
        return status_failed(ENOENT);
    }
    if (::stat(a_path.c_str(), &l_info) != 0) {
        return last_failure();
    }
    file_attributes l_attributes = file_attributes::none;
    std::string::size_type const l_slash = a_path.find_last_of('/', a_path.size() - 1);
    std::string::size_type const l_name = l_slash == std::string::npos ? 0 : l_slash + 1;
    if (l_name < a_path.size() && a_path[l_name] == '.') {
        l_attributes |= file_attributes::hidden;
    }
    if (S_ISDIR(l_info.st_mode)) {
        l_attributes |= file_attributes::directory;
    } else if (!S_ISREG(l_info.st_mode)) {
        l_attributes |= file_attributes::system;
    }
    a_attributes = any(l_attributes) ? l_attributes : file_attributes::normal;
    return status_done();
}

status file_unlink(char const *a_path)
{
    return ::unlink(a_path) == 0 ? status_done() : last_failure();
}

std::string user_name_with_id(int a_uid)
{
    std::string l_name;
    lookup_entry<struct passwd>(
        [a_uid](struct passwd *a_entry, char *a_storage, std::size_t a_size, struct passwd **a_result) {
            return getpwuid_r(static_cast<uid_t>(a_uid), a_entry, a_storage, a_size, a_result);
        },
        [&l_name](struct passwd const &a_entry) { l_name = a_entry.pw_name != nullptr ? a_entry.pw_name : ""; });
    return l_name;
}

std::string group_name_with_id(int a_gid)
{
    std::string l_name;
    lookup_entry<struct group>(
        [a_gid](struct group *a_entry, char *a_storage, std::size_t a_size, struct group **a_result) {
            return getgrgid_r(static_cast<gid_t>(a_gid), a_entry, a_storage, a_size, a_result);
        },
        [&l_name](struct group const &a_entry) { l_name = a_entry.gr_name != nullptr ? a_entry.gr_name : ""; });
    return l_name;
}

int user_id_with_name(char const *a_name)
{
    int l_id = k_no_id;
    if (a_name != nullptr) {
        lookup_entry<struct passwd>(
            [a_name](struct passwd *a_entry, char *a_storage, std::size_t a_size, struct passwd **a_result) {
                return getpwnam_r(a_name, a_entry, a_storage, a_size, a_result);
            },
            [&l_id](struct passwd const &a_entry) { l_id = static_cast<int>(a_entry.pw_uid); });
    }
    return l_id;
}

int group_id_with_name(char const *a_name)
{
    int l_id = k_no_id;
    if (a_name != nullptr) {
        lookup_entry<struct group>(
            [a_name](struct group *a_entry, char *a_storage, std::size_t a_size, struct group **a_result) {
                return getgrnam_r(a_name, a_entry, a_storage, a_size, a_result);
            },
            [&l_id](struct group const &a_entry) { l_id = static_cast<int>(a_entry.gr_gid); });
    }
    return l_id;
}

} // namespace platform
} // namespace ordwel
