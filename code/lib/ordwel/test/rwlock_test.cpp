#include <ordwel/es.h>
#include <ordwel/rwlock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

enum class held { none, read, write };

// What another thread can take right now: the read lock, the write lock.
held taken_by_others(rwlock const &a_lock)
{
    held l_result = held::none;
    std::thread([&] {
        if (a_lock.trylock_wr()) {
            a_lock.unlock();
            l_result = held::write;
        } else if (a_lock.trylock_rd()) {
            a_lock.unlock();
            l_result = held::read;
        }
    }).join();
    return l_result;
}

TEST(rwlock, readers_share_and_writers_exclude)
{
    rwlock const l_lock;
    EXPECT_EQ(taken_by_others(l_lock), held::write) << "a free lock can be taken for writing";
    l_lock.lock_rd();
    EXPECT_EQ(taken_by_others(l_lock), held::read) << "held for reading: others read, nobody writes";
    ASSERT_TRUE(l_lock.trylock_rd());
    l_lock.unlock();
    l_lock.unlock();
    EXPECT_EQ(taken_by_others(l_lock), held::write);

    l_lock.lock_wr();
    EXPECT_EQ(taken_by_others(l_lock), held::none);
    l_lock.unlock();
    ASSERT_TRUE(l_lock.trylock_wr());
    EXPECT_EQ(taken_by_others(l_lock), held::none);
    l_lock.unlock();
}

TEST(rwlock, guards_hold_their_kind_for_the_scope)
{
    rwlock const l_lock;
    {
        scoped_rdlock const l_guard(l_lock);
        EXPECT_EQ(taken_by_others(l_lock), held::read);
    }
    {
        scoped_wrlock const l_guard(l_lock);
        EXPECT_EQ(taken_by_others(l_lock), held::none);
    }
    {
        scoped_rwlock const l_read(l_lock, false);
        EXPECT_EQ(taken_by_others(l_lock), held::read);
    }
    {
        scoped_rwlock const l_write(l_lock, true);
        EXPECT_EQ(taken_by_others(l_lock), held::none);
    }
    EXPECT_EQ(taken_by_others(l_lock), held::write);

    // Built with false, a guard adopts what the caller holds.
    l_lock.lock_wr();
    {
        scoped_wrlock const l_adopted(l_lock, false);
    }
    EXPECT_EQ(taken_by_others(l_lock), held::write);
    l_lock.lock_rd();
    try {
        scoped_rdlock const l_adopted(l_lock, false);
        throw std::runtime_error("leaving");
    } catch (std::runtime_error const &) {
    }
    EXPECT_EQ(taken_by_others(l_lock), held::write) << "an unwinding scope releases too";

    scoped_rdlock l_first(l_lock);
    scoped_rdlock const l_second(l_lock);
    EXPECT_EQ(&(l_first = l_second), &l_first);
}

// Readers and writers on a shared pair of counters: a reader never sees a half-done write.
TEST(rwlock, writers_are_exclusive_under_contention)
{
    rwlock const l_lock;
    long l_first = 0;
    long l_second = 0;
    std::atomic<bool> l_torn{false};
    std::vector<std::thread> l_threads;
    for (int l_index = 0; l_index < 4; ++l_index) {
        l_threads.emplace_back([&, l_index] {
            for (int l_step = 0; l_step < 2000; ++l_step) {
                if (l_index % 2 == 0) {
                    scoped_wrlock const l_guard(l_lock);
                    ++l_first;
                    ++l_second;
                } else {
                    scoped_rdlock const l_guard(l_lock);
                    if (l_first != l_second) {
                        l_torn = true;
                    }
                }
            }
        });
    }
    for (std::thread &l_thread : l_threads) {
        l_thread.join();
    }
    EXPECT_FALSE(l_torn);
    EXPECT_EQ(l_first, 4000);
}

} // namespace
