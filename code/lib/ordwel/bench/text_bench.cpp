// SPDX-License-Identifier: MIT
// Text families: tokenizers, key-value text, character-map replacement, path normalization and
// UTF-8 <-> wide conversion, each in bytes/s, beside a peer doing the same work where one exists:
// boost::split for tokens, std::filesystem's lexically_normal for paths, iconv and
// std::wstring_convert for UTF-8.

#include <ordwel/path.h>
#include <ordwel/strutil.h>

#include <codecvt>
#include <cstring>
#include <filesystem>
#include <locale>
#include <map>
#include <string>
#include <vector>

#include <iconv.h>

#include <benchmark/benchmark.h>

#ifdef ORDWEL_HAVE_BOOST
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#endif

namespace {

// A deterministic text of words and separators, about a_size bytes.
std::string words_text(std::size_t a_size, char a_delimiter)
{
    std::string l_text;
    unsigned int l_seed = 2024;
    while (l_text.size() < a_size) {
        l_seed = l_seed * 1103515245U + 12345U;
        l_text.append(1 + (l_seed >> 16) % 12, static_cast<char>('a' + (l_seed >> 8) % 26));
        l_text.push_back(a_delimiter);
    }
    return l_text;
}

std::string const &csv_text()
{
    static std::string const l_text = words_text(64 * 1024, ',');
    return l_text;
}

void bm_tokenize_delimiter(benchmark::State &a_state)
{
    std::string const &l_text = csv_text();
    std::vector<std::string> l_out;
    for (auto _ : a_state) {
        l_out.clear();
        ordwel::strutil::tokenize_string(l_text, ',', l_out, false);
        benchmark::DoNotOptimize(l_out.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_tokenize_delimiter);

#ifdef ORDWEL_HAVE_BOOST
void bm_tokenize_delimiter_peer_boost_split(benchmark::State &a_state)
{
    std::string const &l_text = csv_text();
    std::vector<std::string> l_out;
    for (auto _ : a_state) {
        l_out.clear();
        boost::split(l_out, l_text, boost::is_any_of(","), boost::token_compress_on);
        benchmark::DoNotOptimize(l_out.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_tokenize_delimiter_peer_boost_split);
#endif

void bm_tokenize_quoted(benchmark::State &a_state)
{
    std::string l_text = csv_text();
    for (std::size_t l_index = 0; l_index < l_text.size(); l_index += 97) {
        l_text[l_index] = '"';
    }
    std::vector<std::string> l_out;
    for (auto _ : a_state) {
        l_out.clear();
        ordwel::strutil::tokenize_string(l_text, ',', '"', l_out);
        benchmark::DoNotOptimize(l_out.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_tokenize_quoted);

void bm_tokenize_width(benchmark::State &a_state)
{
    std::string const l_text = words_text(64 * 1024, ' ');
    std::vector<std::string> l_out;
    for (auto _ : a_state) {
        l_out.clear();
        ordwel::strutil::tokenize_string(l_text, ' ', 79U, l_out);
        benchmark::DoNotOptimize(l_out.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_tokenize_width);

void bm_kvmap_with_kvstr(benchmark::State &a_state)
{
    // A typical option or query string: twenty pairs, short keys and values.
    std::string l_text;
    for (int l_index = 0; l_index < 20; ++l_index) {
        if (!l_text.empty()) {
            l_text.push_back(';');
        }
        l_text += "key" + std::to_string(l_index * 7919 % 1000) + "=value_" + std::to_string(l_index);
    }
    for (auto _ : a_state) {
        auto l_map = ordwel::strutil::kvmap_with_kvstr(l_text, ';', '=');
        benchmark::DoNotOptimize(l_map);
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_kvmap_with_kvstr);

void bm_kvstr_with_kvmap(benchmark::State &a_state)
{
    std::map<std::string, std::string> l_map;
    for (int l_index = 0; l_index < 20; ++l_index) {
        l_map["key" + std::to_string(l_index * 7919 % 1000)] = "value_" + std::to_string(l_index);
    }
    std::size_t l_bytes = 0;
    for (auto _ : a_state) {
        std::string const l_text = ordwel::strutil::kvstr_with_kvmap(l_map, ';', '=');
        l_bytes += l_text.size();
        benchmark::DoNotOptimize(l_text.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(l_bytes));
}
BENCHMARK(bm_kvstr_with_kvmap);

// HTML escaping as the help renderer does it: most bytes pass, a few become entities.
void bm_replace_character_map(benchmark::State &a_state)
{
    std::string l_text = words_text(64 * 1024, ' ');
    for (std::size_t l_index = 0; l_index < l_text.size(); l_index += 53) {
        l_text[l_index] = "<>&\""[l_index % 4];
    }
    std::map<char, std::string> const l_map{{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}};
    for (auto _ : a_state) {
        std::string l_result = ordwel::strutil::string_replaced(l_text, l_map);
        benchmark::DoNotOptimize(l_result.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_replace_character_map);

std::vector<std::string> const &sample_paths()
{
    static std::vector<std::string> const l_paths{
        "/usr/local/share/media/../lib/./codecs//h264/profile.cfg",
        "projects/ordwel/build/../code/lib/ordwel/src/path.cpp",
        "/a/b/c/d/e/f/g/h/../../../i/j/k.txt",
        "relative/./path/with/no/dots/at/all/file.mov",
        "/mnt/archive/2024/../2025/./clips//reel_01/take_003.mxf",
    };
    return l_paths;
}

std::int64_t sample_bytes()
{
    std::size_t l_total = 0;
    for (std::string const &l_path : sample_paths()) {
        l_total += l_path.size();
    }
    return static_cast<std::int64_t>(l_total);
}

void bm_path_normalize(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        for (std::string const &l_path : sample_paths()) {
            std::string l_result = ordwel::path_normalized(l_path, '/');
            benchmark::DoNotOptimize(l_result.data());
        }
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * sample_bytes());
}
BENCHMARK(bm_path_normalize);

void bm_path_normalize_peer_lexically_normal(benchmark::State &a_state)
{
    for (auto _ : a_state) {
        for (std::string const &l_path : sample_paths()) {
            std::string l_result = std::filesystem::path(l_path).lexically_normal().string();
            benchmark::DoNotOptimize(l_result.data());
        }
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * sample_bytes());
}
BENCHMARK(bm_path_normalize_peer_lexically_normal);

// Mixed text: mostly ASCII with Latin, CJK and emoji sprinkled in, as in media titles.
std::string const &utf8_text()
{
    static std::string const l_text = [] {
        std::string l_result;
        char const *const l_pieces[] = {"Reel 01 take 3 ",
                                        "caf\xC3\xA9 ",
                                        "\xE6\x97\xA5\xE6\x9C\xAC ",
                                        "\xF0\x9F\x8E\xAC ",
                                        "Stra\xC3\x9F"
                                        "e ",
                                        "final_cut_v2 "};
        std::size_t l_index = 0;
        while (l_result.size() < 64 * 1024) {
            l_result += l_pieces[l_index++ % 6];
        }
        return l_result;
    }();
    return l_text;
}

void bm_utf8_to_wide(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    for (auto _ : a_state) {
        std::wstring l_wide = ordwel::strutil::string_to_wstring(l_text);
        benchmark::DoNotOptimize(l_wide.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_utf8_to_wide);

void bm_wide_to_utf8(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    std::wstring const l_wide = ordwel::strutil::string_to_wstring(l_text);
    for (auto _ : a_state) {
        std::string l_result = ordwel::strutil::wstring_to_string(l_wide);
        benchmark::DoNotOptimize(l_result.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_wide_to_utf8);

// iconv, opened once and reused as a careful caller would; the output is sized as ours is.
void bm_utf8_to_wide_peer_iconv(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    iconv_t const l_cd = iconv_open("WCHAR_T", "UTF-8");
    for (auto _ : a_state) {
        std::wstring l_wide(l_text.size(), L'\0');
        char *l_in = const_cast<char *>(l_text.data());
        std::size_t l_in_left = l_text.size();
        char *l_out = reinterpret_cast<char *>(&l_wide[0]);
        std::size_t l_out_left = l_wide.size() * sizeof(wchar_t);
        iconv(l_cd, &l_in, &l_in_left, &l_out, &l_out_left);
        l_wide.resize(l_wide.size() - l_out_left / sizeof(wchar_t));
        benchmark::DoNotOptimize(l_wide.data());
    }
    iconv_close(l_cd);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_utf8_to_wide_peer_iconv);

void bm_wide_to_utf8_peer_iconv(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    std::wstring const l_wide = ordwel::strutil::string_to_wstring(l_text);
    iconv_t const l_cd = iconv_open("UTF-8", "WCHAR_T");
    for (auto _ : a_state) {
        std::string l_result(l_wide.size() * 4, '\0');
        char *l_in = const_cast<char *>(reinterpret_cast<char const *>(l_wide.data()));
        std::size_t l_in_left = l_wide.size() * sizeof(wchar_t);
        char *l_out = &l_result[0];
        std::size_t l_out_left = l_result.size();
        iconv(l_cd, &l_in, &l_in_left, &l_out, &l_out_left);
        l_result.resize(l_result.size() - l_out_left);
        benchmark::DoNotOptimize(l_result.data());
    }
    iconv_close(l_cd);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_wide_to_utf8_peer_iconv);

// std::wstring_convert is deprecated since C++17 but still the standard library's own answer.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
void bm_utf8_to_wide_peer_wstring_convert(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    std::wstring_convert<std::codecvt_utf8<wchar_t>> l_convert;
    for (auto _ : a_state) {
        std::wstring l_wide = l_convert.from_bytes(l_text);
        benchmark::DoNotOptimize(l_wide.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_utf8_to_wide_peer_wstring_convert);

void bm_wide_to_utf8_peer_wstring_convert(benchmark::State &a_state)
{
    std::string const &l_text = utf8_text();
    std::wstring const l_wide = ordwel::strutil::string_to_wstring(l_text);
    std::wstring_convert<std::codecvt_utf8<wchar_t>> l_convert;
    for (auto _ : a_state) {
        std::string l_result = l_convert.to_bytes(l_wide);
        benchmark::DoNotOptimize(l_result.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations()) * static_cast<int64_t>(l_text.size()));
}
BENCHMARK(bm_wide_to_utf8_peer_wstring_convert);
#pragma GCC diagnostic pop

} // namespace
