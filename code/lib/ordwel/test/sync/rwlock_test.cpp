// SPDX-License-Identifier: MIT
#include <ordwel/es.h>
#include <ordwel/rwlock.h>

#include <stdexcept>
#include <string>
#include <thread>

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

} // namespace
