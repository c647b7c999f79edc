// SPDX-License-Identifier: MIT
// Compiled by cmake/check_nodiscard.cmake, twice. With ORDWEL_USE_RESULT it uses what trimmed()
// gives and must compile; without it the result is dropped, which -Werror must refuse, because
// trimmed() and its kind are marked [[nodiscard]].
#include <string>

#include <ordwel/string_helpers.h>

int main()
{
#if defined(ORDWEL_USE_RESULT)
    std::string const l_text = ordwel::trimmed(" x ", ' ');
    return l_text == "x" ? 0 : 1;
#else
    ordwel::trimmed(" x ", ' ');
    return 0;
#endif
}
