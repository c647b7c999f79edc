// The wire format: 1,000 records of five items (32-, 16- and 64-bit integers, a name, a 32-byte
// blob) built into a message and taken apart again, in bytes of message per second. The peer is
// the same format written by hand into a std::vector with Boost.Endian's conversions and read back
// with the same bounds checks.

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/coding.h>

#if defined(ORDWEL_HAVE_BOOST)
#include <boost/endian/conversion.hpp>
#endif

namespace {

struct record {
    ordwel::uint32 id;
    ordwel::uint16 kind;
    ordwel::uint64 time;
    std::string name;
    ordwel::buffer blob;
};

std::vector<record> const &records()
{
    static std::vector<record> const k_records = [] {
        std::vector<record> l_records(1000);
        for (std::size_t l_index = 0; l_index < l_records.size(); ++l_index) {
            record &l_record = l_records[l_index];
            l_record.id = static_cast<ordwel::uint32>(l_index * 2654435761u);
            l_record.kind = static_cast<ordwel::uint16>(l_index % 7);
            l_record.time = 90000ull * l_index;
            l_record.name = "clip_" + std::to_string(l_index);
            l_record.blob.resize(32, static_cast<unsigned char>(l_index));
        }
        return l_records;
    }();
    return k_records;
}

std::size_t message_size()
{
    std::size_t l_size = 0;
    for (record const &l_record : records()) {
        l_size += 4 + 2 + 8 + 4 + l_record.name.size() + 4 + l_record.blob.size();
    }
    return l_size;
}

void ordwel_encode(ordwel::encoder_network &a_encoder)
{
    using namespace ordwel;
    for (record const &l_record : records()) {
        uint32_encode_network(l_record.id, a_encoder);
        uint16_encode_network(l_record.kind, a_encoder);
        uint64_encode_network(l_record.time, a_encoder);
        string_encode_network(l_record.name, a_encoder);
        buffer_encode_network(l_record.blob, a_encoder);
    }
}

void ordwel_network_encode(benchmark::State &a_state)
{
    ordwel::buffer l_message;
    ordwel::encoder_network l_encoder(l_message);
    for (auto _ : a_state) {
        l_encoder.clear();
        ordwel_encode(l_encoder);
        benchmark::DoNotOptimize(l_message.begin());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * message_size()));
}
BENCHMARK(ordwel_network_encode);

void ordwel_network_decode(benchmark::State &a_state)
{
    using namespace ordwel;
    buffer l_message;
    encoder_network l_encoder(l_message);
    ordwel_encode(l_encoder);
    decoder_network l_decoder(l_message);
    record l_record;
    for (auto _ : a_state) {
        l_decoder.clear();
        while (l_decoder.left() != 0) {
            uint32_decode_network(l_record.id, l_decoder);
            uint16_decode_network(l_record.kind, l_decoder);
            uint64_decode_network(l_record.time, l_decoder);
            string_decode_network(l_record.name, l_decoder);
            buffer_decode_network(l_record.blob, l_decoder);
            benchmark::DoNotOptimize(l_record.time);
        }
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * message_size()));
}
BENCHMARK(ordwel_network_decode);

#if defined(ORDWEL_HAVE_BOOST)
template <typename T> void put(std::vector<unsigned char> &a_out, T a_value)
{
    T const l_big = boost::endian::native_to_big(a_value);
    unsigned char const *const l_bytes = reinterpret_cast<unsigned char const *>(&l_big);
    a_out.insert(a_out.end(), l_bytes, l_bytes + sizeof l_big);
}

void boost_endian_encode(std::vector<unsigned char> &a_out)
{
    for (record const &l_record : records()) {
        put(a_out, l_record.id);
        put(a_out, l_record.kind);
        put(a_out, l_record.time);
        put(a_out, static_cast<ordwel::uint32>(l_record.name.size()));
        a_out.insert(a_out.end(), l_record.name.begin(), l_record.name.end());
        put(a_out, static_cast<ordwel::uint32>(l_record.blob.size()));
        a_out.insert(a_out.end(), l_record.blob.begin(), l_record.blob.end());
    }
}

void boost_endian_network_encode(benchmark::State &a_state)
{
    std::vector<unsigned char> l_message;
    for (auto _ : a_state) {
        l_message.clear();
        boost_endian_encode(l_message);
        benchmark::DoNotOptimize(l_message.data());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * message_size()));
}
BENCHMARK(boost_endian_network_encode);

struct reader {
    std::vector<unsigned char> const &bytes;
    std::size_t at;

    unsigned char const *take(std::size_t a_count)
    {
        if (bytes.size() - at < a_count) {
            throw std::out_of_range("buffer offset out of range");
        }
        unsigned char const *const l_bytes = bytes.data() + at;
        at += a_count;
        return l_bytes;
    }
    template <typename T> T get()
    {
        T l_value;
        std::memcpy(&l_value, take(sizeof l_value), sizeof l_value);
        return boost::endian::big_to_native(l_value);
    }
};

void boost_endian_network_decode(benchmark::State &a_state)
{
    std::vector<unsigned char> l_message;
    boost_endian_encode(l_message);
    record l_record;
    for (auto _ : a_state) {
        reader l_reader{l_message, 0};
        while (l_reader.at != l_message.size()) {
            l_record.id = l_reader.get<ordwel::uint32>();
            l_record.kind = l_reader.get<ordwel::uint16>();
            l_record.time = l_reader.get<ordwel::uint64>();
            auto l_length = l_reader.get<ordwel::uint32>();
            unsigned char const *l_bytes = l_reader.take(l_length);
            l_record.name.assign(reinterpret_cast<char const *>(l_bytes), l_length);
            l_length = l_reader.get<ordwel::uint32>();
            l_bytes = l_reader.take(l_length);
            l_record.blob.assign(l_bytes, l_bytes + l_length);
            benchmark::DoNotOptimize(l_record.time);
        }
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * message_size()));
}
BENCHMARK(boost_endian_network_decode);
#endif

} // namespace
