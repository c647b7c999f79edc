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

// Both enums are fixed to int: any other value is a valid one and acts as the middle value (1).
enum e_space_align : int { space_align_left = 0, space_align_center = 1, space_align_right = 2 };
enum e_truncate_whence : int { truncate_front = 0, truncate_middle = 1, truncate_back = 2 };

ORDWEL_API bool contains(std::string const &a_sought, std::string const &a_text);
ORDWEL_API bool contains(char a_sought, std::string const &a_text);
ORDWEL_API bool starts_with(std::string const &a_prefix, std::string const &a_text);
ORDWEL_API bool ends_with(std::string const &a_suffix, std::string const &a_text);

ORDWEL_API std::string appended(std::string const &a_first, std::string const &a_second);

ORDWEL_API std::string &capitalize(std::string &a_text);
ORDWEL_API std::string capitalized(std::string const &a_text);
ORDWEL_API std::string &to_lowercase(std::string &a_text);
ORDWEL_API std::string &to_uppercase(std::string &a_text);
ORDWEL_API std::string string_to_lowercase(std::string const &a_text);
ORDWEL_API std::string string_to_uppercase(std::string const &a_text);

// Every occurrence of a_from becomes a_to; what was put in is never searched again. An empty
// a_from changes nothing.
ORDWEL_API std::string &replace(std::string &a_text, std::string const &a_from, std::string const &a_to);
// Every occurrence of the byte a_from becomes a_to; the search goes on one byte behind the place
// of each replacement, whatever the length of a_to. Stops at the end of the text even when a_to
// holds a_from again.
ORDWEL_API std::string &replace(std::string &a_text, char a_from, std::string const &a_to);
ORDWEL_API std::string string_replaced(std::string const &a_text, std::string const &a_from, std::string const &a_to);
ORDWEL_API std::string string_replaced(std::string const &a_text, char a_from, std::string const &a_to);

// At the first a_separator: what stands before it and what stands behind it.
ORDWEL_API std::pair<std::string, std::string> split(std::string const &a_text, char a_separator);

// Drops the bytes of a_set from both ends. A text made only of such bytes comes back unchanged.
ORDWEL_API std::string trimmed(std::string const &a_text, std::string const &a_set);
ORDWEL_API std::string trimmed(std::string const &a_text, char a_byte);

ORDWEL_API std::string string_space_align(std::string const &a_text, unsigned int a_width, e_space_align a_align);
ORDWEL_API std::string string_truncate(std::string const &a_text, unsigned int a_width, e_truncate_whence a_whence);

// A null text gives ""; a length of std::string::npos reads up to the NUL, any other length
// takes exactly that many bytes.
ORDWEL_API std::string string_with_cstr(char const *a_text, uint64 a_length);

// A printf format into a string. A null format, an empty result and a format error all give "".
ORDWEL_API std::string string_with_format(char const *a_format, ...) ORDWEL_PRINTF_FORMAT(1, 2);

// The four bytes of a_code, most significant first; bytes below 32 or from 127 up become
// a_substitute.
ORDWEL_API std::string string_with_fourcc(unsigned int a_code, char a_substitute);

// The one shared empty string, alive for the whole run of the program.
ORDWEL_API std::string const &string_empty_string();

} // namespace ordwel

#endif
