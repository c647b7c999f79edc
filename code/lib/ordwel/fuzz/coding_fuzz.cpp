// SPDX-License-Identifier: MIT
// The network decoder on arbitrary bytes: no crash and no sanitizer report. The first byte gives
// the length of a program of operations, the rest is the message. Every operation either works or
// raises es::arg, and a raise leaves the read position where it was (a composite item may have
// consumed its length). Items decoded from the message and encoded again give the bytes they came
// from. Operations that grow the message stop at a budget, so that a short input can't ask for
// gigabytes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <ordwel/coding.h>
#include <ordwel/es.h>

#include "fuzz_check.h"

namespace {

// The most the program may grow the message to: a fill of half the message per byte of the
// program would otherwise reach gigabytes within sixty bytes.
constexpr std::size_t k_message_budget = std::size_t(1) << 16;

bool may_grow(ordwel::buffer const &a_message, std::size_t a_growth)
{
    return a_growth <= k_message_budget && a_message.size() <= k_message_budget - a_growth;
}

void run_program(std::uint8_t const *a_program, std::size_t a_length, ordwel::buffer &a_message)
{
    using namespace ordwel;
    decoder_network l_decoder(a_message);
    unsigned char l_scratch[64] = {};
    for (std::size_t l_index = 0; l_index < a_length; ++l_index) {
        unsigned const l_op = a_program[l_index] & 15;
        uint64 const l_arg = a_program[l_index] >> 4;
        uint32 const l_left = l_decoder.left();
        bool l_length_taken = false;
        try {
            switch (l_op) {
            case 0: {
                std::string l_text;
                l_length_taken = l_left >= 4;
                string_decode_network(l_text, l_decoder);
                break;
            }
            case 1: {
                buffer l_bytes;
                l_length_taken = l_left >= 4;
                buffer_decode_network(l_bytes, l_decoder);
                break;
            }
            case 2: {
                uint64 l_value = 0;
                uint64_decode_network(l_value, l_decoder);
                check(l_decoder.left() == l_left - 8);
                break;
            }
            case 3: {
                uint16 l_value = 0;
                uint16_peek_network(l_value, l_decoder, l_arg);
                check(l_decoder.left() == l_left);
                break;
            }
            case 4:
                l_decoder.read(l_scratch, l_arg);
                break;
            case 5:
                l_decoder.peek(l_scratch, l_arg, l_arg);
                break;
            case 6: {
                unsigned char const *const l_here = l_decoder.here(l_arg, 1);
                check(l_here == l_decoder.end() - l_left + 1);
                break;
            }
            case 7:
                l_decoder.advance(l_arg, l_arg / 2);
                break;
            case 8: {
                unsigned char const *const l_at = l_decoder.skip(l_arg);
                check(l_at == l_decoder.end() - (l_left - l_arg));
                break;
            }
            case 9:
                if (!may_grow(a_message, l_arg)) {
                    break;
                }
                l_decoder.fill(l_arg, l_index % 2 == 0 ? l_scratch : nullptr);
                check(l_decoder.left() == l_left + l_arg);
                break;
            case 10:
                l_decoder.normalize();
                check(l_decoder.left() == l_decoder.size());
                break;
            case 11:
                check(l_decoder.have(static_cast<uint32>(l_arg)) == (l_left >= l_arg));
                break;
            case 12:
                if (!may_grow(a_message, l_decoder.size() / 2)) {
                    break;
                }
                l_decoder.fill(l_decoder.size() / 2, l_decoder.begin());
                break;
            case 13:
                l_decoder.clear();
                break;
            default: {
                sint32 l_value = 0;
                sint32_decode_network(l_value, l_decoder);
                break;
            }
            }
        } catch (es::arg const &) {
            check(l_decoder.left() == (l_length_taken ? l_left - 4 : l_left));
        }
        check(l_decoder.end() - l_decoder.begin() == static_cast<std::ptrdiff_t>(a_message.size()));
    }
}

// Strings until the message runs out: each one encoded again equals the bytes it was taken from.
void round_trip(ordwel::buffer &a_message)
{
    using namespace ordwel;
    decoder_network l_decoder(a_message);
    buffer l_again;
    encoder_network l_encoder(l_again);
    try {
        for (;;) {
            std::string l_text;
            string_decode_network(l_text, l_decoder);
            string_encode_network(l_text, l_encoder);
            uint32 l_size = 0;
            uint32_peek_network(l_size, l_decoder, 0);
            buffer l_bytes;
            buffer_decode_network(l_bytes, l_decoder);
            buffer_encode_network(l_bytes, l_encoder);
        }
    } catch (es::arg const &) {
    }
    uint64 const l_taken = l_encoder.size();
    check(l_taken <= a_message.size());
    check(l_taken == 0 || std::equal(l_again.begin(), l_again.end(), a_message.begin()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size == 0) {
        return 0;
    }
    std::size_t const l_length = a_data[0] < a_size - 1 ? a_data[0] : a_size - 1;
    std::uint8_t const *const l_program = a_data + 1;
    // The message in a block of its own size, so that a read past its end is seen.
    ordwel::buffer l_message(a_data + 1 + l_length, a_data + a_size);
    ordwel::buffer l_copy = l_message;
    run_program(l_program, l_length, l_message);
    round_trip(l_copy);
    return 0;
}
