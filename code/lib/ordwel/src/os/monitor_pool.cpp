// SPDX-License-Identifier: MIT
#include "os/monitor_pool.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <ordwel/condition.h>
#include <ordwel/es.h>

namespace ordwel {

// A body handed to the pool, with what it keeps alive. With a wait set it waits there under its
// handle: the caller's, or an event of its own, set from the start, for a body that runs at once.
struct monitor_pool::job {
    job(thread_base &a_body, std::shared_ptr<void> a_keep, platform::handle a_ready)
        : m_body(a_body), m_keep(std::move(a_keep)), m_ready(a_ready)
    {
    }
    ~job() { platform::handle_close(m_event); }
    job(job const &) = delete;
    job &operator=(job const &) = delete;

    thread_base &m_body;
    std::shared_ptr<void> m_keep;
    platform::handle m_ready;
    platform::handle m_event = platform::k_no_handle;
};

class monitor_pool::worker : public thread_base {
public:
    worker(std::shared_ptr<monitor_pool> a_pool, job *a_first)
        : m_pool(std::move(a_pool)), m_starting(a_first == nullptr), m_job(a_first)
    {
    }
    void operator()() override;
    // Hands a job (or, to end it, none) to a worker parked on its own condition. The caller holds
    // the pool's lock, which keeps the worker from ending (and going) before the signal is out;
    // the worker itself waits under a lock of its own, free when it wakes.
    void wake(job *a_job);
    // Waits on the worker's own condition for wake().
    job *park();

    thread m_thread;

private:
    std::shared_ptr<monitor_pool> m_pool;
    // Started to park on the wait set: the pool counts it as parked from the start, so that no
    // other thread is started for the same purpose meanwhile.
    bool m_starting;
    mutex m_wait_lock;
    condition m_woken_changed;
    bool m_woken = false; // under m_wait_lock
    job *m_job;
};

void monitor_pool::worker::wake(job *a_job)
{
    {
        scoped_mutex::lock l_lock(m_wait_lock);
        m_job = a_job;
        m_woken = true;
    }
    m_woken_changed.signal();
}

monitor_pool::job *monitor_pool::worker::park()
{
    scoped_mutex::lock l_lock(m_wait_lock);
    while (!m_woken) {
        m_woken_changed.wait(m_wait_lock);
    }
    m_woken = false;
    return m_job;
}

void monitor_pool::worker::operator()()
{
    monitor_pool &l_pool = *m_pool;
    job *l_job = m_job;
    for (;;) {
        if (l_job != nullptr) {
            l_job->m_body();
            // What the body kept alive may go here, with its handles: outside the pool's lock.
            delete l_job;
        }
        scoped_mutex::lock l_lock(l_pool.m_lock);
        if (m_starting) {
            m_starting = false;
            --l_pool.m_starting;
        }
        if (l_pool.m_closed || l_pool.m_parked.size() >= k_parked_limit) {
            --l_pool.m_threads;
            break;
        }
        l_pool.m_parked.push_back(this);
        if (l_pool.m_wait_set != platform::k_no_handle) {
            l_job = l_pool.wait_for_job(*this);
        } else {
            scoped_mutex::unlock l_unlock(l_pool.m_lock);
            l_job = park();
        }
        if (l_job == nullptr) {
            // Closed while parked: close() joins this thread.
            return;
        }
    }
    // Not parked, so nobody joins this thread: deleting its own handle detaches it. The pool
    // lives on until the last of its threads lets go of it.
    std::shared_ptr<monitor_pool> const l_pool_kept = std::move(m_pool);
    delete this;
}

monitor_pool::job *monitor_pool::wait_for_job(worker &a_worker)
{
    platform::handle const l_set = m_wait_set;
    for (;;) {
        void *l_key = nullptr;
        platform::status l_waited;
        {
            scoped_mutex::unlock l_unlock(m_lock);
            l_waited = platform::wait_set_wait(l_set, l_key);
        }
        if (l_waited.failed()) {
            // The set is gone from under the pool (a descriptor closed by someone else): the
            // pool goes on without it, as where the platform has none.
            if (m_wait_set == l_set) {
                abandon_wait_set();
            }
            if (m_closed) {
                return nullptr;
            }
            scoped_mutex::unlock l_unlock(m_lock);
            return a_worker.park();
        }
        if (m_closed) {
            // close() took this thread with the parked ones, and the job it was woken for.
            return nullptr;
        }
        auto const l_found = std::find(m_waiting.begin(), m_waiting.end(), static_cast<job *>(l_key));
        if (l_found == m_waiting.end()) {
            continue;
        }
        job *const l_job = *l_found;
        m_waiting.erase(l_found);
        m_parked.erase(std::find(m_parked.begin(), m_parked.end(), &a_worker));
        platform::wait_set_remove(l_set, l_job->m_ready);
        // A thread must go on waiting while handles do: a body may block until another child has
        // been reported.
        if (m_parked.empty() && m_starting == 0 && !m_waiting.empty()) {
            try {
                start_worker(nullptr);
            } catch (es::call const &) {
                // The handles are taken up when a thread parks again.
            }
        }
        return l_job;
    }
}

monitor_pool::monitor_pool(bool a_closed) : m_closed(a_closed)
{
}

monitor_pool::~monitor_pool()
{
    platform::handle_close(m_closing);
    platform::handle_close(m_wait_set);
}

void monitor_pool::start_worker(job *a_first)
{
    // Started under the lock, which the new thread takes before it can end: it never finds its
    // handle half written.
    std::unique_ptr<worker> l_worker(new worker(shared_from_this(), a_first));
    l_worker->m_thread.start(*l_worker);
    l_worker.release();
    ++m_threads;
    if (a_first == nullptr) {
        ++m_starting;
    }
}

bool monitor_pool::open_wait_set()
{
    if (!m_wait_set_tried) {
        m_wait_set_tried = true;
        platform::handle l_set = platform::k_no_handle;
        platform::handle l_closing = platform::k_no_handle;
        if (platform::wait_set_create(l_set).failed() || platform::event_create(l_closing, false).failed() ||
            platform::wait_set_add(l_set, l_closing, nullptr, false).failed()) {
            platform::handle_close(l_closing);
            platform::handle_close(l_set);
            return false;
        }
        m_wait_set = l_set;
        m_closing = l_closing;
    }
    return m_wait_set != platform::k_no_handle;
}

void monitor_pool::close_wait_set()
{
    platform::handle_close(m_closing);
    platform::handle_close(m_wait_set);
    m_wait_set_tried = false;
}

void monitor_pool::hand_out_waiting()
{
    for (job *l_job : m_waiting) {
        try {
            start_worker(l_job);
        } catch (es::call const &) {
            // Nothing can watch the child then; it stays unreaped until the process ends.
            delete l_job;
        }
    }
    m_waiting.clear();
}

void monitor_pool::abandon_wait_set()
{
    // The descriptors' numbers may belong to others by now: they are left alone.
    m_wait_set = platform::k_no_handle;
    m_closing = platform::k_no_handle;
    hand_out_waiting();
}

bool monitor_pool::wait_in_set(std::unique_ptr<job> &a_job)
{
    if (a_job->m_ready == platform::k_no_handle) {
        // A body that runs at once waits on an event of its own, set from the start.
        if (platform::event_create(a_job->m_event, true).failed()) {
            return false;
        }
        a_job->m_ready = a_job->m_event;
    }
    if (m_parked.empty() && m_starting == 0) {
        start_worker(nullptr);
    }
    if (platform::wait_set_add(m_wait_set, a_job->m_ready, a_job.get(), true).failed()) {
        return false;
    }
    m_waiting.push_back(a_job.release());
    return true;
}

void monitor_pool::run(thread_base &a_body, std::shared_ptr<void> a_keep, platform::handle a_ready)
{
    std::unique_ptr<job> l_job(new job(a_body, std::move(a_keep), a_ready));
    scoped_mutex::lock l_lock(m_lock);
    try {
        if (!m_closed && open_wait_set()) {
            if (wait_in_set(l_job)) {
                return;
            }
        } else if (!m_closed && !m_parked.empty()) {
            worker *const l_worker = m_parked.back();
            m_parked.pop_back();
            l_worker->wake(l_job.release());
            return;
        }
        // A closed pool, or a handle the set did not take: a thread of its own.
        start_worker(l_job.get());
        l_job.release();
    } catch (...) {
        // No thread could start. A pool that has none gives its wait set back, so that a failed
        // start leaves no handle open.
        if (m_threads == 0) {
            close_wait_set();
        }
        throw;
    }
}

void monitor_pool::close()
{
    std::vector<worker *> l_parked;
    {
        scoped_mutex::lock l_lock(m_lock);
        m_closed = true;
        l_parked.swap(m_parked);
        m_threads -= l_parked.size();
        if (m_wait_set != platform::k_no_handle) {
            // Set for good: every thread parked on the set wakes and finds the pool closed.
            platform::event_set(m_closing);
        } else {
            for (worker *l_worker : l_parked) {
                l_worker->wake(nullptr);
            }
        }
        // The bodies still waiting for their handles get threads of their own, which wait for
        // the handles themselves.
        for (job *l_job : m_waiting) {
            platform::wait_set_remove(m_wait_set, l_job->m_ready);
        }
        hand_out_waiting();
    }
    for (worker *l_worker : l_parked) {
        l_worker->m_thread.join();
        delete l_worker;
    }
    scoped_mutex::lock l_lock(m_lock);
    close_wait_set();
}

std::size_t monitor_pool::parked_count() const
{
    scoped_mutex::lock l_lock(m_lock);
    return m_parked.size();
}

namespace {

// The pool of this process. Never freed, so that a child started from a destructor that runs after
// the library's own still finds it.
struct pool_registry {
    mutex m_lock;
    std::shared_ptr<monitor_pool> m_pool;
    // Pools that a thread made while another forked, as the child found them: their threads did
    // not come along, and their locks may be held, so they stay untouched.
    std::vector<std::shared_ptr<monitor_pool>> m_left_at_fork;
    // Without fork handlers a child of a fork could not tell its parent's pool from its own: then
    // no pool is kept, and every body gets a thread of its own.
    bool m_forkable = false;
    bool m_unloaded = false;
};

std::atomic<pool_registry *> s_registry{nullptr};

// A fork copies only the forking thread. The parked threads end first, so that neither side keeps
// a pool whose threads it lacks, and a process whose children have all ended forks with no
// thread of the library running; both sides start a fresh pool when they next need one.
void registry_before_fork()
{
    pool_registry &l_registry = *s_registry.load();
    std::shared_ptr<monitor_pool> l_pool;
    {
        scoped_mutex::lock l_lock(l_registry.m_lock);
        l_pool = std::move(l_registry.m_pool);
    }
    if (l_pool != nullptr) {
        l_pool->close();
    }
    l_registry.m_lock.lock();
}

void registry_after_fork_in_parent()
{
    s_registry.load()->m_lock.unlock();
}

void registry_after_fork_in_child()
{
    pool_registry &l_registry = *s_registry.load();
    if (l_registry.m_pool != nullptr) {
        l_registry.m_left_at_fork.push_back(std::move(l_registry.m_pool));
    }
    l_registry.m_lock.unlock();
}

pool_registry &registry()
{
    static pool_registry *const l_registry = [] {
        pool_registry *const l_made = new pool_registry;
        s_registry.store(l_made);
        platform::status const l_handlers = platform::fork_handlers_add(
            registry_before_fork, registry_after_fork_in_parent, registry_after_fork_in_child);
        l_made->m_forkable = !l_handlers.failed();
        return l_made;
    }();
    return *l_registry;
}

// When the library goes (it is unloaded, or the process exits), no parked thread stays behind,
// where the platform lets threads end at that moment.
struct pool_unloader {
    ~pool_unloader()
    {
        pool_registry *const l_registry = s_registry.load();
        if (l_registry == nullptr || !platform::unload_may_join_threads()) {
            return;
        }
        std::shared_ptr<monitor_pool> l_pool;
        {
            scoped_mutex::lock l_lock(l_registry->m_lock);
            l_registry->m_unloaded = true;
            l_pool = std::move(l_registry->m_pool);
        }
        if (l_pool != nullptr) {
            l_pool->close();
        }
    }
} s_unloader;

} // namespace

std::shared_ptr<monitor_pool> monitor_pool::current()
{
    pool_registry &l_registry = registry();
    if (!l_registry.m_forkable) {
        return std::make_shared<monitor_pool>(true);
    }
    scoped_mutex::lock l_lock(l_registry.m_lock);
    if (l_registry.m_unloaded) {
        return std::make_shared<monitor_pool>(true);
    }
    if (l_registry.m_pool == nullptr) {
        l_registry.m_pool = std::make_shared<monitor_pool>(false);
    }
    return l_registry.m_pool;
}

} // namespace ordwel
