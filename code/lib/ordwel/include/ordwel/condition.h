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
    condition();
    ~condition();

    condition(condition const &) = delete;
    condition &operator=(condition const &) = delete;

    void signal() const;
    void broadcast() const;

    void wait(mutex const &a_mutex) const;
    /// Waits at most a_duration from now (the clock is read once, at the start). false at the
    /// time-out.
    bool wait(mutex const &a_mutex, timestamp const &a_duration) const;
    /// Waits until the UTC moment a_deadline. false at the time-out, also for a moment in the past.
    bool wait_abs(mutex const &a_mutex, timestamp const &a_deadline) const;

    static constexpr unsigned k_native_size = 64;

private:
    alignas(8) mutable unsigned char m_native[k_native_size];
};

} // namespace ordwel

#endif
