#include "support/test_support.h"

namespace ordwel_test {

ordwel::buffer buffer_of(std::string const &a_text)
{
    auto const *l_bytes = reinterpret_cast<unsigned char const *>(a_text.data());
    return ordwel::buffer(l_bytes, l_bytes + a_text.size());
}

std::string text_of(ordwel::buffer const &a_bytes)
{
    return std::string(reinterpret_cast<char const *>(a_bytes.begin()), static_cast<std::size_t>(a_bytes.size()));
}

} // namespace ordwel_test

#include <cstdio>
#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace ordwel_test {

void redirect_stdout_to_stderr()
{
    std::fflush(stdout);
#if defined(_WIN32)
    _dup2(_fileno(stderr), _fileno(stdout));
#else
    dup2(fileno(stderr), fileno(stdout));
#endif
}

} // namespace ordwel_test
