// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_OS_MONITOR_POOL_H
#define ORDWEL_SRC_OS_MONITOR_POOL_H

#include <cstddef>
#include <memory>
#include <vector>

#include <ordwel/mutex.h>
#include <ordwel/thread.h>

namespace ordwel {

// Threads that watch child processes (and feed their input), kept between children. Each thread
// runs one body at a time, to its end, so a body that blocks holds up no other; a thread whose
// body has returned parks and takes the next body handed to the pool. Handing a body to a parked
// thread costs a wake-up, where a thread of its own would cost a thread start.
//
// A pool and its threads keep each other alive: only close() ends the parked threads.
class monitor_pool : public std::enable_shared_from_this<monitor_pool> {
public:
    // At most this many threads stay parked; a thread that finds as many parked ends instead,
    // detached, as does one that finds the pool closed.
    static constexpr std::size_t k_parked_limit = 4;

    // The pool of this process, made on first use. A child made by fork starts a pool of its own,
    // as its parent's threads did not come along. Once the library is being unloaded (or the
    // process exits) the pool is closed and each call gives a closed pool.
    static std::shared_ptr<monitor_pool> current();

    // A closed pool parks no thread: each body gets a thread that ends with it.
    explicit monitor_pool(bool a_closed);
    ~monitor_pool();
    monitor_pool(monitor_pool const &) = delete;
    monitor_pool &operator=(monitor_pool const &) = delete;

    // Runs a_body once on a parked thread, or else on a new one; a_keep lives until a_body has
    // returned. Raises es::call "thread create failed" when a new thread cannot start, and a_body
    // does not run.
    void run(thread_base &a_body, std::shared_ptr<void> a_keep);
    // From now on no thread parks. The parked threads end and are joined here; a thread still
    // running a body ends when the body returns, unjoined.
    void close();
    // The threads parked now.
    std::size_t parked_count() const;

private:
    class worker;

    mutex m_lock;
    std::vector<worker *> m_parked; // the most recently parked last: it is taken first
    bool m_closed;
};

} // namespace ordwel

#endif
