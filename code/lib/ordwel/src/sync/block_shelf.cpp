// SPDX-License-Identifier: MIT
#include "sync/block_shelf.h"

#include <atomic>
#include <new>

#include "core/prefetch.h"

// Under the address sanitizer a free block is poisoned but for its links, so that a use of a freed
// object is still reported.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) && !defined(__SANITIZE_ADDRESS__)
#define __SANITIZE_ADDRESS__ 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#define ORDWEL_SHELF_POISON(a_address, a_size) ASAN_POISON_MEMORY_REGION(a_address, a_size)
#define ORDWEL_SHELF_UNPOISON(a_address, a_size) ASAN_UNPOISON_MEMORY_REGION(a_address, a_size)
#else
#define ORDWEL_SHELF_POISON(a_address, a_size) static_cast<void>(0)
#define ORDWEL_SHELF_UNPOISON(a_address, a_size) static_cast<void>(0)
#endif

namespace ordwel {
namespace block_shelf {

namespace {

// Sizes are rounded up to steps of 64 bytes; above the last step the general heap serves.
std::size_t const k_step = 64;
std::size_t const k_shelves = 8;
// Blocks move between a thread and a shelf in batches of this many.
std::size_t const k_batch = 64;
// What the shelf of one size holds at most; a full batch beyond it goes to the general heap.
std::size_t const k_bytes_per_shelf = std::size_t(4) << 20;

// A free block. The first block of a batch also links the next batch and counts its own.
struct block {
    block *m_next;
    block *m_next_batch;
    std::size_t m_count;
};

std::size_t shelf_index(std::size_t a_size)
{
    return a_size == 0 ? 0 : (a_size - 1) / k_step;
}

std::size_t block_size(std::size_t a_index)
{
    return (a_index + 1) * k_step;
}

// The batches of one size, a stack: any thread pushes with a compare-and-swap; a thread pops only
// while it holds m_popping, so no batch can leave and come back between its look at the head and
// its swap. A thread that finds another popping uses the general heap instead of waiting.
struct alignas(64) shelf {
    std::atomic<block *> m_head{nullptr};
    std::atomic<bool> m_popping{false};
    std::atomic<std::size_t> m_held{0};

    // Takes the batch, or frees its blocks when the shelf is full.
    void push(block *a_batch, std::size_t a_count, std::size_t a_block_size) noexcept
    {
        if (m_held.load(std::memory_order_relaxed) + a_count > k_bytes_per_shelf / a_block_size) {
            while (block *const l_block = a_batch) {
                a_batch = l_block->m_next;
                ORDWEL_SHELF_UNPOISON(l_block, a_block_size);
                ::operator delete(l_block);
            }
            return;
        }
        m_held.fetch_add(a_count, std::memory_order_relaxed);
        a_batch->m_count = a_count;
        a_batch->m_next_batch = m_head.load(std::memory_order_relaxed);
        while (!m_head.compare_exchange_weak(a_batch->m_next_batch, a_batch, std::memory_order_release,
                                             std::memory_order_relaxed)) {
        }
    }

    block *pop() noexcept
    {
        if (m_head.load(std::memory_order_relaxed) == nullptr || m_popping.exchange(true, std::memory_order_acquire)) {
            return nullptr;
        }
        block *l_batch = m_head.load(std::memory_order_acquire);
        while (l_batch != nullptr &&
               !m_head.compare_exchange_weak(l_batch, l_batch->m_next_batch, std::memory_order_acquire,
                                             std::memory_order_acquire)) {
        }
        m_popping.store(false, std::memory_order_release);
        if (l_batch != nullptr) {
            m_held.fetch_sub(l_batch->m_count, std::memory_order_relaxed);
        }
        return l_batch;
    }
};

// Built before any code runs and never destroyed, so usable up to the end of the process.
shelf s_shelves[k_shelves];

// A thread's own free blocks of each size: what it frees goes here first and what it makes comes
// from here first, so a thread that makes and frees alike never touches a shelf.
struct stash {
    block *m_heads[k_shelves];
    std::size_t m_counts[k_shelves];
    bool m_ended;
};

thread_local stash t_stash;

// Puts the thread's blocks back on the shelves when the thread ends, for the threads that go on.
// Objects made or freed after that, in the thread's last moments, use the general heap.
struct stash_end {
    stash_end() = default;
    stash_end(stash_end const &) = delete;
    stash_end &operator=(stash_end const &) = delete;
    ~stash_end()
    {
        stash &l_stash = t_stash;
        l_stash.m_ended = true;
        for (std::size_t l_index = 0; l_index < k_shelves; ++l_index) {
            if (l_stash.m_heads[l_index] != nullptr) {
                s_shelves[l_index].push(l_stash.m_heads[l_index], l_stash.m_counts[l_index], block_size(l_index));
            }
        }
    }
};

// The first use of the stash arranges for its end.
stash &this_thread_stash()
{
    thread_local stash_end const t_end;
    static_cast<void>(t_end);
    return t_stash;
}

} // namespace

void *take(std::size_t a_size)
{
    std::size_t const l_index = shelf_index(a_size);
    if (l_index >= k_shelves) {
        return ::operator new(a_size);
    }
    std::size_t const l_size = block_size(l_index);
    stash &l_stash = this_thread_stash();
    if (l_stash.m_ended) {
        return ::operator new(l_size);
    }
    block *l_block = l_stash.m_heads[l_index];
    if (l_block == nullptr) {
        l_block = s_shelves[l_index].pop();
        if (l_block == nullptr) {
            return ::operator new(l_size);
        }
        l_stash.m_counts[l_index] = l_block->m_count;
    }
    ORDWEL_SHELF_UNPOISON(l_block, l_size);
    l_stash.m_heads[l_index] = l_block->m_next;
    --l_stash.m_counts[l_index];
    // The blocks of a batch were freed on another thread, as a rule, and are still in its cache:
    // the next one is asked for now, so that it has come by the next take.
    if (l_block->m_next != nullptr) {
        internal::prefetch_for_writing(l_block->m_next);
    }
    return l_block;
}

void give_back(void *a_block, std::size_t a_size) noexcept
{
    std::size_t const l_index = shelf_index(a_size);
    if (l_index >= k_shelves) {
        ::operator delete(a_block);
        return;
    }
    std::size_t const l_size = block_size(l_index);
    stash &l_stash = this_thread_stash();
    if (l_stash.m_ended) {
        ::operator delete(a_block);
        return;
    }
    if (l_stash.m_counts[l_index] == k_batch) {
        s_shelves[l_index].push(l_stash.m_heads[l_index], k_batch, l_size);
        l_stash.m_heads[l_index] = nullptr;
        l_stash.m_counts[l_index] = 0;
    }
    block *const l_block = ::new (a_block) block{l_stash.m_heads[l_index], nullptr, 0};
    ORDWEL_SHELF_POISON(reinterpret_cast<unsigned char *>(l_block) + sizeof(block), l_size - sizeof(block));
    l_stash.m_heads[l_index] = l_block;
    ++l_stash.m_counts[l_index];
}

} // namespace block_shelf
} // namespace ordwel
