// SPDX-License-Identifier: MIT
#ifndef ORDWEL_RWLOCK_H
#define ORDWEL_RWLOCK_H

#include <ordwel/export.h>

namespace ordwel {

/// A POSIX reader-writer lock whose failures raise es::call. One unlock gives back either kind.
class ORDWEL_API rwlock {
public:
    /// An unlocked lock. Raises es::call when the platform cannot make one.
    rwlock();
    /// Frees the lock, which nobody holds.
    ~rwlock();

    rwlock(rwlock const &) = delete;
    rwlock &operator=(rwlock const &) = delete;

    /// Takes the lock for reading (shared) or for writing (exclusive), blocking while it is busy.
    ///@{
    void lock_rd() const;
    void lock_wr() const;
    ///@}
    /// Takes the lock for reading or for writing without blocking: true when taken, false when the
    /// lock is busy.
    ///@{
    bool trylock_rd() const;
    bool trylock_wr() const;
    ///@}
    /// Gives back the lock the caller holds, of either kind.
    void unlock() const;

    /// The bytes reserved in the object for the platform's lock.
    static constexpr unsigned k_native_size = 64;

private:
    alignas(8) mutable unsigned char m_native[k_native_size];
};

/// Guards over an rwlock, after the manner of scoped_mutex::lock. scoped_rdlock and scoped_wrlock
/// take the read or write lock (built with false they adopt a lock that the caller holds) and give
/// it back at the end of the scope. scoped_rwlock takes the kind that its flag names. A failure in
/// a destructor raises, unless an exception is already on its way through the calling thread; it is
/// dropped then.
struct ORDWEL_API scoped_rdlock {
    /// Takes a_lock for reading, or adopts the read lock the caller holds when a_take is false.
    explicit scoped_rdlock(rwlock const &a_lock, bool a_take = true);
    /// Gives the lock back.
    ~scoped_rdlock() noexcept(false);

    scoped_rdlock(scoped_rdlock const &) = delete;
    /// Does nothing: a guard stays with the lock it was built on.
    scoped_rdlock &operator=(scoped_rdlock const &) { return *this; }

private:
    rwlock const *m_lock;
};

/// Holds the write lock of an rwlock for its scope; see scoped_rdlock.
struct ORDWEL_API scoped_wrlock {
    /// Takes a_lock for writing, or adopts the write lock the caller holds when a_take is false.
    explicit scoped_wrlock(rwlock const &a_lock, bool a_take = true);
    /// Gives the lock back.
    ~scoped_wrlock() noexcept(false);

    scoped_wrlock(scoped_wrlock const &) = delete;
    /// Does nothing: a guard stays with the lock it was built on.
    scoped_wrlock &operator=(scoped_wrlock const &) { return *this; }

private:
    rwlock const *m_lock;
};

/// Holds the read or the write lock of an rwlock for its scope; see scoped_rdlock.
struct ORDWEL_API scoped_rwlock {
    /// a_write true takes the write lock, false the read lock.
    scoped_rwlock(rwlock const &a_lock, bool a_write);
    /// Gives the lock back.
    ~scoped_rwlock() noexcept(false);

    scoped_rwlock(scoped_rwlock const &) = delete;
    /// Does nothing: a guard stays with the lock it was built on.
    scoped_rwlock &operator=(scoped_rwlock const &) { return *this; }

private:
    rwlock const *m_lock;
};

} // namespace ordwel

#endif
