#include "toolbox.h"

#include <fstream>
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

// Everything left in a_file. The stream's own read turns a failure of the file below (a directory
// that opened and cannot be read, say) into its bad state, where an iterator over the buffer would
// let the exception out.
std::vector<unsigned char> bytes_of(std::ifstream &a_file)
{
    std::vector<unsigned char> l_bytes;
    char l_chunk[65536];
    while (a_file.read(l_chunk, sizeof l_chunk) || a_file.gcount() > 0) {
        l_bytes.insert(l_bytes.end(), l_chunk, l_chunk + a_file.gcount());
    }
    return l_bytes;
}

} // namespace

int run_hexdump(std::string const &a_path)
{
    std::ifstream l_file(a_path, std::ios::binary);
    if (!l_file) {
        std::fprintf(stderr, "*** cannot open file `%s'\n", a_path.c_str());
        return k_exit_failed;
    }
    std::vector<unsigned char> const l_bytes = bytes_of(l_file);
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
