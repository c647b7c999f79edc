// SPDX-License-Identifier: MIT
#include <ordwel/es.h>
#include <ordwel/semaphore.h>
#include <ordwel/thread.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using namespace ordwel;
using namespace std::chrono_literals;
using ordwel_test::eventually;

// A body that runs until terminate() asks it to stop, counting the requests.
struct until_terminated : thread_base {
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_terminations{0};
    std::atomic<int> m_runs{0};
    std::atomic<bool> m_ended{false};

    void terminate() override
    {
        ++m_terminations;
        m_stop = true;
    }
    void operator()() override
    {
        ++m_runs;
        while (!m_stop) {
            std::this_thread::sleep_for(1ms);
        }
        m_ended = true;
    }
};

// A body that ends by itself as soon as it is let go.
struct until_released : thread_base {
    semaphore m_release;
    std::atomic<int> m_terminations{0};
    std::atomic<bool> m_ended{false};

    void terminate() override { ++m_terminations; }
    void operator()() override
    {
        m_release.wait();
        m_ended = true;
    }
};

TEST(thread, idle_handle_does_nothing)
{
    thread l_thread;
    EXPECT_NO_THROW({
        l_thread.join();
        l_thread.cancel();
        l_thread.detach();
        l_thread.signal(0);
        thread::yield();
        thread::cancel_point();
    });
}

TEST(thread, destruction_stops_a_running_body_through_terminate_and_joins)
{
    until_terminated l_body;
    {
        thread const l_thread(l_body);
        EXPECT_TRUE(eventually([&] { return l_body.m_runs == 1; }));
    }
    EXPECT_TRUE(l_body.m_ended);
    EXPECT_EQ(l_body.m_terminations, 1);
}

TEST(thread, destruction_of_an_ended_thread_still_calls_terminate_once)
{
    until_released l_body;
    l_body.m_release.post();
    {
        thread const l_thread(l_body);
        EXPECT_TRUE(eventually([&] { return l_body.m_ended.load(); }));
    }
    EXPECT_EQ(l_body.m_terminations, 1);
}

TEST(thread, join_waits_for_the_body_and_leaves_an_idle_handle)
{
    until_released l_body;
    {
        thread l_thread(l_body);
        l_body.m_release.post();
        l_thread.join();
        EXPECT_TRUE(l_body.m_ended);
        l_thread.join();
        l_thread.cancel();
    }
    EXPECT_EQ(l_body.m_terminations, 0) << "a joined handle has nothing to stop";
}

TEST(thread, start_stops_the_old_body_before_running_the_new_one)
{
    until_terminated l_old;
    until_terminated l_new;
    thread l_thread(l_old);
    EXPECT_TRUE(eventually([&] { return l_old.m_runs == 1; }));
    l_thread.start(l_new);
    EXPECT_TRUE(l_old.m_ended) << "the old thread is joined before start returns";
    EXPECT_EQ(l_old.m_terminations, 1);
    EXPECT_TRUE(eventually([&] { return l_new.m_runs == 1; }));
    EXPECT_EQ(l_new.m_terminations, 0);
    EXPECT_NO_THROW(l_thread.signal(0)) << "signal 0 reaches a running thread";
}

// The body owns its handle and drops it on its own thread: the thread detaches itself.
struct self_destroying : thread_base {
    thread *m_thread = nullptr;
    semaphore m_go;
    std::atomic<int> m_terminations{0};
    std::atomic<bool> m_ended{false};

    void terminate() override { ++m_terminations; }
    void operator()() override
    {
        m_go.wait();
        delete m_thread;
        m_ended = true;
    }
};

TEST(thread, handle_destroyed_on_its_own_thread_detaches_without_terminate)
{
    self_destroying l_body;
    l_body.m_thread = new thread(l_body);
    l_body.m_go.post();
    EXPECT_TRUE(eventually([&] { return l_body.m_ended.load(); }));
    EXPECT_EQ(l_body.m_terminations, 0);
    // Give the detached thread time to leave the body's code before the body goes.
    std::this_thread::sleep_for(20ms);
}

struct joins_itself : thread_base {
    thread *m_thread = nullptr;
    semaphore m_go;
    std::atomic<bool> m_returned{false};

    void operator()() override
    {
        m_go.wait();
        m_thread->join();
        m_returned = true;
    }
};

TEST(thread, join_from_the_body_returns_at_once_and_keeps_the_handle)
{
    joins_itself l_body;
    thread l_thread(l_body);
    l_body.m_thread = &l_thread;
    l_body.m_go.post();
    EXPECT_TRUE(eventually([&] { return l_body.m_returned.load(); }));
    l_thread.join();
}

TEST(thread, detached_thread_gets_terminate_but_no_join_cancel_or_signal)
{
    until_released l_body;
    {
        thread l_thread(l_body);
        l_thread.detach();
        l_thread.detach();
        struct row {
            void (*action)(thread &);
            char const *text;
        } const l_rows[] = {{[](thread &a_thread) { a_thread.join(); }, "thread join failed"},
                            {[](thread &a_thread) { a_thread.cancel(); }, "thread cancel failed"},
                            {[](thread &a_thread) { a_thread.signal(0); }, "thread signal failed"}};
        for (row const &l_row : l_rows) {
            EXPECT_EQ(ordwel_test::raised_text<es::call>([&] { l_row.action(l_thread); }), l_row.text);
        }
    }
    EXPECT_EQ(l_body.m_terminations, 1);
    EXPECT_FALSE(l_body.m_ended) << "the handle did not wait for a detached thread";
    l_body.m_release.post();
    EXPECT_TRUE(eventually([&] { return l_body.m_ended.load(); }));
    std::this_thread::sleep_for(20ms);
}

// Stays in the body until cancelled, ignoring terminate(). The local's destructor tells whether
// the stack was unwound.
struct ignores_terminate : thread_base {
    std::atomic<int> m_terminations{0};
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_unwound{false};

    void terminate() override { ++m_terminations; }
    void operator()() override
    {
        struct mark {
            std::atomic<bool> &m_flag;
            ~mark() { m_flag = true; }
        } const l_mark{m_unwound};
        m_running = true;
        for (;;) {
            thread::cancel_point();
            std::this_thread::sleep_for(1ms);
        }
    }
};

TEST(thread, cancel_ends_a_body_at_a_cancellation_point)
{
    ignores_terminate l_body;
    thread l_thread(l_body);
    ASSERT_TRUE(eventually([&] { return l_body.m_running.load(); }));
    l_thread.cancel();
    l_thread.join();
#if defined(__GLIBC__)
    EXPECT_TRUE(l_body.m_unwound) << "glibc unwinds a cancelled thread, past the start routine's handlers";
#endif
    EXPECT_EQ(l_body.m_terminations, 0);
}

// Without the cancellation a handle dropped during unwinding would wait forever for this body.
TEST(thread, destruction_while_an_exception_unwinds_terminates_cancels_and_joins)
{
    ignores_terminate l_body;
    EXPECT_EQ(ordwel_test::raised_text<std::runtime_error>([&] {
                  thread const l_thread(l_body);
                  ASSERT_TRUE(eventually([&] { return l_body.m_running.load(); }));
                  throw std::runtime_error("leaving");
              }),
              "leaving");
    EXPECT_EQ(l_body.m_terminations, 1);
}

struct exits_early : thread_base {
    std::atomic<bool> m_after{false};
    void operator()() override
    {
        thread::exit();
        m_after = true;
    }
};

TEST(thread, exit_ends_the_thread_without_ending_the_process)
{
    exits_early l_body;
    thread l_thread(l_body);
    l_thread.join();
    EXPECT_FALSE(l_body.m_after);
}

// A body that lets an exception go ends the process with status 1 and the line
// "Abort [thread.cpp:<line>] '<text>'" on the standard output.
struct raises : thread_base {
    void (*m_raise)();
    explicit raises(void (*a_raise)()) : m_raise(a_raise) {}
    void operator()() override { m_raise(); }
};

TEST(thread_death, escaping_exceptions_end_the_process_with_their_texts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    struct row {
        void (*raise)();
        std::string text;
    } const l_rows[] = {
        {[] { es::range::raise("thread_test.cpp", 4242, "index past the end"); },
         "exception: 'index past the end' at 'thread_test.cpp:4242'; 'index past the end'\n"},
        {[] { throw std::out_of_range("std range"); }, "std::exception: 'std range'\n"},
        {[] { throw 42; }, "exception: 'unknown exception' at [ n/a:0 ]; 'n/a'\n"},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.text);
        EXPECT_EXIT(
            {
                ordwel_test::redirect_stdout_to_stderr();
                raises l_body(l_row.raise);
                thread l_thread(l_body);
                l_thread.join();
                std::_Exit(0);
            },
            testing::ExitedWithCode(1),
            testing::AllOf(testing::StartsWith("Abort [thread.cpp:"), testing::EndsWith("] '" + l_row.text + "'")));
    }
}

} // namespace
