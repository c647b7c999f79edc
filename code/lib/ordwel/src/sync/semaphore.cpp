// SPDX-License-Identifier: MIT
#include <ordwel/semaphore.h>

#include <ordwel/timestamp.h>

namespace ordwel {

namespace {

// The count wraps at the ends of its range rather than overflowing.
int wrapped_sum(int a_value, int a_count)
{
    unsigned const l_sum = static_cast<unsigned>(a_value) + static_cast<unsigned>(a_count);
    return static_cast<int>(l_sum);
}

} // namespace

semaphore::semaphore(int a_value) : m_mutex(false), m_condition(), m_value(a_value)
{
}

semaphore::~semaphore() = default;

int semaphore::get_value() const
{
    return m_value.load(std::memory_order_relaxed);
}

void semaphore::post()
{
    scoped_mutex::lock const l_lock(m_mutex);
    m_value.store(wrapped_sum(m_value.load(std::memory_order_relaxed), 1), std::memory_order_relaxed);
    m_condition.signal();
}

void semaphore::post(int a_count)
{
    scoped_mutex::lock const l_lock(m_mutex);
    m_value.store(wrapped_sum(m_value.load(std::memory_order_relaxed), a_count), std::memory_order_relaxed);
    m_condition.broadcast();
}

void semaphore::reset(int a_value)
{
    scoped_mutex::lock const l_lock(m_mutex);
    m_value.store(a_value, std::memory_order_relaxed);
    m_condition.broadcast();
}

bool semaphore::trywait()
{
    if (!m_mutex.trylock()) {
        return false;
    }
    scoped_mutex::lock const l_lock(m_mutex, false);
    int const l_value = m_value.load(std::memory_order_relaxed);
    if (l_value < 1) {
        return false;
    }
    m_value.store(l_value - 1, std::memory_order_relaxed);
    return true;
}

void semaphore::wait()
{
    scoped_mutex::lock const l_lock(m_mutex);
    while (m_value.load(std::memory_order_relaxed) < 1) {
        m_condition.wait(m_mutex);
    }
    m_value.store(m_value.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
}

bool semaphore::wait(timestamp const &a_duration)
{
    return wait_abs(timestamp(timestamp_with_utc(0, 0) + a_duration));
}

bool semaphore::wait_abs(timestamp const &a_deadline)
{
    scoped_mutex::lock const l_lock(m_mutex);
    bool l_woken = true;
    while (m_value.load(std::memory_order_relaxed) < 1 && l_woken) {
        l_woken = m_condition.wait_abs(m_mutex, a_deadline);
    }
    if (l_woken) {
        m_value.store(m_value.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    }
    return l_woken;
}

} // namespace ordwel
