#include "toolbox.h"

#include <fstream>
#include <iterator>
#include <vector>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include <ordwel/ds.h>

namespace ordwel_toolbox {

namespace {

// ds_og::print_buf writes to the standard error stream; for the tool its dump is the output, so
// standard error stands in for standard output while it runs.
class stderr_to_stdout {
public:
    stderr_to_stdout()
    {
        std::fflush(stdout);
        std::fflush(stderr);
        m_saved = dup(2);
        if (m_saved >= 0) {
            dup2(1, 2);
        }
    }
    stderr_to_stdout(stderr_to_stdout const &) = delete;
    stderr_to_stdout &operator=(stderr_to_stdout const &) = delete;
    ~stderr_to_stdout()
    {
        std::fflush(stderr);
        if (m_saved >= 0) {
            dup2(m_saved, 2);
            close(m_saved);
        }
    }

private:
    int m_saved;
};

} // namespace

int run_hexdump(std::string const &a_path)
{
    std::ifstream l_file(a_path, std::ios::binary);
    if (!l_file) {
        std::fprintf(stderr, "*** cannot open file `%s'\n", a_path.c_str());
        return k_exit_failed;
    }
    std::vector<unsigned char> const l_bytes((std::istreambuf_iterator<char>(l_file)),
                                             std::istreambuf_iterator<char>());
    if (l_file.bad()) {
        std::fprintf(stderr, "*** cannot read file `%s'\n", a_path.c_str());
        return k_exit_failed;
    }
    if (l_bytes.empty()) {
        return k_exit_ok;
    }
    // Channel 0 is on from the start; the dump is written only while it is.
    bool const l_channel_was_on = ordwel::ds_og::mask_bit(0);
    ordwel::ds_og::mask_set_bit(0);
    {
        stderr_to_stdout const l_redirect;
        ordwel::ds_og::print_buf(0, l_bytes.data(), l_bytes.size());
    }
    if (!l_channel_was_on) {
        ordwel::ds_og::mask_clear_bit(0);
    }
    return k_exit_ok;
}

} // namespace ordwel_toolbox
