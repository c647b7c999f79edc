// SPDX-License-Identifier: MIT
#ifndef ORDWEL_CPUINFO_H
#define ORDWEL_CPUINFO_H

#include <string>

#include <ordwel/export.h>
#include <ordwel/types.h>

// The processor the program runs on: its architecture, its number of processors and its
// instruction set features by word ("mmx", "sse2", ...). The answers are gathered once, at load,
// into one process-wide record; a cpuinfo object is a view of that record.

namespace ordwel {

/// A view of the process-wide processor record, gathered once at load; any number of views may be
/// made, and all read the same record.
class ORDWEL_API cpuinfo {
public:
    /// The process-wide record: the architecture code, the feature words (" mmx mmx2 sse ", each
    /// word with a blank on either side) and the processor count.
    struct record {
        uint32 m_type;       ///< The architecture code, as type() gives it.
        std::string m_flags; ///< The feature words, each with a blank on either side.
        uint32 m_present;    ///< The number of processors.
    };

    /// A view of the record.
    cpuinfo();
    /// Leaves the record as it is.
    ~cpuinfo();

    /// 7 for x86, 19 for Itanium, 0x1000007 for x86-64, 0xFFFFFFFF for an unknown processor, 0 for
    /// any other.
    [[nodiscard]] unsigned type() const;
    /// The number of processors, as counted at load.
    [[nodiscard]] unsigned present() const;
    /// The logical processors of all cores, asked anew at each call. Raises es::alloc when the
    /// platform's answer cannot be had.
    [[nodiscard]] unsigned active() const;
    /// The feature words, each followed by one blank ("mmx mmx2 sse "); "" when there are none.
    [[nodiscard]] std::string flags() const;
    /// Whether a_word is one of the feature words, whole: "mmx" does not match "mmx2".
    [[nodiscard]] bool flag(std::string const &a_word) const;
    /// "x86_64", whatever the processor is.
    [[nodiscard]] std::string isa() const;

    /// The decisions behind the record, as pure functions that every platform checks with made-up
    /// values. The architecture code of a platform architecture number (SYSTEM_INFO's):
    [[nodiscard]] static unsigned type_with_architecture(uint32 a_architecture);
    /// The feature words of a set of IsProcessorFeaturePresent numbers (bit n for number n), in
    /// the record's form with its leading blank (" " alone when there are none).
    [[nodiscard]] static std::string flags_with_features(uint64 a_features);
    /// The logical processors that one (relation, processor mask) record adds to active(): the set
    /// bits of a processor-core record (relation 0), nothing for any other relation.
    [[nodiscard]] static unsigned active_with_relation(uint32 a_relation, uint64 a_mask);

private:
    record const *m_record;
};

} // namespace ordwel

#endif
