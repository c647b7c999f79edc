// SPDX-License-Identifier: MIT
#include <ordwel/semaphore.h>
#include <ordwel/timestamp.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using namespace std::chrono_literals;
using ordwel_test::eventually;

// Threads that each take one unit with wait(), counting their passes.
struct waiters {
    semaphore &m_semaphore;
    std::atomic<int> m_passed{0};
    std::vector<std::thread> m_threads;

    waiters(semaphore &a_semaphore, int a_count) : m_semaphore(a_semaphore)
    {
        for (int l_index = 0; l_index < a_count; ++l_index) {
            m_threads.emplace_back([this] {
                m_semaphore.wait();
                ++m_passed;
            });
        }
    }
    ~waiters()
    {
        for (std::thread &l_thread : m_threads) {
            l_thread.join();
        }
    }
};

TEST(semaphore, initial_value_lets_that_many_waits_pass_then_blocks_until_post)
{
    semaphore l_semaphore(2);
    l_semaphore.wait();
    l_semaphore.wait();
    EXPECT_EQ(l_semaphore.get_value(), 0);
    waiters l_third(l_semaphore, 1);
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(l_third.m_passed, 0);
    l_semaphore.post();
    EXPECT_TRUE(eventually([&] { return l_third.m_passed == 1; }));
    EXPECT_EQ(l_semaphore.get_value(), 0);
}

TEST(semaphore, trywait_takes_a_unit_only_without_blocking)
{
    semaphore l_semaphore;
    EXPECT_FALSE(l_semaphore.trywait());
    EXPECT_EQ(l_semaphore.get_value(), 0);
    l_semaphore.post();
    EXPECT_TRUE(l_semaphore.trywait());
    EXPECT_EQ(l_semaphore.get_value(), 0);

    // With the mutex held elsewhere, trywait fails although a unit is there.
    l_semaphore.post();
    bool l_result = true;
    {
        scoped_mutex::lock const l_guard(l_semaphore.get_mutex());
        std::thread([&] { l_result = l_semaphore.trywait(); }).join();
    }
    EXPECT_FALSE(l_result);
    EXPECT_EQ(l_semaphore.get_value(), 1);
}

TEST(semaphore, timed_waits_at_zero_past_deadlines_and_positive_values)
{
    semaphore l_semaphore(1);
    EXPECT_TRUE(l_semaphore.wait(timestamp(0, 1)));
    EXPECT_EQ(l_semaphore.get_value(), 0);
    EXPECT_FALSE(l_semaphore.wait(timestamp(0, 1)));
    EXPECT_EQ(l_semaphore.get_value(), 0);
    EXPECT_FALSE(l_semaphore.wait_abs(timestamp(1, 1)));
    EXPECT_EQ(l_semaphore.get_value(), 0);

    // A unit that is there is taken without looking at the clock, even past the deadline.
    l_semaphore.post();
    EXPECT_TRUE(l_semaphore.wait_abs(timestamp(1, 1)));
    EXPECT_EQ(l_semaphore.get_value(), 0);

    auto const l_start = std::chrono::steady_clock::now();
    EXPECT_FALSE(l_semaphore.wait(timestamp(40, 1000)));
    EXPECT_GE(std::chrono::steady_clock::now() - l_start, 35ms);
}

TEST(semaphore, timed_wait_takes_a_unit_posted_before_the_deadline)
{
    semaphore l_semaphore;
    std::thread l_poster([&] {
        std::this_thread::sleep_for(20ms);
        l_semaphore.post();
    });
    EXPECT_TRUE(l_semaphore.wait(timestamp(60, 1)));
    l_poster.join();
    EXPECT_EQ(l_semaphore.get_value(), 0);
}

// post(n) must wake every waiter, not one: both waiters have to pass.
TEST(semaphore, reset_to_zero_wakes_waiters_who_wait_again_and_post_n_wakes_them_all)
{
    semaphore l_semaphore;
    waiters l_waiters(l_semaphore, 2);
    std::this_thread::sleep_for(30ms);
    l_semaphore.reset(0);
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(l_waiters.m_passed, 0);
    l_semaphore.post(2);
    EXPECT_TRUE(eventually([&] { return l_waiters.m_passed == 2; }));
    EXPECT_EQ(l_semaphore.get_value(), 0);
}

TEST(semaphore, negative_reset_needs_that_many_posts_before_a_waiter_passes)
{
    semaphore l_semaphore;
    l_semaphore.reset(-2);
    EXPECT_EQ(l_semaphore.get_value(), -2);
    waiters l_waiter(l_semaphore, 1);
    l_semaphore.post();
    l_semaphore.post();
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(l_waiter.m_passed, 0);
    EXPECT_EQ(l_semaphore.get_value(), 0);
    l_semaphore.post();
    EXPECT_TRUE(eventually([&] { return l_waiter.m_passed == 1; }));
    EXPECT_EQ(l_semaphore.get_value(), 0);

    semaphore l_idle;
    l_idle.reset(-2);
    l_idle.post();
    l_idle.post();
    l_idle.post();
    EXPECT_EQ(l_idle.get_value(), 1);
    l_idle.post(-5);
    EXPECT_EQ(l_idle.get_value(), -4);
}

TEST(semaphore, count_wraps_at_the_ends_of_its_range)
{
    semaphore l_semaphore(INT_MAX);
    l_semaphore.post();
    EXPECT_EQ(l_semaphore.get_value(), INT_MIN);
    l_semaphore.post(-1);
    EXPECT_EQ(l_semaphore.get_value(), INT_MAX);
    l_semaphore.post(INT_MAX);
    EXPECT_EQ(l_semaphore.get_value(), -2);
}

// Many threads hand units back and forth; every unit posted is taken exactly once.
TEST(semaphore, units_are_conserved_between_many_threads)
{
    semaphore l_semaphore;
    std::atomic<int> l_taken{0};
    int const k_threads = 4;
    int const k_units = 2000;
    std::vector<std::thread> l_takers;
    for (int l_index = 0; l_index < k_threads; ++l_index) {
        l_takers.emplace_back([&] {
            for (int l_unit = 0; l_unit < k_units; ++l_unit) {
                if (l_unit % 2 == 0) {
                    l_semaphore.wait();
                } else {
                    while (!l_semaphore.wait(timestamp(1, 1000))) {
                    }
                }
                ++l_taken;
            }
        });
    }
    for (int l_unit = 0; l_unit < k_threads * k_units; ++l_unit) {
        if (l_unit % 3 == 0) {
            l_semaphore.post(1);
        } else {
            l_semaphore.post();
        }
    }
    for (std::thread &l_thread : l_takers) {
        l_thread.join();
    }
    EXPECT_EQ(l_taken, k_threads * k_units);
    EXPECT_EQ(l_semaphore.get_value(), 0);
}

} // namespace
