// SPDX-License-Identifier: MIT
#include "support/scripted_streams.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <ordwel/es.h>

namespace ordwel_test {

scripted_rd::scripted_rd(std::string a_data, std::vector<ordwel::uint64> a_pieces)
    : m_data(std::move(a_data)), m_pieces(std::move(a_pieces))
{
}

ordwel::uint64 scripted_rd::read(void *a_destination, ordwel::uint64 a_size)
{
    m_asked.push_back(a_size);
    ordwel::uint64 l_count = a_size;
    if (!m_pieces.empty()) {
        ordwel::uint64 const l_piece = m_pieces[std::min<std::size_t>(m_calls, m_pieces.size() - 1)];
        l_count = std::min(l_count, l_piece);
    }
    ++m_calls;
    l_count = std::min<ordwel::uint64>(l_count, m_data.size() - m_pos);
    if (l_count != 0) {
        std::memcpy(a_destination, m_data.data() + m_pos, l_count);
    }
    m_pos += l_count;
    return l_count;
}

void recording_wr::write(void const *a_source, ordwel::uint64 a_size)
{
    m_writes.emplace_back(static_cast<char const *>(a_source), a_size);
    m_total += a_size;
}

std::string recording_wr::all() const
{
    std::string l_all;
    for (std::string const &l_write : m_writes) {
        l_all += l_write;
    }
    return l_all;
}

void failing_wr::write(void const *, ordwel::uint64)
{
    ordwel::es::call::raise(ORDWEL_HERE, "sink failed");
}

} // namespace ordwel_test
