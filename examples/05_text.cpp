// SPDX-License-Identifier: MIT
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <ordwel/conv.h>
#include <ordwel/path.h>
#include <ordwel/strutil.h>

using namespace ordwel;

int main()
{
    auto opts = strutil::kvmap_with_kvstr("codec=h264;crf=18;fast", ';', '=');  // fast -> ""
    std::string query = strutil::kvstr_with_kvmap(opts, '&', '=');             // "codec=h264&crf=18&fast"
    std::vector<std::string> args;
    strutil::tokenize_string("scale(1920,1080),fps=25", ',', '(', ')', args);  // "scale(1920,1080)", "fps=25"
    std::string clip = path_normalized("/media/./day1//../reel_01.mov", '/');  // "/media/reel_01.mov"
    path_set_suffix(clip, "mxf", '/');                                         // "/media/reel_01.mxf"
    bool first = version::less()("2.10", "2.9");                               // true: higher versions sort first
    std::printf("%s\n%s | %s\n%s\n%d\n", query.c_str(), args[0].c_str(), args[1].c_str(), clip.c_str(), first);
}
