// ordwel: a small toolbox over the library.
#include <cstdio>
#include <string>

#include <ordwel/ordwel.h>

namespace {

int run_example()
{
    using namespace ordwel;
    std::printf("ordwel %s\n", k_version_string);

    std::string const l_title = string_with_format("%s-%03d", "clip", 7);
    std::printf("%-28s %s\n", "string_with_format:", l_title.c_str());
    std::printf("%-28s [%s]\n", "string_space_align center:", string_space_align("tc", 6, space_align_center).c_str());
    std::printf("%-28s %s\n", "string_truncate middle:",
                string_truncate("/media/archive/2026/reel-0042/take-07.mov", 24, truncate_middle).c_str());
    std::printf("%-28s %s\n", "string_with_fourcc:", string_with_fourcc(0x746d6364, '.').c_str());

    buffer l_bytes;
    unsigned char const l_header[] = {0x00, 0x00, 0x01, 0xb3};
    l_bytes.append(l_header, sizeof l_header);
    l_bytes.append(4, 0xff);
    std::printf("%-28s size %llu, capacity %llu\n", "buffer:", static_cast<unsigned long long>(l_bytes.size()),
                static_cast<unsigned long long>(l_bytes.capacity()));

    try {
        es::file::raise(ORDWEL_HERE, "No such file or directory", "open", "missing.mov");
    } catch (es::base const &l_error) {
        std::printf("%-28s %s (%s:%u)\n", "caught:", l_error.what(), l_error.file(), l_error.line());
    }
    return 0;
}

} // namespace

int main()
{
    return run_example();
}
