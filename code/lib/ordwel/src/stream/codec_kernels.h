// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_STREAM_CODEC_KERNELS_H
#define ORDWEL_SRC_STREAM_CODEC_KERNELS_H

#include <cstddef>

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

// Writes the (a_size + 2) / 3 × 4 characters of a_bytes to a_out; gives that count.
using base64_encode_kernel = std::size_t (*)(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
// Decodes a_size characters, a multiple of 4, to a_out (room for a_size / 4 × 3 bytes); gives the
// count of bytes written.
using base64_decode_kernel = std::size_t (*)(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
// Writes the 2 × a_size lowercase digits of a_bytes to a_out.
using hex_encode_kernel = void (*)(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
// Decodes the 2 × a_count digits of a_text to a_count bytes at a_out.
using hex_decode_kernel = void (*)(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count);

std::size_t base64_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
std::size_t base64_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_size);
void hex_encode_scalar(char *a_out, unsigned char const *a_bytes, std::size_t a_size);
void hex_decode_scalar(unsigned char *a_out, unsigned char const *a_text, std::size_t a_count);

extern dispatch<base64_encode_kernel> const k_base64_encode;
extern dispatch<base64_decode_kernel> const k_base64_decode;
extern dispatch<hex_encode_kernel> const k_hex_encode;
extern dispatch<hex_decode_kernel> const k_hex_decode;

} // namespace internal
} // namespace ordwel

#endif
