// SPDX-License-Identifier: MIT
#include <ordwel/condition.h>

#include <cerrno>
#include <ctime>
#include <limits>

#include <pthread.h>

#include <ordwel/es.h>
#include <ordwel/timestamp.h>

#include "sync/native.h"

namespace ordwel {

namespace {

pthread_cond_t *native(unsigned char (&a_storage)[condition::k_native_size])
{
    return native_of<pthread_cond_t>(a_storage);
}

} // namespace

condition::condition() : m_native()
{
    if (pthread_cond_init(native_place<pthread_cond_t>(m_native), nullptr) != 0) {
        es::call::raise(ORDWEL_HERE, "condition init failed");
    }
}

condition::~condition()
{
    pthread_cond_destroy(native(m_native));
}

void condition::signal() const
{
    if (pthread_cond_signal(native(m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "condition signal failed");
    }
}

void condition::broadcast() const
{
    if (pthread_cond_broadcast(native(m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "condition broadcast failed");
    }
}

void condition::wait(mutex const &a_mutex) const
{
    if (pthread_cond_wait(native(m_native), native_of<pthread_mutex_t>(a_mutex.m_native)) != 0) {
        es::call::raise(ORDWEL_HERE, "condition wait failed");
    }
}

bool condition::wait(mutex const &a_mutex, timestamp const &a_duration) const
{
    return wait_abs(a_mutex, timestamp(timestamp_with_utc(0, 0) + a_duration));
}

bool condition::wait_abs(mutex const &a_mutex, timestamp const &a_deadline) const
{
    timespec l_deadline = a_deadline.as_timespec();
    // The conversion rounds the nanoseconds to nearest without carrying into the seconds, so a
    // moment a hair before a whole second reads 1,000,000,000 ns, which the wait would refuse as
    // invalid. It is the same moment as the next whole second.
    if (l_deadline.tv_nsec >= 1000000000L) {
        if (l_deadline.tv_sec < std::numeric_limits<decltype(l_deadline.tv_sec)>::max()) {
            l_deadline.tv_sec += 1;
            l_deadline.tv_nsec -= 1000000000L;
        } else {
            l_deadline.tv_nsec = 999999999L;
        }
    }
    int const l_result =
        pthread_cond_timedwait(native(m_native), native_of<pthread_mutex_t>(a_mutex.m_native), &l_deadline);
    if (l_result == 0) {
        return true;
    }
    if (l_result == ETIMEDOUT) {
        return false;
    }
    if (l_result == EINTR) {
        es::call::raise(ORDWEL_HERE, "condition timedwait was interrupted by signal");
    }
    es::call::raise(ORDWEL_HERE, "condition timedwait error");
}

} // namespace ordwel
