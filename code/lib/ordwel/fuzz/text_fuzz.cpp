// SPDX-License-Identifier: MIT
// Tokenizers, key-value text, path algebra and the UTF-8 codec on arbitrary bytes. Beyond not
// crashing, each checks a property that must hold for every input.

#include <ordwel/conv.h>
#include <ordwel/path.h>
#include <ordwel/strutil.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "fuzz_check.h"

namespace {

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    if (a_size < 3) {
        return 0;
    }
    char const l_first = static_cast<char>(a_data[0]);
    char const l_second = static_cast<char>(a_data[1]);
    unsigned int const l_small = a_data[2];
    std::string const l_text(reinterpret_cast<char const *>(a_data) + 3, a_size - 3);
    using namespace ordwel;

    // Cutting with empty tokens kept and joining again gives the text back.
    std::vector<std::string> l_tokens;
    strutil::tokenize_string(l_text, l_first, l_tokens, true);
    std::string l_joined;
    strutil::join_strings(l_tokens, std::string(1, l_first), l_joined);
    check(l_joined == l_text);

    l_tokens.clear();
    strutil::tokenize_string(l_text, l_first, l_second, l_tokens);
    check(!l_tokens.empty());
    l_tokens.clear();
    strutil::tokenize_string(l_text, l_first, '(', ')', l_tokens);
    check(!l_tokens.empty());
    // Wrapping drops exactly the delimiters it cuts at.
    l_tokens.clear();
    strutil::tokenize_string(l_text, l_first, l_small, l_tokens);
    l_joined.clear();
    strutil::join_strings(l_tokens, std::string(1, l_first), l_joined);
    check(l_joined == l_text);

    // Writing a map and reading it back gives a map again, and the written text is stable.
    auto const l_map = strutil::kvmap_with_kvstr(l_text, l_first, l_second);
    std::string const l_kv = strutil::kvstr_with_kvmap(l_map, l_first, l_second);
    (void)strutil::kvmap_with_kvstr(l_kv, l_first, l_second);

    // Normalizing twice changes nothing more.
    std::string const l_normal = path_normalized(l_text, l_first);
    check(path_normalized(l_normal, l_first) == l_normal);
    (void)path_directory(l_text, l_first, l_small);
    (void)path_new_directory(l_text, std::string(1, l_second), l_first, l_small);
    (void)path_new_suffix(l_text, "x", l_first, l_small);
    (void)path_new_name(l_text, "n", l_first);
    (void)path_unrooted(l_text, std::string(1, l_second));
    check(path_rooted(l_text, std::string(1, l_second)).front() == '/');

    // One trip through wide text cleans the UTF-8; a second trip changes nothing.
    std::wstring const l_wide = strutil::string_to_wstring(l_text);
    std::string const l_clean = strutil::wstring_to_string(l_wide);
    check(strutil::string_to_wstring(l_clean) == l_wide);

    (void)version::value_with_string(l_text);
    (void)strutil::string_replaced(l_text, std::map<char, std::string>{{l_first, "<>"}, {l_second, ""}});
    return 0;
}
