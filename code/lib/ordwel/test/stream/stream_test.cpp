// SPDX-License-Identifier: MIT
#include <ordwel/stream.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ordwel/es.h>

#include "support/scripted_streams.h"
#include "support/test_support.h"

namespace {

using namespace ordwel;
using ordwel_test::buffer_of;
using ordwel_test::raised_at;
using ordwel_test::recording_wr;
using ordwel_test::scripted_rd;
using ordwel_test::text_of;

constexpr sint64 k_min = std::numeric_limits<sint64>::min();
constexpr sint64 k_max = std::numeric_limits<sint64>::max();

std::string read_text(stream::rd &a_stream, uint64 a_size)
{
    std::string l_text(a_size, '\0');
    l_text.resize(a_stream.read(&l_text[0], a_size));
    return l_text;
}

// The seek rule is the same for both memory streams; each row runs on a mem and on a buf of 10
// bytes, from a given position. A row with expected -1 must raise es::range and leave the position.
struct seek_row {
    uint64 start;
    sint64 offset;
    int whence;
    sint64 expected;
};

seek_row const k_seek_rows[] = {
    {0, 10, stream::begin, 10},
    {4, 11, stream::begin, -1},
    {4, -1, stream::begin, -1},
    {0, -10, stream::end, 0},
    {0, 0, stream::end, 10},
    {0, -11, stream::end, -1},
    {0, 1, stream::end, -1},
    {4, 3, stream::current, 7},
    {4, 6, stream::current, 10},
    {4, 7, stream::current, -1},
    {4, -4, stream::current, 0},
    {4, -5, stream::current, -1},
    // Every whence but begin and current counts from the end.
    {4, -3, 7, 7},
    {4, -3, -1, 7},
    // Offsets at the limits of 64 bits wrap in the addition and still land outside.
    {4, k_max, stream::current, -1},
    {4, k_min, stream::current, -1},
    {0, k_min, stream::end, -1},
};

// a_source is the library file that raises the stream's range failures.
void run_seek_rows(stream::rwa &a_stream, std::string const &a_stream_name, std::string const &a_source)
{
    for (seek_row const &l_row : k_seek_rows) {
        a_stream.seek(static_cast<sint64>(l_row.start), stream::begin);
        SCOPED_TRACE(a_stream_name + " from " + std::to_string(l_row.start) + " seek " + std::to_string(l_row.offset) +
                     ", " + std::to_string(l_row.whence));
        if (l_row.expected < 0) {
            EXPECT_EQ(
                raised_at<es::range>([&] { a_stream.seek(l_row.offset, static_cast<stream::whence>(l_row.whence)); }),
                "n/a @ " + a_source);
            EXPECT_EQ(a_stream.tell(), l_row.start);
        } else {
            EXPECT_EQ(a_stream.seek(l_row.offset, static_cast<stream::whence>(l_row.whence)),
                      static_cast<uint64>(l_row.expected));
            EXPECT_EQ(a_stream.tell(), static_cast<uint64>(l_row.expected));
        }
    }
}

TEST(stream, seek_bounds_of_memory_streams)
{
    unsigned char l_bytes[10] = {};
    stream::mem l_mem(l_bytes, sizeof l_bytes);
    run_seek_rows(l_mem, "mem", "stream_mem.cpp");

    buffer l_buffer(10, static_cast<unsigned char>(0));
    stream::buf l_buf(l_buffer);
    run_seek_rows(l_buf, "buf", "stream_buf.cpp");
}

TEST(stream, reads_stop_at_the_end_and_peek_leaves_the_position)
{
    buffer l_buffer = buffer_of("0123456789");
    unsigned char l_bytes[10];
    std::memcpy(l_bytes, l_buffer.begin(), 10);
    stream::mem l_mem(l_bytes, 10);
    stream::buf l_buf(l_buffer);
    for (stream::rwa *l_stream : {static_cast<stream::rwa *>(&l_mem), static_cast<stream::rwa *>(&l_buf)}) {
        char l_peeked[4] = {};
        char l_again[4] = {};
        EXPECT_EQ(l_stream->peek(l_peeked, 4), 4u);
        EXPECT_EQ(l_stream->peek(l_again, 4), 4u);
        EXPECT_EQ(std::string(l_peeked, 4), "0123");
        EXPECT_EQ(std::string(l_again, 4), "0123");
        EXPECT_EQ(l_stream->tell(), 0u);

        l_stream->seek(8, stream::begin);
        EXPECT_EQ(read_text(*l_stream, 5), "89");
        EXPECT_EQ(l_stream->tell(), 10u);
        EXPECT_EQ(read_text(*l_stream, 5), "");
        EXPECT_EQ(l_stream->peek(l_peeked, 4), 0u);
        EXPECT_EQ(read_text(*l_stream, 0), "");
    }
}

TEST(stream, mem_write_never_cut_short)
{
    unsigned char l_bytes[10];
    std::memset(l_bytes, '.', sizeof l_bytes);
    stream::mem l_mem(l_bytes, sizeof l_bytes);
    l_mem.seek(8, stream::begin);
    EXPECT_EQ(raised_at<es::range>([&] { l_mem.write("abc", 3); }), "n/a @ stream_mem.cpp");
    EXPECT_EQ(l_mem.tell(), 8u);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_bytes), 10), "..........");

    l_mem.write("ab", 2);
    EXPECT_EQ(l_mem.tell(), 10u);
    l_mem.write("", 0);
    EXPECT_THROW(l_mem.write("x", 1), es::range);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(l_bytes), 10), "........ab");

    // set attaches other memory from position 0; the old memory is left alone.
    unsigned char l_other[3] = {'x', 'y', 'z'};
    l_mem.set(l_other, 3);
    EXPECT_EQ(l_mem.tell(), 0u);
    EXPECT_EQ(l_mem.size(), 3u);
    EXPECT_EQ(read_text(l_mem, 10), "xyz");
}

TEST(stream, buf_write_grows_overwrites_and_never_shrinks)
{
    buffer l_buffer = buffer_of("abc");
    stream::buf l_buf(l_buffer);
    l_buf.seek(2, stream::begin);
    l_buf.write("WXYZ", 4);
    EXPECT_EQ(text_of(l_buffer), "abWXYZ");
    EXPECT_EQ(l_buf.tell(), 6u);

    l_buf.seek(1, stream::begin);
    l_buf.write("12", 2);
    EXPECT_EQ(text_of(l_buffer), "a12XYZ");
    EXPECT_EQ(l_buf.tell(), 3u);
    EXPECT_EQ(read_text(l_buf, 100), "XYZ");

    // Growth goes through buffer::resize, so the buffer's own growth mode decides the capacity.
    buffer l_room(2);
    stream::buf l_into_room(l_room);
    l_into_room.write("abcdefgh", 8);
    EXPECT_EQ(text_of(l_room), "abcdefgh");
    EXPECT_EQ(l_room.capacity(), 16u) << "capacity 4 doubles to above 8";
}

TEST(stream, buf_over_an_empty_buffer_and_size_keeps_the_position)
{
    buffer l_empty(0);
    stream::buf l_buf(l_empty);
    EXPECT_EQ(l_buf.size(), 0u);
    EXPECT_EQ(read_text(l_buf, 4), "");

    buffer l_five = buffer_of("01234");
    l_buf.set(l_five);
    l_buf.seek(2, stream::begin);
    EXPECT_EQ(l_buf.size(), 5u);
    EXPECT_EQ(l_buf.tell(), 2u);
    // The same through the writing face: one position, one size for both.
    stream::wra &l_writer = l_buf;
    EXPECT_EQ(l_writer.size(), 5u);
    EXPECT_EQ(l_writer.tell(), 2u);
    l_writer.write("x", 1);
    stream::rda &l_reader = l_buf;
    EXPECT_EQ(l_reader.tell(), 3u);
    EXPECT_EQ(read_text(l_reader, 10), "34");
    EXPECT_EQ(text_of(l_five), "01x34");
}

TEST(stream, buf_resize_below_the_position_reads_nothing_and_writes_zeros_into_the_gap)
{
    buffer l_buffer = buffer_of("0123456789");
    stream::buf l_buf(l_buffer);
    l_buf.seek(8, stream::begin);
    l_buf.resize(4);
    EXPECT_EQ(l_buf.tell(), 8u) << "the position is not adjusted";
    EXPECT_EQ(read_text(l_buf, 4), "");
    EXPECT_THROW(l_buf.seek(0, stream::current), es::range);

    l_buf.write("ab", 2);
    EXPECT_EQ(l_buffer.size(), 10u);
    EXPECT_EQ(text_of(l_buffer), std::string("0123\0\0\0\0ab", 10));
    EXPECT_EQ(l_buf.tell(), 10u);
}

// A seekable stream over a text that logs every seek, to check the interfaces' default members.
class logged_rwa : public stream::rwa {
public:
    explicit logged_rwa(std::string a_data) : m_data(std::move(a_data)) {}

    uint64 read(void *a_destination, uint64 a_size) override
    {
        uint64 const l_count = std::min<uint64>(a_size, m_data.size() - m_pos);
        std::memcpy(a_destination, m_data.data() + m_pos, l_count);
        m_pos += l_count;
        return l_count;
    }
    void write(void const *, uint64) override {}
    void flush() override {}
    uint64 seek(sint64 a_offset, stream::whence a_whence) override
    {
        m_seeks.push_back(std::to_string(a_offset) + "/" + std::to_string(a_whence));
        uint64 const l_origin = a_whence == stream::begin ? 0 : a_whence == stream::current ? m_pos : m_data.size();
        m_pos = l_origin + static_cast<uint64>(a_offset);
        return m_pos;
    }

    std::string m_data;
    uint64 m_pos = 0;
    std::vector<std::string> m_seeks;
};

// Only the writing face: its size skips the seek back when the position is the end already.
class logged_wra : public stream::wra {
public:
    explicit logged_wra(uint64 a_size) : m_size(a_size) {}
    void write(void const *, uint64) override {}
    void flush() override {}
    uint64 seek(sint64 a_offset, stream::whence a_whence) override
    {
        m_seeks.push_back(std::to_string(a_offset) + "/" + std::to_string(a_whence));
        m_pos = (a_whence == stream::begin     ? 0
                 : a_whence == stream::current ? m_pos
                                               : m_size) +
                static_cast<uint64>(a_offset);
        return m_pos;
    }

    uint64 m_size;
    uint64 m_pos = 0;
    std::vector<std::string> m_seeks;
};

TEST(stream, default_members_are_made_of_seeks)
{
    using seeks = std::vector<std::string>;
    logged_rwa l_rwa("abcdef");
    l_rwa.m_pos = 2;
    EXPECT_EQ(l_rwa.tell(), 2u);
    EXPECT_EQ(l_rwa.m_seeks, (seeks{"0/1"}));

    l_rwa.m_seeks.clear();
    char l_bytes[3];
    EXPECT_EQ(l_rwa.stream::rda::peek(l_bytes, 3), 3u);
    EXPECT_EQ(std::string(l_bytes, 3), "cde");
    EXPECT_EQ(l_rwa.m_pos, 2u);
    EXPECT_EQ(l_rwa.m_seeks, (seeks{"-3/1"}));

    l_rwa.m_seeks.clear();
    EXPECT_EQ(l_rwa.size(), 6u);
    EXPECT_EQ(l_rwa.m_seeks, (seeks{"0/1", "0/2", "2/0"}));
    l_rwa.m_seeks.clear();
    l_rwa.m_pos = 6;
    stream::wra &l_face = l_rwa;
    EXPECT_EQ(l_face.size(), 6u);
    EXPECT_EQ(l_rwa.m_seeks, (seeks{"0/1", "0/2", "6/0"})) << "rwa's size is rda's on both faces";

    logged_wra l_wra(6);
    l_wra.m_pos = 6;
    EXPECT_EQ(l_wra.size(), 6u);
    EXPECT_EQ(l_wra.m_seeks, (seeks{"0/1", "0/2"}));
    l_wra.m_seeks.clear();
    l_wra.m_pos = 1;
    EXPECT_EQ(l_wra.size(), 6u);
    EXPECT_EQ(l_wra.m_seeks, (seeks{"0/1", "0/2", "1/0"}));
    EXPECT_EQ(l_wra.m_pos, 1u);
}

TEST(stream, multird_reads_each_reader_to_its_end_in_order)
{
    scripted_rd l_first("abc");
    scripted_rd l_empty("");
    scripted_rd l_last("defg");
    stream::multird l_chain;
    l_chain.add(l_first);
    l_chain.add(l_empty);
    l_chain.add(l_last);
    EXPECT_EQ(read_text(l_chain, 10), "abcdefg");
    EXPECT_EQ(l_chain.tell(), 7u);
    EXPECT_EQ(read_text(l_chain, 10), "");
    EXPECT_EQ(l_chain.tell(), 7u);
    EXPECT_EQ(l_empty.calls(), 1u) << "an ended reader is not asked again";
    EXPECT_EQ(l_first.calls(), 2u);

    // Reads that span seams, through readers that give one or two bytes at a time.
    scripted_rd l_a("12345", {2});
    scripted_rd l_b("67", {1});
    stream::multird l_small;
    l_small.add(l_a);
    l_small.add(l_b);
    EXPECT_EQ(read_text(l_small, 0), "");
    EXPECT_EQ(l_a.calls(), 0u) << "a read of 0 asks nobody";
    EXPECT_EQ(read_text(l_small, 3), "123");
    EXPECT_EQ(read_text(l_small, 3), "456");
    EXPECT_EQ(read_text(l_small, 3), "7");
    EXPECT_EQ(l_small.tell(), 7u);

    // clear forgets the readers and the position; the chain can be filled anew.
    l_small.clear();
    EXPECT_EQ(l_small.tell(), 0u);
    EXPECT_EQ(read_text(l_small, 3), "");
    scripted_rd l_again("xy");
    l_small.add(l_again);
    EXPECT_EQ(read_text(l_small, 3), "xy");
}

TEST(stream, multird_growth_keeps_unfinished_readers_and_the_position)
{
    for (uint64 l_finished : {0u, 2u}) {
        SCOPED_TRACE(l_finished);
        std::vector<scripted_rd> l_readers;
        for (char l_name = 'a'; l_name < 'a' + 9; ++l_name) {
            l_readers.emplace_back(std::string(1, l_name));
        }
        stream::multird l_chain;
        for (uint64 l_index = 0; l_index < 8; ++l_index) {
            l_chain.add(l_readers[l_index]);
        }
        // Finish the first readers: their byte, then the read of 0 that steps past them happens
        // only once the next reader is asked, so read one byte further.
        std::string l_head = read_text(l_chain, l_finished);
        if (l_finished != 0) {
            l_head += read_text(l_chain, 1);
        }
        uint64 const l_told = l_chain.tell();
        l_chain.add(l_readers[8]);
        EXPECT_EQ(l_chain.tell(), l_told);
        EXPECT_EQ(l_head + read_text(l_chain, 20), "abcdefghi");
        EXPECT_EQ(l_chain.tell(), 9u);
        // The grown list keeps taking readers.
        scripted_rd l_more("jklmnopqrstuvwxyz", {3});
        for (int l_count = 0; l_count < 20; ++l_count) {
            l_chain.add(l_more);
        }
        EXPECT_EQ(read_text(l_chain, 100), "jklmnopqrstuvwxyz");
    }
}

// stream::read with a required size on sources that give their bytes in pieces.
TEST(stream, read_with_required_size_table)
{
    struct row {
        char const *data;
        std::vector<uint64> pieces;
        uint64 size, required;
        sint64 expected; // -1: es::uflow
        char const *read;
    } const l_rows[] = {
        {"abcdef", {3}, 10, 4, 6, "abcdef"},
        {"abcdef", {3}, 10, 3, 3, "abc"},
        {"abcdef", {}, 10, 1, 6, "abcdef"},
        {"abcdef", {2}, 4, 4, 4, "abcd"},
        {"abcdef", {1}, 6, 0, 1, "a"},
        {"abc", {1}, 10, 4, -1, "abc"},
        {"", {}, 10, 0, -1, ""},
        {"abcdef", {}, 2, 3, -1, "ab"},
        {"abcdef", {}, 0, 0, -1, ""},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(std::string(l_row.data) + " size " + std::to_string(l_row.size) + " required " +
                     std::to_string(l_row.required));
        scripted_rd l_source(l_row.data, l_row.pieces);
        std::string l_destination(l_row.size + 1, '.');
        if (l_row.expected < 0) {
            EXPECT_EQ(
                raised_at<es::uflow>([&] { stream::read(l_source, &l_destination[0], l_row.size, l_row.required); }),
                "n/a @ stream_rd.cpp");
        } else {
            EXPECT_EQ(stream::read(l_source, &l_destination[0], l_row.size, l_row.required),
                      static_cast<uint64>(l_row.expected));
        }
        std::string const l_read(l_row.read);
        EXPECT_EQ(l_destination.substr(0, l_read.size()), l_read);
        EXPECT_EQ(l_destination.substr(l_read.size()), std::string(l_row.size + 1 - l_read.size(), '.'));
        EXPECT_EQ(l_source.tell(), l_read.size());
    }
}

TEST(stream, read_into_a_buffer_and_write_from_one)
{
    scripted_rd l_source("wxyz");
    buffer l_into = buffer_of("previous");
    stream::read(l_source, l_into, 10);
    EXPECT_EQ(text_of(l_into), "wxyz");
    EXPECT_EQ(l_source.asked(), std::vector<uint64>{10}) << "one read only";
    stream::read(l_source, l_into, 10);
    EXPECT_TRUE(l_into.empty());

    // Only one read, even where the source would give more.
    scripted_rd l_slow("abcdef", {2});
    stream::read(l_slow, l_into, 5);
    EXPECT_EQ(text_of(l_into), "ab");

    recording_wr l_sink;
    buffer const l_from = buffer_of("hello");
    stream::write(l_sink, l_from, 3);
    stream::write(l_sink, l_from, 5);
    EXPECT_EQ(l_sink.writes(), (std::vector<std::string>{"hel", "hello"}));
    EXPECT_THROW(stream::write(l_sink, l_from, 6), es::range);
    EXPECT_EQ(l_sink.writes().size(), 2u);
    EXPECT_EQ(l_sink.flushes(), 0);
}

// A reader that claims to have given more than it was asked for: the chain and the free read
// take the claim as the size asked, so no remaining size wraps around into a huge read.
class boastful_rd : public stream::rd {
public:
    uint64 read(void *a_destination, uint64 a_size) override
    {
        std::memset(a_destination, 'b', static_cast<std::size_t>(a_size));
        m_pos += a_size;
        return a_size == 0 ? 0 : a_size + 5;
    }
    uint64 tell() override { return m_pos; }

    uint64 m_pos = 0;
};

TEST(stream, counts_above_the_size_asked_are_taken_as_the_size_asked)
{
    boastful_rd l_boaster;
    char l_bytes[8] = {};
    EXPECT_EQ(stream::read(l_boaster, l_bytes, 4, 4), 4u);
    stream::multird l_chain;
    l_chain.add(l_boaster);
    EXPECT_EQ(l_chain.read(l_bytes, 8), 8u);
    EXPECT_EQ(l_chain.tell(), 8u);
    buffer l_into;
    stream::read(l_boaster, l_into, 3);
    EXPECT_EQ(text_of(l_into), "bbb");
}

} // namespace
