// SPDX-License-Identifier: MIT
#include <ordwel/conv.h>

#include <cassert>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

#include "platform/text.h"

namespace ordwel {

namespace {

// The bases that strtol accepts. Windows' C runtime ends the process on any other, so none is
// ever handed on.
bool is_valid_base(int a_base)
{
    return a_base == 0 || (a_base >= 2 && a_base <= 36);
}

template <typename t_float> unsigned int percent_of(t_float a_value)
{
    t_float const l_scaled = std::fabs(a_value) * static_cast<t_float>(100.0) + static_cast<t_float>(0.5);
    if (!(l_scaled < static_cast<t_float>(4294967296.0))) {
        // A NaN fails every comparison; what is beyond the range saturates.
        return std::isnan(l_scaled) ? 0U : std::numeric_limits<unsigned int>::max();
    }
    return static_cast<unsigned int>(l_scaled);
}

// rand() narrowed to 0..32767. Where RAND_MAX is 2^k - 1 above that, the top 15 bits are taken:
// the low bits of a linear generator are its weakest.
int rand_15()
{
    static_assert(RAND_MAX >= 32767, "the C standard's least RAND_MAX");
    static_assert((static_cast<unsigned long long>(RAND_MAX) & (static_cast<unsigned long long>(RAND_MAX) + 1)) == 0,
                  "RAND_MAX + 1 must be a power of two");
    constexpr unsigned long long k_scale = (static_cast<unsigned long long>(RAND_MAX) + 1) / 32768ULL;
    return static_cast<int>(static_cast<unsigned long long>(std::rand()) / k_scale);
}

} // namespace

namespace conv {

unsigned int double_to_percent(double a_value)
{
    return percent_of(a_value);
}

unsigned int float_to_percent(float a_value)
{
    return percent_of(a_value);
}

unsigned int fourcc_with_string(std::string const &a_text)
{
    unsigned int l_code = 0;
    for (std::string::size_type l_index = 0; l_index < 4; ++l_index) {
        unsigned char const l_byte = l_index < a_text.size() ? static_cast<unsigned char>(a_text[l_index]) : ' ';
        l_code = (l_code << 8) | l_byte;
    }
    return l_code;
}

double string_to_double(char const *a_text)
{
    return a_text == nullptr ? 0.0 : std::strtod(a_text, nullptr);
}

float string_to_float(char const *a_text)
{
    return a_text == nullptr ? 0.0f : std::strtof(a_text, nullptr);
}

sint32 string_to_int(char const *a_text, int a_base)
{
    return a_text == nullptr || !is_valid_base(a_base) ? 0 : platform::parse_long(a_text, a_base);
}

sint32 string_to_long(char const *a_text, int a_base)
{
    return string_to_int(a_text, a_base);
}

sint64 string_to_longlong(char const *a_text, int a_base)
{
    return a_text == nullptr || !is_valid_base(a_base) ? 0 : platform::parse_int64(a_text, a_base);
}

uint32 string_to_uint(char const *a_text, int a_base)
{
    return a_text == nullptr || !is_valid_base(a_base) ? 0U : platform::parse_ulong(a_text, a_base);
}

uint32 string_to_ulong(char const *a_text, int a_base)
{
    return string_to_uint(a_text, a_base);
}

uint64 string_to_ulonglong(char const *a_text, int a_base)
{
    return a_text == nullptr || !is_valid_base(a_base) ? 0U : platform::parse_uint64(a_text, a_base);
}

char const *true_false_c_str(bool a_value)
{
    return a_value ? "true" : "false";
}

char const *yes_no_c_str(bool a_value)
{
    return a_value ? "yes" : "no";
}

} // namespace conv

namespace math {

double float_epsilon()
{
    return 1.1920928955078125e-7;
}

void rand_seed(unsigned int a_seed)
{
    std::srand(a_seed);
}

void rand_seed()
{
    std::srand(static_cast<unsigned int>(std::time(nullptr)));
}

int rand_max()
{
    return 32767;
}

int rand_int(int a_low, int a_high)
{
    // high - low + 1 and its absolute value in 32-bit wrapping arithmetic, without signed overflow.
    uint32 const l_span = static_cast<uint32>(a_high) - static_cast<uint32>(a_low) + 1U;
    uint32 const l_count = (l_span & 0x80000000U) != 0 ? 0U - l_span : l_span;
    assert(l_count != 0 && "rand_int: high is low - 1, an empty range");
    if (l_count == 0) {
        return a_low;
    }
    uint32 const l_offset = static_cast<uint32>(rand_15()) % l_count;
    return static_cast<int>(static_cast<uint32>(a_low) + l_offset);
}

float rand_float(float a_low, float a_high)
{
    double const l_unit = static_cast<double>(static_cast<float>(rand_15())) / 32767.0;
    return static_cast<float>(l_unit * std::fabs(static_cast<double>(a_high - a_low)) + static_cast<double>(a_low));
}

} // namespace math

namespace version {

uint32 value_with_string(std::string const &a_version)
{
    // strtoul stops at the "." behind each number and never skips over one, so every number can be
    // read in place: from the text's start and from behind each of the first three dots.
    char const *const l_text = a_version.c_str();
    std::string::size_type const l_size = a_version.size();
    uint32 l_value = 0;
    std::string::size_type l_position = 0;
    for (unsigned int l_index = 0; l_index < 4; ++l_index) {
        uint32 const l_number = platform::parse_ulong(l_text + l_position, 10);
        l_value |= static_cast<uint32>(static_cast<uint64>(l_number) << ((3 - l_index) * 8));
        auto const *const l_dot = static_cast<char const *>(std::memchr(l_text + l_position, '.', l_size - l_position));
        if (l_dot == nullptr) {
            break;
        }
        l_position = static_cast<std::string::size_type>(l_dot - l_text) + 1;
    }
    return l_value;
}

bool less::operator()(std::string const &a_first, std::string const &a_second) const
{
    return value_with_string(a_first) > value_with_string(a_second);
}

bool greater::operator()(std::string const &a_first, std::string const &a_second) const
{
    return value_with_string(a_first) < value_with_string(a_second);
}

} // namespace version

namespace {

unsigned char const k_signature[3] = {0xEF, 0xBB, 0xBF};

} // namespace

bool has_utf8_signature(std::string const &a_text)
{
    return a_text.size() >= 3 && std::memcmp(a_text.data(), k_signature, 3) == 0;
}

bool has_utf8_signature(buffer const &a_bytes)
{
    return a_bytes.size() >= 3 && std::memcmp(a_bytes.begin(), k_signature, 3) == 0;
}

void remove_utf8_signature_if_present(std::string &a_text)
{
    if (has_utf8_signature(a_text)) {
        a_text.erase(0, 3);
    }
}

void remove_utf8_signature_if_present(buffer &a_bytes)
{
    if (has_utf8_signature(a_bytes)) {
        buffer l_rest;
        l_rest.assign(a_bytes.begin() + 3, a_bytes.end());
        a_bytes.swap(l_rest);
    }
}

bool is_multibyte_utf8_char(unsigned char a_byte)
{
    return (a_byte & 0xE0) == 0xC0 || (a_byte & 0xF0) == 0xE0 || (a_byte & 0xF8) == 0xF0;
}

int num_utf8_bytes(unsigned char a_byte)
{
    if (a_byte < 0x80) {
        return 1;
    }
    if (a_byte < 0xC0) {
        return 0;
    }
    if (a_byte < 0xE0) {
        return 2;
    }
    if (a_byte < 0xF0) {
        return 3;
    }
    return a_byte < 0xF8 ? 4 : 0;
}

std::string windows_make_safe_utf8_string(std::string const &a_text)
{
    void const *const l_nul = std::memchr(a_text.data(), '\0', a_text.size());
    std::size_t const l_length =
        l_nul == nullptr ? a_text.size() : static_cast<std::size_t>(static_cast<char const *>(l_nul) - a_text.data());
    return platform::ansi_with_utf8(a_text.c_str(), l_length);
}

} // namespace ordwel
