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

// Sends the standard output to the standard error stream, so that a death test can match what a
// dying process printed to its standard output.
void redirect_stdout_to_stderr();

} // namespace ordwel_test

#endif
