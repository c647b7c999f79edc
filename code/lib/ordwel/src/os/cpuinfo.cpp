// SPDX-License-Identifier: MIT
#include <ordwel/cpuinfo.h>

#include <new>
#include <vector>

#include <ordwel/es.h>
#include <ordwel/string_helpers.h>

#include "diag/raise.h"
#include "platform/systeminfo.h"

namespace ordwel {

namespace {

cpuinfo::record record_with_facts(platform::processor_facts const &a_facts)
{
    return cpuinfo::record{cpuinfo::type_with_architecture(a_facts.m_architecture),
                           cpuinfo::flags_with_features(a_facts.m_features), a_facts.m_processors};
}

// Built at load, before any caller runs, and read-only from then on.
cpuinfo::record const s_record = record_with_facts(platform::read_processor_facts());

} // namespace

cpuinfo::cpuinfo() : m_record(&s_record)
{
}

cpuinfo::~cpuinfo() = default;

unsigned cpuinfo::type() const
{
    return m_record->m_type;
}

unsigned cpuinfo::present() const
{
    return m_record->m_present;
}

unsigned cpuinfo::active() const
{
    std::vector<platform::processor_relation> l_records;
    platform::status l_status;
    try {
        l_status = platform::processor_relations(l_records);
    } catch (std::bad_alloc const &) {
        es::alloc::raise(ORDWEL_HERE, "unable to allocated buffer in cpubuffer::active()");
    }
    if (l_status.failed()) {
        diag::raise_format<es::alloc>(ORDWEL_HERE, "error calling GetLogicalProcessorInformation %d",
                                      static_cast<int>(l_status.m_code));
    }
    unsigned l_count = 0;
    for (platform::processor_relation const &l_record : l_records) {
        l_count += active_with_relation(l_record.m_relationship, l_record.m_mask);
    }
    return l_count;
}

std::string cpuinfo::flags() const
{
    return m_record->m_flags.empty() ? std::string() : m_record->m_flags.substr(1);
}

bool cpuinfo::flag(std::string const &a_word) const
{
    return m_record->m_flags.find(' ' + a_word + ' ') != std::string::npos;
}

std::string cpuinfo::isa() const
{
    return "x86_64";
}

unsigned cpuinfo::type_with_architecture(uint32 a_architecture)
{
    switch (a_architecture) {
    case 0:
        return 7;
    case 6:
        return 19;
    case 9:
        return 0x1000007;
    case 0xFFFF:
        return 0xFFFFFFFFU;
    default:
        return 0;
    }
}

std::string cpuinfo::flags_with_features(uint64 a_features)
{
    struct row {
        unsigned m_feature;
        char const *m_words;
    };
    // IsProcessorFeaturePresent's numbers in the order of testing; "mmx2" and "3dnow2" have no
    // test of their own.
    static row const k_rows[] = {{3, "mmx mmx2 "}, {6, "sse "},          {10, "sse2 "},
                                 {13, "sse3 "},    {7, "3dnow 3dnow2 "}, {8, "rdtsc "}};
    std::string l_flags = " ";
    for (row const &l_row : k_rows) {
        if (((a_features >> l_row.m_feature) & 1U) != 0) {
            l_flags += l_row.m_words;
        }
    }
    return l_flags;
}

unsigned cpuinfo::active_with_relation(uint32 a_relation, uint64 a_mask)
{
    unsigned l_count = 0;
    if (a_relation == 0) {
        for (uint64 l_mask = a_mask; l_mask != 0; l_mask &= l_mask - 1) {
            ++l_count;
        }
    }
    return l_count;
}

} // namespace ordwel
