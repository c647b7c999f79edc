// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CODECS_H
#define ORDWEL_CODECS_H

#include <string>

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/types.h>

namespace ordwel {

// Base64 with the standard alphabet of RFC 4648 ("A".."Z", "a".."z", "0".."9", "+", "/", padding
// "="), no line breaks; and hex as lowercase digit pairs, high digit first.
//
// A null pointer or a size of 0 gives an empty result. The decoders raise es::arg (null message)
// only for a length that cannot be right: Base64 text whose length is no multiple of 4, hex text of
// odd length. Characters outside the alphabet are not detected; they decode to bytes:
// - Base64: a group of four characters yields one byte when two of them are foreign ("=" is
//   foreign too, which is how padding works), two bytes when one is, three otherwise. A foreign
//   character stands for the value 255 in the bit arithmetic.
// - hex: both cases are taken; a foreign character sets all four bits of its digit ("g0" is 0xf0).
//
// The buffer results start as a default buffer (capacity 1024 or more). The string results hold
// the same bytes, zero bytes included.

/// Base64 of the a_size bytes at a_bytes, as a buffer or a string, and the bytes that Base64 text
/// stands for. Decoding raises es::arg when a_size is no multiple of 4.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_encode_base64(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_encode_base64(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API buffer buffer_decode_base64(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_decode_base64(unsigned char const *a_bytes, uint64 a_size);
///@}

/// Hex of bytes (a pointer and a size, a buffer, or the characters of a text), as a buffer or a
/// string.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_encode_hex(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API buffer buffer_encode_hex(char const *a_text, uint64 a_size);
[[nodiscard]] ORDWEL_API buffer buffer_encode_hex(buffer const &a_bytes);
[[nodiscard]] ORDWEL_API buffer buffer_encode_hex(std::string const &a_text);
[[nodiscard]] ORDWEL_API std::string string_encode_hex(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_encode_hex(char const *a_text, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_encode_hex(buffer const &a_bytes);
[[nodiscard]] ORDWEL_API std::string string_encode_hex(std::string const &a_text);
///@}

/// The bytes that hex text stands for (a pointer and a size, a buffer, or a string), as a buffer or
/// a string. Raises es::arg when the text's length is odd.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_decode_hex(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API buffer buffer_decode_hex(char const *a_text, uint64 a_size);
[[nodiscard]] ORDWEL_API buffer buffer_decode_hex(buffer const &a_bytes);
[[nodiscard]] ORDWEL_API buffer buffer_decode_hex(std::string const &a_text);
[[nodiscard]] ORDWEL_API std::string string_decode_hex(unsigned char const *a_bytes, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_decode_hex(char const *a_text, uint64 a_size);
[[nodiscard]] ORDWEL_API std::string string_decode_hex(buffer const &a_bytes);
[[nodiscard]] ORDWEL_API std::string string_decode_hex(std::string const &a_text);
///@}

} // namespace ordwel

#endif
