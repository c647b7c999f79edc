// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_STREAM_CODEC_KERNELS_H
#define ORDWEL_SRC_STREAM_CODEC_KERNELS_H

#include <cstddef>
#include <cstdint>

#include <ordwel/base64.h>

#include "core/cpu_dispatch.h"

// The inner loops of the Base64 and hex codecs, one kernel per instruction set level.
//
// The scalar kernels are the reference: every other kernel gives the same bytes for every input.
// A vector kernel codes whole blocks and hands the tail to a narrower kernel; a decoder that meets
// a block with any byte outside its alphabet ("=" included) hands the rest, from the start of that
// block, to the scalar kernel, which applies the rules for such bytes. Vector loads and stores
// stay inside the caller's buffers.

namespace ordwel {
namespace internal {

// The bytes from a_at up to the next cache line, where a vector kernel takes a head first so that
// its 64-byte loads or stores then start on a line each (one that spans two lines costs about a
// third more): 0 when a_at starts a line, or lies within its line at no multiple of a_group, the
// size of the kernel's whole group (4 characters of Base64, 2 digits of hex).
inline std::size_t bytes_to_next_line(void const *a_at, std::size_t a_group)
{
    std::size_t const l_into_line = reinterpret_cast<std::uintptr_t>(a_at) % 64;
    return l_into_line % a_group == 0 && l_into_line != 0 ? 64 - l_into_line : 0;
}

// Writes the (a_size + 2) / 3 × 4 characters of a_bytes to a_out; gives that count.
using base64_encode_kernel = std::size_t (*)(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
// Decodes a_size characters, a multiple of 4, to a_out (room for a_size / 4 × 3 bytes); gives the
// count of bytes written.
using base64_decode_kernel = std::size_t (*)(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
// Decodes the vector blocks at the start of a_text whose characters all belong to the alphabet and
// stops before the first block with any other byte, or before a tail shorter than a block; gives
// the count of characters taken (a multiple of 4), having written 3 bytes for every 4 of them.
using base64_prefix_kernel = std::size_t (*)(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
// Writes the 2 × a_size lowercase digits of a_bytes to a_out.
using hex_encode_kernel = void (*)(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
// Decodes the 2 × a_count digits of a_text to a_count bytes at a_out.
using hex_decode_kernel = void (*)(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count);

std::size_t base64_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
std::size_t base64_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
std::size_t base64url_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
std::size_t base64url_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
void hex_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
void hex_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count);

extern dispatch<base64_encode_kernel> const k_base64_encode;
extern dispatch<base64_decode_kernel> const k_base64_decode;
extern dispatch<base64_encode_kernel> const k_base64url_encode;
extern dispatch<base64_decode_kernel> const k_base64url_decode;
extern dispatch<base64_prefix_kernel> const k_base64_decode_prefix;
extern dispatch<base64_prefix_kernel> const k_base64url_decode_prefix;
extern dispatch<hex_encode_kernel> const k_hex_encode;
extern dispatch<hex_decode_kernel> const k_hex_decode;
// The AVX-512 hex decoder of a processor without VBMI, which checks the digits by their ranges; on
// one with VBMI the level's decoder looks them up instead. For the tests, which hold both against
// the scalar kernel wherever the processor runs AVX-512; null where the build has no x86 kernels.
extern hex_decode_kernel const k_hex_decode_avx512_ranges;

// The kernels of one alphabet: the encoder writes padding, the decoder is the lenient one.
struct base64_kernels {
    dispatch<base64_encode_kernel> const &m_encode;
    dispatch<base64_decode_kernel> const &m_decode;
    dispatch<base64_prefix_kernel> const &m_decode_prefix;
};

base64_kernels const &base64_kernels_of(base64_alphabet a_alphabet);

// How far strict decoding of a window of text got.
struct base64_strict_step {
    enum state { more, done, bad };
    state m_state;
    // more: the characters decoded, a multiple of 4; the rest of the window (at most 4) is to come
    // again with the text behind it. done: the window's size. bad: the offset of the first
    // character that no valid text has there (the window's size when the text ends too early).
    std::size_t m_taken;
    std::size_t m_written; // bytes written to a_out (bad: those of the whole groups before the last)
};

// Strict decoding of a_size characters, the next ones of a text that ends behind them when a_ended;
// a_out has room for (a_size + 3) / 4 × 3 bytes. Whole groups of the alphabet run at vector speed;
// the scalar code decides from the first group with anything else.
base64_strict_step base64_decode_strict_window(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size,
                                               bool a_ended, base64_format a_format);

// Raises es::arg "invalid Base64 at offset <a_offset>", the failure of strict decoding.
[[noreturn]] void base64_raise_invalid(uint64 a_offset);

} // namespace internal
} // namespace ordwel

#endif
