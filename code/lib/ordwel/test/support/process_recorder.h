// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TEST_PROCESS_RECORDER_H
#define ORDWEL_TEST_PROCESS_RECORDER_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include <ordwel/process.h>

namespace ordwel_test {

// Collects what a monitor reports and lets the test wait for the end.
class recorder : public ordwel::process::status {
public:
    void finished(ordwel::process *a_process) override
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        ++m_finished;
        m_status_seen = a_process->get_status();
        m_changed.notify_all();
    }

    void stdout_data(unsigned char const *a_data, unsigned int a_size) override
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        m_output.append(reinterpret_cast<char const *>(a_data), a_size);
        m_pieces.push_back(a_size);
        m_changed.notify_all();
    }

    bool wait_finished(std::chrono::milliseconds a_limit = std::chrono::milliseconds(20000))
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        return m_changed.wait_for(l_lock, a_limit, [this] { return m_finished > 0; });
    }

    bool wait_output(std::string const &a_text, std::chrono::milliseconds a_limit = std::chrono::milliseconds(20000))
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        return m_changed.wait_for(l_lock, a_limit, [&] { return m_output.find(a_text) != std::string::npos; });
    }

    std::string output()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_output;
    }

    std::vector<unsigned> pieces()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_pieces;
    }

    int finished_count()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_finished;
    }

    int status_seen()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_status_seen;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::string m_output;
    std::vector<unsigned> m_pieces;
    int m_finished = 0;
    int m_status_seen = -2;
};

// 1 MiB with no repeat at a power of two, so that a lost or doubled piece shows.
inline std::string large_input()
{
    std::string l_input(std::size_t(1) << 20, '\0');
    for (std::size_t l_index = 0; l_index < l_input.size(); ++l_index) {
        l_input[l_index] = static_cast<char>((l_index * 7 + l_index / 251) & 0xff);
    }
    return l_input;
}

} // namespace ordwel_test

#endif
