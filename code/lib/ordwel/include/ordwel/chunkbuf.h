// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CHUNKBUF_H
#define ORDWEL_CHUNKBUF_H

#include <ordwel/buffer.h>
#include <ordwel/export.h>
#include <ordwel/object.h>
#include <ordwel/types.h>

namespace ordwel {

/// A byte buffer with a shared life: a buffer that can be held through ptr_refcount. Its count
/// starts at 0, also in a copy, and assignment copies the bytes and leaves both counts alone.
class ORDWEL_API chunkbuf : public object_refcount, public buffer {
public:
    /// Empty, capacity 1024.
    chunkbuf();
    /// Empty, with room for 2 × a_count bytes.
    explicit chunkbuf(uint64 a_count);
    /// a_count bytes of a_fill.
    chunkbuf(uint64 a_count, unsigned char a_fill);
    /// A copy of the bytes from a_first up to a_last.
    chunkbuf(unsigned char const *a_first, unsigned char const *a_last);
    /// A copy of the buffer's bytes, with a count of 0.
    explicit chunkbuf(buffer const &a_other);
    /// A copy of the bytes, with a count of 0.
    chunkbuf(chunkbuf const &a_other);
    ~chunkbuf() override;

    /// Copies the bytes; both counts stay.
    chunkbuf &operator=(chunkbuf const &a_other);
};

/// A chunkbuf that holds one frame; a type of its own so that interfaces can ask for frames. Its
/// constructors and assignment do what chunkbuf's do.
class ORDWEL_API framebuf : public chunkbuf {
public:
    /// The constructors of chunkbuf: empty (capacity 1024), room for 2 × a_count bytes, a_count
    /// bytes of a_fill, a copy of a range or of a buffer; the count starts at 0 in each.
    ///@{
    framebuf();
    explicit framebuf(uint64 a_count);
    framebuf(uint64 a_count, unsigned char a_fill);
    framebuf(unsigned char const *a_first, unsigned char const *a_last);
    explicit framebuf(buffer const &a_other);
    ///@}
    /// A copy of the bytes, with a count of 0.
    framebuf(framebuf const &a_other);
    ~framebuf() override;

    /// Copies the bytes; both counts stay.
    framebuf &operator=(framebuf const &a_other);
};

} // namespace ordwel

#endif
