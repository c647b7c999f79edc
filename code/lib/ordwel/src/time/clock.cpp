// SPDX-License-Identifier: MIT
#include <ordwel/clock.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "platform/clock.h"

namespace ordwel {

namespace {

// A double to unsigned int that never leaves the range: NaN and negatives give 0, values past the
// top give the top.
unsigned int saturated(double a_value)
{
    if (!(a_value >= 0.0)) {
        return 0;
    }
    if (a_value >= 4294967295.0) {
        return UINT_MAX;
    }
    return static_cast<unsigned int>(a_value);
}

std::time_t wall_clock()
{
    return std::time(nullptr);
}

} // namespace

egg_clock::egg_clock(unsigned int a_time) : m_active(false), m_ringing(false), m_start(0), m_time(a_time)
{
}

bool egg_clock::activate()
{
    if (m_time == 0) {
        return false;
    }
    m_active = true;
    m_start = time_in_seconds();
    return true;
}

void egg_clock::deactivate()
{
    m_active = false;
    m_ringing = false;
}

bool egg_clock::is_ringing() const
{
    if (m_ringing) {
        return true;
    }
    if (!m_active) {
        return false;
    }
    unsigned int const l_elapsed = time_in_seconds() - m_start;
    return l_elapsed > m_time;
}

void sleep_microseconds(unsigned int /*a_microseconds*/)
{
    es::unsupp::raise(ORDWEL_HERE, "Sleep microseconds not implemented!");
}

void sleep_milliseconds(unsigned int a_milliseconds)
{
    platform::clock_sleep_milliseconds(a_milliseconds);
}

void sleep_seconds(unsigned int a_seconds)
{
    platform::clock_sleep_milliseconds(a_seconds * 1000u);
}

void sleep_seconds(double a_seconds)
{
    platform::clock_sleep_milliseconds(saturated(a_seconds * 1000.0));
}

unsigned int time_in_seconds()
{
    return static_cast<unsigned int>(static_cast<unsigned long long>(wall_clock()));
}

unsigned int time_in_seconds(std::string const &a_text)
{
    int l_year = 0;
    int l_month = 0;
    int l_day = 0;
    int l_hour = 0;
    int l_minute = 0;
    int l_second = 0;
    int l_offset_hours = 0;
    int l_offset_minutes = 0;
    // Every field has a width of at most four characters, so no number can overflow.
    std::sscanf(a_text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%3d:%2d", &l_year, &l_month, &l_day, &l_hour, &l_minute,
                &l_second, &l_offset_hours, &l_offset_minutes);
    l_hour -= l_offset_hours;
    l_minute -= l_offset_hours < 0 ? -l_offset_minutes : l_offset_minutes;

    std::tm l_fields{};
    l_fields.tm_year = l_year - 1900;
    l_fields.tm_mon = l_month - 1;
    l_fields.tm_mday = l_day;
    l_fields.tm_hour = l_hour;
    l_fields.tm_min = l_minute;
    l_fields.tm_sec = l_second;
    l_fields.tm_isdst = -1;
    long long const l_local_text = static_cast<long long>(std::mktime(&l_fields));

    // The offset in force now: the present moment broken up both ways, each read back as local.
    std::time_t const l_now = wall_clock();
    std::tm l_local{};
    std::tm l_utc{};
    long long l_offset = 0;
    if (!platform::clock_localtime(l_now, &l_local).failed() && !platform::clock_gmtime(l_now, &l_utc).failed()) {
        l_offset = static_cast<long long>(std::mktime(&l_local)) - static_cast<long long>(std::mktime(&l_utc));
    }
    return static_cast<unsigned int>(static_cast<unsigned long long>(l_local_text + l_offset));
}

std::string time_string(unsigned int a_seconds)
{
    char l_text[32] = {};
    if (platform::clock_ctime(static_cast<std::time_t>(a_seconds), l_text).failed()) {
        return std::string();
    }
    // The text is cut at character 24, which drops the line end.
    void const *const l_end = std::memchr(l_text, '\0', 24);
    std::size_t const l_length =
        l_end != nullptr ? static_cast<std::size_t>(static_cast<char const *>(l_end) - l_text) : 24u;
    return std::string(l_text, l_length);
}

void time_get_date_variables(unsigned int *a_year, unsigned int *a_month, unsigned int *a_day, unsigned int *a_hour,
                             unsigned int *a_minute, unsigned int *a_second)
{
    std::tm l_fields{};
    platform::clock_localtime(wall_clock(), &l_fields);
    if (a_year != nullptr) {
        *a_year = static_cast<unsigned int>(l_fields.tm_year + 1900);
    }
    if (a_month != nullptr) {
        *a_month = static_cast<unsigned int>(l_fields.tm_mon + 1);
    }
    if (a_day != nullptr) {
        *a_day = static_cast<unsigned int>(l_fields.tm_mday);
    }
    if (a_hour != nullptr) {
        *a_hour = static_cast<unsigned int>(l_fields.tm_hour);
    }
    if (a_minute != nullptr) {
        *a_minute = static_cast<unsigned int>(l_fields.tm_min);
    }
    if (a_second != nullptr) {
        *a_second = static_cast<unsigned int>(l_fields.tm_sec);
    }
}

std::string get_strftime_output(char const *a_format, unsigned long long a_size)
{
    if (a_format == nullptr || a_size == 0) {
        return std::string();
    }
    std::tm l_fields{};
    platform::clock_localtime(wall_clock(), &l_fields);
    // strftime writes at most a bounded number of characters per character of the format, so
    // no buffer beyond that bound can be filled; a caller's huge size is not allocated.
    unsigned long long const l_bound = static_cast<unsigned long long>(std::strlen(a_format)) * 256u + 256u;
    std::vector<char> l_text(static_cast<std::size_t>(a_size < l_bound ? a_size : l_bound), '\0');
    std::size_t const l_length = std::strftime(l_text.data(), l_text.size(), a_format, &l_fields);
    return std::string(l_text.data(), l_length);
}

std::string seconds_to_HHMMSS_string(double a_seconds)
{
    double const l_seconds = a_seconds >= 0.0 ? a_seconds : 0.0;
    unsigned int const l_hours = saturated(l_seconds / 3600.0);
    double const l_rest = l_seconds - static_cast<double>(l_hours) * 3600.0;
    unsigned int const l_minutes = saturated(l_rest / 60.0);
    double const l_secs = l_rest - static_cast<double>(l_minutes) * 60.0;
    if (l_secs < 10.0) {
        return string_with_format("%02u:%02u:0%2.3f", l_hours, l_minutes, l_secs);
    }
    return string_with_format("%02u:%02u:%2.3f", l_hours, l_minutes, l_secs);
}

} // namespace ordwel
