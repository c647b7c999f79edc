// SPDX-License-Identifier: MIT
#include <ordwel/timecode.h>

#include <cctype>
#include <climits>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "core/arith.h"
#include "diag/raise.h"

namespace ordwel {

using arith::quotient;
using arith::remainder;

namespace {

using u64 = unsigned long long;

// ---------------------------------------------------------------------------------------------
// Reading numbers and words the way the C library's scanners do, without their limits: a number
// that does not fit in an int is clamped to the int range, and a word has no length limit.

class text_scanner {
public:
    explicit text_scanner(char const *a_text) : m_at(a_text) {}

    void skip_space()
    {
        while (*m_at != '\0' && std::isspace(static_cast<unsigned char>(*m_at)) != 0) {
            ++m_at;
        }
    }

    bool at_end() const { return *m_at == '\0'; }

    // %d: blanks, an optional sign and at least one digit.
    bool read_int(int &a_value)
    {
        skip_space();
        return read_digits(a_value);
    }

    // atoi: as %d, and 0 where no number stands.
    int read_atoi()
    {
        int l_value = 0;
        skip_space();
        return read_digits(l_value) ? l_value : 0;
    }

    // An ordinary character of a scan format: the next character must be it.
    bool read_literal(char a_char)
    {
        if (*m_at != a_char || a_char == '\0') {
            return false;
        }
        ++m_at;
        return true;
    }

    // %c: any one character, blanks included.
    bool read_any()
    {
        if (at_end()) {
            return false;
        }
        ++m_at;
        return true;
    }

    // %s: blanks, then a run of non-blank characters.
    bool read_word(std::string &a_word)
    {
        skip_space();
        char const *const l_start = m_at;
        while (*m_at != '\0' && std::isspace(static_cast<unsigned char>(*m_at)) == 0) {
            ++m_at;
        }
        a_word.assign(l_start, m_at);
        return m_at != l_start;
    }

private:
    bool read_digits(int &a_value)
    {
        char const *l_at = m_at;
        bool l_negative = false;
        if (*l_at == '+' || *l_at == '-') {
            l_negative = *l_at == '-';
            ++l_at;
        }
        if (std::isdigit(static_cast<unsigned char>(*l_at)) == 0) {
            return false;
        }
        long long l_magnitude = 0;
        for (; std::isdigit(static_cast<unsigned char>(*l_at)) != 0; ++l_at) {
            if (l_magnitude <= LLONG_MAX / 100) {
                l_magnitude = l_magnitude * 10 + (*l_at - '0');
            }
        }
        long long const l_value = l_negative ? -l_magnitude : l_magnitude;
        a_value = l_value > INT_MAX ? INT_MAX : (l_value < INT_MIN ? INT_MIN : static_cast<int>(l_value));
        m_at = l_at;
        return true;
    }

    char const *m_at;
};

// The fields of "%d:%d:%d%*c%d" into a_numbers; the count of numbers found.
int scan_fields(text_scanner &a_scanner, int (&a_numbers)[4])
{
    int l_found = 0;
    if (!a_scanner.read_int(a_numbers[0])) {
        return l_found;
    }
    ++l_found;
    if (!a_scanner.read_literal(':') || !a_scanner.read_int(a_numbers[1])) {
        return l_found;
    }
    ++l_found;
    if (!a_scanner.read_literal(':') || !a_scanner.read_int(a_numbers[2])) {
        return l_found;
    }
    ++l_found;
    if (!a_scanner.read_any() || !a_scanner.read_int(a_numbers[3])) {
        return l_found;
    }
    return ++l_found;
}

// ---------------------------------------------------------------------------------------------
// Drop-frame counting at 29.97 and 59.94. With M positions in a nominal minute and k labels
// skipped at the start of every minute not divisible by 10, g(x) = x - x/10 counts the minutes
// 1..x that skip. A position p then stands for the frame count p - k*g(p/M); the labels a counter
// shows are those at or after offset k in a skipping minute.

struct dropframe {
    u64 k;
    u64 minute; // M

    static u64 skipping(u64 a_minutes) { return a_minutes - a_minutes / 10; }

    u64 count_of(u64 a_position) const { return a_position - k * skipping(a_position / minute); }

    // The shown label whose frame count is a_count.
    u64 label_of(u64 a_count) const
    {
        u64 const l_block = 10 * minute - 9 * k;
        u64 const l_blocks = a_count / l_block;
        u64 const l_rest = a_count % l_block;
        if (l_rest < minute) {
            return l_blocks * 10 * minute + l_rest;
        }
        u64 const l_into = l_rest - minute;
        return l_blocks * 10 * minute + (1 + l_into / (minute - k)) * minute + k + l_into % (minute - k);
    }

    // What increment gives, in 64 bits: every nominal minute boundary crossed into a skipping
    // minute adds k.
    u64 stepped(u64 a_position, u64 a_frames) const
    {
        u64 const l_target = a_position + a_frames;
        return l_target + k * (skipping(l_target / minute) - skipping(a_position / minute));
    }
};

unsigned int dropframe_labels(timecode::mode_type a_mode)
{
    if (a_mode == timecode::mode_29_97) {
        return 2;
    }
    if (a_mode == timecode::mode_59_94) {
        return 4;
    }
    return 0;
}

// The labels skipped at the first frame of a minute at 23.976: 0 at minutes 0 and 30, 1 at 15 and
// 45, 2 at the other odd minutes and 1 at the other even ones.
unsigned int skipped_at_23_976(unsigned int a_minute)
{
    return (a_minute % 2 != 0 ? 2u : 1u) - (a_minute % 15 == 0 ? 1u : 0u);
}

struct rate_row {
    int hundredths;
    timecode::mode_type mode;
};

rate_row const k_rates[] = {
    {300, timecode::mode_30},  {400, timecode::mode_24},      {500, timecode::mode_25},
    {600, timecode::mode_24},  {625, timecode::mode_25},      {800, timecode::mode_24},
    {1000, timecode::mode_30}, {1199, timecode::mode_23_976}, {1200, timecode::mode_24},
    {1250, timecode::mode_25}, {1500, timecode::mode_30},     {2398, timecode::mode_23_976},
    {2400, timecode::mode_24}, {2500, timecode::mode_25},     {2997, timecode::mode_29_97},
    {3000, timecode::mode_30}, {5000, timecode::mode_50},     {5994, timecode::mode_59_94},
    {6000, timecode::mode_60},
};

unsigned int base_of(timecode::mode_type a_mode)
{
    return static_cast<unsigned int>(a_mode) & 0xFFu;
}

// The four display fields from one pass of divisions (each field reads 0 at a base of 0).
struct label_fields {
    unsigned int hour, minute, second, frame;
};

label_fields fields_of(unsigned int a_position, unsigned int a_base)
{
    if (a_base == 0) {
        return label_fields{0, 0, 0, 0};
    }
    unsigned int const l_seconds = a_position / a_base;
    unsigned int const l_minutes = l_seconds / 60u;
    return label_fields{l_minutes / 60u, l_minutes % 60u, l_seconds % 60u, a_position % a_base};
}

// "%02u" into a_out: at least two digits.
char *put_two_digits(char *a_out, unsigned int a_value)
{
    char l_digits[10];
    int l_count = 0;
    do {
        l_digits[l_count++] = static_cast<char>('0' + a_value % 10u);
        a_value /= 10u;
    } while (a_value != 0);
    if (l_count == 1) {
        *a_out++ = '0';
    }
    while (l_count > 0) {
        *a_out++ = l_digits[--l_count];
    }
    return a_out;
}

} // namespace

// ---------------------------------------------------------------------------------------------

timecode::timecode(mode_type a_mode) : fraction<unsigned int>(0, base_of(a_mode)), m_mode(a_mode), m_factor(1)
{
}

timecode::timecode(mode_type a_mode, unsigned int a_hour, unsigned int a_minute, unsigned int a_second,
                   unsigned int a_frame, unsigned int a_factor)
    : fraction<unsigned int>(0, base_of(a_mode)), m_mode(a_mode), m_factor(a_factor)
{
    set(a_hour, a_minute, a_second, a_frame);
}

timecode::timecode(std::string const &a_text) : fraction<unsigned int>(0, 1), m_mode(mode_invalid), m_factor(1)
{
    int l_numbers[4] = {0, 0, 0, 0};
    text_scanner l_scanner(a_text.c_str());
    int l_found = scan_fields(l_scanner, l_numbers);
    std::string l_mode;
    if (l_found == 4 && l_scanner.read_literal('@') && l_scanner.read_word(l_mode)) {
        ++l_found;
    }
    if (l_found != 4 && l_found != 5) {
        diag::raise_format<es::arg>(ORDWEL_HERE, "Invalid timecode '%s'", a_text.c_str());
    }
    if (l_found == 5) {
        m_mode = mode_from_string(l_mode);
        m_denom = base_of(m_mode);
    }
    set(static_cast<unsigned int>(l_numbers[0]), static_cast<unsigned int>(l_numbers[1]),
        static_cast<unsigned int>(l_numbers[2]), static_cast<unsigned int>(l_numbers[3]));
}

timecode::timecode(float a_rate, std::string const &a_text)
    : fraction<unsigned int>(0, 1), m_mode(mode_invalid), m_factor(1)
{
    m_mode = mode_from_string(string_with_format("%-9.3f", static_cast<double>(a_rate)));
    m_denom = base_of(m_mode);
    int l_numbers[4] = {0, 0, 0, 0};
    text_scanner l_scanner(a_text.c_str());
    scan_fields(l_scanner, l_numbers);
    set(static_cast<unsigned int>(l_numbers[0]), static_cast<unsigned int>(l_numbers[1]),
        static_cast<unsigned int>(l_numbers[2]), static_cast<unsigned int>(l_numbers[3]));
}

unsigned int timecode::hour() const
{
    return quotient(m_numer, m_denom * 3600u);
}

unsigned int timecode::minute() const
{
    return quotient(m_numer, m_denom * 60u) % 60u;
}

unsigned int timecode::second() const
{
    return quotient(m_numer, m_denom) % 60u;
}

unsigned int timecode::frame() const
{
    return m_denom == 0 ? 0u : m_numer % m_denom;
}

void timecode::hour(unsigned int a_hour)
{
    m_numer += (a_hour - hour()) * m_denom * 3600u;
}

void timecode::minute(unsigned int a_minute)
{
    m_numer += (a_minute - minute()) * m_denom * 60u;
}

void timecode::second(unsigned int a_second)
{
    m_numer += (a_second - second()) * m_denom;
}

void timecode::frame(unsigned int a_frame)
{
    m_numer += a_frame - frame();
}

void timecode::set(unsigned int a_hour, unsigned int a_minute, unsigned int a_second, unsigned int a_frame)
{
    hour(a_hour);
    minute(a_minute);
    second(a_second);
    frame(a_frame);
}

void timecode::set(std::string const &a_text)
{
    if (a_text.size() < 9) {
        throw std::out_of_range("invalid string position");
    }
    // Each number is read from its own substring, so a long run of digits stops at its column's
    // length.
    std::size_t const k_starts[4] = {0, 3, 6, 9};
    std::size_t const k_lengths[4] = {2, 5, 8, 11};
    int l_numbers[4] = {0, 0, 0, 0};
    for (int l_index = 0; l_index < 4; ++l_index) {
        std::string const l_part = a_text.substr(k_starts[l_index], k_lengths[l_index]);
        text_scanner l_scanner(l_part.c_str());
        l_numbers[l_index] = l_scanner.read_atoi();
    }
    set(static_cast<unsigned int>(l_numbers[0]), static_cast<unsigned int>(l_numbers[1]),
        static_cast<unsigned int>(l_numbers[2]), static_cast<unsigned int>(l_numbers[3]));
}

unsigned int timecode::total_frames() const
{
    unsigned int const l_k = dropframe_labels(m_mode);
    if (l_k == 0) {
        return m_numer;
    }
    unsigned int const l_minutes = hour() * 60u + minute();
    return m_numer - l_k * (l_minutes - l_minutes / 10u);
}

void timecode::total_frames(unsigned int a_frames)
{
    unsigned int const l_k = dropframe_labels(m_mode);
    if (l_k == 0) {
        m_numer = a_frames;
        return;
    }
    double const l_per_minute = l_k == 2 ? 1798.2017982017983 : 3596.4035964035966;
    unsigned int const l_minutes = static_cast<unsigned int>(static_cast<double>(a_frames) / l_per_minute);
    m_numer = a_frames + l_k * (l_minutes - l_minutes / 10u);
}

bool timecode::operator==(timecode const &a_other) const
{
    return m_mode == a_other.m_mode && m_numer == a_other.m_numer;
}

bool timecode::operator!=(timecode const &a_other) const
{
    return !(*this == a_other);
}

bool timecode::operator<(timecode const &a_other) const
{
    return m_numer < a_other.m_numer;
}

bool timecode::operator<=(timecode const &a_other) const
{
    return m_numer <= a_other.m_numer;
}

bool timecode::operator>(timecode const &a_other) const
{
    return m_numer > a_other.m_numer;
}

bool timecode::operator>=(timecode const &a_other) const
{
    return m_numer >= a_other.m_numer;
}

bool timecode::is_consecutive(timecode const &a_other) const
{
    if (m_numer >= a_other.m_numer) {
        return *this == a_other + 1;
    }
    return *this + 1 == a_other;
}

void timecode::increment(unsigned int a_frames)
{
    unsigned int const l_k = dropframe_labels(m_mode);
    if (l_k != 0) {
        unsigned int const l_minute = m_denom * 60u;
        unsigned int const l_crossed = quotient(a_frames + remainder(m_numer, l_minute), l_minute);
        if (l_crossed == 0) {
            // Within the minute (nearly every step): nothing to skip, and no minute to work out.
            m_numer += a_frames;
            return;
        }
        unsigned int const l_units = minute() % 10u;
        m_numer += a_frames + l_k * (l_crossed - (l_units + l_crossed) / 10u);
        return;
    }
    if (m_mode == mode_23_976 && second() == 0 && frame() == 0) {
        m_numer += a_frames + skipped_at_23_976(minute());
        return;
    }
    m_numer += a_frames;
}

// The inverse of increment: the position from which increment(a_frames) leads to the present one.
void timecode::decrement(unsigned int a_frames)
{
    unsigned int const l_k = dropframe_labels(m_mode);
    u64 const l_minute = u64(m_denom) * 60u;
    if (l_k != 0 && l_minute > l_k) {
        dropframe const l_drop{l_k, l_minute};
        long long const l_back = static_cast<long long>(l_drop.count_of(m_numer)) - static_cast<long long>(a_frames);
        // Steps that increment makes exactly (all up to a minute less the skipped labels) are
        // undone by counting back.
        if (l_back >= 0) {
            u64 const l_label = l_drop.label_of(static_cast<u64>(l_back));
            if (l_drop.stepped(l_label, a_frames) == m_numer) {
                m_numer = static_cast<unsigned int>(l_label);
                return;
            }
        }
        // A longer step counts the minutes it crosses nominally and lands further on than the true
        // count, by less than k labels per minute crossed; find the shown label it came from.
        // stepped() rises strictly over shown labels, so a binary search finds it.
        long long const l_reach = static_cast<long long>(l_k * (a_frames / l_minute + 2) + 1);
        u64 l_low = static_cast<u64>(l_back > 0 ? l_back : 0);
        u64 l_high = static_cast<u64>(l_back + l_reach > 0 ? l_back + l_reach : 0);
        while (l_low < l_high) {
            u64 const l_middle = l_low + (l_high - l_low) / 2;
            if (l_drop.stepped(l_drop.label_of(l_middle), a_frames) < m_numer) {
                l_low = l_middle + 1;
            } else {
                l_high = l_middle;
            }
        }
        u64 const l_found = l_drop.label_of(l_low);
        if (l_drop.stepped(l_found, a_frames) == m_numer) {
            m_numer = static_cast<unsigned int>(l_found);
        } else if (l_back >= 0) {
            m_numer = static_cast<unsigned int>(l_drop.label_of(static_cast<u64>(l_back)));
        } else {
            // Before 00:00:00;00 the frame count wraps in 32 bits, as the plain modes' position does.
            m_numer = static_cast<unsigned int>(l_drop.label_of(static_cast<unsigned int>(l_back)));
        }
        return;
    }
    if (m_mode == mode_23_976) {
        // A step from the first frame of a minute went further by the labels skipped there; prefer
        // that start, as the labels it skipped are never shown.
        for (unsigned int l_skip = 2; l_skip >= 1; --l_skip) {
            timecode l_start = *this;
            l_start.m_numer = m_numer - a_frames - l_skip;
            if (l_start.second() == 0 && l_start.frame() == 0 && skipped_at_23_976(l_start.minute()) == l_skip &&
                l_start.m_numer <= m_numer) {
                m_numer = l_start.m_numer;
                return;
            }
        }
    }
    m_numer -= a_frames;
}

timecode &timecode::operator++()
{
    increment(m_factor);
    return *this;
}

timecode timecode::operator++(int)
{
    timecode const l_before = *this;
    increment(m_factor);
    return l_before;
}

timecode &timecode::operator--()
{
    decrement(m_factor);
    return *this;
}

timecode timecode::operator--(int)
{
    timecode const l_before = *this;
    decrement(m_factor);
    return l_before;
}

timecode timecode::operator+(unsigned int a_steps) const
{
    timecode l_result = *this;
    l_result.increment(m_factor * a_steps);
    return l_result;
}

timecode &timecode::operator+=(unsigned int a_steps)
{
    increment(m_factor * a_steps);
    return *this;
}

timecode &timecode::operator-=(unsigned int a_steps)
{
    decrement(m_factor * a_steps);
    return *this;
}

timestamp timecode::as_timestamp() const
{
    return timestamp(m_numer, m_denom);
}

unsigned int timecode::as_int(unsigned int a_res) const
{
    return quotient(m_numer * a_res, m_denom);
}

unsigned int timecode::as_rounded_int(unsigned int a_res) const
{
    return quotient(m_numer * a_res + m_denom / 2u, m_denom);
}

float timecode::as_float(float a_scale) const
{
    return static_cast<float>(m_numer) / static_cast<float>(m_denom) * a_scale;
}

// Each field is cut to its byte before packing, so a field out of range never spills into the
// field beside it.
unsigned int timecode::as_quicktime_tmcd() const
{
    unsigned int const l_word =
        (hour() & 0xFFu) << 24 | (minute() & 0xFFu) << 16 | (second() & 0xFFu) << 8 | (frame() & 0xFFu);
    return is_dropframe() ? l_word | 0x80u : l_word;
}

bool timecode::is_dropframe() const
{
    return m_mode == mode_23_976 || m_mode == mode_29_97 || m_mode == mode_59_94;
}

bool timecode::is_valid() const
{
    return m_mode != mode_invalid;
}

char const *timecode::mode_c_str(mode_type a_mode)
{
    switch (a_mode) {
    case mode_24:
        return "24";
    case mode_25:
        return "25";
    case mode_30:
        return "30";
    case mode_50:
        return "50";
    case mode_60:
        return "60";
    case mode_23_976:
        return "23.976";
    case mode_29_97:
        return "29.97";
    case mode_59_94:
        return "59.54";
    case mode_invalid:
        break;
    }
    return "invalid";
}

timecode::mode_type timecode::mode_from_string(std::string const &a_text)
{
    struct row {
        char const *whole;
        char const *prefix;
        mode_type mode;
    } const k_rows[] = {
        {"24", "24.0", mode_24}, {nullptr, "23.976", mode_23_976}, {"25", "25.0", mode_25},
        {"30", "30.0", mode_30}, {nullptr, "29.97", mode_29_97},   {"50", "50.0", mode_50},
        {"60", "60.0", mode_60}, {nullptr, "59.54", mode_59_94},
    };
    for (row const &l_row : k_rows) {
        if ((l_row.whole != nullptr && a_text == l_row.whole) || starts_with(l_row.prefix, a_text)) {
            return l_row.mode;
        }
    }
    return mode_invalid;
}

timecode timecode_with_timestamp(timecode::mode_type a_mode, timestamp const &a_timestamp, unsigned int a_factor)
{
    timecode l_result(a_mode);
    u64 const l_base = l_result.base();
    u64 const l_time = a_timestamp.time();
    u64 const l_resolution = a_timestamp.resolution();
    // (t / r)·base + (base·(t mod r)) / r is (t·base) / r whenever t·base fits: one division
    // instead of two.
    u64 const l_frames = l_base != 0 && l_time <= ~u64(0) / l_base
                             ? quotient(l_time * l_base, l_resolution)
                             : quotient(l_time, l_resolution) * l_base +
                                   quotient(u64(l_base * remainder(l_time, l_resolution)), l_resolution);
    l_result.total_frames(static_cast<unsigned int>(l_frames));
    l_result.factor(a_factor);
    return l_result;
}

timecode timecode_with_framerate(double a_rate, timestamp const &a_timestamp, unsigned int a_factor)
{
    timecode::mode_type l_mode = timecode::mode_invalid;
    double const l_scaled = std::floor((a_rate + 0.005) * 100.0);
    // A rate outside the table's reach (negative, huge or NaN) has no row.
    if (l_scaled >= 0.0 && l_scaled <= 1000000.0) {
        int const l_hundredths = static_cast<int>(l_scaled);
        for (rate_row const &l_row : k_rates) {
            if (l_row.hundredths == l_hundredths) {
                l_mode = l_row.mode;
                break;
            }
        }
    }
    return timecode_with_timestamp(l_mode, a_timestamp, a_factor);
}

timecode timecode_with_quicktime_tmcd(timecode::mode_type a_mode, unsigned int a_word, unsigned int a_factor)
{
    timecode l_result(a_mode);
    l_result.factor(a_factor);
    l_result.set(a_word >> 24 & 0xFFu, a_word >> 16 & 0xFFu, a_word >> 8 & 0xFFu, a_word & 0x7Fu);
    return l_result;
}

std::string string_with_timecode(timecode const &a_timecode, bool a_flag)
{
    if (a_timecode.mode() == timecode::mode_invalid) {
        return std::string();
    }
    char const l_separator = a_timecode.is_dropframe() ? (a_flag ? ';' : ',') : (a_flag ? ':' : '.');
    // "%02u:%02u:%02u%c%02u", written directly: this is called once per frame in a player's or
    // logger's loop, and the printf machinery costs ten times the rest.
    label_fields const l_fields = fields_of(a_timecode.numer(), a_timecode.base());
    char l_text[4 * 10 + 4];
    char *l_out = put_two_digits(l_text, l_fields.hour);
    *l_out++ = ':';
    l_out = put_two_digits(l_out, l_fields.minute);
    *l_out++ = ':';
    l_out = put_two_digits(l_out, l_fields.second);
    *l_out++ = l_separator;
    l_out = put_two_digits(l_out, l_fields.frame);
    return std::string(l_text, l_out);
}

} // namespace ordwel
