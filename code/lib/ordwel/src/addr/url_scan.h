// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_URL_SCAN_H
#define ORDWEL_SRC_URL_SCAN_H

#include <cstddef>
#include <string>

#include "core/cpu_dispatch.h"

namespace ordwel {
namespace url_scan {

// The two positions that every reader of a URL-like text starts from: the fragment's '#' (the
// text's length without one) and the start of what follows the scheme's ':' (0 without a scheme).
struct front {
    std::string::size_type m_e;
    std::string::size_type m_s;
};

front front_of(std::string const &a_text);

// A getter as the code of one vector level has it, for the tests that compare the levels: the parts
// in the order of k_url_parts (the scheme's and the host's ignore the bool), then the
// scheme-specific part. The fragment's getter is the same at every level.
using getter = std::string (*)(std::string const &a_url, bool a_decode);
constexpr std::size_t k_getter_count = 12;
getter getter_for_level(std::size_t a_part, internal::simd_level a_level);

} // namespace url_scan
} // namespace ordwel

#endif
