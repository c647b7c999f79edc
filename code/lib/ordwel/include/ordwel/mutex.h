// SPDX-License-Identifier: MIT
#ifndef ORDWEL_MUTEX_H
#define ORDWEL_MUTEX_H

#include <new>
#include <string>

#include <pthread.h>

#include <ordwel/export.h>

namespace ordwel {

/// A lock over a POSIX mutex whose failures raise es::call. Every operation but construction and
/// destruction is const, so a const reference is enough to use a lock. The name only fills the
/// messages of lock and unlock.
class ORDWEL_API mutex {
public:
    /// true builds a recursive mutex, false a default one.
    explicit mutex(bool a_recursive = false);
    /// A named default mutex; there is no named recursive one.
    explicit mutex(std::string const &a_name);
    /// Frees the mutex, which nobody holds.
    ~mutex();

    mutex(mutex const &) = delete;
    mutex &operator=(mutex const &) = delete;

    /// Takes the mutex, blocking while another thread holds it; raises es::call when the platform
    /// refuses (a default mutex taken twice by one thread may deadlock instead). lock and unlock
    /// call the platform inline, so that an uncontended lock costs what the platform's lock costs;
    /// only a failure leaves for the library.
    void lock() const
    {
        int const l_result = pthread_mutex_lock(native());
        if (l_result != 0) {
            lock_failed(l_result);
        }
    }
    /// true when taken, false when another thread holds it. Never blocks.
    bool trylock() const;
    /// Gives back the mutex the caller holds; raises es::call when the platform refuses.
    void unlock() const
    {
        int const l_result = pthread_mutex_unlock(native());
        if (l_result != 0) {
            unlock_failed(l_result);
        }
    }

    /// Room for the platform's mutex object, which lives here and not behind a pointer. The
    /// library checks at build time that the platform's object fits.
    static constexpr unsigned k_native_size = 64;

private:
    friend class condition;

    pthread_mutex_t *native() const noexcept { return std::launder(reinterpret_cast<pthread_mutex_t *>(m_native)); }
    /// Raise es::call with the text of a failed lock or unlock.
    [[noreturn]] void lock_failed(int a_result) const;
    [[noreturn]] void unlock_failed(int a_result) const;

    alignas(8) mutable unsigned char m_native[k_native_size];
    std::string m_name;
};

/// The scope of the two mutex guards. The guards release (or retake) in their destructors; a
/// failure there raises, unless an exception is already on its way through the calling thread,
/// when it is dropped so that the process is not terminated.
struct ORDWEL_API scoped_mutex {
    /// Does nothing: the scope holds no state.
    scoped_mutex &operator=(scoped_mutex const &) { return *this; }

    /// Holds a mutex for a scope. Built with false, it adopts a mutex that the caller already
    /// holds; it unlocks at the end of the scope either way.
    class ORDWEL_API lock {
    public:
        /// Locks a_mutex, unless a_lock is false: then the caller holds it already.
        explicit lock(mutex const &a_mutex, bool a_lock = true) : m_mutex(&a_mutex)
        {
            if (a_lock) {
                m_mutex->lock();
            }
        }
        /// Unlocks the mutex.
        ~lock() noexcept(false)
        {
            try {
                m_mutex->unlock();
            } catch (...) {
                rethrow_unless_unwinding();
            }
        }

        lock(lock const &) = delete;
        lock &operator=(lock const &) = delete;

    private:
        mutex const *m_mutex;
    };

    /// Gives a held mutex up for a scope. Built with false, the caller has already unlocked it;
    /// it locks again at the end of the scope either way.
    class ORDWEL_API unlock {
    public:
        /// Unlocks a_mutex, unless a_unlock is false: then the caller has unlocked it already.
        explicit unlock(mutex const &a_mutex, bool a_unlock = true) : m_mutex(&a_mutex)
        {
            if (a_unlock) {
                m_mutex->unlock();
            }
        }
        /// Locks the mutex again.
        ~unlock() noexcept(false)
        {
            try {
                m_mutex->lock();
            } catch (...) {
                rethrow_unless_unwinding();
            }
        }

        unlock(unlock const &) = delete;
        unlock &operator=(unlock const &) = delete;

    private:
        mutex const *m_mutex;
    };

private:
    /// Called in a handler: rethrows the failure of a guard's destructor, unless an exception is
    /// already on its way through the calling thread. The guards are inline so that they cost no
    /// more than the lock calls themselves.
    static void rethrow_unless_unwinding();
};

} // namespace ordwel

#endif
