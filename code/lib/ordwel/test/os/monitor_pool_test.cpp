// SPDX-License-Identifier: MIT
#include "os/monitor_pool.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#if defined(__linux__)
#include <algorithm>
#include <cstdlib>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#endif

#include "platform/process.h"
#include "support/test_support.h"

namespace {

using ordwel::monitor_pool;

// Which body a thread ran last: a new thread starts with 0, so a body that finds another body's
// mark runs on that body's thread.
thread_local int tl_last_body = 0;

// A body that marks its thread, notes the mark it found, and can be held until released.
class body : public ordwel::thread_base {
public:
    explicit body(int a_mark, bool a_held = false) : m_mark(a_mark), m_held(a_held) {}

    void operator()() override
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        m_found = tl_last_body;
        tl_last_body = m_mark;
        ++m_runs;
        m_changed.notify_all();
        m_changed.wait(l_lock, [this] { return !m_held; });
        m_done = true;
        m_changed.notify_all();
    }

    void release()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        m_held = false;
        m_changed.notify_all();
    }

    bool wait_running()
    {
        return wait_until([this] { return m_runs > 0; });
    }
    bool wait_done()
    {
        return wait_until([this] { return m_done; });
    }
    int found()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_found;
    }
    int runs()
    {
        std::lock_guard<std::mutex> l_lock(m_lock);
        return m_runs;
    }

private:
    template <class T_condition> bool wait_until(T_condition a_condition)
    {
        std::unique_lock<std::mutex> l_lock(m_lock);
        return m_changed.wait_for(l_lock, std::chrono::seconds(10), a_condition);
    }

    int const m_mark;
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_held;
    bool m_done = false;
    int m_found = -1;
    int m_runs = 0;
};

std::shared_ptr<monitor_pool> open_pool()
{
    return std::make_shared<monitor_pool>(false);
}

TEST(monitor_pool, a_body_runs_once_and_its_keep_lives_until_it_returns)
{
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    body l_body(1, true);
    std::weak_ptr<int> l_watch;
    {
        auto l_keep = std::make_shared<int>(7);
        l_watch = l_keep;
        l_pool->run(l_body, std::move(l_keep));
    }
    ASSERT_TRUE(l_body.wait_running());
    EXPECT_FALSE(l_watch.expired()) << "the keep went while its body still ran";
    l_body.release();
    ASSERT_TRUE(l_body.wait_done());
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_watch.expired(); }));
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == 1; }));
    EXPECT_EQ(l_body.runs(), 1);
    l_pool->close();
}

TEST(monitor_pool, a_parked_thread_takes_the_next_body)
{
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    body l_first(1);
    l_pool->run(l_first, nullptr);
    ASSERT_TRUE(l_first.wait_done());
    ASSERT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == 1; }));

    body l_second(2);
    l_pool->run(l_second, nullptr);
    ASSERT_TRUE(l_second.wait_done());
    EXPECT_EQ(l_second.found(), 1) << "the second body ran on a new thread";
    l_pool->close();
}

TEST(monitor_pool, a_blocked_body_holds_up_no_other_and_few_threads_stay_parked)
{
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    std::size_t const l_count = monitor_pool::k_parked_limit * 2 + 1;
    std::vector<std::unique_ptr<body>> l_bodies;
    for (std::size_t l_index = 0; l_index < l_count; ++l_index) {
        l_bodies.push_back(std::make_unique<body>(static_cast<int>(l_index) + 10, true));
        l_pool->run(*l_bodies.back(), nullptr);
    }
    // All run at once, each on a thread of its own.
    for (auto const &l_body : l_bodies) {
        ASSERT_TRUE(l_body->wait_running());
        EXPECT_EQ(l_body->found(), 0);
    }
    for (auto const &l_body : l_bodies) {
        l_body->release();
        ASSERT_TRUE(l_body->wait_done());
    }
    // The threads beyond the limit end instead of parking.
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == monitor_pool::k_parked_limit; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(l_pool->parked_count(), monitor_pool::k_parked_limit);

    // The pool goes on, with no more threads parked than before.
    body l_later(99);
    l_pool->run(l_later, nullptr);
    ASSERT_TRUE(l_later.wait_done());
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == monitor_pool::k_parked_limit; }));
    for (auto const &l_body : l_bodies) {
        EXPECT_EQ(l_body->runs(), 1);
    }
    l_pool->close();
}

TEST(monitor_pool, close_ends_parked_threads_and_lets_a_running_body_finish)
{
    std::shared_ptr<monitor_pool> l_pool = open_pool();
    body l_parked(1);
    l_pool->run(l_parked, nullptr);
    ASSERT_TRUE(l_parked.wait_done());
    ASSERT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == 1; }));

    body l_running(2, true);
    auto l_keep = std::make_shared<int>(0);
    std::weak_ptr<int> const l_watch = l_keep;
    l_pool->run(l_running, std::move(l_keep));
    ASSERT_TRUE(l_running.wait_running());
    EXPECT_EQ(l_running.found(), 1);

    l_pool->close();
    EXPECT_EQ(l_pool->parked_count(), 0u);

    // A closed pool still runs bodies, each on a thread that ends with it.
    body l_after(3);
    auto l_after_keep = std::make_shared<int>(0);
    std::weak_ptr<int> const l_after_watch = l_after_keep;
    l_pool->run(l_after, std::move(l_after_keep));
    ASSERT_TRUE(l_after.wait_done());
    EXPECT_EQ(l_after.found(), 0);
    ASSERT_TRUE(ordwel_test::eventually([&] { return l_after_watch.expired(); }));
    EXPECT_EQ(l_pool->parked_count(), 0u);

    // The body that ran through the close ends normally; its thread lets go of the pool, which
    // outlives the caller's handle.
    std::weak_ptr<monitor_pool> const l_pool_watch = l_pool;
    l_pool.reset();
    l_running.release();
    ASSERT_TRUE(l_running.wait_done());
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_watch.expired() && l_pool_watch.expired(); }));
}

// A pipe whose read end a body may wait for; written to, it is ready.
struct ready_pipe {
    ready_pipe() { EXPECT_FALSE(ordwel::platform::pipe_create(m_read, m_write).failed()); }
    ~ready_pipe()
    {
        ordwel::platform::handle_close(m_read);
        ordwel::platform::handle_close(m_write);
    }
    void set() { EXPECT_FALSE(ordwel::platform::pipe_write(m_write, "x", 1).failed()); }

    ordwel::platform::handle m_read = ordwel::platform::k_no_handle;
    ordwel::platform::handle m_write = ordwel::platform::k_no_handle;
};

// Where the platform lets threads wait on many handles, bodies that wait for theirs hold no thread
// and start when their handle is ready; elsewhere they start at once and wait themselves.
TEST(monitor_pool, bodies_start_when_their_handles_are_ready)
{
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    constexpr int k_bodies = 6;
    std::vector<std::unique_ptr<ready_pipe>> l_pipes;
    std::vector<std::unique_ptr<body>> l_bodies;
    for (int l_index = 0; l_index < k_bodies; ++l_index) {
        l_pipes.push_back(std::make_unique<ready_pipe>());
        l_bodies.push_back(std::make_unique<body>(l_index + 1));
        l_pool->run(*l_bodies.back(), nullptr, l_pipes.back()->m_read);
    }
#if defined(__linux__)
    // One thread waits for all of them.
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() == 1; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    for (auto const &l_body : l_bodies) {
        EXPECT_EQ(l_body->runs(), 0) << "a body started before its handle was ready";
    }
#endif
    for (int l_index = k_bodies - 1; l_index >= 0; --l_index) {
        l_pipes[static_cast<std::size_t>(l_index)]->set();
        ASSERT_TRUE(l_bodies[static_cast<std::size_t>(l_index)]->wait_done());
    }
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() > 0; }));
    l_pool->close();
    for (auto const &l_body : l_bodies) {
        EXPECT_EQ(l_body->runs(), 1);
    }
}

TEST(monitor_pool, close_gives_a_body_still_waiting_for_its_handle_a_thread_of_its_own)
{
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    ready_pipe l_pipe;
    body l_body(1);
    auto l_keep = std::make_shared<int>(0);
    std::weak_ptr<int> const l_watch = l_keep;
    l_pool->run(l_body, std::move(l_keep), l_pipe.m_read);
    l_pool->close();
    ASSERT_TRUE(l_body.wait_done());
    EXPECT_EQ(l_body.found(), 0);
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_watch.expired(); }));
    EXPECT_EQ(l_pool->parked_count(), 0u);
}

#if defined(__linux__)
// The epoll descriptors of this process.
std::vector<int> wait_sets()
{
    std::vector<int> l_sets;
    if (DIR *const l_list = opendir("/proc/self/fd")) {
        while (dirent const *const l_entry = readdir(l_list)) {
            char l_target[64] = {};
            std::string const l_path = std::string("/proc/self/fd/") + l_entry->d_name;
            if (readlink(l_path.c_str(), l_target, sizeof(l_target) - 1) > 0 &&
                std::string(l_target) == "anon_inode:[eventpoll]") {
                l_sets.push_back(std::atoi(l_entry->d_name));
            }
        }
        closedir(l_list);
    }
    return l_sets;
}
#endif

// A wait set whose descriptor someone else replaces: the waits on it fail, and the pool goes on
// without it, its threads parking as where the platform has no such set.
TEST(monitor_pool, goes_on_when_its_wait_set_breaks)
{
#if defined(__linux__)
    std::vector<int> const l_before = wait_sets();
    std::shared_ptr<monitor_pool> const l_pool = open_pool();
    ready_pipe l_pipe;
    body l_first(1);
    l_pool->run(l_first, nullptr, l_pipe.m_read);
    std::vector<int> l_after = wait_sets();
    for (int l_fd : l_before) {
        l_after.erase(std::remove(l_after.begin(), l_after.end(), l_fd), l_after.end());
    }
    ASSERT_EQ(l_after.size(), 1u);
    int const l_set = l_after.front();
    int const l_null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(l_null, 0);
    ASSERT_EQ(dup2(l_null, l_set), l_set);
    close(l_null);

    // A thread already waiting still gets its handle; its next wait fails.
    l_pipe.set();
    ASSERT_TRUE(l_first.wait_done());
    for (int l_round = 0; l_round < 3; ++l_round) {
        body l_next(l_round + 2);
        l_pool->run(l_next, nullptr);
        ASSERT_TRUE(l_next.wait_done());
        EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() > 0; }));
    }
    l_pool->close();
    EXPECT_EQ(l_pool->parked_count(), 0u);
    // The pool left the replaced number alone.
    EXPECT_NE(fcntl(l_set, F_GETFD), -1);
    close(l_set);
#else
    GTEST_SKIP() << "replaces an epoll descriptor, which only Linux has";
#endif
}

TEST(monitor_pool, the_process_pool_is_one_and_stays_open)
{
    std::shared_ptr<monitor_pool> const l_pool = monitor_pool::current();
    EXPECT_EQ(monitor_pool::current(), l_pool);
    body l_first(1);
    l_pool->run(l_first, nullptr);
    ASSERT_TRUE(l_first.wait_done());
    EXPECT_TRUE(ordwel_test::eventually([&] { return l_pool->parked_count() > 0; }));
}

} // namespace
