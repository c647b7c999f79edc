// SPDX-License-Identifier: MIT
#include <cstdio>

#include <ordwel/annexb.h>
#include <ordwel/bitstream.h>
#include <ordwel/emulation.h>
#include <ordwel/expgolomb.h>
#include <ordwel/rescale.h>
#include <ordwel/smpte.h>
#include <ordwel/stream.h>

int main()
{
    // An H.264 byte stream: an SEI whose payload carries an escape (00 00 03), then an IDR slice.
    unsigned char const h264[] = {0, 0, 0, 1, 0x06, 0x05, 0x00, 0x00, 0x03, 0x01, 0x80,   // SEI
                                  0, 0, 1, 0x65, 0x88, 0x84};                             // IDR slice
    ordwel::annexb::units units(h264, sizeof h264);
    for (ordwel::annexb::unit unit; units.next(unit);) {
        ordwel::buffer rbsp = ordwel::buffer_remove_emulation(unit.m_data, unit.m_size);
        std::printf("%u: %s, %u bytes, %u without escapes\n", unsigned(unit.m_offset),
                    ordwel::annexb::h264_type_name(ordwel::annexb::h264_type(unit.m_header)), unsigned(unit.m_size),
                    unsigned(rbsp.size()));   // "4: SEI, 7 bytes, 6 without escapes"
        if (ordwel::annexb::h264_type(unit.m_header) == 5) {   // the slice header's first fields
            ordwel::stream::mem in(rbsp.begin() + 1, rbsp.size() - 1);
            ordwel::bitstream::rd bits(in, 64);
            unsigned first_mb = ordwel::bitstream::read_ue(bits);
            unsigned slice_type = ordwel::bitstream::read_ue(bits);   // 7: an I slice
            std::printf("first_mb_in_slice %u, slice_type %u\n", first_mb, slice_type);
        }
    }
    // The SMPTE 12M time address of a drop-frame label, and a label that 29.97 skips.
    ordwel::timecode tc("00:09:59;29@29.97");
    std::printf("%08x %d\n", (unsigned)ordwel::smpte_word_with_timecode(tc),
                ordwel::smpte_label_exists(ordwel::timecode::mode_29_97, 0, 1, 0, 0));   // "69590900 0"
    // 90 kHz ticks to 48 kHz, exactly, rounded to the nearest (raises es::oflow if it can't fit).
    long long samples = ordwel::rescaled(270001, ordwel::fraction<unsigned long long>(48000, 90000),
                                         ordwel::rounding::nearest);
    std::printf("%lld\n", samples);                                            // 144001
}
