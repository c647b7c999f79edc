// SPDX-License-Identifier: MIT
#include <ordwel/thread.h>

#include <exception>

#include <pthread.h>
#include <sched.h>
#include <signal.h>

#include <ordwel/ds.h>
#include <ordwel/es.h>

#include "sync/forced_unwind.h"
#include "sync/native.h"

namespace ordwel {

namespace {

pthread_t &native(unsigned char (&a_storage)[thread::k_native_size])
{
    return *native_of<pthread_t>(a_storage);
}

// Every thread starts here. No exception leaves a thread: whatever the body lets go ends the
// process with a text that says what it was. A thrown object is never const in C++, so the two
// const clauses stand for platforms where it may be, and the compiler rightly calls them dead.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wexceptions"
#endif
ORDWEL_PASSES_FORCED_UNWIND void *thread_start(void *a_body)
{
    try {
        (*static_cast<thread_base *>(a_body))();
    }
    ORDWEL_PASS_FORCED_UNWIND
    catch (es::base &l_error)
    {
        ds::abort(ORDWEL_HERE, "exception: '%s' at '%s:%u'; '%s'\n", l_error.what(), l_error.file(), l_error.line(),
                  l_error.msg());
    }
    catch (es::base const &l_error)
    {
        ds::abort(ORDWEL_HERE, "const exception: '%s' at '%s:%u'; '%s'\n", l_error.what(), l_error.file(),
                  l_error.line(), l_error.msg());
    }
    catch (std::exception &l_error)
    {
        ds::abort(ORDWEL_HERE, "std::exception: '%s'\n", l_error.what());
    }
    catch (std::exception const &l_error)
    {
        ds::abort(ORDWEL_HERE, "const std::exception: '%s'\n", l_error.what());
    }
    catch (...)
    {
        ds::abort(ORDWEL_HERE, "exception: 'unknown exception' at [ n/a:0 ]; 'n/a'\n");
    }
    return nullptr;
}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace

thread_base::~thread_base() = default;

void thread_base::terminate()
{
}

thread::thread() : m_body(nullptr), m_handle(), m_attached(false), m_detached(false)
{
    native_place<pthread_t>(m_handle);
}

thread::thread(thread_base &a_body) : thread()
{
    start(a_body);
}

thread::~thread()
{
    if (m_body != nullptr) {
        stop();
    }
}

void thread::start(thread_base &a_body)
{
    if (m_body != nullptr) {
        stop();
    }
    m_body = &a_body;
    m_attached = false;
    m_detached = false;
    pthread_t l_handle;
    if (pthread_create(&l_handle, nullptr, thread_start, m_body) != 0) {
        es::call::raise(ORDWEL_HERE, "thread create failed");
    }
    native(m_handle) = l_handle;
    m_attached = true;
}

// Stops the attached thread. Nothing here raises: a terminate() that raises is dropped so that
// the join still happens. A detached thread gets terminate() only, as it can neither be joined
// nor safely cancelled.
void thread::stop() noexcept
{
    if (!m_attached) {
        return;
    }
    pthread_t const l_handle = native(m_handle);
    if (pthread_equal(l_handle, pthread_self())) {
        if (!m_detached) {
            pthread_detach(l_handle);
            m_detached = true;
        }
        return;
    }
    // The join is a cancellation point, and a cancellation cannot leave this noexcept function:
    // the calling thread takes no cancellation until the stop is done.
    int l_cancel_state = 0;
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &l_cancel_state);
    try {
        m_body->terminate();
    } catch (...) {
    }
    if (!m_detached) {
        // An exception in flight in this thread (uncaught_exceptions() > 0): the body is
        // cancelled as well, so that the join cannot hold up the unwinding.
        if (std::uncaught_exceptions() > 0) {
            pthread_cancel(l_handle);
        }
        pthread_join(l_handle, nullptr);
        m_attached = false;
    }
    pthread_setcancelstate(l_cancel_state, nullptr);
}

void thread::join()
{
    if (!m_attached) {
        return;
    }
    pthread_t const l_handle = native(m_handle);
    if (pthread_equal(l_handle, pthread_self())) {
        return;
    }
    if (m_detached || pthread_join(l_handle, nullptr) != 0) {
        es::call::raise(ORDWEL_HERE, "thread join failed");
    }
    m_body = nullptr;
    m_attached = false;
}

void thread::detach()
{
    if (!m_attached || m_detached) {
        return;
    }
    pthread_detach(native(m_handle));
    m_detached = true;
}

void thread::cancel()
{
    if (!m_attached) {
        return;
    }
    if (m_detached || pthread_cancel(native(m_handle)) != 0) {
        es::call::raise(ORDWEL_HERE, "thread cancel failed");
    }
}

void thread::signal(int a_signal)
{
    if (!m_attached) {
        return;
    }
    if (m_detached || pthread_kill(native(m_handle), a_signal) != 0) {
        es::call::raise(ORDWEL_HERE, "thread signal failed");
    }
}

void thread::cancel_point()
{
    pthread_testcancel();
}

void thread::exit()
{
    pthread_exit(nullptr);
    // Not every thread library declares pthread_exit as not returning.
    std::terminate();
}

void thread::yield()
{
    if (sched_yield() != 0) {
        es::call::raise(ORDWEL_HERE, "thread yield failed");
    }
}

} // namespace ordwel
