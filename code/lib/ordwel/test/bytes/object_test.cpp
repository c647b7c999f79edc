// SPDX-License-Identifier: MIT
#include <ordwel/object.h>

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace ordwel;

// Counts its destructions, so that tests can see when release really deletes.
class counted : public object_refcount {
public:
    explicit counted(int *a_destroyed) : m_destroyed(a_destroyed) {}
    ~counted() override { ++*m_destroyed; }

private:
    int *m_destroyed;
};

TEST(object_refcount, count_starts_at_zero_and_is_never_copied)
{
    int l_destroyed = 0;
    counted l_object(&l_destroyed);
    EXPECT_EQ(l_object.refcount(), 0u);
    l_object.retain();
    l_object.retain();
    counted const l_copy(l_object);
    EXPECT_EQ(l_copy.refcount(), 0u);
    counted l_assigned(&l_destroyed);
    l_assigned.retain();
    l_assigned = l_object;
    EXPECT_EQ(l_assigned.refcount(), 1u);
    EXPECT_EQ(l_object.refcount(), 2u);
}

TEST(object_refcount, drop_hands_over_without_destroying_and_release_destroys)
{
    int l_destroyed = 0;
    auto *const l_object = new counted(&l_destroyed);
    l_object->retain();
    l_object->retain();
    EXPECT_EQ(l_object->drop(), nullptr);
    EXPECT_EQ(l_object->refcount(), 1u);
    EXPECT_EQ(l_object->drop(), l_object);
    EXPECT_EQ(l_object->refcount(), 0u);
    EXPECT_EQ(l_destroyed, 0);
    l_object->retain();
    l_object->release();
    EXPECT_EQ(l_destroyed, 1);
}

TEST(ptr_refcount, handles_retain_on_copy_and_release_on_destruction)
{
    int l_destroyed = 0;
    {
        ptr_refcount<counted> const l_first(new counted(&l_destroyed));
        EXPECT_EQ(l_first->refcount(), 1u);
        {
            ptr_refcount<counted> l_second(l_first);
            EXPECT_EQ(l_first->refcount(), 2u);
            EXPECT_TRUE(l_second == l_first);
            ptr_refcount<counted> l_third(std::move(l_second));
            EXPECT_FALSE(static_cast<bool>(l_second));
            EXPECT_EQ(l_first->refcount(), 2u);
            l_third = l_first; // self-share: count unchanged
            EXPECT_EQ(l_first->refcount(), 2u);
            l_third.reset();
            EXPECT_TRUE(l_third == nullptr);
            EXPECT_EQ(l_first->refcount(), 1u);
        }
        ptr_refcount<counted> l_other(new counted(&l_destroyed));
        l_other = l_first; // the other object loses its only owner
        EXPECT_EQ(l_destroyed, 1);
        EXPECT_EQ(&*l_other, l_first.get());
        ptr_refcount<object_refcount> const l_base(l_first);
        EXPECT_EQ(l_first->refcount(), 3u);
    }
    EXPECT_EQ(l_destroyed, 2);

    ptr_refcount<counted> l_null;
    ptr_refcount<counted> const l_null_copy(l_null);
    EXPECT_TRUE(l_null_copy == nullptr);
}

TEST(ptr_refcount, owners_in_many_threads_release_exactly_once)
{
    int l_destroyed = 0;
    {
        ptr_refcount<counted> const l_shared(new counted(&l_destroyed));
        std::vector<std::thread> l_threads;
        for (int l_thread = 0; l_thread < 4; ++l_thread) {
            l_threads.emplace_back([l_shared] {
                for (int l_round = 0; l_round < 10000; ++l_round) {
                    ptr_refcount<counted> const l_copy(l_shared);
                }
            });
        }
        for (std::thread &l_thread : l_threads) {
            l_thread.join();
        }
        EXPECT_EQ(l_shared->refcount(), 1u);
    }
    EXPECT_EQ(l_destroyed, 1);
}

TEST(object, is_an_empty_value)
{
    object const l_object;
    object const l_copy(l_object);
    EXPECT_LE(sizeof l_copy, 1u);
}

} // namespace
