// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_URL_SCAN_H
#define ORDWEL_SRC_URL_SCAN_H

#include <string>

namespace ordwel {
namespace url_scan {

// The two positions that every reader of a URL-like text starts from: the fragment's '#' (the
// text's length without one) and the start of what follows the scheme's ':' (0 without a scheme).
struct front {
    std::string::size_type m_e;
    std::string::size_type m_s;
};

front front_of(std::string const &a_text);

} // namespace url_scan
} // namespace ordwel

#endif
