// SPDX-License-Identifier: MIT
#include <ordwel/callqueue.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include <pthread.h>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "core/prefetch.h"
#include "diag/raise.h"
#include "sync/block_shelf.h"
#include "sync/forced_unwind.h"

namespace ordwel {

// The export comes from the declaration in the header.
template class ptr_refcount<callqueue_object>;

namespace {

// The thread that built the queue. Written once by the constructor, before instance() hands the
// queue to anyone.
pthread_t s_owner;

// Asks for the cache lines of a call that the owner is about to run: the call was made on another
// thread, and each of its lines would otherwise arrive only when the run first touches it.
void prefetch_call(callqueue_object const &a_call) noexcept
{
    char const *const l_bytes = reinterpret_cast<char const *>(&a_call);
    for (std::size_t l_offset = 0; l_offset < sizeof(callqueue_object); l_offset += 64) {
        internal::prefetch_for_writing(l_bytes + l_offset);
    }
    internal::prefetch_for_writing(l_bytes + sizeof(callqueue_object) - 1);
}

// The owner walks the list one link at a time, and each link lies in memory that a producer wrote
// last, in another core's cache: a walk that only follows the links waits for one line after the
// other. So each place carries the address of the place that the same thread queued k_recent
// places before, as a rule k_recent or more places further down the list, and the owner asks for
// that line while it waits for the next: the waits overlap.
std::size_t const k_recent = 8;

// The addresses of the last k_recent places noted, oldest first at m_next.
class recent_places {
public:
    // Notes a_place and gives the place noted k_recent places before it, or 0.
    std::uintptr_t note(void const *a_place) noexcept
    {
        std::uintptr_t const l_oldest = m_places[m_next];
        m_places[m_next] = reinterpret_cast<std::uintptr_t>(a_place);
        m_next = (m_next + 1) % k_recent;
        return l_oldest;
    }

private:
    std::uintptr_t m_places[k_recent] = {};
    std::size_t m_next = 0;
};

// What a thread keeps of its own calls: the places it queued last, and how many calls it has
// added since it last saw the owner take the list.
struct producer_marks {
    recent_places m_recent;
    unsigned m_takes_seen = 0;
    unsigned m_calls_since_take = 0;
};

thread_local producer_marks t_marks;

// A producer may hand over calls faster than the owner runs them, and when busy threads outnumber
// the processors, the scheduler shares a processor between the owner and the producers: the more
// producers, the smaller the owner's share, and the list grows while the owner waits for its turn.
// So a producer that has added k_calls_before_giving_way calls without seeing the owner take the
// list lets the threads that wait for its processor go first, at every k_calls_per_giving_way-th
// call from then on. It never waits: with nothing else to run, the yield returns at once.
unsigned const k_calls_before_giving_way = 256;
unsigned const k_calls_per_giving_way = 16;

void give_way_to_a_lagging_owner(std::atomic<unsigned> const &a_takes, producer_marks &a_marks)
{
    unsigned const l_takes = a_takes.load(std::memory_order_relaxed);
    if (l_takes != a_marks.m_takes_seen) {
        a_marks.m_takes_seen = l_takes;
        a_marks.m_calls_since_take = 0;
        return;
    }
    unsigned const l_calls = ++a_marks.m_calls_since_take;
    if (l_calls >= k_calls_before_giving_way && l_calls % k_calls_per_giving_way == 0) {
        std::this_thread::yield();
    }
}

// Asks for the line of a place noted by recent_places, if any: only an address, never read through.
void prefetch_place(std::uintptr_t a_place) noexcept
{
    if (a_place != 0) {
        internal::prefetch_for_writing(reinterpret_cast<void const *>(a_place));
    }
}

// How many runs in a row may find nothing before the owner gives way to other threads.
unsigned const k_empty_runs_before_yield = 64;

// How many times a blocking caller looks at the mark of its call before it sleeps.
int const k_mark_looks = 64;

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

callqueue_object::callqueue_object()
    : object_refcount(), m_id(), m_mutex(false), m_condition(), m_link(), m_link_taken(false), m_id_busy(false)
{
}

callqueue_object::~callqueue_object() = default;

void *callqueue_object::operator new(std::size_t a_size)
{
    return block_shelf::take(a_size);
}

void callqueue_object::operator delete(void *a_block, std::size_t a_size) noexcept
{
    block_shelf::give_back(a_block, a_size);
}

void *callqueue_object::operator new(std::size_t a_size, std::align_val_t a_align)
{
    return ::operator new(a_size, a_align);
}

void callqueue_object::operator delete(void *a_block, std::align_val_t a_align) noexcept
{
    ::operator delete(a_block, a_align);
}

void *callqueue_object::operator new(std::size_t a_size, std::nothrow_t const &) noexcept
{
    try {
        return block_shelf::take(a_size);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

// Every block of the shelves comes from the general heap, and may go back there.
void callqueue_object::operator delete(void *a_block, std::nothrow_t const &) noexcept
{
    ::operator delete(a_block);
}

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

// A blocking caller's place, held by the caller and by the queue; the last of the two to let go
// frees it. So an entry never points into memory that has gone, also when the caller's thread is
// cancelled in its wait.
struct callqueue::waited_link : link {
    std::atomic<int> m_holders{2};

    struct let_go {
        void operator()(waited_link *a_link) const
        {
            if (a_link->m_holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
                delete a_link;
            }
        }
    };
};

// The calls that run() or exit() took off a list, in order of arrival. Each is handed out with
// the queue's reference to it; the object's own place is free again, and a heap place is freed, as
// soon as the call is handed out. A blocking caller's place stays with the taken call: its mark is
// set when the call has ended. What remains when the run ends early is released.
class callqueue::taken_calls {
public:
    explicit taken_calls(link *a_head) : m_head(a_head), m_ahead(a_head)
    {
        for (int l_step = 0; l_step < k_calls_ahead && m_ahead != nullptr; ++l_step) {
            prefetch_call(*m_ahead->m_call);
            m_ahead = m_ahead->m_next;
        }
    }
    ~taken_calls()
    {
        while (m_head != nullptr) {
            next();
        }
    }

    taken_calls(taken_calls const &) = delete;
    taken_calls &operator=(taken_calls const &) = delete;

    bool empty() const { return m_head == nullptr; }

    struct taken {
        ptr_refcount<callqueue_object> m_call;
        std::unique_ptr<waited_link, waited_link::let_go> m_waited;
    };

    taken next()
    {
        link &l_link = *m_head;
        m_head = l_link.m_next;
        prefetch_place(l_link.m_older);
        if (m_ahead != nullptr) {
            prefetch_call(*m_ahead->m_call);
            m_ahead = m_ahead->m_next;
        }
        taken l_taken{std::move(l_link.m_call), nullptr};
        switch (l_link.m_kind) {
        case link::kind::own:
            l_taken.m_call->m_link_taken.store(false, std::memory_order_release);
            break;
        case link::kind::heap:
            delete &l_link;
            break;
        case link::kind::waited:
            l_taken.m_waited.reset(static_cast<waited_link *>(&l_link));
            break;
        }
        return l_taken;
    }

private:
    // The calls of a long run were asked for while the list was put in order, and the first of
    // them may have left the nearest cache by the time they run: each call handed out asks for
    // the place k_recent places on (its m_older, set by the walk) and for the call a few places
    // on, whose place has come by then.
    static int const k_calls_ahead = 4;

    link *m_head;
    link *m_ahead;
};

callqueue::callqueue()
    : m_calls(), m_calls_mutex(false), m_exit_calls(), m_exited(false), m_takes(0), m_unique_ids(), m_running(),
      m_empty_runs(0)
{
    s_owner = pthread_self();
}

callqueue::~callqueue()
{
    taken_calls const l_calls(m_calls.take_in_order());
    taken_calls const l_exit_calls(m_exit_calls.take_in_order());
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
    return m_exited.load(std::memory_order_acquire);
}

// The object's own place if no list holds it, else a new place that the owner frees when it takes
// the call.
callqueue::link &callqueue::place_for(callqueue_object &a_call)
{
    if (!a_call.m_link_taken.exchange(true, std::memory_order_acquire)) {
        return a_call.m_link;
    }
    link *const l_place = new link;
    l_place->m_kind = link::kind::heap;
    return *l_place;
}

// A short spin: another thread holds the id only for the length of a string assignment.
void callqueue::write_id(callqueue_object &a_call, std::string const &a_id)
{
    while (a_call.m_id_busy.exchange(true, std::memory_order_acquire)) {
        std::this_thread::yield();
    }
    try {
        a_call.set_id(a_id);
    } catch (...) {
        a_call.m_id_busy.store(false, std::memory_order_release);
        throw;
    }
    a_call.m_id_busy.store(false, std::memory_order_release);
}

// The place's link is written before the swap publishes it, and the swap releases it to the owner's
// exchange. A swap that fails only means that another producer came first; the place is then put in
// front of that one. The head's line is asked for ready for writing before it is read: the line
// comes from another core as a rule, and a plain read would fetch it shared, leaving the swap to
// fetch it a second time.
void callqueue::link_list::push(link &a_link)
{
    internal::prefetch_for_writing(&m_head);
    a_link.m_older = t_marks.m_recent.note(&a_link);
    link *l_head = m_head.load(std::memory_order_relaxed);
    do {
        a_link.m_next = l_head;
    } while (!m_head.compare_exchange_weak(l_head, &a_link, std::memory_order_release, std::memory_order_relaxed));
}

// The list holds the latest place first; the owner reverses it in its own memory, so that the order
// of the swaps, which is the order of arrival, becomes the order of the run. On the way it asks for
// each call's memory, and for the place that the call's producer queued before it, further down.
// Then it points each place's m_older at the place k_recent on in the order of the run, for the
// run's own walk: by then the lines of a long list have left the cache again.
callqueue::link *callqueue::link_list::take_in_order()
{
    link *l_rest = m_head.exchange(nullptr, std::memory_order_acquire);
    link *l_ordered = nullptr;
    // The places walked last: the one noted k_recent places before comes k_recent places after
    // this one in the order of the run.
    recent_places l_walked;
    while (l_rest != nullptr) {
        link *const l_next = l_rest->m_next;
        prefetch_place(l_rest->m_older);
        prefetch_call(*l_rest->m_call);
        l_rest->m_next = l_ordered;
        l_rest->m_older = l_walked.note(l_rest);
        l_ordered = l_rest;
        l_rest = l_next;
    }
    return l_ordered;
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
    write_id(l_call, a_id);
    if ((a_flags & callqueue_unique) != 0) {
        scoped_mutex::lock const l_lock(m_calls_mutex);
        if (!m_unique_ids.insert(a_id).second) {
            return;
        }
    }
    if (on_owner()) {
        if ((a_flags & callqueue_deferred) == 0) {
            l_call();
            return;
        }
    } else if ((a_flags & callqueue_blocking) != 0) {
        // The call enters the list under its object's mutex, which the owner holds while a call of
        // the object runs: a blocking add of a running object waits for that run to end. The
        // caller then waits for the mark of its own place. An owner that is polling runs the call
        // within moments, so the caller first looks at the mark a few times, letting other threads
        // go first between looks, and spares both threads a sleep and a wake-up. Then it sleeps on
        // the object's condition; the mark is set under the mutex, so no wake-up is lost.
        std::unique_ptr<waited_link, waited_link::let_go> const l_place(new waited_link);
        l_place->m_call = a_call;
        l_place->m_kind = link::kind::waited;
        {
            scoped_mutex::lock const l_call_lock(l_call.m_mutex);
            m_calls.push(*l_place);
        }
        for (int l_look = 0; l_look < k_mark_looks; ++l_look) {
            if (l_place->m_ended.load(std::memory_order_acquire)) {
                return;
            }
            std::this_thread::yield();
        }
        scoped_mutex::lock const l_call_lock(l_call.m_mutex);
        while (!l_place->m_ended.load(std::memory_order_relaxed)) {
            l_call.wait();
        }
        return;
    } else {
        give_way_to_a_lagging_owner(m_takes, t_marks);
    }
    link &l_link = place_for(l_call);
    l_link.m_call = std::move(a_call);
    m_calls.push(l_link);
}

void callqueue::add_exit_call(ptr_refcount<callqueue_object> a_call, std::string const &a_id, unsigned a_flags)
{
    if (exited()) {
        es::call::raise(ORDWEL_HERE, "Cannot add call to callqueue: callqueue has already exit()ed.");
    }
    if (!a_call) {
        es::null::raise(ORDWEL_HERE, "callqueue call is null");
    }
    write_id(*a_call, a_id);
    if ((a_flags & callqueue_unique) != 0) {
        scoped_mutex::lock const l_lock(m_calls_mutex);
        if (!m_unique_ids.insert(a_id).second) {
            return;
        }
    }
    link &l_link = place_for(*a_call);
    l_link.m_call = std::move(a_call);
    m_exit_calls.push(l_link);
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
            lock_soon(m_call);
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
    // A blocking caller holds its object's mutex while it puts the call on the list, and may be
    // seen there a moment before it lets go: the owner tries a few times before it sleeps on the
    // mutex, and so spares both threads a wake-up.
    static void lock_soon(callqueue_object const &a_call)
    {
        int const k_tries = 64;
        for (int l_try = 0; l_try < k_tries; ++l_try) {
            if (a_call.m_mutex.trylock()) {
                return;
            }
            std::this_thread::yield();
        }
        a_call.lock();
    }

    callqueue_object const &m_call;
    std::vector<callqueue_object const *> &m_running;
    bool const m_nested;
};

void callqueue::run()
{
    if (!on_owner()) {
        es::unsupp::raise(ORDWEL_HERE, "callqueue::run() called from different thread");
    }
    // Nothing pending: the list's cache line stays with the producers. An owner that finds nothing
    // many times in a row is waiting for calls by asking over and over; from then on each empty
    // run lets the threads that wait for this processor go first, often the very threads that are
    // to add the calls. Alone on its processor, the owner is back at once.
    if (m_calls.m_head.load(std::memory_order_relaxed) == nullptr) {
        if (m_empty_runs < k_empty_runs_before_yield) {
            ++m_empty_runs;
        } else {
            std::this_thread::yield();
        }
        return;
    }
    m_empty_runs = 0;
    // The pending calls move into a snapshot: calls added while these run wait for the next run,
    // and each reference goes when its call has ended.
    taken_calls l_calls(m_calls.take_in_order());
    m_takes.store(m_takes.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    // The end of one call, also when the owner's thread leaves by cancellation: under the
    // object's mutex the blocking caller's mark is set, or a call without a waiting caller gives
    // the plain signal. Once the mutex has gone, a caller's mark wakes every waiter of the object,
    // as each looks at its own mark; woken after the unlock, the caller finds the mutex free.
    struct call_end {
        callqueue_object &m_call;
        link *m_waited;

        ~call_end()
        {
            try {
                if (m_waited != nullptr) {
                    m_waited->m_ended.store(true, std::memory_order_release);
                } else {
                    m_call.signal();
                }
            } catch (es::base const &) {
            }
        }
    };
    struct caller_wake {
        callqueue_object &m_call;
        bool m_waited;

        ~caller_wake()
        {
            try {
                if (m_waited) {
                    m_call.m_condition.broadcast();
                }
            } catch (es::base const &) {
            }
        }
    };
    while (!l_calls.empty()) {
        taken_calls::taken const l_taken = l_calls.next();
        callqueue_object &l_call = *l_taken.m_call;
        link *const l_waited = l_taken.m_waited.get();
        caller_wake const l_wake{l_call, l_waited != nullptr};
        held_call const l_held(l_call, m_running);
        call_end const l_end{l_call, l_waited};
        call_dropping_exceptions(l_call);
    }
}

void callqueue::exit()
{
    if (!on_owner()) {
        es::unsupp::raise(ORDWEL_HERE, "callqueue::exit() called from different thread");
    }
    m_exited.store(true, std::memory_order_release);
    taken_calls l_calls(m_exit_calls.take_in_order());
    while (!l_calls.empty()) {
        taken_calls::taken const l_taken = l_calls.next();
        held_call const l_held(*l_taken.m_call, m_running);
        call_dropping_exceptions(*l_taken.m_call);
    }
}

} // namespace ordwel
