#include <ordwel/callqueue.h>

#include <algorithm>
#include <utility>

#include <pthread.h>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "diag/raise.h"
#include "sync/forced_unwind.h"

namespace ordwel {

// The export comes from the declaration in the header.
template class ptr_refcount<callqueue_object>;

namespace {

// The thread that built the queue. Written once by the constructor, before instance() hands the
// queue to anyone.
pthread_t s_owner;

bool on_owner()
{
    return pthread_equal(pthread_self(), s_owner) != 0;
}

// Runs a queued call and drops whatever it raises; only the end of the owner's thread passes.
ORDWEL_PASSES_FORCED_UNWIND void call_dropping_exceptions(callqueue_object &a_call)
{
    try {
        a_call();
    }
    ORDWEL_PASS_FORCED_UNWIND
    catch (...)
    {
    }
}

} // namespace

callqueue_object::callqueue_object() : object_refcount(), m_id(), m_mutex(false), m_condition()
{
}

callqueue_object::~callqueue_object() = default;

std::string const &callqueue_object::get_id() const
{
    return m_id;
}

void callqueue_object::set_id(std::string const &a_id)
{
    if (&a_id != &m_id) {
        m_id = a_id;
    }
}

void callqueue_object::lock() const
{
    m_mutex.lock();
}

void callqueue_object::unlock() const
{
    m_mutex.unlock();
}

void callqueue_object::wait() const
{
    m_condition.wait(m_mutex);
}

void callqueue_object::signal() const
{
    m_condition.signal();
}

callqueue::callqueue()
    : m_calls(), m_calls_mutex(false), m_exit_calls(), m_exited(false), m_exited_mutex(false), m_unique_ids()
{
    s_owner = pthread_self();
}

callqueue::~callqueue()
{
    m_unique_ids.clear();
}

// A function-local static, so that a first use from two threads at once builds one queue; the
// thread whose call builds it becomes the owner.
callqueue &callqueue::instance()
{
    static callqueue s_instance;
    return s_instance;
}

bool callqueue::exited() const
{
    scoped_mutex::lock const l_lock(m_exited_mutex);
    return m_exited;
}

void callqueue::add_call(ptr_refcount<callqueue_object> a_call, std::string const &a_id, unsigned a_flags)
{
    if (exited()) {
        diag::raise_format<es::call>(ORDWEL_HERE, "Cannot add '%s' call to callqueue: callqueue has already exit()ed.",
                                     a_id.c_str());
    }
    if (!a_call) {
        es::null::raise(ORDWEL_HERE, "callqueue call is null");
    }
    callqueue_object &l_call = *a_call;
    bool const l_owner = on_owner();
    bool const l_blocking = !l_owner && (a_flags & callqueue_blocking) != 0;
    bool const l_at_once = l_owner && (a_flags & callqueue_deferred) == 0;
    // A call that is simply queued takes the list mutex once: its list node is made beforehand
    // and moved in with the id and the unique check.
    std::list<pending> l_node;
    if (!l_blocking && !l_at_once) {
        l_node.push_back(pending{std::move(a_call), nullptr});
    }
    {
        // The id is written under the list mutex: the same object may be handed over by two
        // threads at once.
        scoped_mutex::lock const l_lock(m_calls_mutex);
        l_call.set_id(a_id);
        if ((a_flags & callqueue_unique) != 0 && !m_unique_ids.insert(a_id).second) {
            return;
        }
        if (!l_node.empty()) {
            m_calls.splice(m_calls.end(), l_node);
            return;
        }
    }
    if (l_at_once) {
        l_call();
        return;
    }
    // The object's mutex is held from before the call can be seen in the list until the wait gives
    // it up, and run() needs it to begin the call: the owner can neither start nor end the call
    // before this thread sleeps. The caller waits for the mark of its own entry.
    l_node.push_back(pending{a_call, std::make_shared<bool>(false)});
    bool const &l_ended = *l_node.back().m_ended;
    std::shared_ptr<bool> const l_keep = l_node.back().m_ended;
    scoped_mutex::lock const l_call_lock(l_call.m_mutex);
    {
        scoped_mutex::lock const l_lock(m_calls_mutex);
        m_calls.splice(m_calls.end(), l_node);
    }
    while (!l_ended) {
        l_call.wait();
    }
}

void callqueue::add_exit_call(ptr_refcount<callqueue_object> a_call, std::string const &a_id, unsigned a_flags)
{
    if (exited()) {
        es::call::raise(ORDWEL_HERE, "Cannot add call to callqueue: callqueue has already exit()ed.");
    }
    if (!a_call) {
        es::null::raise(ORDWEL_HERE, "callqueue call is null");
    }
    scoped_mutex::lock const l_lock(m_calls_mutex);
    a_call->set_id(a_id);
    if ((a_flags & callqueue_unique) != 0 && !m_unique_ids.insert(a_id).second) {
        return;
    }
    m_exit_calls.push_back(std::move(a_call));
}

// The owner holds an object's mutex while its call runs, and notes the object as running. An
// object that a nested run meets again is already held by the owner: it runs under that hold.
class callqueue::held_call {
public:
    held_call(callqueue_object const &a_call, std::vector<callqueue_object const *> &a_running)
        : m_call(a_call), m_running(a_running),
          m_nested(std::find(a_running.begin(), a_running.end(), &a_call) != a_running.end())
    {
        if (!m_nested) {
            m_call.lock();
        }
        m_running.push_back(&m_call);
    }
    ~held_call()
    {
        m_running.pop_back();
        if (!m_nested) {
            try {
                m_call.unlock();
            } catch (es::base const &) {
            }
        }
    }

    held_call(held_call const &) = delete;
    held_call &operator=(held_call const &) = delete;

private:
    callqueue_object const &m_call;
    std::vector<callqueue_object const *> &m_running;
    bool const m_nested;
};

void callqueue::run()
{
    if (!on_owner()) {
        es::unsupp::raise(ORDWEL_HERE, "callqueue::run() called from different thread");
    }
    // The pending calls move into a snapshot under the list mutex (no copy): calls added while
    // these run wait for the next run, and each reference goes when the snapshot ends.
    std::list<pending> l_calls;
    {
        scoped_mutex::lock const l_lock(m_calls_mutex);
        l_calls.splice(l_calls.end(), m_calls);
    }
    // The end of one call, also when the owner's thread leaves by cancellation: the blocking
    // caller's mark is set and the object's waiters are woken before its mutex goes. A caller's
    // mark wakes every waiter of the object, as each looks at its own mark; a call without a
    // waiting caller gives the plain signal.
    struct call_end {
        callqueue_object &m_call;
        bool *m_ended;

        ~call_end()
        {
            try {
                if (m_ended != nullptr) {
                    *m_ended = true;
                    m_call.m_condition.broadcast();
                } else {
                    m_call.signal();
                }
            } catch (es::base const &) {
            }
        }
    };
    for (pending &l_pending : l_calls) {
        callqueue_object &l_call = *l_pending.m_call;
        held_call const l_held(l_call, m_running);
        call_end const l_end{l_call, l_pending.m_ended.get()};
        call_dropping_exceptions(l_call);
    }
}

void callqueue::exit()
{
    if (!on_owner()) {
        es::unsupp::raise(ORDWEL_HERE, "callqueue::exit() called from different thread");
    }
    {
        scoped_mutex::lock const l_lock(m_exited_mutex);
        m_exited = true;
    }
    std::list<ptr_refcount<callqueue_object>> l_calls;
    {
        scoped_mutex::lock const l_lock(m_calls_mutex);
        l_calls.splice(l_calls.end(), m_exit_calls);
    }
    for (ptr_refcount<callqueue_object> &l_ref : l_calls) {
        held_call const l_held(*l_ref, m_running);
        call_dropping_exceptions(*l_ref);
    }
}

} // namespace ordwel
