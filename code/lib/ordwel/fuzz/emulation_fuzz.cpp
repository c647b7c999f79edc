// SPDX-License-Identifier: MIT
// Emulation prevention and exp-Golomb codes on arbitrary bytes. The first byte chooses the pieces
// (what the source hands out, what is read, what is written); the rest is the data.
// - Removal equals the byte-by-byte rule, in place too, and undoes insertion.
// - The stream adapters give what the buffer functions give.
// - Reading ue and se codes in turn from the data gives what a bit-by-bit model gives, and ends
//   in es::uflow or es::oflow exactly where the model does; nothing else is raised.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <ordwel/buffer.h>
#include <ordwel/emulation.h>
#include <ordwel/es.h>
#include <ordwel/expgolomb.h>
#include <ordwel/stream.h>

#include "fuzz_check.h"

namespace {

unsigned char const *bytes(std::string const &a_text)
{
    return reinterpret_cast<unsigned char const *>(a_text.data());
}

std::string removed_by_byte(std::string const &a_text)
{
    std::string l_result;
    unsigned l_zeros = 0;
    for (char const l_char : a_text) {
        if (l_zeros == 2 && l_char == 3) {
            l_zeros = 0;
            continue;
        }
        l_result += l_char;
        l_zeros = l_char == 0 ? std::min(l_zeros + 1, 2U) : 0;
    }
    return l_result;
}

// A source that hands out at most a_piece bytes a read.
class source : public ordwel::stream::rd {
public:
    source(std::string const &a_data, std::size_t a_piece) : m_data(a_data), m_piece(a_piece) {}
    ordwel::uint64 read(void *a_destination, ordwel::uint64 a_size) override
    {
        std::size_t const l_count =
            std::min<std::size_t>({static_cast<std::size_t>(a_size), m_piece, m_data.size() - m_at});
        std::copy_n(m_data.data() + m_at, l_count, static_cast<char *>(a_destination));
        m_at += l_count;
        return l_count;
    }
    ordwel::uint64 tell() override { return m_at; }

private:
    std::string const &m_data;
    std::size_t m_piece;
    std::size_t m_at = 0;
};

void check_emulation(std::string const &a_data, unsigned a_choice)
{
    std::string const l_removed = ordwel::string_remove_emulation(bytes(a_data), a_data.size());
    check(l_removed == removed_by_byte(a_data));
    std::string l_in_place = a_data;
    auto *const l_place = reinterpret_cast<unsigned char *>(&l_in_place[0]);
    l_in_place.resize(static_cast<std::size_t>(ordwel::remove_emulation(l_place, l_place, a_data.size())));
    check(l_in_place == l_removed);
    std::string const l_inserted = ordwel::string_insert_emulation(bytes(a_data), a_data.size());
    check(l_inserted.size() <= ordwel::emulation_inserted_bound(a_data.size()));
    check(ordwel::string_remove_emulation(bytes(l_inserted), l_inserted.size()) == a_data);

    source l_source(a_data, 1 + (a_choice & 7) * (a_choice & 7) * 37);
    ordwel::stream::ep_remove_rd l_reader(l_source);
    std::string l_read;
    std::string l_piece(1 + (a_choice >> 3) * 61, '\0');
    for (ordwel::uint64 l_count = 1; l_count != 0;) {
        l_count = l_reader.read(&l_piece[0], l_piece.size());
        l_read.append(l_piece, 0, static_cast<std::size_t>(l_count));
    }
    check(l_read == l_removed);

    ordwel::buffer l_written;
    ordwel::stream::buf l_sink(l_written);
    ordwel::stream::ep_insert_wr l_writer(l_sink);
    for (std::size_t l_at = 0; l_at < a_data.size(); l_at += l_piece.size()) {
        l_writer.write(a_data.data() + l_at, std::min(l_piece.size(), a_data.size() - l_at));
    }
    l_writer.finish();
    check(std::string(l_written.begin(), l_written.end()) == l_inserted);
}

// The model's outcome for one code: 'v' with the code number, 'u' or 'o'.
char model_code(std::vector<bool> const &a_bits, std::size_t &a_at, std::uint64_t &a_code)
{
    unsigned l_zeros = 0;
    for (;; ++l_zeros) {
        if (a_at == a_bits.size()) {
            return 'u';
        }
        if (a_bits[a_at++]) {
            break;
        }
        if (l_zeros == 32) {
            return 'o';
        }
    }
    if (a_bits.size() - a_at < l_zeros) {
        return 'u';
    }
    a_code = 0;
    for (unsigned l_bit = 0; l_bit < l_zeros; ++l_bit) {
        a_code = (a_code << 1) | (a_bits[a_at++] ? 1 : 0);
    }
    a_code += (std::uint64_t(1) << l_zeros) - 1;
    return 'v';
}

void check_exp_golomb(std::string const &a_data, unsigned a_choice)
{
    std::vector<bool> l_bits;
    for (char const l_char : a_data) {
        for (int l_bit = 7; l_bit >= 0; --l_bit) {
            l_bits.push_back(((static_cast<unsigned char>(l_char) >> l_bit) & 1) != 0);
        }
    }
    source l_source(a_data, 1 + a_choice % 13);
    ordwel::bitstream::rd const l_reader(l_source, 4 + a_choice % 9);
    std::size_t l_at = 0;
    for (bool l_signed = false;; l_signed = !l_signed) {
        std::uint64_t l_code = 0;
        char l_outcome = model_code(l_bits, l_at, l_code);
        if (l_outcome == 'v' && (l_signed ? l_code > (std::uint64_t(1) << 32) || l_code == (std::uint64_t(1) << 32) - 1
                                          : l_code > 0xffffffffU)) {
            l_outcome = 'o';
        }
        try {
            // Read first: the check must not skip the read.
            if (l_signed) {
                std::int64_t const l_value = ordwel::bitstream::read_se(l_reader);
                check(l_outcome == 'v' &&
                      l_value == ((l_code & 1) != 0 ? std::int64_t((l_code + 1) / 2) : -std::int64_t(l_code / 2)));
            } else {
                std::uint64_t const l_value = ordwel::bitstream::read_ue(l_reader);
                check(l_outcome == 'v' && l_value == l_code);
            }
        } catch (ordwel::es::uflow const &) {
            check(l_outcome == 'u');
            return;
        } catch (ordwel::es::oflow const &) {
            check(l_outcome == 'o');
            return;
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size == 0 || a_size > 65536) {
        return 0;
    }
    std::string const l_data(reinterpret_cast<char const *>(a_data) + 1, a_size - 1);
    check_emulation(l_data, a_data[0]);
    check_exp_golomb(l_data, a_data[0]);
    return 0;
}
