// SPDX-License-Identifier: MIT
#ifndef ORDWEL_SRC_BYTES_WRITABLE_H
#define ORDWEL_SRC_BYTES_WRITABLE_H

#include <string>

#include <ordwel/buffer.h>

// The first byte of a buffer's or a string's storage, for code that sizes either kind of result
// first and then writes straight into it.

namespace ordwel {
namespace internal {

inline unsigned char *writable_bytes(buffer &a_bytes)
{
    return a_bytes.begin();
}

inline unsigned char *writable_bytes(std::string &a_bytes)
{
    return reinterpret_cast<unsigned char *>(&a_bytes[0]);
}

} // namespace internal
} // namespace ordwel

#endif
