// SPDX-License-Identifier: MIT
#ifndef ORDWEL_STRUTIL_H
#define ORDWEL_STRUTIL_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include <ordwel/buffer.h>
#include <ordwel/export.h>

// Tokens, joins, key-value text and table replacement, all on bytes; only the wide conversions
// read and write UTF-8. A container or string given as out-argument is added to, never cleared
// first (buffer_to_string alone overwrites its out-argument).

namespace ordwel {
/// Tokens, joins, key-value text and table replacement on byte strings.
namespace strutil {

/// Cuts the whole text (NUL bytes included) at every a_delimiter. With a_keep_empty, n delimiters
/// always give n + 1 tokens, so "" gives one empty token; without it empty tokens are dropped.
ORDWEL_API void tokenize_string(std::string const &a_text, char a_delimiter, std::vector<std::string> &a_out,
                                bool a_keep_empty);

/// Cuts the text (up to its first NUL) at every a_delimiter outside quotes. The quote bytes stay in
/// the tokens; an unclosed quote runs to the end. Always gives at least one token.
ORDWEL_API void tokenize_string(std::string const &a_text, char a_delimiter, char a_quote,
                                std::vector<std::string> &a_out);

/// Cuts the text (up to its first NUL) at every a_delimiter outside a_open/a_close nesting. A close
/// at depth 0 is ignored; when open and close are the same byte the depth only rises. The brackets
/// stay in the tokens. Always gives at least one token.
ORDWEL_API void tokenize_string(std::string const &a_text, char a_delimiter, char a_open, char a_close,
                                std::vector<std::string> &a_out);

/// Wraps the text into lines of about a_width bytes, each cut at the a_delimiter nearest to the
/// width (a tie goes to the earlier one); the delimiter at a cut is dropped. A line is longer than
/// the width only where no delimiter lies within it.
ORDWEL_API void tokenize_string(std::string const &a_text, char a_delimiter, unsigned int a_width,
                                std::vector<std::string> &a_out);

/// Appends the elements to a_out with a_separator between them; a NUL separator means none. An
/// empty list leaves a_out as it was.
///@{
ORDWEL_API void join_strings(std::list<std::string> const &a_list, char a_separator, std::string &a_out);
ORDWEL_API void join_strings(std::vector<std::string> const &a_list, char a_separator, std::string &a_out);
ORDWEL_API void join_strings(std::vector<std::string> const &a_list, std::string const &a_separator,
                             std::string &a_out);
///@}

/// Reads "k1=v1;k2=v2" style text into a map: pairs end at a_pair, and the first a_kv of a pair
/// splits key from value. A pair without a_kv has an empty value, an empty pair is the empty key.
/// The last of equal keys wins, also against what a_map held. A NUL a_kv makes the whole text one
/// key. An empty text adds nothing.
ORDWEL_API void kvmap_with_kvstr(std::map<std::string, std::string> &a_map, std::string const &a_text, char a_pair,
                                 char a_kv);
/// The same into a new map.
[[nodiscard]] ORDWEL_API std::map<std::string, std::string> kvmap_with_kvstr(std::string const &a_text, char a_pair,
                                                                             char a_kv);

/// Writes the map in key order. An empty value writes no a_kv; an empty key writes no a_pair in
/// front of its entry, and a_pair is only written when a_out already holds something.
ORDWEL_API void kvstr_with_kvmap(std::string &a_out, std::map<std::string, std::string> const &a_map, char a_pair,
                                 char a_kv);
/// The same into a new string.
[[nodiscard]] ORDWEL_API std::string kvstr_with_kvmap(std::map<std::string, std::string> const &a_map, char a_pair,
                                                      char a_kv);

/// Replaces every byte that is a key of the map by its value, in one pass: what was put in is never
/// looked at again. An empty map changes nothing.
ORDWEL_API std::string &replace(std::string &a_text, std::map<char, std::string> const &a_map);
/// Runs ordwel::replace once per entry, in key order: a later entry sees what an earlier one put in.
ORDWEL_API std::string &replace(std::string &a_text, std::map<std::string, std::string> const &a_map);
/// A copy with the replacements of the matching replace().
///@{
[[nodiscard]] ORDWEL_API std::string string_replaced(std::string const &a_text,
                                                     std::map<char, std::string> const &a_map);
[[nodiscard]] ORDWEL_API std::string string_replaced(std::string const &a_text,
                                                     std::map<std::string, std::string> const &a_map);
///@}

/// Exactly the buffer's bytes, NUL bytes included.
[[nodiscard]] ORDWEL_API std::string buffer_to_string(buffer const &a_buffer);
/// The same into a_out, whose old content goes.
ORDWEL_API void buffer_to_string(std::string &a_out, buffer const &a_buffer);

/// UTF-8 to the platform's wide text (UTF-32 on Linux, UTF-16 on Windows) and back. Both stop at
/// the first NUL of their input.
///@{
[[nodiscard]] ORDWEL_API std::wstring string_to_wstring(std::string const &a_text);
[[nodiscard]] ORDWEL_API std::string wstring_to_string(std::wstring const &a_text);
///@}

} // namespace strutil
} // namespace ordwel

#endif
