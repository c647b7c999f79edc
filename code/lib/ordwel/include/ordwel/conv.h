// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CONV_H
#define ORDWEL_CONV_H

#include <string>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

// Numbers and flags to and from text, random numbers, dotted version comparison and UTF-8 helpers.
// Nothing here throws on bad input.

namespace ordwel {
/// Numbers and flags to and from text.
namespace conv {

/// |value| in whole percent, rounded half up: 0.125 gives 13, -0.5 gives 50. NaN gives 0 and what
/// is beyond the range of unsigned int gives its maximum.
[[nodiscard]] ORDWEL_API unsigned int double_to_percent(double a_value);
/// The same in float arithmetic.
[[nodiscard]] ORDWEL_API unsigned int float_to_percent(float a_value);

/// The first four bytes, the first in the top byte; a shorter text is padded with spaces.
[[nodiscard]] ORDWEL_API unsigned int fourcc_with_string(std::string const &a_text);

/// The C library's parsers, with no end pointer and no error report: text that is no number gives 0,
/// and out-of-range text what the parser gives. "long" is 32 bits on every platform, saturated as
/// Windows' strtol and strtoul do. A null text or a base other than 0 or 2..36 gives 0.
///@{
[[nodiscard]] ORDWEL_API double string_to_double(char const *a_text);
[[nodiscard]] ORDWEL_API float string_to_float(char const *a_text);
[[nodiscard]] ORDWEL_API sint32 string_to_int(char const *a_text, int a_base);
[[nodiscard]] ORDWEL_API sint32 string_to_long(char const *a_text, int a_base);
[[nodiscard]] ORDWEL_API sint64 string_to_longlong(char const *a_text, int a_base);
[[nodiscard]] ORDWEL_API uint32 string_to_uint(char const *a_text, int a_base);
[[nodiscard]] ORDWEL_API uint32 string_to_ulong(char const *a_text, int a_base);
[[nodiscard]] ORDWEL_API uint64 string_to_ulonglong(char const *a_text, int a_base);
///@}

/// "true" or "false".
[[nodiscard]] ORDWEL_API char const *true_false_c_str(bool a_value);
/// "yes" or "no".
[[nodiscard]] ORDWEL_API char const *yes_no_c_str(bool a_value);

} // namespace conv

/// Float epsilon and the C library's random numbers.
namespace math {

/// 2^-23, the epsilon of a 32-bit float.
[[nodiscard]] ORDWEL_API double float_epsilon();

/// Seeds the C library's generator (srand/rand), whose numbers are scaled to 0..32767 on every
/// platform.
ORDWEL_API void rand_seed(unsigned int a_seed);
/// Seeds with the current time in seconds.
ORDWEL_API void rand_seed();
/// 32767, the largest number the generator gives.
[[nodiscard]] ORDWEL_API int rand_max();
/// a_low + rand() % |a_high - a_low + 1| (in 32 bits). a_high == a_low - 1 has no result: a debug
/// build asserts, a release build gives a_low. Advances the generator.
ORDWEL_API int rand_int(int a_low, int a_high);
/// From a_low to a_low + |a_high - a_low|, both included. Advances the generator.
ORDWEL_API float rand_float(float a_low, float a_high);

} // namespace math

/// Dotted version strings.
namespace version {

/// Orders dotted version strings ("1.2.3.4") by their 32-bit value: up to four numbers, one byte
/// each from the top, ORed in (so "1.256" equals "1.0"). less is true when the first version is the
/// higher one, so a map ordered by it runs from the highest version down.
class ORDWEL_API less {
public:
    /// Whether a_first has the higher value.
    [[nodiscard]] bool operator()(std::string const &a_first, std::string const &a_second) const;
};

/// The opposite of less: true when the first version is the lower one, so a map ordered by it
/// runs from the lowest version up.
class ORDWEL_API greater {
public:
    /// Whether a_first has the lower value.
    [[nodiscard]] bool operator()(std::string const &a_first, std::string const &a_second) const;
};

/// The 32-bit value that both orderings compare.
[[nodiscard]] ORDWEL_API uint32 value_with_string(std::string const &a_version);

} // namespace version

/// Whether the text or bytes begin with the UTF-8 signature EF BB BF.
///@{
[[nodiscard]] ORDWEL_API bool has_utf8_signature(std::string const &a_text);
[[nodiscard]] ORDWEL_API bool has_utf8_signature(buffer const &a_bytes);
///@}
/// Removes a leading UTF-8 signature EF BB BF in place; anything else stays as it is.
///@{
ORDWEL_API void remove_utf8_signature_if_present(std::string &a_text);
ORDWEL_API void remove_utf8_signature_if_present(buffer &a_bytes);
///@}

/// True for a byte that starts a sequence of 2, 3 or 4 bytes.
[[nodiscard]] ORDWEL_API bool is_multibyte_utf8_char(unsigned char a_byte);
/// The length of the sequence that a byte starts: 1 for ASCII, 2 to 4 for a lead byte, 0 for a
/// continuation byte and for F8..FF.
[[nodiscard]] ORDWEL_API int num_utf8_bytes(unsigned char a_byte);

/// The text (up to its first NUL) in the process's narrow code page: the ANSI code page on Windows,
/// the environment's locale codeset elsewhere (unchanged where that is UTF-8, apart from ill-formed
/// sequences, which become U+FFFD).
[[nodiscard]] ORDWEL_API std::string windows_make_safe_utf8_string(std::string const &a_text);

} // namespace ordwel

#endif
