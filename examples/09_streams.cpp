// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

#include <ordwel/ordwel.h>

using namespace ordwel;

int main()
{
    buffer bytes;
    stream::buf io(bytes);                             // a read/write stream over a growable buffer
    {
        bytestream::wr out(io, 4096);
        out.write_be<uint32>(0x6d6f6f76);              // 'moov', big-endian
        out.write_le<uint16>(2);
    }                                                  // the block reaches the buffer here
    io.seek(0, stream::begin);
    bytestream::rd in(io, 4096);
    uint32 const tag = in.read_be<uint32>();           // past the end: es::uflow

    buffer message;
    encoder_network encoder(message);
    uint32_encode_network(42, encoder);
    string_encode_network("clip.mov", encoder);
    std::string base64 = string_encode_base64(message.begin(), message.size());   // "AAAAKgAAAAhjbGlwLm1vdg=="
    std::string hex = string_encode_hex(std::string("clip.mov"));                 // "636c69702e6d6f76"
    std::printf("%s %s %s\n", string_with_fourcc(tag, '.').c_str(), base64.c_str(), hex.c_str());
}
