// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_SCRIPTED_STREAMS_H
#define ORDWEL_TEST_SCRIPTED_STREAMS_H

#include <string>
#include <vector>

#include <ordwel/stream.h>

namespace ordwel_test {

// A reader over a text that hands it out in pieces: each read gives at most the next length of
// the script (the last length repeats), so that tests can see how callers cope with short reads.
// It counts its calls and the sizes asked.
class scripted_rd : public ordwel::stream::rd {
public:
    explicit scripted_rd(std::string a_data, std::vector<ordwel::uint64> a_pieces = {});

    ordwel::uint64 read(void *a_destination, ordwel::uint64 a_size) override;
    ordwel::uint64 tell() override { return m_pos; }

    ordwel::uint64 calls() const { return m_calls; }
    std::vector<ordwel::uint64> const &asked() const { return m_asked; }

private:
    std::string m_data;
    std::vector<ordwel::uint64> m_pieces;
    ordwel::uint64 m_pos = 0;
    ordwel::uint64 m_calls = 0;
    std::vector<ordwel::uint64> m_asked;
};

// A writer that keeps every write apart, so that tests can check what arrived in which call.
class recording_wr : public ordwel::stream::wr {
public:
    void write(void const *a_source, ordwel::uint64 a_size) override;
    void flush() override { ++m_flushes; }
    ordwel::uint64 tell() override { return m_total; }

    // Everything written, in order.
    std::string all() const;
    std::vector<std::string> const &writes() const { return m_writes; }
    int flushes() const { return m_flushes; }

private:
    std::vector<std::string> m_writes;
    ordwel::uint64 m_total = 0;
    int m_flushes = 0;
};

// A writer whose every write fails.
class failing_wr : public ordwel::stream::wr {
public:
    void write(void const *a_source, ordwel::uint64 a_size) override;
    void flush() override {}
    ordwel::uint64 tell() override { return 0; }
};

} // namespace ordwel_test

#endif
