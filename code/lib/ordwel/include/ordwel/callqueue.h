// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CALLQUEUE_H
#define ORDWEL_CALLQUEUE_H

#include <atomic>
#include <memory>
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

private:
    friend class callqueue;

    std::string const &get_id() const;
    void set_id(std::string const &a_id);
    void lock() const;
    void unlock() const;
    void wait() const;
    void signal() const;

    // A place in one of the queue's lists: the next place, the queue's reference to the call, and
    // for a blocking caller the mark that its call has ended. A heap place holds itself through
    // m_self until the owner takes it off the list.
    struct link {
        link *m_next = nullptr;
        ptr_refcount<callqueue_object> m_call;
        std::shared_ptr<link> m_self;
        bool m_waited = false;
        bool m_ended = false;
    };

    std::string m_id;
    mutex m_mutex;
    condition m_condition;
    // The place that the object carries, so that a plain call is queued without an allocation;
    // taken while the object waits on a list, under the queue's list mutex.
    link m_link;
    std::atomic<bool> m_link_taken;
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

    // A list of calls in order of arrival, linked through the places of the calls.
    struct link_list {
        std::atomic<link *> m_head{nullptr};
        link *m_tail = nullptr;
    };

    class held_call;
    class taken_calls;

    callqueue();
    link &place_for(callqueue_object &a_call);
    static void append(link_list &a_list, link &a_link);

    link_list m_calls;
    mutex m_calls_mutex;
    link_list m_exit_calls;
    std::atomic<bool> m_exited;
    std::set<std::string> m_unique_ids;
    /// The owner's alone: the objects whose calls run further up its stack. A call that drains the
    /// queue itself may meet its own object again in the nested run; the owner holds that object's
    /// mutex already and must not take it a second time.
    std::vector<callqueue_object const *> m_running;
};

} // namespace ordwel

#endif
