// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_SYNC_BLOCK_SHELF_H
#define ORDWEL_SRC_SYNC_BLOCK_SHELF_H

#include <cstddef>

namespace ordwel {
namespace block_shelf {

// Memory for small objects that one thread makes and another frees, as the calls handed to the
// owner of the call queue. Each thread keeps a few free blocks of each size; a thread that frees
// more than that passes them on a shelf of that size, in batches, and a thread that runs out takes
// a batch from there before it turns to the general heap. The shelves hold a bounded amount; larger
// objects and what passes the bound use the general heap.

// A block of at least a_size bytes, aligned as ::operator new aligns.
void *take(std::size_t a_size);
// Gives back a block from take() with the same a_size; any thread may do so.
void give_back(void *a_block, std::size_t a_size) noexcept;

} // namespace block_shelf
} // namespace ordwel

#endif
