// SPDX-License-Identifier: MIT
// The wire format: 1,000 records of five items (32-, 16- and 64-bit integers, a name, a 32-byte
// blob) built into a message and taken apart again, in bytes of message per second. The peer is
// the same format written by hand into a std::vector with Boost.Endian's conversions and read back
// with the same bounds checks. Two more messages vary what a decoder meets: items of random kinds
// read by an outside list of kinds (an interpreted schema), and typed messages whose kind byte in
// the data selects fixed fields, strings and blobs of random lengths among them.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ordwel/coding.h>
#include <ordwel/internal/byte_order.h>

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

// The varied message: 4,000 items of every kind in a fixed pseudo-random order, strings and blobs
// of 0 to 199 bytes, so that neither lengths nor the order of kinds repeat in a pattern.
enum item_kind { k_u8, k_u16, k_u32, k_u64, k_text, k_bytes, k_kinds };

struct varied_item {
    item_kind kind;
    ordwel::uint64 value;
    std::string text;
};

std::vector<varied_item> const &varied_items()
{
    static std::vector<varied_item> const k_items = [] {
        std::vector<varied_item> l_items(4000);
        ordwel::uint32 l_seed = 12345;
        auto const l_next = [&l_seed] {
            l_seed = l_seed * 1664525u + 1013904223u;
            return l_seed >> 8;
        };
        for (varied_item &l_item : l_items) {
            l_item.kind = static_cast<item_kind>(l_next() % k_kinds);
            l_item.value = (static_cast<ordwel::uint64>(l_next()) << 32) | l_next();
            l_item.text.assign(l_next() % 200, static_cast<char>('a' + l_next() % 26));
        }
        return l_items;
    }();
    return k_items;
}

void ordwel_encode_varied(ordwel::encoder_network &a_encoder)
{
    using namespace ordwel;
    for (varied_item const &l_item : varied_items()) {
        switch (l_item.kind) {
        case k_u8:
            uint8_encode_network(static_cast<uint8>(l_item.value), a_encoder);
            break;
        case k_u16:
            uint16_encode_network(static_cast<uint16>(l_item.value), a_encoder);
            break;
        case k_u32:
            uint32_encode_network(static_cast<uint32>(l_item.value), a_encoder);
            break;
        case k_u64:
            uint64_encode_network(l_item.value, a_encoder);
            break;
        case k_text:
        case k_bytes:
        case k_kinds:
            string_encode_network(l_item.text, a_encoder);
            break;
        }
    }
}

void ordwel_network_decode_varied(benchmark::State &a_state)
{
    using namespace ordwel;
    buffer l_message;
    encoder_network l_encoder(l_message);
    ordwel_encode_varied(l_encoder);
    decoder_network l_decoder(l_message);
    std::vector<varied_item> const &l_items = varied_items();
    uint8 l_u8 = 0;
    uint16 l_u16 = 0;
    uint32 l_u32 = 0;
    uint64 l_u64 = 0;
    std::string l_text;
    buffer l_bytes;
    for (auto _ : a_state) {
        l_decoder.clear();
        for (varied_item const &l_item : l_items) {
            switch (l_item.kind) {
            case k_u8:
                uint8_decode_network(l_u8, l_decoder);
                break;
            case k_u16:
                uint16_decode_network(l_u16, l_decoder);
                break;
            case k_u32:
                uint32_decode_network(l_u32, l_decoder);
                break;
            case k_u64:
                uint64_decode_network(l_u64, l_decoder);
                break;
            case k_text:
            case k_kinds:
                string_decode_network(l_text, l_decoder);
                break;
            case k_bytes:
                buffer_decode_network(l_bytes, l_decoder);
                break;
            }
        }
        benchmark::DoNotOptimize(l_u8);
        benchmark::DoNotOptimize(l_u16);
        benchmark::DoNotOptimize(l_u32);
        benchmark::DoNotOptimize(l_u64);
        benchmark::DoNotOptimize(l_text.data());
        benchmark::DoNotOptimize(l_bytes.begin());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(ordwel_network_decode_varied);

// Typed messages, as a wire protocol carries them: 2,000 messages of six kinds in a pseudo-random
// order, each a kind byte and then that kind's fixed fields (integers of every width, strings and
// blobs of 0 to 199 bytes). The decoder reads the kind from the data and decodes that kind's
// fields, so the one unpredictable branch is per message, not per field.
enum message_kind : ordwel::uint8 { k_clip, k_tag, k_sample, k_note, k_chunk, k_stamp, k_message_kinds };

struct message_fields {
    ordwel::uint8 m_u8 = 0;
    ordwel::uint16 m_u16 = 0;
    ordwel::uint32 m_u32 = 0;
    ordwel::uint64 m_u64 = 0;
    ordwel::uint64 m_u64b = 0;
    std::string m_text;
    std::string m_text_b;
    ordwel::buffer m_bytes;
};

ordwel::buffer const &typed_message()
{
    static ordwel::buffer const k_message = [] {
        using namespace ordwel;
        buffer l_message;
        encoder_network l_encoder(l_message);
        uint32 l_seed = 4242;
        auto const l_next = [&l_seed] {
            l_seed = l_seed * 1664525u + 1013904223u;
            return l_seed >> 8;
        };
        auto const l_text = [&l_next] { return std::string(l_next() % 200, static_cast<char>('a' + l_next() % 26)); };
        for (int l_index = 0; l_index < 2000; ++l_index) {
            auto const l_kind = static_cast<uint8>(l_next() % k_message_kinds);
            uint8_encode_network(l_kind, l_encoder);
            switch (l_kind) {
            case k_clip:
                uint32_encode_network(l_next(), l_encoder);
                uint16_encode_network(static_cast<uint16>(l_next()), l_encoder);
                uint64_encode_network(uint64(l_next()) << 20, l_encoder);
                string_encode_network(l_text(), l_encoder);
                string_encode_network(l_text(), l_encoder);
                break;
            case k_tag:
                uint16_encode_network(static_cast<uint16>(l_next()), l_encoder);
                string_encode_network(l_text(), l_encoder);
                break;
            case k_sample:
                uint32_encode_network(l_next(), l_encoder);
                uint64_encode_network(uint64(l_next()) << 24, l_encoder);
                uint64_encode_network(uint64(l_next()) << 24, l_encoder);
                uint8_encode_network(static_cast<uint8>(l_next()), l_encoder);
                break;
            case k_note:
                uint8_encode_network(static_cast<uint8>(l_next()), l_encoder);
                string_encode_network(l_text(), l_encoder);
                string_encode_network(l_text(), l_encoder);
                break;
            case k_chunk:
                uint32_encode_network(l_next(), l_encoder);
                string_encode_network(l_text(), l_encoder);
                break;
            default:
                uint64_encode_network(uint64(l_next()) << 16, l_encoder);
                uint64_encode_network(uint64(l_next()) << 8, l_encoder);
                uint32_encode_network(l_next(), l_encoder);
                uint16_encode_network(static_cast<uint16>(l_next()), l_encoder);
                uint8_encode_network(static_cast<uint8>(l_next()), l_encoder);
                break;
            }
        }
        return l_message;
    }();
    return k_message;
}

void ordwel_network_decode_messages(benchmark::State &a_state)
{
    using namespace ordwel;
    buffer l_message = typed_message();
    decoder_network l_decoder(l_message);
    message_fields l_fields;
    std::size_t l_kinds = 0;
    for (auto _ : a_state) {
        l_decoder.clear();
        while (l_decoder.left() != 0) {
            uint8 l_kind = 0;
            uint8_decode_network(l_kind, l_decoder);
            l_kinds += l_kind;
            switch (l_kind) {
            case k_clip:
                uint32_decode_network(l_fields.m_u32, l_decoder);
                uint16_decode_network(l_fields.m_u16, l_decoder);
                uint64_decode_network(l_fields.m_u64, l_decoder);
                string_decode_network(l_fields.m_text, l_decoder);
                string_decode_network(l_fields.m_text_b, l_decoder);
                break;
            case k_tag:
                uint16_decode_network(l_fields.m_u16, l_decoder);
                string_decode_network(l_fields.m_text, l_decoder);
                break;
            case k_sample:
                uint32_decode_network(l_fields.m_u32, l_decoder);
                uint64_decode_network(l_fields.m_u64, l_decoder);
                uint64_decode_network(l_fields.m_u64b, l_decoder);
                uint8_decode_network(l_fields.m_u8, l_decoder);
                break;
            case k_note:
                uint8_decode_network(l_fields.m_u8, l_decoder);
                string_decode_network(l_fields.m_text, l_decoder);
                string_decode_network(l_fields.m_text_b, l_decoder);
                break;
            case k_chunk:
                uint32_decode_network(l_fields.m_u32, l_decoder);
                buffer_decode_network(l_fields.m_bytes, l_decoder);
                break;
            default:
                uint64_decode_network(l_fields.m_u64, l_decoder);
                uint64_decode_network(l_fields.m_u64b, l_decoder);
                uint32_decode_network(l_fields.m_u32, l_decoder);
                uint16_decode_network(l_fields.m_u16, l_decoder);
                uint8_decode_network(l_fields.m_u8, l_decoder);
                break;
            }
            benchmark::DoNotOptimize(l_fields.m_u64);
        }
        benchmark::DoNotOptimize(l_fields);
    }
    benchmark::DoNotOptimize(l_kinds);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(ordwel_network_decode_messages);

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

void boost_endian_network_decode_varied(benchmark::State &a_state)
{
    using namespace ordwel;
    buffer l_encoded;
    encoder_network l_encoder(l_encoded);
    ordwel_encode_varied(l_encoder);
    std::vector<unsigned char> const l_message(l_encoded.begin(), l_encoded.end());
    std::vector<varied_item> const &l_items = varied_items();
    uint8 l_u8 = 0;
    uint16 l_u16 = 0;
    uint32 l_u32 = 0;
    uint64 l_u64 = 0;
    std::string l_text;
    buffer l_bytes;
    for (auto _ : a_state) {
        reader l_reader{l_message, 0};
        for (varied_item const &l_item : l_items) {
            switch (l_item.kind) {
            case k_u8:
                l_u8 = l_reader.get<uint8>();
                break;
            case k_u16:
                l_u16 = l_reader.get<uint16>();
                break;
            case k_u32:
                l_u32 = l_reader.get<uint32>();
                break;
            case k_u64:
                l_u64 = l_reader.get<uint64>();
                break;
            case k_text:
            case k_kinds: {
                auto const l_length = l_reader.get<uint32>();
                unsigned char const *const l_at = l_reader.take(l_length);
                if (l_length != 0) {
                    l_text.assign(reinterpret_cast<char const *>(l_at), l_length);
                }
                break;
            }
            case k_bytes: {
                auto const l_length = l_reader.get<uint32>();
                unsigned char const *const l_at = l_reader.take(l_length);
                if (l_length != 0) {
                    l_bytes.assign(l_at, l_at + l_length);
                }
                break;
            }
            }
        }
        benchmark::DoNotOptimize(l_u8);
        benchmark::DoNotOptimize(l_u16);
        benchmark::DoNotOptimize(l_u32);
        benchmark::DoNotOptimize(l_u64);
        benchmark::DoNotOptimize(l_text.data());
        benchmark::DoNotOptimize(l_bytes.begin());
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(boost_endian_network_decode_varied);

void boost_endian_network_decode_messages(benchmark::State &a_state)
{
    using namespace ordwel;
    buffer const &l_encoded = typed_message();
    std::vector<unsigned char> const l_message(l_encoded.begin(), l_encoded.end());
    message_fields l_fields;
    std::size_t l_kinds = 0;
    auto const l_text = [](reader &a_reader, std::string &a_text) {
        auto const l_length = a_reader.get<uint32>();
        unsigned char const *const l_at = a_reader.take(l_length);
        if (l_length != 0) {
            a_text.assign(reinterpret_cast<char const *>(l_at), l_length);
        }
    };
    for (auto _ : a_state) {
        reader l_reader{l_message, 0};
        while (l_reader.at != l_message.size()) {
            auto const l_kind = l_reader.get<uint8>();
            l_kinds += l_kind;
            switch (l_kind) {
            case k_clip:
                l_fields.m_u32 = l_reader.get<uint32>();
                l_fields.m_u16 = l_reader.get<uint16>();
                l_fields.m_u64 = l_reader.get<uint64>();
                l_text(l_reader, l_fields.m_text);
                l_text(l_reader, l_fields.m_text_b);
                break;
            case k_tag:
                l_fields.m_u16 = l_reader.get<uint16>();
                l_text(l_reader, l_fields.m_text);
                break;
            case k_sample:
                l_fields.m_u32 = l_reader.get<uint32>();
                l_fields.m_u64 = l_reader.get<uint64>();
                l_fields.m_u64b = l_reader.get<uint64>();
                l_fields.m_u8 = l_reader.get<uint8>();
                break;
            case k_note:
                l_fields.m_u8 = l_reader.get<uint8>();
                l_text(l_reader, l_fields.m_text);
                l_text(l_reader, l_fields.m_text_b);
                break;
            case k_chunk: {
                l_fields.m_u32 = l_reader.get<uint32>();
                auto const l_length = l_reader.get<uint32>();
                unsigned char const *const l_at = l_reader.take(l_length);
                if (l_length != 0) {
                    l_fields.m_bytes.assign(l_at, l_at + l_length);
                }
                break;
            }
            default:
                l_fields.m_u64 = l_reader.get<uint64>();
                l_fields.m_u64b = l_reader.get<uint64>();
                l_fields.m_u32 = l_reader.get<uint32>();
                l_fields.m_u16 = l_reader.get<uint16>();
                l_fields.m_u8 = l_reader.get<uint8>();
                break;
            }
            benchmark::DoNotOptimize(l_fields.m_u64);
        }
        benchmark::DoNotOptimize(l_fields);
    }
    benchmark::DoNotOptimize(l_kinds);
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(boost_endian_network_decode_messages);
#endif

// What no decoder of the two varied messages can beat: the same walk over the kinds that skips
// each item by its size or length and reads one byte of it, with no bounds check, no copy and no
// store. Its branch on the kind is the decoders' own, and it mispredicts as often: the gap between
// a decoder and this walk is all that decoding adds.
std::uint32_t skip_sized(unsigned char const *&a_at)
{
    std::uint32_t const l_length = ordwel::internal::load_be<std::uint32_t>(a_at);
    a_at += 4 + std::size_t(l_length);
    return l_length;
}

void walk_only_network_decode_varied(benchmark::State &a_state)
{
    ordwel::buffer l_message;
    ordwel::encoder_network l_encoder(l_message);
    ordwel_encode_varied(l_encoder);
    std::vector<varied_item> const &l_items = varied_items();
    std::uint64_t l_sum = 0;
    for (auto _ : a_state) {
        unsigned char const *l_at = l_message.begin();
        for (varied_item const &l_item : l_items) {
            switch (l_item.kind) {
            case k_u8:
                l_sum += *l_at;
                l_at += 1;
                break;
            case k_u16:
                l_sum += *l_at;
                l_at += 2;
                break;
            case k_u32:
                l_sum += *l_at;
                l_at += 4;
                break;
            case k_u64:
                l_sum += *l_at;
                l_at += 8;
                break;
            case k_text:
            case k_kinds:
                l_sum += skip_sized(l_at);
                break;
            case k_bytes:
                l_sum ^= skip_sized(l_at);
                break;
            }
        }
        benchmark::DoNotOptimize(l_at);
        benchmark::DoNotOptimize(l_sum);
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(walk_only_network_decode_varied);

void walk_only_network_decode_messages(benchmark::State &a_state)
{
    ordwel::buffer const &l_message = typed_message();
    std::uint64_t l_sum = 0;
    for (auto _ : a_state) {
        unsigned char const *l_at = l_message.begin();
        while (l_at != l_message.end()) {
            std::uint8_t const l_kind = *l_at++;
            l_sum += *l_at;
            switch (l_kind) {
            case k_clip:
                l_at += 14;
                l_sum += skip_sized(l_at);
                l_sum += skip_sized(l_at);
                break;
            case k_tag:
                l_at += 2;
                l_sum += skip_sized(l_at);
                break;
            case k_sample:
                l_at += 21;
                break;
            case k_note:
                l_at += 1;
                l_sum += skip_sized(l_at);
                l_sum += skip_sized(l_at);
                break;
            case k_chunk:
                l_at += 4;
                l_sum ^= skip_sized(l_at);
                break;
            default:
                l_at += 23;
                break;
            }
        }
        benchmark::DoNotOptimize(l_sum);
    }
    a_state.SetBytesProcessed(static_cast<int64_t>(a_state.iterations() * l_message.size()));
}
BENCHMARK(walk_only_network_decode_messages);

} // namespace
