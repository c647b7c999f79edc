// SPDX-License-Identifier: MIT
#include "toolbox.h"

#include <cinttypes>
#include <climits>

#include <ordwel/timecode.h>

#include "options.h"
#include "tool_io.h"

namespace ordwel_toolbox {

namespace {

using ordwel::timecode;
using ordwel::uint64;

// A frame rate: its mode, the name the toolbox prints, the other names it reads, and the exact
// rate as a fraction, which converting in real time needs.
struct rate {
    timecode::mode_type m_mode;
    char const *m_name;
    char const *m_aliases[3];
    uint64 m_numerator;
    uint64 m_denominator;
    // Frames a second in the label, and the labels that drop-frame skips at each minute but the tenth.
    unsigned int m_base;
    unsigned int m_dropped;
};

rate const k_rates[] = {
    {timecode::mode_23_976, "23.976", {"23.98", "24000/1001", nullptr}, 24000, 1001, 24, 0},
    {timecode::mode_24, "24", {"24/1", nullptr, nullptr}, 24, 1, 24, 0},
    {timecode::mode_25, "25", {"25/1", nullptr, nullptr}, 25, 1, 25, 0},
    {timecode::mode_29_97, "29.97", {"30000/1001", nullptr, nullptr}, 30000, 1001, 30, 2},
    {timecode::mode_30, "30", {"30/1", nullptr, nullptr}, 30, 1, 30, 0},
    {timecode::mode_50, "50", {"50/1", nullptr, nullptr}, 50, 1, 50, 0},
    {timecode::mode_59_94, "59.94", {"60000/1001", "59.54", nullptr}, 60000, 1001, 60, 4},
    {timecode::mode_60, "60", {"60/1", nullptr, nullptr}, 60, 1, 60, 0},
};

rate const *rate_of_mode(timecode::mode_type a_mode)
{
    for (rate const &l_rate : k_rates) {
        if (l_rate.m_mode == a_mode) {
            return &l_rate;
        }
    }
    return nullptr;
}

// The rate of a name ("29.97", "30000/1001", "25.0" ...); nullptr after a usage error line.
rate const *rate_with_text(std::string const &a_text)
{
    for (rate const &l_rate : k_rates) {
        if (a_text == l_rate.m_name) {
            return &l_rate;
        }
        for (char const *l_alias : l_rate.m_aliases) {
            if (l_alias != nullptr && a_text == l_alias) {
                return &l_rate;
            }
        }
    }
    if (rate const *const l_rate = rate_of_mode(timecode::mode_from_string(a_text))) {
        return l_rate;
    }
    bad_value("no such frame rate `" + a_text + "' (23.976, 24, 25, 29.97, 30, 50, 59.94, 60)");
    return nullptr;
}

// A timecode and the rate it is at.
struct reading {
    timecode m_timecode;
    rate const *m_rate;
};

// The dropped labels are frames 0 to m_dropped - 1 of second 0 of every minute but the tenth.
bool is_dropped_label(rate const &a_rate, unsigned int a_minute, unsigned int a_second, unsigned int a_frame)
{
    return a_rate.m_dropped > 0 && a_second == 0 && a_minute % 10 != 0 && a_frame < a_rate.m_dropped;
}

bool read_fields(std::string const &a_text, unsigned int (&a_fields)[4])
{
    std::size_t l_at = 0;
    for (int l_field = 0; l_field < 4; ++l_field) {
        if (l_field > 0) {
            char const l_separator = l_at < a_text.size() ? a_text[l_at] : '\0';
            bool const l_frame = l_field == 3;
            if (l_separator != ':' && !(l_frame && (l_separator == ';' || l_separator == '.' || l_separator == ','))) {
                return false;
            }
            ++l_at;
        }
        std::size_t const l_start = l_at;
        unsigned long l_value = 0;
        while (l_at < a_text.size() && a_text[l_at] >= '0' && a_text[l_at] <= '9' && l_at - l_start < 6) {
            l_value = l_value * 10 + static_cast<unsigned long>(a_text[l_at] - '0');
            ++l_at;
        }
        if (l_at == l_start) {
            return false;
        }
        a_fields[l_field] = static_cast<unsigned int>(l_value);
    }
    return l_at == a_text.size();
}

// The first field out of range, described; empty when every field is in range.
std::string range_error(rate const &a_rate, unsigned int const (&a_fields)[4])
{
    char l_text[160] = "";
    if (a_fields[0] > 23) {
        std::snprintf(l_text, sizeof l_text, "the hour %u is beyond 23", a_fields[0]);
    } else if (a_fields[1] > 59) {
        std::snprintf(l_text, sizeof l_text, "the minute %u is beyond 59", a_fields[1]);
    } else if (a_fields[2] > 59) {
        std::snprintf(l_text, sizeof l_text, "the second %u is beyond 59", a_fields[2]);
    } else if (a_fields[3] >= a_rate.m_base) {
        std::snprintf(l_text, sizeof l_text, "the frame %u is beyond %u at %s", a_fields[3], a_rate.m_base - 1,
                      a_rate.m_name);
    } else if (is_dropped_label(a_rate, a_fields[1], a_fields[2], a_fields[3])) {
        std::snprintf(l_text, sizeof l_text, "drop-frame skips frames 0 to %u of this minute at %s",
                      a_rate.m_dropped - 1, a_rate.m_name);
    }
    return l_text;
}

// "hh:mm:ss:ff@rate", or with a_frames "count@rate"; false after a usage error line.
bool read_timecode(std::string const &a_text, bool a_frames, bool a_lenient, reading &a_reading)
{
    std::string::size_type const l_at = a_text.rfind('@');
    if (l_at == std::string::npos) {
        bad_value("timecode `" + a_text + "' has no frame rate (" + (a_frames ? "count@rate" : "hh:mm:ss:ff@rate") +
                  ")");
        return false;
    }
    rate const *const l_rate = rate_with_text(a_text.substr(l_at + 1));
    if (l_rate == nullptr) {
        return false;
    }
    std::string const l_label = a_text.substr(0, l_at);
    a_reading.m_rate = l_rate;
    a_reading.m_timecode = timecode(l_rate->m_mode);
    if (a_frames) {
        uint64 l_count = 0;
        if (!unsigned_with_text(l_label, l_count) || l_count > UINT_MAX) {
            bad_value("not a count of frames `" + l_label + "'");
            return false;
        }
        a_reading.m_timecode.total_frames(static_cast<unsigned int>(l_count));
        return true;
    }
    unsigned int l_fields[4] = {0, 0, 0, 0};
    if (!read_fields(l_label, l_fields)) {
        bad_value("invalid timecode `" + a_text + "' (hh:mm:ss:ff@rate)");
        return false;
    }
    std::string const l_error = a_lenient ? std::string() : range_error(*l_rate, l_fields);
    if (!l_error.empty()) {
        bad_value("timecode `" + a_text + "': " + l_error + "; --lenient reads it anyway");
        return false;
    }
    a_reading.m_timecode = timecode(l_rate->m_mode, l_fields[0], l_fields[1], l_fields[2], l_fields[3], 1);
    return true;
}

// The count of frames at a_to that lasts as long as a_frames at a_from, to the nearest frame.
uint64 frames_in_real_time(uint64 a_frames, rate const &a_from, rate const &a_to)
{
    uint64 const l_numerator = a_frames * a_from.m_denominator * a_to.m_numerator;
    uint64 const l_denominator = a_from.m_numerator * a_to.m_denominator;
    return (l_numerator + l_denominator / 2) / l_denominator;
}

int convert(reading &a_reading, std::string const &a_rate)
{
    rate const *const l_rate = rate_with_text(a_rate);
    if (l_rate == nullptr) {
        return k_exit_usage;
    }
    uint64 const l_frames = frames_in_real_time(a_reading.m_timecode.total_frames(), *a_reading.m_rate, *l_rate);
    if (l_frames > UINT_MAX) {
        return failure("at " + std::string(l_rate->m_name) + " the timecode is beyond the last one");
    }
    a_reading.m_rate = l_rate;
    a_reading.m_timecode = timecode(l_rate->m_mode);
    a_reading.m_timecode.total_frames(static_cast<unsigned int>(l_frames));
    return k_exit_ok;
}

// The same hours, minutes and seconds, the frame scaled to the new rate; a label that drop-frame
// skips moves on to the first that it keeps.
bool relabel(reading &a_reading, std::string const &a_rate)
{
    rate const *const l_rate = rate_with_text(a_rate);
    if (l_rate == nullptr) {
        return false;
    }
    timecode const &l_old = a_reading.m_timecode;
    unsigned int l_frame = static_cast<unsigned int>(uint64(l_old.frame()) * l_rate->m_base / a_reading.m_rate->m_base);
    if (is_dropped_label(*l_rate, l_old.minute(), l_old.second(), l_frame)) {
        l_frame = l_rate->m_dropped;
    }
    a_reading.m_timecode = timecode(l_rate->m_mode, l_old.hour(), l_old.minute(), l_old.second(), l_frame, 1);
    a_reading.m_rate = l_rate;
    return true;
}

// Steps by a number of frames; false after an error line (a usage error for a malformed count, a
// failure for a step that would leave the range of labels).
int step(reading &a_reading, std::string const &a_count)
{
    long long l_frames = 0;
    if (!signed_with_text(a_count, l_frames) || l_frames > UINT_MAX || l_frames < -static_cast<long long>(UINT_MAX)) {
        return bad_value("not a number of frames `" + a_count + "'");
    }
    long long const l_target = static_cast<long long>(a_reading.m_timecode.total_frames()) + l_frames;
    if (l_target < 0) {
        return failure("stepping " + a_count + " frames goes before 00:00:00:00");
    }
    if (l_frames >= 0) {
        a_reading.m_timecode += static_cast<unsigned int>(l_frames);
    } else {
        a_reading.m_timecode -= static_cast<unsigned int>(-l_frames);
    }
    if (static_cast<long long>(a_reading.m_timecode.total_frames()) != l_target) {
        return failure("stepping " + a_count + " frames goes beyond the last timecode");
    }
    return k_exit_ok;
}

std::string label_of(reading const &a_reading)
{
    return ordwel::string_with_timecode(a_reading.m_timecode, true) + "@" + a_reading.m_rate->m_name;
}

std::string seconds_of(uint64 a_frames, rate const &a_rate)
{
    char l_text[48];
    std::snprintf(l_text, sizeof l_text, "%.6f",
                  static_cast<double>(a_frames) * static_cast<double>(a_rate.m_denominator) /
                      static_cast<double>(a_rate.m_numerator));
    return l_text;
}

void print_reading(reading const &a_reading, command_input const &a_input)
{
    unsigned int const l_frames = a_reading.m_timecode.total_frames();
    char l_tmcd[16];
    std::snprintf(l_tmcd, sizeof l_tmcd, "0x%08x", a_reading.m_timecode.as_quicktime_tmcd());
    if (a_input.has(k_opt_json)) {
        std::printf("{\"timecode\": %s, \"rate\": %s, \"frames\": %u, \"seconds\": %s, \"tmcd\": \"%s\"}\n",
                    json_string(ordwel::string_with_timecode(a_reading.m_timecode, true)).c_str(),
                    json_string(a_reading.m_rate->m_name).c_str(), l_frames,
                    seconds_of(l_frames, *a_reading.m_rate).c_str(), l_tmcd);
        return;
    }
    std::printf("%s\n", label_of(a_reading).c_str());
    if (a_input.has(k_opt_total)) {
        std::printf("%u\n", l_frames);
    }
    if (a_input.has(k_opt_tmcd)) {
        std::printf("%s\n", l_tmcd);
    }
}

int print_difference(reading const &a_from, reading const &a_to, bool a_json)
{
    if (a_from.m_rate != a_to.m_rate) {
        return usage_error("the difference needs two timecodes at one rate (--convert one of them first)");
    }
    long long const l_frames = static_cast<long long>(a_to.m_timecode.total_frames()) -
                               static_cast<long long>(a_from.m_timecode.total_frames());
    uint64 const l_size = static_cast<uint64>(l_frames < 0 ? -l_frames : l_frames);
    std::string const l_seconds = (l_frames < 0 ? "-" : "") + seconds_of(l_size, *a_from.m_rate);
    if (a_json) {
        std::printf("{\"frames\": %lld, \"seconds\": %s}\n", l_frames, l_seconds.c_str());
    } else {
        std::printf("%lld frames, %s s\n", l_frames, l_seconds.c_str());
    }
    return k_exit_ok;
}

} // namespace

int run_timecode(command_input const &a_input)
{
    if (a_input.m_words.empty() || a_input.m_words.size() > 2) {
        return usage_error("timecode takes one timecode, or two for their difference");
    }
    bool const l_frames = a_input.has(k_opt_frames);
    bool const l_lenient = a_input.has(k_opt_lenient);
    std::vector<reading> l_readings(a_input.m_words.size());
    for (std::size_t l_index = 0; l_index < l_readings.size(); ++l_index) {
        if (!read_timecode(a_input.m_words[l_index], l_frames, l_lenient, l_readings[l_index])) {
            return k_exit_usage;
        }
    }
    if (l_readings.size() == 2) {
        return print_difference(l_readings[0], l_readings[1], a_input.has(k_opt_json));
    }
    reading &l_reading = l_readings.front();
    for (auto const &l_option : a_input.m_options) {
        int l_status = k_exit_ok;
        if (l_option.first == k_opt_convert) {
            l_status = convert(l_reading, l_option.second);
        } else if (l_option.first == k_opt_relabel || l_option.first == k_opt_mode) {
            l_status = relabel(l_reading, l_option.second) ? k_exit_ok : k_exit_usage;
        } else if (l_option.first == k_opt_add) {
            l_status = step(l_reading, l_option.second);
        }
        if (l_status != k_exit_ok) {
            return l_status;
        }
    }
    print_reading(l_reading, a_input);
    return k_exit_ok;
}

} // namespace ordwel_toolbox
