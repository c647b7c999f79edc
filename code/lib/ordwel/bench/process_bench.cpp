// SPDX-License-Identifier: MIT
// A trivial child started and seen to its end: process (spawn, monitor thread, reap, report)
// beside posix_spawn and waitpid by hand, the least any launcher can do.
#include <condition_variable>
#include <mutex>
#include <string>

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <sys/wait.h>

#include <ordwel/process.h>

extern char **environ;

namespace {

char const *const k_program = "/bin/true";

class waiter : public ordwel::process::status {
public:
    void finished(ordwel::process *) override
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        m_done = true;
        m_changed.notify_one();
    }
    void stdout_data(unsigned char const *, unsigned int a_size) override { m_bytes += a_size; }
    void wait()
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        m_changed.wait(l_lock, [this] { return m_done; });
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_done = false;
    std::size_t m_bytes = 0;
};

void run_process(benchmark::State &a_state, unsigned a_flags)
{
    for (auto _ : a_state) {
        waiter l_waiter;
        ordwel::process l_child("bench", k_program, {}, {}, "", "", a_flags, &l_waiter);
        l_waiter.wait();
        if (l_child.get_status() != 0) {
            a_state.SkipWithError("child failed");
            break;
        }
    }
    a_state.SetItemsProcessed(a_state.iterations());
}

void BM_process_round_trip(benchmark::State &a_state)
{
    run_process(a_state, 0);
}
BENCHMARK(BM_process_round_trip)->UseRealTime();

void BM_process_round_trip_captured(benchmark::State &a_state)
{
    run_process(a_state, ordwel::process_capture);
}
BENCHMARK(BM_process_round_trip_captured)->UseRealTime();

void BM_posix_spawn_waitpid(benchmark::State &a_state)
{
    char *l_argv[] = {const_cast<char *>(k_program), nullptr};
    for (auto _ : a_state) {
        pid_t l_pid = 0;
        if (posix_spawn(&l_pid, k_program, nullptr, nullptr, l_argv, environ) != 0) {
            a_state.SkipWithError("spawn failed");
            break;
        }
        int l_status = 0;
        waitpid(l_pid, &l_status, 0);
        benchmark::DoNotOptimize(l_status);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_posix_spawn_waitpid)->UseRealTime();

} // namespace
