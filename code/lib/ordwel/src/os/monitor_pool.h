// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_OS_MONITOR_POOL_H
#define ORDWEL_SRC_OS_MONITOR_POOL_H

#include <cstddef>
#include <memory>
#include <vector>

#include <ordwel/mutex.h>
#include <ordwel/thread.h>

#include "platform/process.h"

namespace ordwel {

// Threads that watch child processes (and feed their input), kept between children. Each thread
// runs one body at a time, to its end, so a body that blocks holds up no other; a thread whose
// body has returned parks and takes the next body.
//
// A body may wait for a handle to become ready (a child's pidfd): where the platform lets threads
// wait on many handles together, the parked threads wait on all such handles at once, and the body
// starts on one of them only when its handle is ready, so that handing a body over wakes no thread
// (waking a thread on an idle processor costs the waker tens of microseconds on a virtual machine).
// Elsewhere a parked thread is woken for the body at once.
//
// A pool and its threads keep each other alive: only close() ends the parked threads.
class monitor_pool : public std::enable_shared_from_this<monitor_pool> {
public:
    // At most this many threads stay parked; a thread that finds as many parked ends instead,
    // detached, as does one that finds the pool closed.
    static constexpr std::size_t k_parked_limit = 4;

    // The pool of this process, made on first use. It is closed before the process forks, so
    // that neither side keeps threads it lacks, and when the library is unloaded or the process
    // exits; a later call makes a new one, or after the unload gives a closed pool.
    static std::shared_ptr<monitor_pool> current();

    // A closed pool parks no thread: each body gets a thread that ends with it.
    explicit monitor_pool(bool a_closed);
    ~monitor_pool();
    monitor_pool(monitor_pool const &) = delete;
    monitor_pool &operator=(monitor_pool const &) = delete;

    // Runs a_body once on a pooled thread, when a_ready is readable (k_no_handle: at once); a_keep
    // lives until a_body has returned. a_body may start before a_ready is readable and waits for
    // it itself. Raises es::call "thread create failed" when a thread is needed and cannot
    // start, and a_body does not run.
    void run(thread_base &a_body, std::shared_ptr<void> a_keep, platform::handle a_ready = platform::k_no_handle);
    // From now on no thread parks. The parked threads end and are joined here; a body still waiting
    // for its handle gets a thread of its own; a thread running a body ends when the body returns,
    // unjoined.
    void close();
    // The threads parked now.
    std::size_t parked_count() const;

private:
    class worker;
    struct job;

    // Under m_lock: a thread that runs a_first, or that parks at once for null.
    void start_worker(job *a_first);
    // Under m_lock: makes the wait set, where the platform has one; false where it has none.
    bool open_wait_set();
    void close_wait_set();
    // Under m_lock: the pool goes on without its wait set, which failed.
    void abandon_wait_set();
    // Under m_lock: gives each body waiting in the set a thread of its own.
    void hand_out_waiting();
    // Under m_lock: puts a job in the wait set, with a parked thread to take it up; false, with
    // the job still the caller's, when the set does not take it.
    bool wait_in_set(std::unique_ptr<job> &a_job);
    // Under m_lock, which it gives up while it waits: the next job for a thread parked on the wait
    // set; null once the pool is closed.
    job *wait_for_job(worker &a_worker);

    mutex m_lock;
    bool m_closed;
    std::size_t m_threads = 0;  // threads that run a body or are parked
    std::size_t m_starting = 0; // threads started to park on the wait set, not parked yet
    // The threads parked, the most recent last: with a wait set they wait on it, without one each
    // on its own condition, and the most recent is woken first.
    std::vector<worker *> m_parked;
    // With a wait set: the set, an event in it that close() sets to wake every parked thread, and
    // the jobs whose handles wait in it.
    platform::handle m_wait_set = platform::k_no_handle;
    platform::handle m_closing = platform::k_no_handle;
    bool m_wait_set_tried = false;
    std::vector<job *> m_waiting;
};

} // namespace ordwel

#endif
