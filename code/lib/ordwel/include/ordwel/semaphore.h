// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SEMAPHORE_H
#define ORDWEL_SEMAPHORE_H

#include <atomic>

#include <ordwel/condition.h>
#include <ordwel/export.h>
#include <ordwel/mutex.h>

namespace ordwel {

class timestamp;

/// A counting semaphore made of a mutex, a condition and a signed count. At or below 0 a waiter
/// blocks; reset and post may drive the count below 0, and nothing clamps it. Arithmetic on the
/// count wraps at the ends of the 32-bit range instead of overflowing.
class ORDWEL_API semaphore {
public:
    /// A semaphore whose count starts at a_value.
    explicit semaphore(int a_value = 0);
    /// Frees the semaphore, which nobody waits on.
    ~semaphore();

    semaphore(semaphore const &) = delete;
    semaphore &operator=(semaphore const &) = delete;

    /// The mutex that guards the count, and the condition that waiters wait on.
    ///@{
    [[nodiscard]] mutex const &get_mutex() const { return m_mutex; }
    [[nodiscard]] condition const &get_condition() const { return m_condition; }
    ///@}
    /// A snapshot of the count, read without the mutex.
    [[nodiscard]] int get_value() const;

    /// Adds 1 and wakes one waiter.
    void post();
    /// Adds a_count and wakes all waiters.
    void post(int a_count);
    /// Sets the count and wakes all waiters; those that find nothing wait again.
    void reset(int a_value);

    /// Takes one unit without blocking. false also when another thread holds the mutex.
    bool trywait();
    /// Waits until the count is 1 or more and takes one unit.
    void wait();
    /// Waits at most a_duration from now; the time spent waiting for the mutex counts. true when a
    /// unit was taken, false at the time-out.
    bool wait(timestamp const &a_duration);
    /// Waits until the UTC moment a_deadline. A count of 1 or more takes the unit without looking
    /// at the clock. true when a unit was taken, false at the time-out.
    bool wait_abs(timestamp const &a_deadline);

private:
    mutex m_mutex;
    condition m_condition;
    /// Written under m_mutex; atomic only so that get_value may read it without the mutex.
    std::atomic<int> m_value;
};

} // namespace ordwel

#endif
