// SPDX-License-Identifier: MIT
// URL parsing and percent coding. ordwel reads every part of 10,000 generated URLs (http, https,
// smb, file; user information, IPv6 hosts, ports, queries, fragments) beside libcurl's URL API,
// which parses each URL into a handle and hands out every part; and encodes and decodes a text
// beside curl_easy_escape and curl_easy_unescape.

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/url.h>
#include <ordwel/url_parts.h>

#if defined(ORDWEL_HAVE_LIBCURL)
#include <curl/curl.h>
#endif

namespace {

// A fixed seed: every run measures the same corpus.
std::vector<std::string> const &url_corpus()
{
    static std::vector<std::string> const k_corpus = [] {
        std::mt19937 l_random(20261122u);
        auto const l_pick = [&l_random](std::size_t a_count) { return static_cast<std::size_t>(l_random() % a_count); };
        char const *const l_schemes[] = {"http", "https", "smb", "file"};
        char const *const l_words[] = {"media",  "archive", "video", "2026", "clip", "render",    "final",
                                       "assets", "proxy",   "audio", "v2",   "data", "caf%C3%A9", "a%20b"};
        char const *const l_hosts[] = {"example.com",
                                       "media.example.org",
                                       "fileserver",
                                       "192.168.10.24",
                                       "[2001:db8::7]",
                                       "[fe80::1]",
                                       "storage-03.internal.example.net"};
        std::vector<std::string> l_corpus;
        l_corpus.reserve(10000);
        for (int l_index = 0; l_index < 10000; ++l_index) {
            std::string l_url = l_schemes[l_pick(4)];
            l_url += "://";
            bool const l_file = l_url[0] == 'f';
            if (!l_file) {
                switch (l_pick(4)) {
                case 0:
                    l_url += "user" + std::to_string(l_pick(100)) + "@";
                    break;
                case 1:
                    l_url += "user" + std::to_string(l_pick(100)) + ":pa%24s" + std::to_string(l_pick(1000)) + "@";
                    break;
                default:
                    break;
                }
                l_url += l_hosts[l_pick(7)];
                if (l_pick(3) == 0) {
                    l_url += ":" + std::to_string(1024 + l_pick(60000));
                }
            }
            for (std::size_t l_depth = 1 + l_pick(5); l_depth > 0; --l_depth) {
                l_url += "/";
                l_url += l_words[l_pick(14)];
            }
            l_url += l_pick(2) == 0 ? ".mxf" : ".mp4";
            if (!l_file && l_pick(2) == 0) {
                l_url += "?";
                for (std::size_t l_pairs = 1 + l_pick(4); l_pairs > 0; --l_pairs) {
                    l_url += l_words[l_pick(14)];
                    l_url += "=" + std::to_string(l_pick(100000));
                    if (l_pairs > 1) {
                        l_url += "&";
                    }
                }
            }
            if (l_pick(4) == 0) {
                l_url += "#t=" + std::to_string(l_pick(3600));
            }
            l_corpus.push_back(std::move(l_url));
        }
        return l_corpus;
    }();
    return k_corpus;
}

std::int64_t corpus_bytes()
{
    std::int64_t l_bytes = 0;
    for (std::string const &l_url : url_corpus()) {
        l_bytes += static_cast<std::int64_t>(l_url.size());
    }
    return l_bytes;
}

// A text as URL parts carry it: words, blanks, punctuation and some UTF-8, 64 KiB.
std::string const &plain_text()
{
    static std::string const k_text = [] {
        std::string const l_piece = "Sommer 2026/Take 12 (final) r\xc3\xa9sum\xc3\xa9 & notes: 50% done?x=1;y=2 ";
        std::string l_text;
        while (l_text.size() < 65536) {
            l_text += l_piece;
        }
        l_text.resize(65536);
        return l_text;
    }();
    return k_text;
}

std::string const &encoded_text()
{
    static std::string const k_text = ordwel::url_encode(plain_text(), false);
    return k_text;
}

// Every part is read but the authority, which is made of others and which curl doesn't hand out.
// The table is walked at compile time, so that each getter is called directly, as a caller that
// names it would: the measure is the getters', not the table's.
template <std::size_t t_index> void read_part(std::string const &a_url, bool a_decode)
{
    constexpr ordwel::url_part const &k_part = ordwel::k_url_parts[t_index];
    if (&k_part != ordwel::find_url_part("authority")) {
        benchmark::DoNotOptimize(k_part.m_get(a_url, a_decode));
    }
}

template <std::size_t... t_index>
void read_parts(std::string const &a_url, bool a_decode, std::index_sequence<t_index...>)
{
    (read_part<t_index>(a_url, a_decode), ...);
}

void read_parts(std::string const &a_url, bool a_decode)
{
    read_parts(a_url, a_decode, std::make_index_sequence<ordwel::k_url_part_count>());
}

void ordwel_all_getters(benchmark::State &a_state)
{
    std::vector<std::string> const &l_corpus = url_corpus();
    for (auto l_unused : a_state) {
        for (std::string const &l_url : l_corpus) {
            read_parts(l_url, false);
        }
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(l_corpus.size()));
    a_state.SetBytesProcessed(a_state.iterations() * corpus_bytes());
}
BENCHMARK(ordwel_all_getters)->Unit(benchmark::kMillisecond);

void ordwel_all_getters_decoded(benchmark::State &a_state)
{
    std::vector<std::string> const &l_corpus = url_corpus();
    for (auto l_unused : a_state) {
        for (std::string const &l_url : l_corpus) {
            read_parts(l_url, true);
        }
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(l_corpus.size()));
    a_state.SetBytesProcessed(a_state.iterations() * corpus_bytes());
}
BENCHMARK(ordwel_all_getters_decoded)->Unit(benchmark::kMillisecond);

void ordwel_url_encode(benchmark::State &a_state)
{
    std::string const &l_text = plain_text();
    for (auto l_unused : a_state) {
        benchmark::DoNotOptimize(ordwel::url_encode(l_text, false));
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(l_text.size()));
}
BENCHMARK(ordwel_url_encode);

void ordwel_url_decode(benchmark::State &a_state)
{
    std::string const &l_text = encoded_text();
    for (auto l_unused : a_state) {
        benchmark::DoNotOptimize(ordwel::url_decode(l_text));
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(l_text.size()));
}
BENCHMARK(ordwel_url_decode);

#if defined(ORDWEL_HAVE_LIBCURL)

struct curl_session {
    curl_session() { curl_global_init(CURL_GLOBAL_DEFAULT); }
    ~curl_session() { curl_global_cleanup(); }
};

void curl_get(CURLU *a_handle, CURLUPart a_part)
{
    char *l_value = nullptr;
    if (curl_url_get(a_handle, a_part, &l_value, 0) == CURLUE_OK) {
        benchmark::DoNotOptimize(l_value);
        curl_free(l_value);
    }
}

void curl_all_getters(benchmark::State &a_state)
{
    static curl_session const k_session;
    std::vector<std::string> const &l_corpus = url_corpus();
    CURLU *const l_handle = curl_url();
    std::int64_t l_rejected = 0;
    for (auto l_unused : a_state) {
        for (std::string const &l_url : l_corpus) {
            if (curl_url_set(l_handle, CURLUPART_URL, l_url.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
                ++l_rejected;
                continue;
            }
            curl_get(l_handle, CURLUPART_SCHEME);
            curl_get(l_handle, CURLUPART_USER);
            curl_get(l_handle, CURLUPART_PASSWORD);
            curl_get(l_handle, CURLUPART_OPTIONS);
            curl_get(l_handle, CURLUPART_HOST);
            curl_get(l_handle, CURLUPART_PORT);
            curl_get(l_handle, CURLUPART_PATH);
            curl_get(l_handle, CURLUPART_QUERY);
            curl_get(l_handle, CURLUPART_FRAGMENT);
        }
    }
    curl_url_cleanup(l_handle);
    a_state.counters["rejected"] = static_cast<double>(l_rejected);
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(l_corpus.size()));
    a_state.SetBytesProcessed(a_state.iterations() * corpus_bytes());
}
BENCHMARK(curl_all_getters)->Unit(benchmark::kMillisecond);

void curl_all_getters_decoded(benchmark::State &a_state)
{
    static curl_session const k_session;
    std::vector<std::string> const &l_corpus = url_corpus();
    CURLU *const l_handle = curl_url();
    for (auto l_unused : a_state) {
        for (std::string const &l_url : l_corpus) {
            if (curl_url_set(l_handle, CURLUPART_URL, l_url.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
                continue;
            }
            for (CURLUPart const l_part :
                 {CURLUPART_SCHEME, CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_OPTIONS, CURLUPART_HOST,
                  CURLUPART_PORT, CURLUPART_PATH, CURLUPART_QUERY, CURLUPART_FRAGMENT}) {
                char *l_value = nullptr;
                if (curl_url_get(l_handle, l_part, &l_value, CURLU_URLDECODE) == CURLUE_OK) {
                    benchmark::DoNotOptimize(l_value);
                    curl_free(l_value);
                }
            }
        }
    }
    curl_url_cleanup(l_handle);
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(l_corpus.size()));
    a_state.SetBytesProcessed(a_state.iterations() * corpus_bytes());
}
BENCHMARK(curl_all_getters_decoded)->Unit(benchmark::kMillisecond);

void curl_easy_escape_text(benchmark::State &a_state)
{
    static curl_session const k_session;
    CURL *const l_curl = curl_easy_init();
    std::string const &l_text = plain_text();
    for (auto l_unused : a_state) {
        char *const l_result = curl_easy_escape(l_curl, l_text.data(), static_cast<int>(l_text.size()));
        benchmark::DoNotOptimize(l_result);
        curl_free(l_result);
    }
    curl_easy_cleanup(l_curl);
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(l_text.size()));
}
BENCHMARK(curl_easy_escape_text);

void curl_easy_unescape_text(benchmark::State &a_state)
{
    static curl_session const k_session;
    CURL *const l_curl = curl_easy_init();
    std::string const &l_text = encoded_text();
    for (auto l_unused : a_state) {
        int l_length = 0;
        char *const l_result = curl_easy_unescape(l_curl, l_text.data(), static_cast<int>(l_text.size()), &l_length);
        benchmark::DoNotOptimize(l_result);
        curl_free(l_result);
    }
    curl_easy_cleanup(l_curl);
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(l_text.size()));
}
BENCHMARK(curl_easy_unescape_text);

#endif

} // namespace
