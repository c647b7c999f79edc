// SPDX-License-Identifier: MIT
#ifndef ORDWEL_PATH_H
#define ORDWEL_PATH_H

#include <string>

#include <ordwel/export.h>

// Path algebra on plain text: nothing here touches a file system or looks at the platform. The
// separator is an argument, so the same functions serve file paths and the paths of URLs; only
// path_root and path_unroot are bound to '/'.
//
// Terms, all resting on the last separator and the last dot:
//   file part  the text behind the last separator (the whole path without one; empty when the
//              path ends in a separator)
//   directory  the text up to and including the last separator
//   suffix     the text behind the last dot, if that dot stands within the file part
//   name       the file part up to that dot
//
// Every changing operation has two forms: the imperative one changes its argument and returns it,
// the participle (or path_new_) one returns a changed copy.

namespace ordwel {

/// The text in front of the first separator ("/a/b" gives ""); the whole path without one.
[[nodiscard]] ORDWEL_API std::string path_front(std::string const &a_path, char a_sep);
/// The text behind the last separator; the whole path without one.
[[nodiscard]] ORDWEL_API std::string path_back(std::string const &a_path, char a_sep);
/// The file part; the same as path_back.
[[nodiscard]] ORDWEL_API std::string path_file(std::string const &a_path, char a_sep);
/// The directory. Levels 0 keeps the directory's trailing separator, 1 drops it, and each further
/// level drops one more component: "/a/b/c.txt" gives "/a/b/", "/a/b", "/a", "" for levels 0 to 3.
[[nodiscard]] ORDWEL_API std::string path_directory(std::string const &a_path, char a_sep, unsigned int a_levels);
/// The name: the file part up to the dot of the suffix (all of it without a suffix).
[[nodiscard]] ORDWEL_API std::string path_name(std::string const &a_path, char a_sep);
/// The suffix without its dot. a_count further dots within the file part may belong to the suffix:
/// "a.tar.gz" gives "gz" with count 0 and "tar.gz" with count 1.
[[nodiscard]] ORDWEL_API std::string path_suffix(std::string const &a_path, char a_sep, unsigned int a_count = 0);

/// Joins a_other behind the path with exactly one separator at the seam, judged by the last byte of
/// the left side and the first of the right: "a/" + "/b" and "a" + "b" both give "a/b"; an empty
/// side adds nothing. push_back is another name of append.
///@{
ORDWEL_API std::string &path_append(std::string &a_path, std::string const &a_other, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_appended(std::string const &a_path, std::string const &a_other, char a_sep);
ORDWEL_API std::string &path_push_back(std::string &a_path, std::string const &a_other, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_pushed_back(std::string const &a_path, std::string const &a_other,
                                                      char a_sep);
///@}
/// Joins a_other in front of the path, with the seam rule of path_append. push_front is another
/// name of prepend.
///@{
ORDWEL_API std::string &path_prepend(std::string &a_path, std::string const &a_other, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_prepended(std::string const &a_path, std::string const &a_other, char a_sep);
ORDWEL_API std::string &path_push_front(std::string &a_path, std::string const &a_other, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_pushed_front(std::string const &a_path, std::string const &a_other,
                                                       char a_sep);
///@}

/// Cuts at the last separator, which goes too; a path without one becomes empty.
///@{
ORDWEL_API std::string &path_pop_back(std::string &a_path, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_popped_back(std::string const &a_path, char a_sep);
///@}
/// Removes everything up to and including the first separator; a path without one becomes empty.
///@{
ORDWEL_API std::string &path_pop_front(std::string &a_path, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_popped_front(std::string const &a_path, char a_sep);
///@}

/// Replaces what path_directory(a_path, a_sep, a_levels) gives, with one separator at the seam;
/// an empty a_directory removes it.
///@{
ORDWEL_API std::string &path_set_directory(std::string &a_path, std::string const &a_directory, char a_sep,
                                           unsigned int a_levels);
[[nodiscard]] ORDWEL_API std::string path_new_directory(std::string const &a_path, std::string const &a_directory,
                                                        char a_sep, unsigned int a_levels);
///@}
/// Replaces the file part; the directory stays.
///@{
ORDWEL_API std::string &path_set_file(std::string &a_path, std::string const &a_file, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_new_file(std::string const &a_path, std::string const &a_file, char a_sep);
///@}
/// Replaces the name; the directory, the dot and the suffix stay.
///@{
ORDWEL_API std::string &path_set_name(std::string &a_path, std::string const &a_name, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_new_name(std::string const &a_path, std::string const &a_name, char a_sep);
///@}
/// Replaces the suffix (as path_suffix finds it with the same count). A dot is put in front of a
/// non-empty suffix that does not begin with one, unless the path is empty or already has the dot:
/// "a" gives "a.png", "a.txt" with ".png" gives "a..png", "a.txt" with "" gives "a.".
///@{
ORDWEL_API std::string &path_set_suffix(std::string &a_path, std::string const &a_suffix, char a_sep,
                                        unsigned int a_count = 0);
[[nodiscard]] ORDWEL_API std::string path_new_suffix(std::string const &a_path, std::string const &a_suffix, char a_sep,
                                                     unsigned int a_count = 0);
///@}

/// Drops empty and "." components and lets ".." remove the component before it (whatever that is,
/// the root included). A leading or trailing separator survives through an empty first or last
/// component: "a//b" gives "a/b", "/a/b/../" gives "/a/", "./a" gives "/a", "/a/.." gives "".
///@{
ORDWEL_API std::string &path_normalize(std::string &a_path, char a_sep);
[[nodiscard]] ORDWEL_API std::string path_normalized(std::string const &a_path, char a_sep);
///@}

/// Puts a path that does not begin with '/' under a_root, itself made to begin with '/':
/// "x" under "r" gives "/r/x", "" under "r" gives "/r".
///@{
ORDWEL_API std::string &path_root(std::string &a_path, std::string const &a_root);
[[nodiscard]] ORDWEL_API std::string path_rooted(std::string const &a_path, std::string const &a_root);
///@}
/// Removes the leading '/' and then a_root (trimmed of '/', matched as text, not by component) with
/// the '/' behind it: "/r/x" from "/r" gives "x", "/abc" from "/ab" gives "c".
///@{
ORDWEL_API std::string &path_unroot(std::string &a_path, std::string const &a_root);
[[nodiscard]] ORDWEL_API std::string path_unrooted(std::string const &a_path, std::string const &a_root);
///@}

} // namespace ordwel

#endif
