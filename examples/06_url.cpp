// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

#include <ordwel/url.h>

int main()
{
    std::string url = "smb://WORKGROUP;joe:secret@[fe80::1]:445/share/clip.mxf?v=2#t=10";
    std::printf("%s\n", ordwel::url_host(url).c_str());               // fe80::1
    std::printf("%s\n", ordwel::url_service(url, false).c_str());     // 445
    std::printf("%s\n", ordwel::url_domain(url, true).c_str());       // WORKGROUP
    std::printf("%s\n", ordwel::url_protected_output(url).c_str());   // the password as "%2a" eight times
    ordwel::url_set_query(url, {{"take", "2 b"}, {"v", "3"}}, true, '&', '=');   // ?take=2%20b&v=3
    ordwel::url_path_set_suffix(url, "mp4");                          // .../share/clip.mp4?take=2%20b&v=3#t=10
    std::printf("%s\n", url.c_str());
}
