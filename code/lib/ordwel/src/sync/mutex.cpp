// SPDX-License-Identifier: MIT
#include <ordwel/mutex.h>

#include <exception>

#include <pthread.h>

#include <ordwel/es.h>

#include "sync/mutex_text.h"
#include "sync/native.h"

namespace ordwel {

namespace {

[[noreturn]] void raise_failure(mutex_op a_op, int a_result, std::string const &a_name, uint32 a_line)
{
    std::string const l_text = mutex_failure_text(a_op, a_result, a_name);
    es::call::raise(source_basename(__FILE__), a_line, l_text.c_str());
}

} // namespace

mutex::mutex(bool a_recursive) : m_native(), m_name()
{
    // The default kind needs no attributes: a mutex built per queued call costs one init.
    int l_result = 0;
    if (a_recursive) {
        pthread_mutexattr_t l_attr;
        pthread_mutexattr_init(&l_attr);
        pthread_mutexattr_settype(&l_attr, PTHREAD_MUTEX_RECURSIVE);
        l_result = pthread_mutex_init(native_place<pthread_mutex_t>(m_native), &l_attr);
        pthread_mutexattr_destroy(&l_attr);
    } else {
        l_result = pthread_mutex_init(native_place<pthread_mutex_t>(m_native), nullptr);
    }
    if (l_result != 0) {
        es::call::raise(ORDWEL_HERE, "mutex init failed");
    }
}

mutex::mutex(std::string const &a_name) : m_native(), m_name(a_name)
{
    if (pthread_mutex_init(native_place<pthread_mutex_t>(m_native), nullptr) != 0) {
        es::call::raise(ORDWEL_HERE, "mutex init failed");
    }
}

mutex::~mutex()
{
    pthread_mutex_destroy(native());
}

void mutex::lock_failed(int a_result) const
{
    raise_failure(mutex_op::lock, a_result, m_name, __LINE__);
}

bool mutex::trylock() const
{
    int const l_result = pthread_mutex_trylock(native());
    if (l_result == 0) {
        return true;
    }
    if (l_result == EBUSY) {
        return false;
    }
    raise_failure(mutex_op::trylock, l_result, m_name, __LINE__);
}

void mutex::unlock_failed(int a_result) const
{
    raise_failure(mutex_op::unlock, a_result, m_name, __LINE__);
}

// A failure while an exception is on its way through the calling thread cannot be raised without
// terminating the process; it is dropped then. Otherwise it reaches the caller. The question is
// only asked once the operation has failed, so the guard costs nothing extra when it succeeds.
void scoped_mutex::rethrow_unless_unwinding()
{
    if (std::uncaught_exceptions() == 0) {
        throw;
    }
}

} // namespace ordwel
