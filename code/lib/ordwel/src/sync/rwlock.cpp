// SPDX-License-Identifier: MIT
#include <ordwel/rwlock.h>

#include <cerrno>
#include <exception>

#include <pthread.h>

#include <ordwel/es.h>

#include "sync/native.h"

namespace ordwel {

namespace {

pthread_rwlock_t *native(unsigned char (&a_storage)[rwlock::k_native_size])
{
    return native_of<pthread_rwlock_t>(a_storage);
}

// The end of a guard's scope: a failure raises, unless an exception is already on its way.
void unlock_at_scope_end(rwlock const &a_lock)
{
    try {
        a_lock.unlock();
    } catch (es::base const &) {
        if (std::uncaught_exceptions() == 0) {
            throw;
        }
    }
}

} // namespace

rwlock::rwlock() : m_native()
{
    if (pthread_rwlock_init(native_place<pthread_rwlock_t>(m_native), nullptr) != 0) {
        es::call::raise(ORDWEL_HERE, "rwlock init failed");
    }
}

rwlock::~rwlock()
{
    pthread_rwlock_destroy(native(m_native));
}

void rwlock::lock_rd() const
{
    if (pthread_rwlock_rdlock(native(m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "rwlock rdlock error");
    }
}

void rwlock::lock_wr() const
{
    if (pthread_rwlock_wrlock(native(m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "rwlock wrlock error");
    }
}

bool rwlock::trylock_rd() const
{
    int const l_result = pthread_rwlock_tryrdlock(native(m_native));
    if (l_result == 0) {
        return true;
    }
    if (l_result == EBUSY) {
        return false;
    }
    es::call::raise(ORDWEL_HERE, "rwlock tryrdlock error");
}

bool rwlock::trylock_wr() const
{
    int const l_result = pthread_rwlock_trywrlock(native(m_native));
    if (l_result == 0) {
        return true;
    }
    if (l_result == EBUSY) {
        return false;
    }
    es::call::raise(ORDWEL_HERE, "rwlock trywrlock error");
}

void rwlock::unlock() const
{
    if (pthread_rwlock_unlock(native(m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "rwlock unlock error");
    }
}

scoped_rdlock::scoped_rdlock(rwlock const &a_lock, bool a_take) : m_lock(&a_lock)
{
    if (a_take) {
        m_lock->lock_rd();
    }
}

scoped_rdlock::~scoped_rdlock() noexcept(false)
{
    unlock_at_scope_end(*m_lock);
}

scoped_wrlock::scoped_wrlock(rwlock const &a_lock, bool a_take) : m_lock(&a_lock)
{
    if (a_take) {
        m_lock->lock_wr();
    }
}

scoped_wrlock::~scoped_wrlock() noexcept(false)
{
    unlock_at_scope_end(*m_lock);
}

scoped_rwlock::scoped_rwlock(rwlock const &a_lock, bool a_write) : m_lock(&a_lock)
{
    if (a_write) {
        m_lock->lock_wr();
    } else {
        m_lock->lock_rd();
    }
}

scoped_rwlock::~scoped_rwlock() noexcept(false)
{
    unlock_at_scope_end(*m_lock);
}

} // namespace ordwel
