// SPDX-License-Identifier: MIT
// Locks, semaphore and call queue beside their standard-library and Boost.Asio peers.

#include <ordwel/callqueue.h>
#include <ordwel/mutex.h>
#include <ordwel/semaphore.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#if defined(ORDWEL_HAVE_BOOST)
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#endif

namespace {

using namespace ordwel;

void BM_mutex_lock_unlock_ordwel(benchmark::State &a_state)
{
    mutex const l_mutex;
    for (auto l_iteration : a_state) {
        l_mutex.lock();
        l_mutex.unlock();
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_mutex_lock_unlock_ordwel);

void BM_mutex_lock_unlock_std(benchmark::State &a_state)
{
    std::mutex l_mutex;
    for (auto l_iteration : a_state) {
        l_mutex.lock();
        l_mutex.unlock();
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_mutex_lock_unlock_std);

void BM_scoped_mutex_lock_ordwel(benchmark::State &a_state)
{
    mutex const l_mutex;
    for (auto l_iteration : a_state) {
        scoped_mutex::lock const l_guard(l_mutex);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_scoped_mutex_lock_ordwel);

void BM_scoped_mutex_lock_std(benchmark::State &a_state)
{
    std::mutex l_mutex;
    for (auto l_iteration : a_state) {
        std::lock_guard<std::mutex> const l_guard(l_mutex);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_scoped_mutex_lock_std);

// The same counting semaphore built on the standard library, as the peer of the ping-pong.
class std_semaphore {
public:
    void post()
    {
        std::lock_guard<std::mutex> const l_guard(m_mutex);
        ++m_value;
        m_condition.notify_one();
    }
    void wait()
    {
        std::unique_lock<std::mutex> l_guard(m_mutex);
        m_condition.wait(l_guard, [this] { return m_value > 0; });
        --m_value;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    int m_value = 0;
};

// One iteration is one round trip: this thread posts the first semaphore, a partner thread takes
// it and posts the second, which this thread takes.
template <class S> void ping_pong(benchmark::State &a_state)
{
    S l_ping;
    S l_pong;
    std::atomic<bool> l_stop{false};
    std::thread l_partner([&] {
        for (;;) {
            l_ping.wait();
            if (l_stop) {
                return;
            }
            l_pong.post();
        }
    });
    for (auto l_iteration : a_state) {
        l_ping.post();
        l_pong.wait();
    }
    l_stop = true;
    l_ping.post();
    l_partner.join();
    a_state.SetItemsProcessed(a_state.iterations());
}

void BM_semaphore_ping_pong_ordwel(benchmark::State &a_state)
{
    ping_pong<semaphore>(a_state);
}
BENCHMARK(BM_semaphore_ping_pong_ordwel)->UseRealTime();

void BM_semaphore_ping_pong_std(benchmark::State &a_state)
{
    ping_pong<std_semaphore>(a_state);
}
BENCHMARK(BM_semaphore_ping_pong_std)->UseRealTime();

// The call queue: a_state.range(0) producers hand k_batch calls in all to the owner (this thread,
// which built the queue), which drains them with run(). In the napping variants the owner sleeps a
// moment whenever a drain found nothing, as an owner with other work would, and leaves the cores to
// the producers.
int const k_batch = 20000;
auto const k_nap = std::chrono::microseconds(50);

// The count of calls run, on a cache line of its own: the owner adds to it with every call, and a
// producer that read anything on the same line (its share of the batch, say) would pull the line
// away from the owner each time. Producers take their share by value.
struct alignas(64) shared_count {
    std::atomic<int> m_value{0};
};

// Producer threads started while the clock stands, each waiting at a gate: the measurement is the
// queue's, not the start and end of threads, which cost more the more threads there are (about
// 9 us for one thread and 270 us for eight on the 2-core machines here, against 2 ms for a batch).
class producer_team {
public:
    template <typename t_body> producer_team(int a_count, t_body const &a_body)
    {
        for (int l_index = 0; l_index < a_count; ++l_index) {
            m_threads.emplace_back([this, a_body] {
                m_ready.fetch_add(1, std::memory_order_release);
                while (!m_open.load(std::memory_order_acquire)) {
                    std::this_thread::yield();
                }
                a_body();
            });
        }
        while (m_ready.load(std::memory_order_acquire) != a_count) {
            std::this_thread::yield();
        }
    }
    ~producer_team() { join(); }

    producer_team(producer_team const &) = delete;
    producer_team &operator=(producer_team const &) = delete;

    void open() { m_open.store(true, std::memory_order_release); }
    void join()
    {
        open();
        for (std::thread &l_thread : m_threads) {
            l_thread.join();
        }
        m_threads.clear();
    }

private:
    std::atomic<int> m_ready{0};
    std::atomic<bool> m_open{false};
    std::vector<std::thread> m_threads;
};

class count_call : public callqueue_object {
public:
    explicit count_call(std::atomic<int> *a_count) : m_count(a_count) {}
    void operator()() override { m_count->fetch_add(1, std::memory_order_relaxed); }

private:
    std::atomic<int> *m_count;
};

void callqueue_throughput_ordwel(benchmark::State &a_state, bool a_nap)
{
    callqueue &l_queue = callqueue::instance();
    int const l_producers = static_cast<int>(a_state.range(0));
    int const l_each = k_batch / l_producers;
    int const l_total = l_each * l_producers;
    for (auto l_iteration : a_state) {
        a_state.PauseTiming();
        shared_count l_ran;
        producer_team l_team(l_producers, [&l_queue, &l_ran, l_each] {
            for (int l_call = 0; l_call < l_each; ++l_call) {
                l_queue.add_call(ptr_refcount<callqueue_object>(new count_call(&l_ran.m_value)), "", 0);
            }
        });
        a_state.ResumeTiming();
        l_team.open();
        for (int l_seen = 0; l_seen < l_total;) {
            l_queue.run();
            int const l_now = l_ran.m_value.load(std::memory_order_relaxed);
            if (a_nap && l_now == l_seen) {
                std::this_thread::sleep_for(k_nap);
            }
            l_seen = l_now;
        }
        a_state.PauseTiming();
        l_team.join();
        a_state.ResumeTiming();
    }
    a_state.SetItemsProcessed(a_state.iterations() * l_total);
}

void BM_callqueue_throughput_ordwel(benchmark::State &a_state)
{
    callqueue_throughput_ordwel(a_state, false);
}
BENCHMARK(BM_callqueue_throughput_ordwel)->Arg(1)->Arg(4)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_callqueue_napping_ordwel(benchmark::State &a_state)
{
    callqueue_throughput_ordwel(a_state, true);
}
BENCHMARK(BM_callqueue_napping_ordwel)->Arg(1)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

// One iteration is a batch of blocking calls made one after the other by a producer while the
// owner drains; the time per item is one round trip.
int const k_round_trips = 2000;

void BM_callqueue_blocking_round_trip_ordwel(benchmark::State &a_state)
{
    callqueue &l_queue = callqueue::instance();
    for (auto l_iteration : a_state) {
        std::atomic<int> l_ran{0};
        std::atomic<bool> l_done{false};
        std::thread l_producer([&] {
            for (int l_call = 0; l_call < k_round_trips; ++l_call) {
                l_queue.add_call(ptr_refcount<callqueue_object>(new count_call(&l_ran)), "", callqueue_blocking);
            }
            l_done = true;
        });
        while (!l_done.load(std::memory_order_acquire)) {
            l_queue.run();
        }
        l_producer.join();
    }
    a_state.SetItemsProcessed(a_state.iterations() * k_round_trips);
}
BENCHMARK(BM_callqueue_blocking_round_trip_ordwel)->UseRealTime()->Unit(benchmark::kMillisecond);

#if defined(ORDWEL_HAVE_BOOST)
void callqueue_throughput_asio(benchmark::State &a_state, bool a_nap)
{
    int const l_producers = static_cast<int>(a_state.range(0));
    int const l_each = k_batch / l_producers;
    int const l_total = l_each * l_producers;
    for (auto l_iteration : a_state) {
        a_state.PauseTiming();
        std::optional<boost::asio::io_context> l_context(std::in_place);
        shared_count l_ran;
        producer_team l_team(l_producers, [&l_context, &l_ran, l_each] {
            for (int l_call = 0; l_call < l_each; ++l_call) {
                std::atomic<int> *const l_count = &l_ran.m_value;
                boost::asio::post(*l_context, [l_count] { l_count->fetch_add(1, std::memory_order_relaxed); });
            }
        });
        a_state.ResumeTiming();
        l_team.open();
        for (int l_seen = 0; l_seen < l_total;) {
            l_context->poll();
            l_context->restart();
            int const l_now = l_ran.m_value.load(std::memory_order_relaxed);
            if (a_nap && l_now == l_seen) {
                std::this_thread::sleep_for(k_nap);
            }
            l_seen = l_now;
        }
        a_state.PauseTiming();
        l_team.join();
        l_context.reset();
        a_state.ResumeTiming();
    }
    a_state.SetItemsProcessed(a_state.iterations() * l_total);
}

void BM_callqueue_throughput_asio(benchmark::State &a_state)
{
    callqueue_throughput_asio(a_state, false);
}
BENCHMARK(BM_callqueue_throughput_asio)->Arg(1)->Arg(4)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_callqueue_napping_asio(benchmark::State &a_state)
{
    callqueue_throughput_asio(a_state, true);
}
BENCHMARK(BM_callqueue_napping_asio)->Arg(1)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_callqueue_blocking_round_trip_asio(benchmark::State &a_state)
{
    for (auto l_iteration : a_state) {
        boost::asio::io_context l_context;
        int l_ran = 0;
        std::atomic<bool> l_done{false};
        std::thread l_producer([&] {
            for (int l_call = 0; l_call < k_round_trips; ++l_call) {
                std::promise<void> l_ended;
                std::future<void> l_waited = l_ended.get_future();
                boost::asio::post(l_context, [&] {
                    ++l_ran;
                    l_ended.set_value();
                });
                l_waited.wait();
            }
            l_done = true;
        });
        while (!l_done.load(std::memory_order_acquire)) {
            l_context.poll();
            l_context.restart();
        }
        l_producer.join();
    }
    a_state.SetItemsProcessed(a_state.iterations() * k_round_trips);
}
BENCHMARK(BM_callqueue_blocking_round_trip_asio)->UseRealTime()->Unit(benchmark::kMillisecond);
#endif

} // namespace
