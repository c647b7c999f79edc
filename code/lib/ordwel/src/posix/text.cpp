// SPDX-License-Identifier: MIT
#include "platform/text.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include "core/utf8_codec.h"

namespace ordwel {
namespace platform {

static_assert(sizeof(wchar_t) == 4, "the POSIX backend expects a UTF-32 wchar_t");

std::wstring wide_with_utf8(char const *a_text, std::size_t a_length)
{
    std::wstring l_wide;
    utf8::decode_append(a_text, a_length, l_wide);
    return l_wide;
}

std::string utf8_with_wide(wchar_t const *a_text, std::size_t a_length)
{
    std::string l_text;
    utf8::encode_append(a_text, a_length, l_text);
    return l_text;
}

namespace {

bool is_utf8_codeset(char const *a_codeset)
{
    return a_codeset != nullptr && (std::strcmp(a_codeset, "UTF-8") == 0 || std::strcmp(a_codeset, "utf-8") == 0 ||
                                    std::strcmp(a_codeset, "utf8") == 0 || std::strcmp(a_codeset, "UTF8") == 0);
}

// The codeset of the user's environment (LC_ALL, LC_CTYPE, LANG), the POSIX counterpart of the
// system-wide ANSI code page. The program's own locale is not touched.
std::string environment_codeset()
{
    locale_t const l_locale = newlocale(LC_CTYPE_MASK, "", static_cast<locale_t>(nullptr));
    if (l_locale == static_cast<locale_t>(nullptr)) {
        return nl_langinfo(CODESET);
    }
    std::string l_codeset = nl_langinfo_l(CODESET, l_locale);
    freelocale(l_locale);
    return l_codeset;
}

// Cleans the text as a UTF-8 code page would: ill-formed sequences become U+FFFD.
std::string utf8_cleaned(char const *a_text, std::size_t a_length)
{
    std::u32string l_wide;
    utf8::decode_append(a_text, a_length, l_wide);
    std::string l_text;
    utf8::encode_append(l_wide.data(), l_wide.size(), l_text);
    return l_text;
}

// Through iconv, transliterating where the codeset allows; a character that cannot be written at
// all becomes "?", as the default character of a Windows code page.
std::string iconv_from_utf8(std::string const &a_codeset, char const *a_text, std::size_t a_length)
{
    iconv_t const l_cd = iconv_open((a_codeset + "//TRANSLIT").c_str(), "UTF-8");
    if (l_cd == reinterpret_cast<iconv_t>(-1)) {
        return utf8_cleaned(a_text, a_length);
    }
    std::string l_result;
    char l_chunk[1024];
    char *l_in = const_cast<char *>(a_text);
    std::size_t l_in_left = a_length;
    while (l_in_left > 0) {
        char *l_out = l_chunk;
        std::size_t l_out_left = sizeof l_chunk;
        std::size_t const l_done = iconv(l_cd, &l_in, &l_in_left, &l_out, &l_out_left);
        int const l_error = errno;
        l_result.append(l_chunk, static_cast<std::size_t>(l_out - l_chunk));
        if (l_done != static_cast<std::size_t>(-1) || l_error == E2BIG) {
            continue;
        }
        // EILSEQ or EINVAL: one unwritable or broken sequence. Skip its bytes and write "?".
        auto const l_lead = static_cast<unsigned char>(*l_in);
        std::size_t l_skip = 1;
        if (l_lead >= 0xC2 && l_lead <= 0xF4) {
            std::size_t const l_whole = l_lead < 0xE0 ? 2 : (l_lead < 0xF0 ? 3 : 4);
            while (l_skip < l_whole && l_skip < l_in_left &&
                   (static_cast<unsigned char>(l_in[l_skip]) & 0xC0) == 0x80) {
                ++l_skip;
            }
        }
        l_in += l_skip;
        l_in_left -= l_skip;
        l_result.push_back('?');
        iconv(l_cd, nullptr, nullptr, nullptr, nullptr);
    }
    // Flush a stateful encoding's closing shift.
    char *l_out = l_chunk;
    std::size_t l_out_left = sizeof l_chunk;
    if (iconv(l_cd, nullptr, nullptr, &l_out, &l_out_left) != static_cast<std::size_t>(-1)) {
        l_result.append(l_chunk, static_cast<std::size_t>(l_out - l_chunk));
    }
    iconv_close(l_cd);
    // The result ends at its first NUL, as a C string would.
    std::size_t const l_nul = l_result.find('\0');
    if (l_nul != std::string::npos) {
        l_result.resize(l_nul);
    }
    return l_result;
}

} // namespace

std::string ansi_with_utf8(char const *a_text, std::size_t a_length)
{
    // ASCII is the same in every narrow codeset in use: no need to ask for the codeset.
    bool l_ascii = true;
    for (std::size_t l_index = 0; l_index < a_length; ++l_index) {
        if (static_cast<unsigned char>(a_text[l_index]) >= 0x80) {
            l_ascii = false;
            break;
        }
    }
    if (l_ascii) {
        return std::string(a_text, a_length);
    }
    std::string const l_codeset = environment_codeset();
    if (is_utf8_codeset(l_codeset.c_str())) {
        return utf8_cleaned(a_text, a_length);
    }
    return iconv_from_utf8(l_codeset, a_text, a_length);
}

// long is 64 bits here: parse wide and saturate to 32 bits as Windows' strtol does.
sint32 parse_long(char const *a_text, int a_base)
{
    long long const l_value = std::strtoll(a_text, nullptr, a_base);
    if (l_value > std::numeric_limits<sint32>::max()) {
        return std::numeric_limits<sint32>::max();
    }
    if (l_value < std::numeric_limits<sint32>::min()) {
        return std::numeric_limits<sint32>::min();
    }
    return static_cast<sint32>(l_value);
}

// Windows' strtoul reads the digits as a 32-bit magnitude (all ones when they overflow it) and
// negates in 32 bits after a minus sign. The magnitude is read here in 64 bits.
uint32 parse_ulong(char const *a_text, int a_base)
{
    char const *l_sign = a_text;
    while (std::isspace(static_cast<unsigned char>(*l_sign))) {
        ++l_sign;
    }
    bool const l_negative = *l_sign == '-';
    errno = 0;
    unsigned long long const l_value = std::strtoull(a_text, nullptr, a_base);
    if (errno == ERANGE) {
        return std::numeric_limits<uint32>::max();
    }
    unsigned long long const l_magnitude = l_negative ? 0ULL - l_value : l_value;
    if (l_magnitude > std::numeric_limits<uint32>::max()) {
        return std::numeric_limits<uint32>::max();
    }
    auto const l_narrow = static_cast<uint32>(l_magnitude);
    return l_negative ? 0U - l_narrow : l_narrow;
}

sint64 parse_int64(char const *a_text, int a_base)
{
    return static_cast<sint64>(std::strtoll(a_text, nullptr, a_base));
}

uint64 parse_uint64(char const *a_text, int a_base)
{
    return static_cast<uint64>(std::strtoull(a_text, nullptr, a_base));
}

} // namespace platform
} // namespace ordwel
