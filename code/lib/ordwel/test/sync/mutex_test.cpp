// SPDX-License-Identifier: MIT
#include <ordwel/condition.h>
#include <ordwel/es.h>
#include <ordwel/mutex.h>
#include <ordwel/timestamp.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/test_support.h"
#include "sync/mutex_text.h"

namespace {

using namespace ordwel;

// Whether another thread could take the mutex right now.
bool free_for_others(mutex const &a_mutex)
{
    bool l_taken = false;
    std::thread([&] {
        l_taken = a_mutex.trylock();
        if (l_taken) {
            a_mutex.unlock();
        }
    }).join();
    return l_taken;
}

TEST(mutex, default_mutex_is_busy_for_other_threads_while_held)
{
    mutex const l_mutex;
    EXPECT_TRUE(free_for_others(l_mutex));
    l_mutex.lock();
    EXPECT_FALSE(free_for_others(l_mutex));
    EXPECT_FALSE(free_for_others(l_mutex)) << "a failed trylock must not change the state";
    l_mutex.unlock();
    EXPECT_TRUE(free_for_others(l_mutex));

    mutex const l_named(std::string("jobs"));
    ASSERT_TRUE(l_named.trylock());
    EXPECT_FALSE(free_for_others(l_named));
    l_named.unlock();
}

TEST(mutex, recursive_mutex_needs_as_many_unlocks_as_locks)
{
    mutex const l_mutex(true);
    l_mutex.lock();
    ASSERT_TRUE(l_mutex.trylock());
    l_mutex.unlock();
    EXPECT_FALSE(free_for_others(l_mutex));
    l_mutex.unlock();
    EXPECT_TRUE(free_for_others(l_mutex));
}

// A recursive mutex checks its owner, so unlocking one that is not held fails for real. It has no
// name: the text keeps two blanks where the name would stand. winpthreads reports the failure as
// EINVAL where POSIX systems give EPERM.
#if defined(__SANITIZE_THREAD__)
#define ORDWEL_SKIP_UNDER_TSAN() GTEST_SKIP() << "ThreadSanitizer reports the deliberate misuse"
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORDWEL_SKIP_UNDER_TSAN() GTEST_SKIP() << "ThreadSanitizer reports the deliberate misuse"
#endif
#endif
#if !defined(ORDWEL_SKIP_UNDER_TSAN)
#define ORDWEL_SKIP_UNDER_TSAN() static_cast<void>(0)
#endif
#if defined(_WIN32)
char const *const k_free_unlock_text = "The value specified by mutex  is invalid (unlock)";
#else
char const *const k_free_unlock_text = "The current thread does not hold a lock on mutex  (unlock)";
#endif

TEST(mutex, unlocking_a_free_recursive_mutex_raises_the_unnamed_text)
{
    ORDWEL_SKIP_UNDER_TSAN();
    mutex const l_mutex(true);
    l_mutex.lock();
    l_mutex.unlock();
    EXPECT_EQ(ordwel_test::raised_at<es::call>([&] { l_mutex.unlock(); }),
              std::string(k_free_unlock_text) + " @ mutex.cpp");
}

TEST(mutex, failure_texts_by_operation_and_result)
{
    struct row {
        mutex_op op;
        int result;
        char const *name;
        char const *text;
    } const l_rows[] = {
        {mutex_op::lock, EDEADLK, "jobs", "A deadlock would occur if the thread blocked waiting for mutex jobs (lock)"},
        {mutex_op::lock, EINVAL, "jobs", "The value specified by mutex jobs is invalid (lock)"},
        {mutex_op::lock, EAGAIN, "jobs", "Undocumented mutex error (lock)"},
        {mutex_op::trylock, EINVAL, "jobs", "The value specified by mutex is invalid (trylock)"},
        {mutex_op::unlock, EPERM, "jobs", "The current thread does not hold a lock on mutex jobs (unlock)"},
        {mutex_op::unlock, EINVAL, "", "The value specified by mutex  is invalid (unlock)"},
        {mutex_op::unlock, EDEADLK, "jobs", "Undocumented mutex error (unlock)"},
    };
    for (row const &l_row : l_rows) {
        EXPECT_EQ(mutex_failure_text(l_row.op, l_row.result, l_row.name), l_row.text);
    }
    EXPECT_EQ(mutex_failure_text(mutex_op::lock, EINVAL, "a%sb"), "The value specified by mutex a%sb is invalid (lock)")
        << "the name is an argument of the format, never part of it";
}

TEST(scoped_mutex, lock_guard_takes_or_adopts_and_always_unlocks)
{
    mutex const l_mutex;
    {
        scoped_mutex::lock const l_guard(l_mutex);
        EXPECT_FALSE(free_for_others(l_mutex));
    }
    EXPECT_TRUE(free_for_others(l_mutex));

    l_mutex.lock();
    {
        scoped_mutex::lock const l_adopted(l_mutex, false);
        EXPECT_FALSE(free_for_others(l_mutex));
    }
    EXPECT_TRUE(free_for_others(l_mutex));
}

TEST(scoped_mutex, unlock_guard_gives_up_or_adopts_and_always_relocks)
{
    mutex const l_mutex;
    l_mutex.lock();
    {
        scoped_mutex::unlock const l_guard(l_mutex);
        EXPECT_TRUE(free_for_others(l_mutex));
    }
    EXPECT_FALSE(free_for_others(l_mutex));

    l_mutex.unlock();
    {
        scoped_mutex::unlock const l_adopted(l_mutex, false);
        EXPECT_TRUE(free_for_others(l_mutex));
    }
    EXPECT_FALSE(free_for_others(l_mutex));
    l_mutex.unlock();
}

// A guard whose release fails raises from its destructor in the ordinary case, and keeps quiet
// while another exception leaves its scope, which then arrives unchanged.
TEST(scoped_mutex, failing_guard_raises_unless_the_scope_is_unwinding)
{
    ORDWEL_SKIP_UNDER_TSAN();
    mutex const l_mutex(true);
    l_mutex.lock();
    l_mutex.unlock();
    EXPECT_EQ(ordwel_test::raised_text<es::call>([&] { scoped_mutex::lock const l_guard(l_mutex, false); }),
              k_free_unlock_text);
    EXPECT_EQ(ordwel_test::raised_text<std::exception>([&] {
                  scoped_mutex::lock const l_guard(l_mutex, false);
                  throw std::runtime_error("first");
              }),
              "first");

    // In a destructor that runs during unwinding the failure is dropped as well, even where the
    // destructor would have caught it: the guard only knows that an exception is on its way.
    struct inner {
        std::string *m_seen;
        mutex const *m_mutex;
        ~inner()
        {
            try {
                scoped_mutex::lock const l_guard(*m_mutex, false);
            } catch (es::call const &) {
                *m_seen += "+inner";
            }
        }
    };
    std::string l_seen;
    EXPECT_EQ(ordwel_test::raised_text<std::exception>([&] {
                  inner const l_inner{&l_seen, &l_mutex};
                  throw std::runtime_error("outer");
              }),
              "outer");
    EXPECT_EQ(l_seen, "") << "the inner guard raised nothing";
}

TEST(condition, zero_duration_and_past_deadline_time_out_with_the_mutex_held)
{
    mutex const l_mutex;
    condition const l_condition;
    scoped_mutex::lock const l_guard(l_mutex);
    EXPECT_FALSE(l_condition.wait(l_mutex, timestamp(0, 1000)));
    EXPECT_FALSE(free_for_others(l_mutex));
    EXPECT_FALSE(l_condition.wait_abs(l_mutex, timestamp(5, 1)));
    EXPECT_FALSE(free_for_others(l_mutex));
    EXPECT_FALSE(l_condition.wait_abs(l_mutex, timestamp(0, 1)));
}

// A moment a hair before a whole second converts to 1,000,000,000 ns; the wait must still read it
// as a moment (here in the past) and not fail as invalid.
TEST(condition, deadline_that_rounds_up_to_a_whole_second_is_a_valid_moment)
{
    mutex const l_mutex;
    condition const l_condition;
    scoped_mutex::lock const l_guard(l_mutex);
    unsigned long long const l_ntp_res = 1ull << 32;
    timestamp const l_deadline(1000 * l_ntp_res + (l_ntp_res - 1), l_ntp_res);
    ASSERT_EQ(l_deadline.as_timespec().tv_nsec, 1000000000L);
    EXPECT_FALSE(l_condition.wait_abs(l_mutex, l_deadline));
}

TEST(condition, relative_wait_lasts_its_duration_when_nobody_signals)
{
    mutex const l_mutex;
    condition const l_condition;
    scoped_mutex::lock const l_guard(l_mutex);
    auto const l_start = std::chrono::steady_clock::now();
    EXPECT_FALSE(l_condition.wait(l_mutex, timestamp(60, 1000)));
    EXPECT_GE(std::chrono::steady_clock::now() - l_start, std::chrono::milliseconds(50));
}

TEST(condition, signal_and_broadcast_wake_waiters_in_untimed_and_timed_waits)
{
    mutex const l_mutex;
    condition const l_condition;
    int l_generation = 0;
    std::atomic<int> l_woken{0};
    auto l_waiter = [&](bool a_timed) {
        scoped_mutex::lock const l_guard(l_mutex);
        int const l_seen = l_generation;
        while (l_generation == l_seen) {
            if (a_timed) {
                l_condition.wait(l_mutex, timestamp(60, 1));
            } else {
                l_condition.wait(l_mutex);
            }
        }
        ++l_woken;
    };
    std::thread l_first(l_waiter, false);
    std::thread l_second(l_waiter, true);
    std::thread l_third(l_waiter, false);
    // Let them sleep, then move the predicate once and wake all.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    {
        scoped_mutex::lock const l_guard(l_mutex);
        ++l_generation;
        l_condition.broadcast();
    }
    l_first.join();
    l_second.join();
    l_third.join();
    EXPECT_EQ(l_woken, 3);

    bool l_ready = false;
    bool l_result = false;
    std::thread l_timed([&] {
        scoped_mutex::lock const l_guard(l_mutex);
        while (!l_ready) {
            l_result = l_condition.wait(l_mutex, timestamp(60, 1));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    {
        scoped_mutex::lock const l_guard(l_mutex);
        l_ready = true;
        l_condition.signal();
    }
    l_timed.join();
    EXPECT_TRUE(l_result) << "a signalled timed wait reports true";
}

} // namespace
