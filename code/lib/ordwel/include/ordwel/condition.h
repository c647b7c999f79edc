// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CONDITION_H
#define ORDWEL_CONDITION_H

#include <ordwel/export.h>
#include <ordwel/mutex.h>

namespace ordwel {

class timestamp;

/// A POSIX condition variable whose failures raise es::call. It holds no predicate and no mutex:
/// each wait names the mutex, which the caller holds, and holds it again on return. A wait that
/// returns true has only ended before its deadline; callers recheck their predicate.
class ORDWEL_API condition {
public:
    /// A new condition. Raises es::call when the platform cannot make one.
    condition();
    /// Frees the condition, which nobody waits on.
    ~condition();

    condition(condition const &) = delete;
    condition &operator=(condition const &) = delete;

    /// Wakes one waiter (signal) or all of them (broadcast); nothing when none waits.
    ///@{
    void signal() const;
    void broadcast() const;
    ///@}

    /// Gives back a_mutex, which the caller holds, waits to be woken and takes the mutex again.
    /// Wake-ups may come without a signal.
    void wait(mutex const &a_mutex) const;
    /// Waits at most a_duration from now (the clock is read once, at the start). false at the
    /// time-out.
    bool wait(mutex const &a_mutex, timestamp const &a_duration) const;
    /// Waits until the UTC moment a_deadline. false at the time-out, also for a moment in the past.
    bool wait_abs(mutex const &a_mutex, timestamp const &a_deadline) const;

    /// The bytes reserved in the object for the platform's condition.
    static constexpr unsigned k_native_size = 64;

private:
    alignas(8) mutable unsigned char m_native[k_native_size];
};

} // namespace ordwel

#endif
