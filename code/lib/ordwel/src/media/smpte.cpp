// SPDX-License-Identifier: MIT
#include <ordwel/smpte.h>

#include <ordwel/es.h>

#include "diag/raise.h"

namespace ordwel {

namespace {

// What a mode means for its time address.
struct address_form {
    unsigned int m_base;    // frames in a nominal second
    unsigned int m_skipped; // labels skipped at the start of a minute not divisible by 10
    uint32 m_pair_bit;      // the frame-pair bit above 30 frames a second, else 0
};

uint32 const k_pair_bit_50 = 0x00000080u;
uint32 const k_pair_bit_60 = 0x00800000u;

// The form of a_mode; false for mode_invalid and values that are no mode.
bool form_of(timecode::mode_type a_mode, address_form &a_form)
{
    switch (a_mode) {
    case timecode::mode_24:
    case timecode::mode_23_976:
        a_form = address_form{24, 0, 0};
        return true;
    case timecode::mode_25:
        a_form = address_form{25, 0, 0};
        return true;
    case timecode::mode_30:
        a_form = address_form{30, 0, 0};
        return true;
    case timecode::mode_29_97:
        a_form = address_form{30, 2, 0};
        return true;
    case timecode::mode_50:
        a_form = address_form{50, 0, k_pair_bit_50};
        return true;
    case timecode::mode_60:
        a_form = address_form{60, 0, k_pair_bit_60};
        return true;
    case timecode::mode_59_94:
        a_form = address_form{60, 4, k_pair_bit_60};
        return true;
    case timecode::mode_invalid:
        break;
    }
    return false;
}

address_form form_or_raise(timecode::mode_type a_mode)
{
    address_form l_form{};
    if (!form_of(a_mode, l_form)) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "No SMPTE time address at mode %s", timecode::mode_c_str(a_mode));
    }
    return l_form;
}

bool is_skipped(address_form const &a_form, unsigned int a_minute, unsigned int a_second, unsigned int a_frame)
{
    return a_second == 0 && a_frame < a_form.m_skipped && a_minute % 10 != 0;
}

uint32 bcd_of(unsigned int a_value)
{
    return uint32(a_value / 10 << 4 | a_value % 10);
}

} // namespace

bool smpte_label_exists(timecode::mode_type a_mode, unsigned int a_hour, unsigned int a_minute, unsigned int a_second,
                        unsigned int a_frame)
{
    address_form l_form{};
    return form_of(a_mode, l_form) && a_hour < 24 && a_minute < 60 && a_second < 60 && a_frame < l_form.m_base &&
           !is_skipped(l_form, a_minute, a_second, a_frame);
}

uint32 smpte_word_with_timecode(timecode const &a_timecode, bool a_colour_frame)
{
    address_form const l_form = form_or_raise(a_timecode.mode());
    unsigned int const l_hour = a_timecode.hour() % 24;
    unsigned int const l_minute = a_timecode.minute();
    unsigned int const l_second = a_timecode.second();
    unsigned int l_frame = a_timecode.frame();
    if (is_skipped(l_form, l_minute, l_second, l_frame)) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "Timecode %02u:%02u:%02u;%02u is a label that mode %s skips", l_hour,
                                    l_minute, l_second, l_frame, timecode::mode_c_str(a_timecode.mode()));
    }
    uint32 l_word =
        (a_colour_frame ? smpte_colour_frame_flag : 0u) | (l_form.m_skipped != 0 ? smpte_drop_frame_flag : 0u);
    if (l_form.m_pair_bit != 0) {
        l_word |= (l_frame & 1u) != 0 ? l_form.m_pair_bit : 0u;
        l_frame /= 2;
    }
    return l_word | bcd_of(l_frame) << 24 | bcd_of(l_second) << 16 | bcd_of(l_minute) << 8 | bcd_of(l_hour);
}

timecode timecode_with_smpte_word(timecode::mode_type a_mode, uint32 a_word, unsigned int a_factor)
{
    address_form const l_form = form_or_raise(a_mode);
    char const *l_fault = nullptr;
    // Units in bits 0-3, tens above them in the field's remaining bits.
    auto const l_field = [&](unsigned int a_shift, uint32 a_tens_mask, unsigned int a_limit, char const *a_name) {
        unsigned int const l_units = a_word >> a_shift & 0xfu;
        unsigned int const l_value = (a_word >> (a_shift + 4) & a_tens_mask) * 10 + l_units;
        if (l_fault == nullptr && (l_units > 9 || l_value >= a_limit)) {
            l_fault = l_units > 9 ? "a digit above 9" : a_name;
        }
        return l_value;
    };
    bool const l_paired = l_form.m_pair_bit != 0;
    unsigned int const l_hour = l_field(0, 0x3u, 24, "hours above 23");
    unsigned int const l_minute = l_field(8, 0x7u, 60, "minutes above 59");
    unsigned int const l_second = l_field(16, 0x7u, 60, "seconds above 59");
    unsigned int l_frame =
        l_field(24, 0x3u, l_paired ? l_form.m_base / 2 : l_form.m_base, "a frame beyond the mode's base");
    if (l_paired) {
        l_frame = l_frame * 2 + ((a_word & l_form.m_pair_bit) != 0 ? 1u : 0u);
    }
    if (l_fault == nullptr && ((a_word & smpte_drop_frame_flag) != 0) != (l_form.m_skipped != 0)) {
        l_fault = "a drop-frame flag that does not match the mode";
    }
    if (l_fault == nullptr && is_skipped(l_form, l_minute, l_second, l_frame)) {
        l_fault = "a label that drop-frame counting skips";
    }
    if (l_fault != nullptr) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "Invalid SMPTE time address 0x%08x at mode %s: %s",
                                    static_cast<unsigned int>(a_word), timecode::mode_c_str(a_mode), l_fault);
    }
    return timecode(a_mode, l_hour, l_minute, l_second, l_frame, a_factor);
}

} // namespace ordwel
