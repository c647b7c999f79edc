#ifndef ORDWEL_TEST_SUPPORT_H
#define ORDWEL_TEST_SUPPORT_H

#include <string>
#include <vector>

#include <ordwel/buffer.h>

namespace ordwel_test {

// A buffer holding the bytes of a text, for compact expectations.
ordwel::buffer buffer_of(std::string const &a_text);
// The bytes of a buffer as a text.
std::string text_of(ordwel::buffer const &a_bytes);

} // namespace ordwel_test

#endif
