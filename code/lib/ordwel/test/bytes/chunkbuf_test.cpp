// SPDX-License-Identifier: MIT
#include <ordwel/chunkbuf.h>

#include <type_traits>

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::text_of;

static_assert(std::is_base_of<chunkbuf, framebuf>::value, "a framebuf is a chunkbuf");
static_assert(!std::is_base_of<framebuf, chunkbuf>::value, "a chunkbuf is no framebuf");
static_assert(!std::is_constructible<chunkbuf, uint64, unsigned char const *>::value, "no (count, bytes) constructor");

// Counts the blocks that chunk and frame buffers free, through a derived type whose destructor
// runs only when the whole object is destroyed.
int g_destroyed = 0;

template <class T> class watched : public T {
public:
    using T::T;
    ~watched() override { ++g_destroyed; }
};

template <class T> class chunkbuf_family : public ::testing::Test {
};
using chunkbuf_types = ::testing::Types<chunkbuf, framebuf>;
TYPED_TEST_SUITE(chunkbuf_family, chunkbuf_types);

TYPED_TEST(chunkbuf_family, constructors_forward_to_buffer_with_count_zero)
{
    TypeParam const l_default;
    EXPECT_EQ(l_default.size(), 0u);
    EXPECT_EQ(l_default.capacity(), 1024u);
    TypeParam const l_room(100);
    EXPECT_EQ(l_room.size(), 0u);
    EXPECT_EQ(l_room.capacity(), 200u);
    TypeParam const l_filled(3, 7);
    EXPECT_EQ(text_of(l_filled), "\7\7\7");
    buffer const l_bytes = buffer_of("frame");
    TypeParam const l_range(l_bytes.begin(), l_bytes.end());
    EXPECT_EQ(text_of(l_range), "frame");
    TypeParam const l_from_buffer(l_bytes);
    EXPECT_EQ(text_of(l_from_buffer), "frame");
    EXPECT_EQ(l_from_buffer.capacity(), 10u);

    for (TypeParam const *l_each : {&l_default, &l_room, &l_filled, &l_range, &l_from_buffer}) {
        EXPECT_EQ(l_each->refcount(), 0u);
    }
    l_range.retain();
    TypeParam const l_copy(l_range);
    EXPECT_EQ(l_copy.refcount(), 0u) << "a copy starts with no owner";
    EXPECT_EQ(text_of(l_copy), "frame");
    l_range.drop();
}

TYPED_TEST(chunkbuf_family, assignment_copies_bytes_and_leaves_counts)
{
    TypeParam l_target(buffer_of("old"));
    TypeParam l_source(buffer_of("new bytes"));
    l_target.retain();
    l_target.retain();
    l_source.retain();
    TypeParam &l_result = (l_target = l_source);
    EXPECT_EQ(&l_result, &l_target);
    EXPECT_EQ(text_of(l_target), "new bytes");
    EXPECT_EQ(l_target.refcount(), 2u);
    EXPECT_EQ(l_source.refcount(), 1u);
    TypeParam const &l_alias = l_target;
    l_target = l_alias;
    EXPECT_EQ(text_of(l_target), "new bytes");
    l_target.drop();
    l_target.drop();
    l_source.drop();
}

TYPED_TEST(chunkbuf_family, last_release_through_either_base_destroys_the_whole_object)
{
    g_destroyed = 0;
    auto *l_object = new watched<TypeParam>(64, 0xee);
    object_refcount const &l_counted = *l_object;
    l_counted.retain();
    l_counted.retain();
    l_counted.release();
    EXPECT_EQ(g_destroyed, 0);
    l_counted.release();
    EXPECT_EQ(g_destroyed, 1);

    // A holder by handle: the block lives as long as the last handle.
    g_destroyed = 0;
    {
        ptr_refcount<chunkbuf> l_handle(new watched<TypeParam>(buffer_of("shared")));
        {
            ptr_refcount<chunkbuf> const l_second(l_handle);
            EXPECT_EQ(l_handle->refcount(), 2u);
        }
        EXPECT_EQ(text_of(*l_handle), "shared");
        EXPECT_EQ(g_destroyed, 0);
    }
    EXPECT_EQ(g_destroyed, 1);

    // Deleting through the buffer base reaches the whole object too.
    g_destroyed = 0;
    buffer *const l_as_buffer = new watched<TypeParam>();
    delete l_as_buffer;
    EXPECT_EQ(g_destroyed, 1);
}

TEST(chunkbuf, framebuf_from_a_chunkbuf_copies_its_bytes)
{
    chunkbuf l_chunk(buffer_of("chunk"));
    l_chunk.retain();
    framebuf const l_frame(l_chunk);
    EXPECT_EQ(text_of(l_frame), "chunk");
    EXPECT_EQ(l_frame.refcount(), 0u);
    chunkbuf const l_back(l_frame);
    EXPECT_EQ(text_of(l_back), "chunk");
    l_chunk.drop();
}

} // namespace
