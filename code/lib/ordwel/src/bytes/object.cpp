// SPDX-License-Identifier: MIT
#include <ordwel/object.h>

namespace ordwel {

// Out of line, so that the class's type information and virtual table live in the library.
object_refcount::~object_refcount() = default;

} // namespace ordwel
