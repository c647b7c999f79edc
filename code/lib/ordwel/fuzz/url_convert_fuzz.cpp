// SPDX-License-Identifier: MIT
// The URL and platform path conversions on arbitrary text: no crash, no sanitizer report; the
// parts of a UNC text are stretches of it, with the object at its end, and a platform path set
// into a URL comes back from it.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <ordwel/url.h>
#include <ordwel/url_convert.h>

#include "fuzz_check.h"

namespace {

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *a_data, std::size_t a_size)
{
    using namespace ordwel;
    std::string const l_text(reinterpret_cast<char const *>(a_data), a_size);

    std::string const l_object = unc_object(l_text);
    check(l_text.size() >= l_object.size() &&
          l_text.compare(l_text.size() - l_object.size(), l_object.size(), l_object) == 0);
    check(l_text.find(unc_host(l_text)) != std::string::npos);
    check(l_text.find(unc_share(l_text)) != std::string::npos);
    (void)unc_path_to_url(l_text, "smb");

    url_path_environment const l_environment = {"C:\\work", "C:\\Users\\me", 3};
    (void)url_create_from_url_or_path(l_text, "", l_environment);
    (void)url_create_from_url_or_path(l_text, "D:\\b", {"/w", "/h", 0});

    (void)url_extract_to_unc_or_windows_path(l_text);
    (void)url_extract_to_unc_path(l_text);
    (void)url_extract_windows_path(l_text);
    (void)url_path_to_windows_path(l_text);
    (void)windows_path_to_url_path(l_text);
    (void)url_new_windows_path(l_text, l_text);
    return 0;
}
