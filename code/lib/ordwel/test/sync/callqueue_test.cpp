// SPDX-License-Identifier: MIT
#include <ordwel/callqueue.h>
#include <ordwel/es.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/test_support.h"

// The queue is one per process and its exit() cannot be undone: the tests run on the main thread,
// which builds the queue and owns it, and the suite "callqueue_closed" stands last in this file.

namespace {

using namespace ordwel;
using namespace std::chrono_literals;
using ordwel_test::raised_text;

callqueue &queue()
{
    return callqueue::instance();
}

// A call whose body is a function; it counts its runs and notes its destruction.
class call : public callqueue_object {
public:
    explicit call(std::function<void()> a_body = {}, std::atomic<bool> *a_destroyed = nullptr)
        : m_body(std::move(a_body)), m_destroyed(a_destroyed)
    {
    }
    ~call() override
    {
        if (m_destroyed != nullptr) {
            *m_destroyed = true;
        }
    }
    void operator()() override
    {
        ++m_runs;
        if (m_body) {
            m_body();
        }
    }

    std::atomic<int> m_runs{0};

private:
    std::function<void()> m_body;
    std::atomic<bool> *m_destroyed;
};

ptr_refcount<call> make_call(std::function<void()> a_body = {}, std::atomic<bool> *a_destroyed = nullptr)
{
    return ptr_refcount<call>(new call(std::move(a_body), a_destroyed));
}

// Runs the queue on the owner until a_done holds; false if that takes unreasonably long.
template <class F> bool run_until(F a_done)
{
    auto const l_end = std::chrono::steady_clock::now() + 20s;
    while (!a_done()) {
        if (std::chrono::steady_clock::now() > l_end) {
            return false;
        }
        queue().run();
        std::this_thread::yield();
    }
    queue().run();
    return true;
}

// The owner runs a call at once unless it is deferred (and never blocks on itself); another thread
// that does not block only queues it. Either way a run takes each pending call once.
TEST(callqueue, who_adds_and_the_flags_decide_when_a_call_runs)
{
    struct row {
        char const *name;
        bool on_owner;
        unsigned int flags;
        int runs_at_once;
    } const l_rows[] = {
        {"plain", true, 0, 1},
        {"blocking", true, callqueue_blocking, 1},
        {"deferred", true, callqueue_deferred, 0},
        {"deferred and blocking", true, callqueue_deferred | callqueue_blocking | 1u | 16u, 0},
        {"other-plain", false, 0, 0},
        {"other-deferred", false, callqueue_deferred, 0},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        auto const l_call = make_call();
        if (l_row.on_owner) {
            queue().add_call(l_call, l_row.name, l_row.flags);
        } else {
            std::thread([&] { queue().add_call(l_call, l_row.name, l_row.flags); }).join();
        }
        EXPECT_EQ(l_call->m_runs, l_row.runs_at_once);
        queue().run();
        EXPECT_EQ(l_call->m_runs, 1);
        queue().run();
        EXPECT_EQ(l_call->m_runs, 1);
    }
}

TEST(callqueue, owner_call_raising_at_once_reaches_the_caller)
{
    auto const l_call = make_call([] { throw std::runtime_error("from the call"); });
    EXPECT_EQ(raised_text<std::runtime_error>([&] { queue().add_call(l_call, "raising", 0); }), "from the call");
}

// A blocking caller comes back only after its call has ended, whether the call ends at once (the
// caller is still looking at its mark) or after the caller has gone to sleep, and also when the
// call raised. (The stress case below checks many callers whose calls return.)
TEST(callqueue, blocking_caller_returns_after_its_call_ended)
{
    struct row {
        char const *name;
        std::chrono::milliseconds length;
        bool raises;
    } const l_rows[] = {
        {"at once", 0ms, false},
        {"at once, raising", 0ms, true},
        {"after the caller sleeps", 20ms, false},
        {"after the caller sleeps, raising", 20ms, true},
    };
    for (row const &l_row : l_rows) {
        SCOPED_TRACE(l_row.name);
        std::atomic<bool> l_ended{false};
        auto const l_call = make_call([&] {
            std::this_thread::sleep_for(l_row.length);
            l_ended = true;
            if (l_row.raises) {
                throw 7;
            }
        });
        std::atomic<bool> l_returned{false};
        bool l_ended_at_return = false;
        std::thread l_producer([&] {
            queue().add_call(l_call, l_row.name, callqueue_blocking);
            l_ended_at_return = l_ended;
            l_returned = true;
        });
        EXPECT_TRUE(run_until([&] { return l_returned.load(); }));
        l_producer.join();
        EXPECT_TRUE(l_ended_at_return);
        EXPECT_EQ(l_call->m_runs, 1);
    }
}

// A blocking add of an object whose call is running waits for that run to end before its call
// enters the queue: what the running call queues comes first.
TEST(callqueue, blocking_add_of_a_running_object_queues_after_that_run)
{
    std::vector<std::string> l_order;
    std::atomic<bool> l_returned{false};
    std::thread l_producer;
    ptr_refcount<call> l_object;
    auto const l_queued_by_the_run = make_call([&] { l_order.push_back("queued by the run"); });
    l_object = make_call([&] {
        l_order.push_back("object");
        if (l_object->m_runs == 1) {
            l_producer = std::thread([&] {
                queue().add_call(l_object, "object", callqueue_blocking);
                l_returned = true;
            });
            // Give the producer time to reach the object's mutex, then queue another call.
            std::this_thread::sleep_for(30ms);
            queue().add_call(l_queued_by_the_run, "queued by the run", callqueue_deferred);
        }
    });
    queue().add_call(l_object, "object", callqueue_deferred);
    queue().run();
    EXPECT_TRUE(run_until([&] { return l_returned.load(); }));
    l_producer.join();
    EXPECT_EQ(l_order, (std::vector<std::string>{"object", "queued by the run", "object"}));
}

// A blocking caller waits for its own call: a run of the same object queued earlier doesn't end
// its wait.
TEST(callqueue, blocking_caller_is_not_released_by_an_earlier_run_of_the_same_object)
{
    auto const l_shared = make_call();
    std::atomic<bool> l_returned{false};
    std::thread l_producer;
    auto const l_starter = make_call([&] {
        l_producer = std::thread([&] {
            queue().add_call(l_shared, "shared", callqueue_blocking);
            l_returned = true;
        });
        // Let the producer get into its wait before the earlier copy of the call runs.
        std::this_thread::sleep_for(50ms);
    });
    queue().add_call(l_starter, "starter", callqueue_deferred);
    queue().add_call(l_shared, "shared", callqueue_deferred);
    queue().run();
    EXPECT_EQ(l_shared->m_runs, 1);
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(l_returned) << "its own call is still pending";
    EXPECT_TRUE(run_until([&] { return l_returned.load(); }));
    l_producer.join();
    EXPECT_EQ(l_shared->m_runs, 2);
}

TEST(callqueue, unique_ids_admit_once_in_the_life_of_the_queue)
{
    auto const l_first = make_call();
    auto const l_second = make_call();
    queue().add_call(l_first, "unique-a", callqueue_unique | callqueue_deferred);
    queue().add_call(l_second, "unique-a", callqueue_unique | callqueue_deferred);
    queue().run();
    EXPECT_EQ(l_first->m_runs, 1);
    EXPECT_EQ(l_second->m_runs, 0);
    queue().add_call(l_second, "unique-a", callqueue_unique);
    std::thread([&] { queue().add_call(l_second, "unique-a", callqueue_unique | callqueue_blocking); }).join();
    queue().run();
    EXPECT_EQ(l_second->m_runs, 0) << "dropped long after the first ran, and nobody blocked";

    // Without the flag any id is admitted and doesn't enter the set.
    queue().add_call(l_second, "unique-a", 0);
    queue().add_call(l_second, "unique-b", 0);
    EXPECT_EQ(l_second->m_runs, 2);
    queue().add_call(l_second, "unique-b", callqueue_unique);
    EXPECT_EQ(l_second->m_runs, 3);
}

TEST(callqueue, unique_ids_are_shared_with_exit_calls)
{
    auto const l_exit_call = make_call();
    auto const l_call = make_call();
    queue().add_exit_call(l_exit_call, "unique-exit", callqueue_unique);
    queue().add_call(l_call, "unique-exit", callqueue_unique);
    EXPECT_EQ(l_call->m_runs, 0);
    queue().add_call(l_call, "unique-call", callqueue_unique | callqueue_deferred);
    queue().add_exit_call(l_exit_call, "unique-call", callqueue_unique);
    queue().run();
    EXPECT_EQ(l_call->m_runs, 1);
    EXPECT_EQ(l_exit_call->m_runs, 0) << "exit calls wait for exit()";
}

TEST(callqueue, calls_added_during_run_wait_for_the_next_run_unless_run_nested)
{
    auto const l_later = make_call();
    auto const l_nested = make_call();
    std::vector<std::string> l_order;
    auto const l_adder = make_call([&] {
        queue().add_call(l_later, "later", callqueue_deferred);
        queue().add_call(l_nested, "nested", 0);
        l_order.push_back(l_nested->m_runs == 1 ? "nested ran inside" : "nested missing");
    });
    queue().add_call(l_adder, "adder", callqueue_deferred);
    queue().run();
    EXPECT_EQ(l_adder->m_runs, 1);
    EXPECT_EQ(l_later->m_runs, 0);
    ASSERT_EQ(l_order.size(), 1u);
    EXPECT_EQ(l_order[0], "nested ran inside");
    queue().run();
    EXPECT_EQ(l_later->m_runs, 1);
    queue().run();
}

// A call that drains the queue itself meets its own object again: it runs nested under the hold of
// the outer run instead of hanging the owner on the object's mutex.
TEST(callqueue, nested_run_meets_the_running_object_again)
{
    std::vector<int> l_depths;
    int l_depth = 0;
    ptr_refcount<call> l_self;
    l_self = make_call([&] {
        l_depths.push_back(++l_depth);
        if (l_depth == 1) {
            queue().add_call(l_self, "self", callqueue_deferred);
            queue().run();
        }
        --l_depth;
    });
    queue().add_call(l_self, "self", callqueue_deferred);
    queue().run();
    EXPECT_EQ(l_depths, (std::vector<int>{1, 2}));
}

// One object waits on the lists several times at once: each queuing runs once, in its place in
// the order, and the object lives until the last of them has run.
TEST(callqueue, object_queued_several_times_runs_each_time_in_order)
{
    std::vector<std::string> l_order;
    std::atomic<bool> l_destroyed{false};
    {
        auto const l_twice = make_call([&] { l_order.push_back("twice"); }, &l_destroyed);
        queue().add_call(l_twice, "first", callqueue_deferred);
        queue().add_call(make_call([&] { l_order.push_back("other"); }), "other", callqueue_deferred);
        queue().add_call(l_twice, "second", callqueue_deferred);
        queue().add_call(l_twice, "third", callqueue_deferred);
    }
    EXPECT_FALSE(l_destroyed);
    queue().run();
    EXPECT_EQ(l_order, (std::vector<std::string>{"twice", "other", "twice", "twice"}));
    EXPECT_TRUE(l_destroyed);

    // Queued again by its own call: the object's place is free once its run has begun.
    l_order.clear();
    int l_left = 2;
    ptr_refcount<call> l_again;
    l_again = make_call([&] {
        l_order.push_back("again");
        if (--l_left > 0) {
            queue().add_call(l_again, "again", callqueue_deferred);
        }
    });
    queue().add_call(l_again, "again", callqueue_deferred);
    queue().run();
    EXPECT_EQ(l_order.size(), 1u) << "a call queued by a running call waits for the next run";
    queue().run();
    EXPECT_EQ(l_order.size(), 2u);
    EXPECT_EQ(l_again->m_runs, 2);
}

TEST(callqueue, raising_calls_are_dropped_and_the_rest_run)
{
    auto const l_raising = make_call([] { throw std::logic_error("dropped"); });
    auto const l_after = make_call();
    queue().add_call(l_raising, "raises", callqueue_deferred);
    queue().add_call(l_after, "after", callqueue_deferred);
    EXPECT_NO_THROW(queue().run());
    EXPECT_EQ(l_raising->m_runs, 1);
    EXPECT_EQ(l_after->m_runs, 1);
    EXPECT_NO_THROW(queue().run()) << "nothing pending";
}

TEST(callqueue, null_call_is_refused)
{
    EXPECT_EQ(raised_text([] { queue().add_call(ptr_refcount<callqueue_object>(), "null", 0); }),
              "callqueue call is null");
    EXPECT_EQ(raised_text([] { queue().add_exit_call(ptr_refcount<callqueue_object>(), "null", callqueue_unique); }),
              "callqueue call is null");
    auto const l_call = make_call();
    queue().add_call(l_call, "null", callqueue_unique);
    EXPECT_EQ(l_call->m_runs, 1) << "a refused call leaves no id behind";
}

TEST(callqueue, run_and_exit_belong_to_the_owner)
{
    std::string l_run;
    std::string l_exit;
    std::thread([&] {
        l_run = raised_text([] { queue().run(); });
        l_exit = raised_text([] { queue().exit(); });
    }).join();
    EXPECT_EQ(l_run, "callqueue::run() called from different thread");
    EXPECT_EQ(l_exit, "callqueue::exit() called from different thread");
    EXPECT_FALSE(queue().exited());
}

// Producers take a ticket and add their call under one lock, so the order of the tickets is the
// order of arrival; the owner must run the calls in exactly that order.
TEST(callqueue, order_is_first_in_first_out_across_producers)
{
    int const k_producers = 4;
    int const k_calls = 500;
    std::mutex l_arrival;
    int l_next_ticket = 0;
    std::vector<int> l_ran;
    std::atomic<int> l_done{0};
    std::vector<std::thread> l_producers;
    for (int l_index = 0; l_index < k_producers; ++l_index) {
        l_producers.emplace_back([&] {
            for (int l_step = 0; l_step < k_calls; ++l_step) {
                std::lock_guard<std::mutex> const l_guard(l_arrival);
                int const l_ticket = l_next_ticket++;
                queue().add_call(make_call([&l_ran, l_ticket] { l_ran.push_back(l_ticket); }), "fifo", 0);
            }
            ++l_done;
        });
    }
    EXPECT_TRUE(run_until([&] { return l_done == k_producers; }));
    for (std::thread &l_thread : l_producers) {
        l_thread.join();
    }
    queue().run();
    ASSERT_EQ(l_ran.size(), static_cast<std::size_t>(k_producers * k_calls));
    for (std::size_t l_index = 0; l_index < l_ran.size(); ++l_index) {
        ASSERT_EQ(l_ran[l_index], static_cast<int>(l_index));
    }
}

// A producer far ahead of the owner gives way to other threads now and then, but never waits for
// the owner: it hands over thousands of calls while the owner runs none, and they all run later,
// in order.
TEST(callqueue, producer_is_never_held_by_an_owner_that_does_not_run)
{
    int const k_calls = 5000;
    std::vector<int> l_ran;
    std::atomic<bool> l_done{false};
    std::thread l_producer([&] {
        for (int l_step = 0; l_step < k_calls; ++l_step) {
            queue().add_call(make_call([&l_ran, l_step] { l_ran.push_back(l_step); }), "ahead", 0);
        }
        l_done = true;
    });
    auto const l_end = std::chrono::steady_clock::now() + 20s;
    while (!l_done && std::chrono::steady_clock::now() < l_end) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_TRUE(l_done) << "the producer waited for the owner";
    EXPECT_TRUE(l_ran.empty());
    EXPECT_TRUE(run_until([&] { return l_done.load(); }));
    l_producer.join();
    queue().run();
    ASSERT_EQ(l_ran.size(), static_cast<std::size_t>(k_calls));
    for (std::size_t l_index = 0; l_index < l_ran.size(); ++l_index) {
        ASSERT_EQ(l_ran[l_index], static_cast<int>(l_index));
    }
}

// 8 producers hand over a mix of plain, blocking and unique calls while the owner drains the
// queue. Every plain and blocking call runs exactly once, every unique id exactly once, and every
// blocking caller comes back (a lost wake-up hangs it) only after its call has run.
TEST(callqueue, stress_mixed_calls_from_many_producers)
{
#if defined(_WIN32)
    int const k_calls = 1000;
#else
    int const k_calls = 10000;
#endif
    int const k_producers = 8;
    int const k_unique_ids = 997;
    std::vector<std::atomic<int>> l_runs(static_cast<std::size_t>(k_producers * k_calls));
    std::vector<std::atomic<int>> l_unique_runs(k_unique_ids);
    std::atomic<int> l_done{0};
    std::vector<std::thread> l_producers;
    for (int l_index = 0; l_index < k_producers; ++l_index) {
        l_producers.emplace_back([&, l_index] {
            for (int l_step = 0; l_step < k_calls; ++l_step) {
                int const l_slot = l_index * k_calls + l_step;
                switch (l_step % 4) {
                case 0: {
                    int const l_id = (l_slot * 7) % k_unique_ids;
                    queue().add_call(make_call([&l_unique_runs, l_id] { ++l_unique_runs[l_id]; }),
                                     "stress-" + std::to_string(l_id), callqueue_unique);
                    break;
                }
                case 1:
                    queue().add_call(make_call([&l_runs, l_slot] { ++l_runs[l_slot]; }), "stress", callqueue_blocking);
                    if (l_runs[l_slot] != 1) {
                        ADD_FAILURE() << "blocking call " << l_slot << " returned before it ran";
                    }
                    break;
                default:
                    queue().add_call(make_call([&l_runs, l_slot] { ++l_runs[l_slot]; }), "stress",
                                     l_step % 4 == 2 ? 0u : callqueue_deferred);
                    break;
                }
            }
            ++l_done;
        });
    }
    EXPECT_TRUE(run_until([&] { return l_done == k_producers; }));
    for (std::thread &l_thread : l_producers) {
        l_thread.join();
    }
    queue().run();
    for (int l_slot = 0; l_slot < k_producers * k_calls; ++l_slot) {
        ASSERT_EQ(l_runs[l_slot], l_slot % k_calls % 4 == 0 ? 0 : 1) << "call " << l_slot;
    }
    for (int l_id = 0; l_id < k_unique_ids; ++l_id) {
        ASSERT_EQ(l_unique_runs[l_id], 1) << "unique id " << l_id;
    }
}

// Calls of many sizes, some over-aligned, made on producers and freed on the owner, round after
// round, so that freed memory is handed on: each call finds its own payload intact when it runs,
// and what a run frees is made again by the next round.
template <std::size_t N, std::size_t A = alignof(std::max_align_t)> class sized_call : public callqueue_object {
public:
    explicit sized_call(std::atomic<int> *a_bad, unsigned char a_mark) : m_bad(a_bad)
    {
        std::fill(std::begin(m_payload), std::end(m_payload), a_mark);
    }
    void operator()() override
    {
        bool const l_aligned = reinterpret_cast<std::uintptr_t>(this) % A == 0;
        if (!l_aligned || std::count(std::begin(m_payload), std::end(m_payload), m_payload[0]) != N) {
            ++*m_bad;
        }
        std::fill(std::begin(m_payload), std::end(m_payload), 0);
    }

private:
    std::atomic<int> *m_bad;
    alignas(A) unsigned char m_payload[N];
};

TEST(callqueue, calls_of_all_sizes_keep_their_memory_while_queued)
{
    std::atomic<int> l_bad{0};
    std::atomic<int> l_made{0};
    int const k_rounds = 50;
    int const k_threads = 3;
    for (int l_round = 0; l_round < k_rounds; ++l_round) {
        std::vector<std::thread> l_producers;
        for (int l_index = 0; l_index < k_threads; ++l_index) {
            l_producers.emplace_back([&, l_index] {
                auto const l_mark = static_cast<unsigned char>(l_round * k_threads + l_index + 1);
                for (int l_call = 0; l_call < 70; ++l_call) {
                    queue().add_call(ptr_refcount<callqueue_object>(new sized_call<1>(&l_bad, l_mark)), "size", 0);
                    queue().add_call(ptr_refcount<callqueue_object>(new sized_call<150>(&l_bad, l_mark)), "size", 0);
                    queue().add_call(ptr_refcount<callqueue_object>(new sized_call<470>(&l_bad, l_mark)), "size", 0);
                    queue().add_call(ptr_refcount<callqueue_object>(new sized_call<4000>(&l_bad, l_mark)), "size", 0);
                    queue().add_call(ptr_refcount<callqueue_object>(new sized_call<64, 256>(&l_bad, l_mark)), "size",
                                     0);
                    l_made += 5;
                }
            });
        }
        for (std::thread &l_thread : l_producers) {
            l_thread.join();
        }
        queue().run();
    }
    EXPECT_EQ(l_made, k_rounds * k_threads * 70 * 5);
    EXPECT_EQ(l_bad, 0);
    void *const l_place = ::operator new(sizeof(sized_call<8>));
    auto *const l_placed = new (l_place) sized_call<8>(&l_bad, 1);
    (*l_placed)();
    l_placed->~sized_call<8>();
    ::operator delete(l_place);
    ptr_refcount<callqueue_object> const l_nothrow(new (std::nothrow) sized_call<100>(&l_bad, 1));
    queue().add_call(l_nothrow, "nothrow", 0);
    EXPECT_EQ(l_bad, 0);
}

// From here on the queue is closed.
TEST(callqueue_closed, exit_runs_exit_calls_in_order_and_leaves_pending_calls)
{
    std::vector<int> l_order;
    auto const l_pending = make_call();
    queue().add_call(l_pending, "pending", callqueue_deferred);
    queue().add_exit_call(make_call([&] { l_order.push_back(1); }), "exit-1", 0);
    queue().add_exit_call(make_call([&] {
                              l_order.push_back(2);
                              throw std::runtime_error("dropped");
                          }),
                          "exit-2", 0);
    queue().add_exit_call(make_call([&] { l_order.push_back(3); }), "exit-3", 0);

    EXPECT_NO_THROW(queue().exit());
    EXPECT_TRUE(queue().exited());
    EXPECT_EQ(l_order, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(l_pending->m_runs, 0);

    EXPECT_EQ(raised_text([] { queue().add_call(make_call(), "late one", 0); }),
              "Cannot add 'late one' call to callqueue: callqueue has already exit()ed.");
    EXPECT_EQ(raised_text([] { queue().add_exit_call(make_call(), "late one", 0); }),
              "Cannot add call to callqueue: callqueue has already exit()ed.");
    std::string l_from_producer;
    std::thread([&] {
        l_from_producer = raised_text([] { queue().add_call(make_call(), "late", callqueue_blocking); });
    }).join();
    EXPECT_EQ(l_from_producer, "Cannot add 'late' call to callqueue: callqueue has already exit()ed.");

    queue().run();
    EXPECT_EQ(l_pending->m_runs, 1) << "a run after exit still runs what was pending";

    EXPECT_NO_THROW(queue().exit());
    EXPECT_EQ(l_order.size(), 3u) << "a second exit finds nothing";

    std::string l_run;
    std::thread([&] { l_run = raised_text([] { queue().run(); }); }).join();
    EXPECT_EQ(l_run, "callqueue::run() called from different thread");
}

} // namespace
