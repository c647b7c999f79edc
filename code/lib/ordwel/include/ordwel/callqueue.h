// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CALLQUEUE_H
#define ORDWEL_CALLQUEUE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <set>
#include <string>
#include <vector>

#include <ordwel/condition.h>
#include <ordwel/export.h>
#include <ordwel/mutex.h>
#include <ordwel/object.h>

namespace ordwel {

/// The flags of callqueue::add_call and add_exit_call. Other bits are ignored.
enum e_callqueue_flag : unsigned {
    /// Admit a call with this id only once in the life of the queue.
    callqueue_unique = 2,
    /// From a thread other than the owner: return only when the call has run.
    callqueue_blocking = 4,
    /// From the owner: queue the call instead of running it on the spot.
    callqueue_deferred = 8
};

class callqueue_object;
extern template class ORDWEL_API ptr_refcount<callqueue_object>;

/// A call handed to the callqueue: a derived class gives operator() its body. Held through
/// ptr_refcount<callqueue_object>; a queued call stays alive while it waits and while it runs.
class ORDWEL_API callqueue_object : public object_refcount {
public:
    /// A call with no id yet.
    callqueue_object();
    /// Runs when the last reference goes.
    ~callqueue_object() override;

    callqueue_object(callqueue_object const &) = delete;
    callqueue_object &operator=(callqueue_object const &) = delete;

    /// The call's body, run on the queue's owner thread.
    virtual void operator()() = 0;

    /// Memory for a call. Calls are made on one thread and, as a rule, freed on the owner's: a
    /// freed call's memory is kept for the next call of that size that any thread makes, up to a
    /// bound; larger calls and what passes the bound use the general heap.
    static void *operator new(std::size_t a_size);
    /// Gives back what operator new gave.
    static void operator delete(void *a_block, std::size_t a_size) noexcept;
    /// Memory for a call with a stricter alignment than the general heap's: from the general heap.
    static void *operator new(std::size_t a_size, std::align_val_t a_align);
    /// Gives back what the aligned operator new gave.
    static void operator delete(void *a_block, std::align_val_t a_align) noexcept;
    /// As the plain operator new, null instead of std::bad_alloc.
    static void *operator new(std::size_t a_size, std::nothrow_t const &) noexcept;
    /// Gives back what the non-throwing operator new gave, when the constructor raised.
    static void operator delete(void *a_block, std::nothrow_t const &) noexcept;
    /// Builds a call in storage that the caller provides.
    static void *operator new(std::size_t, void *a_place) noexcept { return a_place; }
    /// Does nothing: the storage is the caller's.
    static void operator delete(void *, void *) noexcept {}

private:
    friend class callqueue;

    std::string const &get_id() const;
    void set_id(std::string const &a_id);
    void lock() const;
    void unlock() const;
    void wait() const;
    void signal() const;

    // A place in one of the queue's lists: the next place and the queue's reference to the call.
    // The object carries one place of its own; a call queued while that one is taken gets a place
    // on the heap, and so does a blocking caller's, which carries the mark that its call has ended
    // (set under the object's mutex, and read by the caller also without it) and which the caller
    // and the queue share, so that a caller cancelled in its wait leaves nothing dangling.
    struct link {
        enum class kind : unsigned char { own, heap, waited };

        link *m_next = nullptr;
        // The address of a place further on in the owner's walk, which it asks the processor for
        // while it waits for the next: on the list, a place that the same thread queued a few
        // places earlier; once the owner has put the list in order, the place a few on in the
        // run. It may have run and gone since: an address for the cache, never read through.
        std::uintptr_t m_older = 0;
        ptr_refcount<callqueue_object> m_call;
        kind m_kind = kind::own;
        std::atomic<bool> m_ended{false};
    };

    std::string m_id;
    mutex m_mutex;
    condition m_condition;
    link m_link;
    // Whether a list holds the object's own place: taken by the producer that queues the object,
    // given back by the owner once a run has taken the call off the list.
    std::atomic<bool> m_link_taken;
    // Held while m_id is written: one object may be handed over by several threads at once.
    std::atomic<bool> m_id_busy;
};

/// The process's one queue of calls to one thread, the owner: the thread that first called
/// instance(). Any thread adds calls; the owner alone runs them, in order of arrival, whenever it
/// calls run(), and ends the queue with exit(), which runs the exit calls.
class ORDWEL_API callqueue {
public:
    /// The queue, built on first use; the first caller becomes the owner. Call it once on the
    /// owner before other threads use the queue.
    static callqueue &instance();

    /// Lives to the end of the process; pending calls are dropped unrun.
    ~callqueue();

    callqueue(callqueue const &) = delete;
    callqueue &operator=(callqueue const &) = delete;

    /// Hands a call over; see e_callqueue_flag. On the owner a call without callqueue_deferred runs
    /// at once, and its exception reaches the caller. Raises es::call once exit() has begun, and
    /// es::null for a null call.
    void add_call(ptr_refcount<callqueue_object> a_call, std::string const &a_id, unsigned a_flags);
    /// Adds a call for exit() to run; only callqueue_unique counts among the flags.
    void add_exit_call(ptr_refcount<callqueue_object> a_call, std::string const &a_id, unsigned a_flags);

    /// Owner only: runs the calls pending at this moment. Calls added meanwhile wait for the next
    /// run. An exception of a call is dropped, and the remaining calls run.
    void run();
    /// Owner only: closes the queue to new calls and runs the exit calls. Pending calls stay for a
    /// later run().
    void exit();
    /// Whether exit() has begun: the queue takes no more calls.
    [[nodiscard]] bool exited() const;

private:
    using link = callqueue_object::link;

    // A list of calls, pushed without a lock: each producer links its place in front of the head
    // with one compare-and-swap, and the owner takes the whole list in one exchange and turns it
    // round into the order of arrival. The head has a cache line of its own, apart from the flags
    // that every producer reads.
    struct alignas(64) link_list {
        std::atomic<link *> m_head{nullptr};

        void push(link &a_link);
        link *take_in_order();
    };

    struct waited_link;
    class held_call;
    class taken_calls;

    callqueue();
    static link &place_for(callqueue_object &a_call);
    static void write_id(callqueue_object &a_call, std::string const &a_id);

    link_list m_calls;
    // Guards m_unique_ids.
    mutex m_calls_mutex;
    link_list m_exit_calls;
    std::atomic<bool> m_exited;
    // Counts the owner's takes of m_calls: a producer that sees no change for many of its own
    // calls gives way to other threads now and then (see add_call). Every producer reads it and
    // the owner writes it once per take, so it has a cache line of its own, apart from m_exited
    // and from the owner's own fields below, which change with every call.
    alignas(64) std::atomic<unsigned> m_takes;
    alignas(64) std::set<std::string> m_unique_ids;
    /// The owner's alone: the objects whose calls run further up its stack. A call that drains the
    /// queue itself may meet its own object again in the nested run; the owner holds that object's
    /// mutex already and must not take it a second time.
    std::vector<callqueue_object const *> m_running;
    /// The owner's alone: how many runs in a row found nothing pending, up to a bound.
    unsigned m_empty_runs;
};

} // namespace ordwel

#endif
