// SPDX-License-Identifier: MIT
#ifndef ORDWEL_STRING_HELPERS_H
#define ORDWEL_STRING_HELPERS_H

#include <string>
#include <utility>

#include <ordwel/export.h>
#include <ordwel/internal/attributes.h>
#include <ordwel/types.h>

// Byte-string helpers used throughout the library. Imperative names change their argument in
// place and return it; past participles and string_ names return a new string. Search tests take
// what is sought first and the text second.

namespace ordwel {

/// Where string_space_align puts the text in its width. Fixed to int: any other value is a valid
/// one and acts as the middle value (1).
enum e_space_align : int {
    space_align_left = 0,   ///< Text first, blanks behind.
    space_align_center = 1, ///< Blanks on both sides, the odd one in front.
    space_align_right = 2   ///< Blanks first, text behind.
};
/// Where string_truncate cuts the text. Fixed to int: any other value is a valid one and acts as
/// the middle value (1).
enum e_truncate_whence : int {
    truncate_front = 0,  ///< Dots first, the end of the text behind.
    truncate_middle = 1, ///< Both ends of the text, dots between.
    truncate_back = 2    ///< The start of the text, dots behind.
};

/// Whether a_sought (a text or a byte) occurs in a_text; the empty text occurs in every text.
///@{
[[nodiscard]] ORDWEL_API bool contains(std::string const &a_sought, std::string const &a_text);
[[nodiscard]] ORDWEL_API bool contains(char a_sought, std::string const &a_text);
///@}
/// Whether a_text begins with a_prefix.
[[nodiscard]] ORDWEL_API bool starts_with(std::string const &a_prefix, std::string const &a_text);
/// Whether a_text ends with a_suffix.
[[nodiscard]] ORDWEL_API bool ends_with(std::string const &a_suffix, std::string const &a_text);

/// a_first followed by a_second.
[[nodiscard]] ORDWEL_API std::string appended(std::string const &a_first, std::string const &a_second);

/// Makes a lowercase ASCII first byte uppercase, in place; gives a_text.
ORDWEL_API std::string &capitalize(std::string &a_text);
/// A copy with a lowercase ASCII first byte made uppercase.
[[nodiscard]] ORDWEL_API std::string capitalized(std::string const &a_text);
/// Lowers or raises the case of every ASCII letter in place; gives a_text. Other bytes stay.
///@{
ORDWEL_API std::string &to_lowercase(std::string &a_text);
ORDWEL_API std::string &to_uppercase(std::string &a_text);
///@}
/// A copy with the case of every ASCII letter lowered or raised. Other bytes stay.
///@{
[[nodiscard]] ORDWEL_API std::string string_to_lowercase(std::string const &a_text);
[[nodiscard]] ORDWEL_API std::string string_to_uppercase(std::string const &a_text);
///@}

/// Every occurrence of a_from becomes a_to; what was put in is never searched again. An empty
/// a_from changes nothing.
ORDWEL_API std::string &replace(std::string &a_text, std::string const &a_from, std::string const &a_to);
/// Every occurrence of the byte a_from becomes a_to; the search goes on one byte behind the place
/// of each replacement, whatever the length of a_to. Stops at the end of the text even when a_to
/// holds a_from again.
ORDWEL_API std::string &replace(std::string &a_text, char a_from, std::string const &a_to);
/// A copy with the replacements of replace().
///@{
[[nodiscard]] ORDWEL_API std::string string_replaced(std::string const &a_text, std::string const &a_from,
                                                     std::string const &a_to);
[[nodiscard]] ORDWEL_API std::string string_replaced(std::string const &a_text, char a_from, std::string const &a_to);
///@}

/// At the first a_separator: what stands before it and what stands behind it. Without a separator
/// the whole text and "".
[[nodiscard]] ORDWEL_API std::pair<std::string, std::string> split(std::string const &a_text, char a_separator);

/// A copy without the bytes of a_set (or the byte a_byte) at both ends. A text made only of such
/// bytes comes back unchanged.
///@{
[[nodiscard]] ORDWEL_API std::string trimmed(std::string const &a_text, std::string const &a_set);
[[nodiscard]] ORDWEL_API std::string trimmed(std::string const &a_text, char a_byte);
///@}

/// The text padded with blanks to a_width bytes as a_align says; a longer text comes back as it is.
[[nodiscard]] ORDWEL_API std::string string_space_align(std::string const &a_text, unsigned int a_width,
                                                        e_space_align a_align);
/// The text cut to a_width bytes, dots marking the cut where a_whence says: 1 dot for widths up to
/// 5, 2 up to 12, else 3. A width of 1 keeps one byte and no dot, 0 gives "", and a text that fits
/// comes back as it is.
[[nodiscard]] ORDWEL_API std::string string_truncate(std::string const &a_text, unsigned int a_width,
                                                     e_truncate_whence a_whence);

/// A null text gives ""; a length of std::string::npos reads up to the NUL, any other length
/// takes exactly that many bytes.
[[nodiscard]] ORDWEL_API std::string string_with_cstr(char const *a_text, uint64 a_length);

/// A printf format into a string. A null format, an empty result and a format error all give "".
[[nodiscard]] ORDWEL_API std::string string_with_format(char const *a_format, ...) ORDWEL_PRINTF_FORMAT(1, 2);

/// The four bytes of a_code, most significant first; bytes below 32 or from 127 up become
/// a_substitute.
[[nodiscard]] ORDWEL_API std::string string_with_fourcc(unsigned int a_code, char a_substitute);

/// The one shared empty string, alive for the whole run of the program.
[[nodiscard]] ORDWEL_API std::string const &string_empty_string();

} // namespace ordwel

#endif
