// SPDX-License-Identifier: MIT
#include "os/monitor_pool.h"

#include <atomic>
#include <utility>

#include <ordwel/condition.h>

#include "platform/process.h"

namespace ordwel {

class monitor_pool::worker : public thread_base {
public:
    worker(std::shared_ptr<monitor_pool> a_pool, thread_base &a_body, std::shared_ptr<void> a_keep)
        : m_pool(std::move(a_pool)), m_body(&a_body), m_keep(std::move(a_keep))
    {
    }
    void operator()() override;
    // Gives a parked worker a body, or none to end it. The caller holds the pool's lock, which
    // keeps the worker from ending (and going) before the signal is out; the worker itself waits
    // under a lock of its own, which is free when it wakes.
    void wake(thread_base *a_body, std::shared_ptr<void> a_keep);

    thread m_thread;

private:
    // Waits for wake; false when woken without a body.
    bool park();

    std::shared_ptr<monitor_pool> m_pool;
    mutex m_wait_lock;
    condition m_woken_changed;
    // Under m_wait_lock while the worker is parked; its own while it runs.
    bool m_woken = false;
    thread_base *m_body;
    std::shared_ptr<void> m_keep;
};

void monitor_pool::worker::wake(thread_base *a_body, std::shared_ptr<void> a_keep)
{
    {
        scoped_mutex::lock l_lock(m_wait_lock);
        m_body = a_body;
        m_keep = std::move(a_keep);
        m_woken = true;
    }
    m_woken_changed.signal();
}

bool monitor_pool::worker::park()
{
    scoped_mutex::lock l_lock(m_wait_lock);
    while (!m_woken) {
        m_woken_changed.wait(m_wait_lock);
    }
    m_woken = false;
    return m_body != nullptr;
}

void monitor_pool::worker::operator()()
{
    monitor_pool &l_pool = *m_pool;
    for (;;) {
        (*m_body)();
        // What the body kept alive may go here, with its handles: outside the pool's lock.
        m_keep.reset();
        m_body = nullptr;
        {
            scoped_mutex::lock l_lock(l_pool.m_lock);
            if (l_pool.m_closed || l_pool.m_parked.size() >= k_parked_limit) {
                break;
            }
            l_pool.m_parked.push_back(this);
        }
        if (!park()) {
            // Closed while parked: close() joins this thread.
            return;
        }
    }
    // Not parked, so nobody joins this thread: deleting its own handle detaches it. The pool
    // lives on until the last of its threads lets go of it.
    std::shared_ptr<monitor_pool> const l_pool_kept = std::move(m_pool);
    delete this;
}

monitor_pool::monitor_pool(bool a_closed) : m_closed(a_closed)
{
}

monitor_pool::~monitor_pool() = default;

void monitor_pool::run(thread_base &a_body, std::shared_ptr<void> a_keep)
{
    scoped_mutex::lock l_lock(m_lock);
    if (!m_parked.empty()) {
        worker *const l_worker = m_parked.back();
        m_parked.pop_back();
        l_worker->wake(&a_body, std::move(a_keep));
        return;
    }
    // Started under the lock, which the new thread takes before it can end: it never finds its
    // handle half written.
    std::unique_ptr<worker> l_worker(new worker(shared_from_this(), a_body, std::move(a_keep)));
    l_worker->m_thread.start(*l_worker);
    l_worker.release();
}

void monitor_pool::close()
{
    std::vector<worker *> l_parked;
    {
        scoped_mutex::lock l_lock(m_lock);
        m_closed = true;
        l_parked.swap(m_parked);
        for (worker *l_worker : l_parked) {
            l_worker->wake(nullptr, nullptr);
        }
    }
    for (worker *l_worker : l_parked) {
        l_worker->m_thread.join();
        delete l_worker;
    }
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
