// SPDX-License-Identifier: MIT
#ifndef ORDWEL_URL_CONVERT_H
#define ORDWEL_URL_CONVERT_H

#include <string>

#include <ordwel/export.h>

// Conversions between URLs and the paths of the Windows file system: drive paths ("C:\dir\file")
// and UNC paths ("\\host\share\dir\file"). A local path becomes a "file://" URL with an empty
// authority and the drive in its path ("C:\dir" is "file:///C%3a/dir"); a UNC path becomes an
// "smb://" URL with the host as authority and the share as the path's first component. All of it
// is text work: nothing touches a file, and any input gives a result.

namespace ordwel {

/// What url_create_from_url_or_path asks the platform: the working directory, the user's home
/// directory and the current drive (1 for A:, 0 where the platform has no drives).
struct url_path_environment {
    std::string working_directory; ///< The directory that relative input is taken against.
    std::string home_directory;    ///< What "~" stands for.
    unsigned drive = 0;            ///< The current drive: 1 for A:, 0 for none.
};

/// A URL of whatever a user typed: a URL stays as it is, a UNC path becomes "smb://", a drive,
/// rooted, home ("~") or relative path a "file://" URL with its path percent-encoded and not
/// normalised. a_directory serves relative input (empty: the working directory). Without drives a
/// rooted path stays rooted at "/". What the platform's queries raise passes on.
[[nodiscard]] ORDWEL_API std::string url_create_from_url_or_path(std::string const &a_input,
                                                                 std::string const &a_directory);
/// The same over a given environment, asking the platform nothing.
[[nodiscard]] ORDWEL_API std::string url_create_from_url_or_path(std::string const &a_input,
                                                                 std::string const &a_directory,
                                                                 url_path_environment const &a_environment);

/// The host, the share or the object of "\\host\share\object"; the object keeps its leading
/// backslash.
///@{
[[nodiscard]] ORDWEL_API std::string unc_host(std::string const &a_unc);
[[nodiscard]] ORDWEL_API std::string unc_share(std::string const &a_unc);
[[nodiscard]] ORDWEL_API std::string unc_object(std::string const &a_unc);
///@}
/// "scheme://host/share/object", the path percent-encoded.
[[nodiscard]] ORDWEL_API std::string unc_path_to_url(std::string const &a_unc, std::string const &a_scheme);

/// A platform path of a URL: a UNC path for "smb" and for a host other than this machine, else a
/// drive or relative path. This machine is "localhost", "127.0.0.1", "::1" or "fe80::1", compared
/// with case, and counts only when the path holds a drive ("/C:/...").
[[nodiscard]] ORDWEL_API std::string url_extract_to_unc_or_windows_path(std::string const &a_url);
/// The same operation as url_extract_to_unc_or_windows_path.
[[nodiscard]] ORDWEL_API std::string url_native_platform_path(std::string const &a_url);
/// "\\HOST\path", the host in capitals ("LOCALHOST" for none).
[[nodiscard]] ORDWEL_API std::string url_extract_to_unc_path(std::string const &a_url);
/// The URL's decoded path as a platform path, whatever its host.
[[nodiscard]] ORDWEL_API std::string url_extract_windows_path(std::string const &a_url);

/// A decoded URL path without its leading "/" and with backslashes: "/C:/dir" gives "C:\dir".
[[nodiscard]] ORDWEL_API std::string url_path_to_windows_path(std::string const &a_path);
/// A platform path as a URL path, not encoded: "C:\dir" gives "/C:/dir". A UNC path keeps its two
/// backslashes behind the root ("/\\host/share"), so that it comes back as it was.
[[nodiscard]] ORDWEL_API std::string windows_path_to_url_path(std::string const &a_path);
/// Replaces the URL's path by a platform path, written as windows_path_to_url_path gives it and
/// encoded.
///@{
ORDWEL_API std::string &url_set_windows_path(std::string &a_url, std::string const &a_path);
[[nodiscard]] ORDWEL_API std::string url_new_windows_path(std::string const &a_url, std::string const &a_path);
///@}

} // namespace ordwel

#endif
