// SPDX-License-Identifier: MIT
#include <ordwel/url.h>

#include <cstring>

#include <ordwel/internal/attributes.h>
#include <ordwel/path.h>
#include <ordwel/strutil.h>

#include "addr/percent_decode.h"
#include "addr/url_scan.h"
#include "core/byte_scan.h"
#include "core/byte_tables.h"
#include "core/x86_intrinsics.h"

namespace ordwel {

namespace {

using size_type = std::string::size_type;
using kvmap = std::map<std::string, std::string>;

// --- Searching ----------------------------------------------------------------------------------
// Every search runs over a half-open range [a_from, a_to) and gives a_to when nothing is found, so
// that "not found" and "found at the end of the range" read the same to the callers.

size_type find_byte(char const *a_data, char a_byte, size_type a_from, size_type a_to)
{
    if (a_from >= a_to) {
        return a_to;
    }
    void const *const l_found = std::memchr(a_data + a_from, a_byte, a_to - a_from);
    return l_found == nullptr ? a_to : static_cast<size_type>(static_cast<char const *>(l_found) - a_data);
}

size_type find_either(char const *a_data, size_type a_from, size_type a_to, char a_first, char a_second)
{
    for (size_type l_iter = a_from; l_iter < a_to; ++l_iter) {
        if (a_data[l_iter] == a_first || a_data[l_iter] == a_second) {
            return l_iter;
        }
    }
    return a_to;
}

// The bytes that delimit the parts of a URL. A search names a subset of them as a mask: bit i
// stands for k_url_delimiters[i].
constexpr char k_url_delimiters[] = "#:/@?[];";

enum delimiter : unsigned {
    k_hash = 1,
    k_colon = 2,
    k_slash = 4,
    k_at = 8,
    k_question = 16,
    k_open = 32,
    k_close = 64,
    k_semicolon = 128,
};

static_assert(sizeof k_url_delimiters - 1 == internal::k_byte_positions_count, "one bitmap for each delimiter");

constexpr internal::byte_set subset_of(unsigned a_set)
{
    char l_members[sizeof k_url_delimiters] = {};
    std::size_t l_count = 0;
    for (unsigned l_index = 0; l_index + 1 < sizeof k_url_delimiters; ++l_index) {
        if ((a_set >> l_index & 1) != 0) {
            l_members[l_count++] = k_url_delimiters[l_index];
        }
    }
    return internal::byte_set_of(l_members, l_count);
}

template <unsigned t_set> constexpr internal::byte_set k_subset = subset_of(t_set);

// The positions of the delimiters t_set, from the bitmaps of each delimiter: a few ORs, as the set
// is a constant.
template <unsigned t_set> ORDWEL_ALWAYS_INLINE uint64 union_of(uint64 const *a_masks)
{
    return ((t_set & 1) != 0 ? a_masks[0] : 0) | ((t_set & 2) != 0 ? a_masks[1] : 0) |
           ((t_set & 4) != 0 ? a_masks[2] : 0) | ((t_set & 8) != 0 ? a_masks[3] : 0) |
           ((t_set & 16) != 0 ? a_masks[4] : 0) | ((t_set & 32) != 0 ? a_masks[5] : 0) |
           ((t_set & 64) != 0 ? a_masks[6] : 0) | ((t_set & 128) != 0 ? a_masks[7] : 0);
}

// Every bit if a_if, else none.
ORDWEL_ALWAYS_INLINE uint64 all_if(bool a_if)
{
    return uint64(0) - uint64(a_if);
}

// The first 64 bytes of a URL's text, which hold the scheme and the authority of nearly every URL:
// a bitmap of the positions of each delimiter, made at once, and a bit at the text's end where
// that lies among them, so that a search that runs to the end finds it like a delimiter. Its
// searches OR the bitmaps of the delimiters they ask for and take the lowest or highest bit; a
// search that runs on past the block goes to the vector set search, out of line.
class url_head {
public:
    // The bitmaps made by the kernel of the active level.
    explicit url_head(std::string const &a_url) : url_head(a_url.data(), a_url.size())
    {
        // The kernel maps the eight delimiters only: a '%' may stand anywhere.
        m_percent = ~uint64(0);
        if (m_size == 0) {
            // The kernel writes the bitmaps of the blocks that the text begins: none here.
            std::memset(m_masks, 0, sizeof m_masks);
        } else {
            internal::k_byte_positions.get()(reinterpret_cast<unsigned char const *>(m_data), m_size < 64 ? m_size : 64,
                                             reinterpret_cast<unsigned char const *>(k_url_delimiters), m_masks);
        }
    }

#if defined(ORDWEL_X86_KERNELS)
    struct avx512 {};

    // The bitmaps made in place with AVX-512, by a caller compiled for it: no call, and they stay
    // in registers. With a_next, for a part behind the authority, the second block's bitmaps of
    // the delimiters that end those parts as well. The loads take no byte beyond the text, and the
    // length decides their masks without a branch: lengths vary from URL to URL.
    ORDWEL_TARGET("avx512f,avx512bw,bmi,bmi2")
    ORDWEL_ALWAYS_INLINE url_head(std::string const &a_url, avx512, bool a_next) : url_head(a_url.data(), a_url.size())
    {
        __m512i const l_block = _mm512_maskz_loadu_epi8(bytes_below(m_size), m_data);
        for (std::size_t l_index = 0; l_index < internal::k_byte_positions_count; ++l_index) {
            m_masks[l_index] = _mm512_cmpeq_epi8_mask(l_block, _mm512_set1_epi8(k_url_delimiters[l_index]));
        }
        m_percent = _mm512_cmpeq_epi8_mask(l_block, _mm512_set1_epi8('%'));
        if (a_next) {
            size_type const l_rest = m_size > 64 ? m_size - 64 : 0;
            __m512i const l_next = _mm512_maskz_loadu_epi8(bytes_below(l_rest), m_data + 64);
            std::memset(m_next, 0, sizeof m_next);
            m_next[0] = _mm512_cmpeq_epi8_mask(l_next, _mm512_set1_epi8('#'));
            m_next[4] = _mm512_cmpeq_epi8_mask(l_next, _mm512_set1_epi8('?'));
            m_next[7] = _mm512_cmpeq_epi8_mask(l_next, _mm512_set1_epi8(';'));
            m_next_percent = _mm512_cmpeq_epi8_mask(l_next, _mm512_set1_epi8('%'));
            m_next_end = uint64(l_rest < 64) << (l_rest % 64);
            m_mapped = 128;
        }
    }
#endif

    char const *data() const
    {
        return m_data;
    }
    size_type size() const
    {
        return m_size;
    }
    uint64 const *masks() const
    {
        return m_masks;
    }

    // The first of t_set at or behind a_from, or the text's end where that comes first; 64 where
    // the block holds neither (a_from may lie beyond it).
    template <unsigned t_set> ORDWEL_ALWAYS_INLINE size_type first(size_type a_from) const
    {
        uint64 const l_bits = (union_of<t_set>(m_masks) | m_end) & (~uint64(0) << (a_from % 64)) & all_if(a_from < 64);
        return l_bits == 0 ? 64 : internal::lowest_bit(l_bits);
    }

    // The first, the last of t_set in [a_from, a_to); a_to if none. Inside the block: a_to is at
    // most 64.
    template <unsigned t_set> ORDWEL_ALWAYS_INLINE size_type find(size_type a_from, size_type a_to) const
    {
        uint64 const l_bits = bits<t_set>(a_from, a_to);
        return l_bits == 0 ? a_to : internal::lowest_bit(l_bits);
    }

    template <unsigned t_set> ORDWEL_ALWAYS_INLINE size_type find_last(size_type a_from, size_type a_to) const
    {
        uint64 const l_bits = bits<t_set>(a_from, a_to);
        return l_bits == 0 ? a_to : internal::highest_bit(l_bits);
    }

    // The first of t_set at or behind a_from in the whole text, or the text's length if none: in
    // the block, then in the second one where its bitmaps are made (t_set is among the delimiters
    // that end the parts behind the authority), then by the vector set search.
    template <unsigned t_set> ORDWEL_ALWAYS_INLINE size_type find_to_end(size_type a_from) const
    {
        static_assert((t_set & ~unsigned(k_hash | k_question | k_semicolon)) == 0, "a delimiter of the second block");
        size_type const l_at = first<t_set>(a_from);
        if (l_at < 64 || m_size <= 64) {
            return l_at;
        }
        if (m_mapped > 64) {
            size_type const l_from = a_from < 64 ? 0 : a_from - 64;
            uint64 const l_bits =
                (union_of<t_set>(m_next) | m_next_end) & (~uint64(0) << (l_from % 64)) & all_if(l_from < 64);
            if (l_bits != 0) {
                return 64 + internal::lowest_bit(l_bits);
            }
            if (m_size <= 128) {
                return m_size;
            }
        }
        return find_beyond<t_set>(a_from < m_mapped ? m_mapped : a_from);
    }

    // Whether a_at holds one of t_set; never beyond the block.
    template <unsigned t_set> ORDWEL_ALWAYS_INLINE bool is(size_type a_at) const
    {
        return ((union_of<t_set>(m_masks) >> (a_at % 64)) & uint64(a_at < 64)) != 0;
    }

    // Whether a_at holds a_byte; a_at is at most the text's length, where a string holds a NUL.
    bool is(size_type a_at, char a_byte) const
    {
        return m_data[a_at] == a_byte;
    }

    // Whether [a_from, a_to) may hold a '%', which only a stretch inside the mapped blocks can rule
    // out.
    bool may_hold_percent(size_type a_from, size_type a_to) const
    {
        if (a_to <= 64) {
            return bits_of(m_percent, a_from, a_to) != 0;
        }
        return a_to > m_mapped || bits_of(m_percent, a_from, 64) != 0 ||
               bits_of(m_next_percent, a_from < 64 ? 0 : a_from - 64, a_to - 64) != 0;
    }

    // Whether a_at and the byte behind it are "//", both in the block.
    bool is_mark(size_type a_at) const
    {
        return a_at < 63 && ((union_of<k_slash>(m_masks) >> a_at) & 3) == 3;
    }

private:
    // The positions of t_set in [a_from, a_to), both at most 64.
    template <unsigned t_set> ORDWEL_ALWAYS_INLINE uint64 bits(size_type a_from, size_type a_to) const
    {
        return bits_of(union_of<t_set>(m_masks), a_from, a_to);
    }

    static uint64 bits_of(uint64 a_map, size_type a_from, size_type a_to)
    {
        return a_map & (~uint64(0) << (a_from % 64)) & all_if(a_from < 64) &
               (((uint64(1) << (a_to % 64)) - 1) | all_if(a_to >= 64));
    }

    url_head(char const *a_data, size_type a_size)
        : m_data(a_data), m_size(a_size), m_end(uint64(a_size < 64) << (a_size % 64))
    {
    }

    // The bits of the first a_count bytes of a block, all of them from 64 on.
    static uint64 bytes_below(size_type a_count)
    {
        return ((uint64(1) << (a_count % 64)) - 1) | all_if(a_count >= 64);
    }

    template <unsigned t_set> size_type find_beyond(size_type a_from) const;

    char const *m_data;
    size_type m_size;
    uint64 m_end;     // the bit of the text's end, if that lies in the block
    uint64 m_percent; // where a '%' may stand
    uint64 m_masks[internal::k_byte_positions_count];
    size_type m_mapped = 64;                         // how far the bitmaps reach
    uint64 m_next[internal::k_byte_positions_count]; // the second block's, where they do
    uint64 m_next_end;                               // the bit of the text's end in the second block
    uint64 m_next_percent;                           // where a '%' stands in the second block
};

// Out of line: a getter rarely comes here, and only for the parts behind the authority.
template <unsigned t_set> ORDWEL_NOINLINE size_type url_head::find_beyond(size_type a_from) const
{
    if (a_from >= m_size) {
        return m_size;
    }
    return a_from + internal::k_set_find.get()(reinterpret_cast<unsigned char const *>(m_data) + a_from,
                                               m_size - a_from, k_subset<t_set>);
}

// A URL's whole text with a map of its delimiters, which every search of one setter shares, and
// which a getter turns to where the first block doesn't decide: for each 64-byte block, a bitmap of
// the positions of each delimiter. The first block's come with the reader, as every search starts
// there; those of the next blocks are made by one call of the kernel when a search first reaches
// them; a search that runs farther (a long path) hands the rest to the vector set search.
class url_reader {
public:
    explicit url_reader(std::string const &a_url) : m_head(a_url) {}

    url_head const &head() const { return m_head; }
    size_type size() const { return m_head.size(); }

    // Whether a_at holds a_byte; a_at is at most the text's length, where a string holds a NUL.
    bool is(size_type a_at, char a_byte) const { return m_head.is(a_at, a_byte); }

    bool may_hold_percent(size_type, size_type) const { return true; }

    // Whether a_at holds one of the delimiters t_set.
    template <unsigned t_set> bool is(size_type a_at) const
    {
        for (unsigned l_index = 0; l_index + 1 < sizeof k_url_delimiters; ++l_index) {
            if ((t_set >> l_index & 1) != 0 && m_head.data()[a_at] == k_url_delimiters[l_index]) {
                return true;
            }
        }
        return false;
    }

    // The first byte in [a_from, a_to) out of the delimiters t_set; a_to if none. a_to is at most
    // the text's length.
    template <unsigned t_set> size_type find(size_type a_from, size_type a_to)
    {
        if (a_from >= a_to) {
            return a_to;
        }
        size_type l_block = a_from / 64;
        if (l_block < k_kept) {
            uint64 l_bits = selected<t_set>(l_block) & (~uint64(0) << (a_from % 64));
            for (;;) {
                if (l_bits != 0) {
                    size_type const l_at = l_block * 64 + internal::lowest_bit(l_bits);
                    return l_at < a_to ? l_at : a_to;
                }
                ++l_block;
                if (l_block * 64 >= a_to) {
                    return a_to;
                }
                if (l_block == k_kept) {
                    break;
                }
                l_bits = selected<t_set>(l_block);
            }
            a_from = l_block * 64;
        }
        return a_from + internal::k_set_find.get()(reinterpret_cast<unsigned char const *>(m_head.data()) + a_from,
                                                   a_to - a_from, k_subset<t_set>);
    }

    template <unsigned t_set> size_type find_to_end(size_type a_from) { return find<t_set>(a_from, size()); }

    // The last byte in [a_from, a_to) out of t_set; a_to if none.
    template <unsigned t_set> size_type find_last(size_type a_from, size_type a_to)
    {
        if (a_from >= a_to) {
            return a_to;
        }
        size_type l_block = (a_to - 1) / 64;
        size_type const l_first = a_from / 64;
        if (l_block >= k_kept) {
            size_type l_last = a_to;
            for (size_type l_at = find<t_set>(a_from, a_to); l_at < a_to; l_at = find<t_set>(l_at + 1, a_to)) {
                l_last = l_at;
            }
            return l_last;
        }
        uint64 l_bits = selected<t_set>(l_block) & (~uint64(0) >> (63 - (a_to - 1) % 64));
        for (;;) {
            if (l_block == l_first) {
                l_bits &= ~uint64(0) << (a_from % 64);
            }
            if (l_bits != 0) {
                return l_block * 64 + internal::highest_bit(l_bits);
            }
            if (l_block == l_first) {
                return a_to;
            }
            --l_block;
            l_bits = selected<t_set>(l_block);
        }
    }

private:
    static constexpr size_type k_kept = 4;

    // The positions of the delimiters t_set in block a_block (below k_kept). The blocks behind the
    // first are made together, in one call of the kernel, on the first search that reaches them.
    template <unsigned t_set> uint64 selected(size_type a_block)
    {
        if (a_block == 0) {
            return union_of<t_set>(m_head.masks());
        }
        if (!m_mapped) {
            size_type const l_size = size() < 64 * k_kept ? size() : 64 * k_kept;
            internal::k_byte_positions.get()(reinterpret_cast<unsigned char const *>(m_head.data()) + 64, l_size - 64,
                                             reinterpret_cast<unsigned char const *>(k_url_delimiters), m_rest[0]);
            m_mapped = true;
        }
        return union_of<t_set>(m_rest[a_block - 1]);
    }

    url_head m_head;
    bool m_mapped = false; // whether m_rest holds the bitmaps of the blocks behind the first
    uint64 m_rest[k_kept - 1][internal::k_byte_positions_count];
};

// --- The scan -----------------------------------------------------------------------------------
// A search for a delimiter in front of the fragment asks for the '#' as well: the first '#' found
// is the fragment's (the scan never starts behind it), and where it comes first the part runs up
// to the fragment. So the getters never look for the fragment's start unless they need it.
//
// The scheme and the authority are scanned in two ways: over the first block, inline and without
// a loop, which decides for nearly every URL; and over the whole text, where it doesn't. The steps
// behind them run over either (t_search is url_head or url_reader).

// Where the parts of a URL lie. The path starts where the authority ends (m_b).
struct url_layout {
    size_type m_e = 0;         // the first '#', or the text's length (only where scan() made it)
    size_type m_d = 0;         // the scheme's ':', if m_has_scheme
    bool m_has_scheme = false; //
    size_type m_s = 0;         // where the text behind the scheme begins
    size_type m_a = 0;         // start of the authority
    size_type m_b = 0;         // end of the authority, start of the path
};

// The scheme: whatever stands in front of the first ':', unless a '/' or '#' comes first. A '/'
// first makes the text a relative path with a colon in one of its segments ("dir/a:b"); a '#'
// first makes the colon fragment text. Nothing else is asked of a scheme, so a drive letter
// ("C:/dir") reads as one: a caller that means a platform path converts it first. Over the first
// block: false where it holds none of the three.
ORDWEL_ALWAYS_INLINE bool scheme_in(url_head const &a_head, url_layout &a_layout)
{
    size_type const l_d = a_head.first<k_colon | k_slash | k_hash>(0);
    a_layout.m_has_scheme = a_head.is<k_colon>(l_d);
    a_layout.m_d = l_d;
    a_layout.m_s = a_layout.m_has_scheme ? l_d + 1 : 0;
    return l_d < 64;
}

void scan_scheme(url_reader &a_reader, url_layout &a_layout)
{
    size_type const l_d = a_reader.find<k_colon | k_slash | k_hash>(0, a_reader.size());
    if (a_reader.is(l_d, ':')) {
        a_layout.m_has_scheme = true;
        a_layout.m_d = l_d;
        a_layout.m_s = l_d + 1;
    }
}

// Where an authority that starts at a_a ends: at the first '/' or '?' (the path or the query
// begins), or at a ';' that opens the params. A ';' is that only behind the user information's
// '@' or behind a bracketed host. In front of an '@' it divides the logon domain from the user, so
// it can't end anything there, and in an authority with neither '@' nor brackets there is no way
// to tell params from host text, so it is host text ("x://host;p" has the host "host;p"). Brackets
// hide the colons of an IPv6 address; an unclosed '[' runs to the fragment. Nothing behind the '#'
// counts: a delimiter that is found only there leaves the authority running up to the fragment.
//
// Over the first block each step is a few bit operations. A step that finds nothing gives 64, and
// so does every step behind it: the block doesn't decide. (Taking the steps behind an '@' and
// behind a '[' whether or not there is one, and selecting without a branch, is slower: the longer
// chain of operations costs more than the branches that a processor mispredicts.)
ORDWEL_ALWAYS_INLINE size_type authority_end_in(url_head const &a_head, size_type a_a)
{
    size_type const l_first = a_head.first<k_at | k_slash | k_question | k_open | k_hash>(a_a);
    size_type const l_x = a_head.is<k_at>(l_first)
                              ? a_head.first<k_slash | k_semicolon | k_question | k_open | k_hash>(l_first + 1)
                              : l_first;
    size_type const l_close = a_head.first<k_close | k_hash>(l_x + 1);
    size_type const l_bracketed =
        a_head.is<k_close>(l_close) ? a_head.first<k_slash | k_semicolon | k_question | k_hash>(l_close + 1) : l_close;
    return a_head.is<k_open>(l_x) ? l_bracketed : l_x;
}

size_type authority_end(url_reader &a_reader, size_type a_a)
{
    size_type const l_size = a_reader.size();
    size_type l_x = a_reader.find<k_at | k_slash | k_question | k_open | k_hash>(a_a, l_size);
    // Behind the first '@' a further '@' is no delimiter of the authority: which '@' ends the user
    // information is for userinfo_in to say (the last one).
    if (a_reader.is(l_x, '@')) {
        l_x = a_reader.find<k_slash | k_semicolon | k_question | k_open | k_hash>(l_x + 1, l_size);
    }
    if (a_reader.is(l_x, '[')) {
        l_x = a_reader.find<k_close | k_hash>(l_x + 1, l_size);
        if (a_reader.is(l_x, ']')) {
            l_x = a_reader.find<k_slash | k_semicolon | k_question | k_hash>(l_x + 1, l_size);
        }
    }
    return l_x;
}

// The scheme and the authority. The authority needs the "//": without it the text behind the
// scheme is a path, whatever it holds ("mailto:user@host" has no user). Over the first block:
// false where it doesn't decide, the authority's end being out of it, or the "//" at its edge.
ORDWEL_ALWAYS_INLINE bool front_in(url_head const &a_head, url_layout &a_layout)
{
    bool const l_scheme = scheme_in(a_head, a_layout);
    size_type const l_s = a_layout.m_s;
    if (!a_head.is_mark(l_s)) {
        a_layout.m_a = a_layout.m_b = l_s;
        return l_scheme && l_s < 63;
    }
    a_layout.m_a = l_s + 2;
    a_layout.m_b = authority_end_in(a_head, a_layout.m_a);
    return a_layout.m_b < 64;
}

url_layout scan_front_whole(url_reader &a_reader)
{
    url_layout l_layout;
    scan_scheme(a_reader, l_layout);
    size_type const l_s = l_layout.m_s;
    if (!a_reader.is(l_s, '/') || !a_reader.is(l_s + 1, '/')) {
        l_layout.m_a = l_layout.m_b = l_s;
        return l_layout;
    }
    l_layout.m_a = l_s + 2;
    l_layout.m_b = authority_end(a_reader, l_layout.m_a);
    return l_layout;
}

url_layout scan_front(url_reader &a_reader)
{
    url_layout l_layout;
    return front_in(a_reader.head(), l_layout) ? l_layout : scan_front_whole(a_reader);
}

// scan_front and the fragment's start, which no delimiter in front of m_b is.
url_layout scan(url_reader &a_reader)
{
    url_layout l_layout = scan_front(a_reader);
    l_layout.m_e = a_reader.find<k_hash>(l_layout.m_b, a_reader.size());
    return l_layout;
}

// The user information inside the authority [m_a, m_b).
struct userinfo_layout {
    size_type m_u = 0;         // the last '@' of the authority, or m_a without one
    bool m_has_at = false;     //
    size_type m_c = 0;         // the ';' that ends the domain, if m_has_domain
    bool m_has_domain = false; //
    size_type m_s = 0;         // start of the user
    size_type m_colon = 0;     // the ':' in front of the password, or m_u without one
};

// The last '@' ends the user information, so a user name may hold an '@' as it is ("a@b" in
// "x://a@b@c/"); a host never holds one. The first ';' in front of it ends the logon domain, and
// the first ':' behind the domain divides user from password, so a password may hold a ':'. An
// '@' in front of the authority (a scheme "a@b") is not taken for the end of the user. Over the
// first block where it holds the authority, else over the reader.
template <typename t_search>
ORDWEL_ALWAYS_INLINE userinfo_layout userinfo_in(t_search &a_search, url_layout const &a_layout)
{
    userinfo_layout l_info;
    size_type const l_a = a_layout.m_a;
    size_type const l_u = a_search.template find_last<k_at>(l_a, a_layout.m_b);
    l_info.m_has_at = l_u < a_layout.m_b;
    l_info.m_u = l_info.m_has_at ? l_u : l_a;
    l_info.m_c = a_search.template find<k_semicolon>(l_a, l_info.m_u);
    l_info.m_has_domain = l_info.m_c < l_info.m_u;
    l_info.m_s = l_info.m_has_domain ? l_info.m_c + 1 : l_a;
    l_info.m_colon = a_search.template find<k_colon>(l_info.m_s, l_info.m_u);
    return l_info;
}

userinfo_layout scan_userinfo(url_reader &a_reader, url_layout const &a_layout)
{
    return a_layout.m_b < 64 ? userinfo_in(a_reader.head(), a_layout) : userinfo_in(a_reader, a_layout);
}

// The host [m_h, m_t) and the service's ':' at m_t, if m_t is inside the authority.
struct host_layout {
    size_type m_h = 0;
    size_type m_t = 0;
};

// The host ends at its first ':', the one in front of the service. The colons of an IPv6 address
// stand inside brackets, so a '[' moves the search behind the matching ']'. The service is whatever
// follows up to the authority's end, colons included ("x://host:1:2/" has the service "1:2"): it
// is a port number or a service name, and never interpreted here.
template <typename t_search>
ORDWEL_ALWAYS_INLINE host_layout host_in(t_search &a_search, url_layout const &a_layout, userinfo_layout const &a_info)
{
    host_layout l_host;
    size_type const l_b = a_layout.m_b;
    l_host.m_h = a_info.m_has_at ? a_info.m_u + 1 : a_layout.m_a;
    size_type const l_t = a_search.template find<k_colon | k_open>(l_host.m_h, l_b);
    // Behind a '[': the first ':' behind the ']', or the authority's end without a ']' (a search
    // from behind it gives its end). Both ways are searched and one selected, as in
    // authority_end_in.
    size_type const l_bracketed =
        a_search.template find<k_colon>(a_search.template find<k_close>(l_t + 1, l_b) + 1, l_b);
    l_host.m_t = l_t < l_b && a_search.template is<k_open>(l_t) ? l_bracketed : l_t;
    return l_host;
}

host_layout scan_host(url_reader &a_reader, url_layout const &a_layout, userinfo_layout const &a_info)
{
    return a_layout.m_b < 64 ? host_in(a_reader.head(), a_layout, a_info) : host_in(a_reader, a_layout, a_info);
}

// The parts behind the authority, all ending at or before the fragment.
struct tail_layout {
    size_type m_path_end = 0;  // the first ';' or '?' behind the path's start, or the fragment's '#'
    size_type m_q = 0;         // the first '?' behind the path's start, or the fragment's '#'
    size_type m_semicolon = 0; // the ';' in front of the params, or m_q without params
};

// The path ends at its first ';' or '?'. The params run from that ';' to the first '?', so a ';'
// behind the '?' is query text ("x://h/p;a=1?b;c"), and a '?' or ';' inside the query or a '#'
// inside the fragment is text of that part: only the first of each delimiter counts.
template <typename t_search> ORDWEL_ALWAYS_INLINE tail_layout tail_in(t_search &a_search, url_layout const &a_layout)
{
    tail_layout l_tail;
    l_tail.m_path_end = a_search.template find_to_end<k_semicolon | k_question | k_hash>(a_layout.m_b);
    // With params the query starts behind them; otherwise where the path ends.
    l_tail.m_q = l_tail.m_path_end;
    if (a_search.is(l_tail.m_path_end, ';')) {
        l_tail.m_q = a_search.template find_to_end<k_question | k_hash>(l_tail.m_path_end + 1);
    }
    l_tail.m_semicolon = l_tail.m_path_end;
    return l_tail;
}

// --- Coding -------------------------------------------------------------------------------------

struct coding_tables {
    bool m_keep[256];

    constexpr coding_tables() : m_keep()
    {
        for (int l_byte = 'a'; l_byte <= 'z'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (int l_byte = 'A'; l_byte <= 'Z'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (int l_byte = '0'; l_byte <= '9'; ++l_byte) {
            m_keep[l_byte] = true;
        }
        for (char const l_mark : {'!', '$', '&', '\'', '(', ')', '+', ',', '-', '.', '/', '=', '_'}) {
            m_keep[static_cast<unsigned char>(l_mark)] = true;
        }
    }
};

constexpr coding_tables k_coding;
using internal::k_hex_digits_lower;

// The decoded text of [a_data, a_data + a_size), decoded straight into the result: decoding never
// lengthens a text, so a string of a_size bytes has room, and it is cut to the decoded length.
std::string decoded(char const *a_data, size_type a_size)
{
    std::string l_result(a_size, '\0');
    l_result.resize(internal::k_percent_decode.get()(&l_result[0], a_data, a_size));
    return l_result;
}

// The stretch [a_from, a_to) of a_url, empty where a_to isn't behind a_from. Decoding is left out
// where the search knows the stretch to hold no '%'.
template <typename t_search>
ORDWEL_ALWAYS_INLINE std::string stretch(t_search const &a_search, std::string const &a_url, size_type a_from,
                                         size_type a_to, bool a_decode)
{
    if (a_to <= a_from) {
        return std::string();
    }
    if (!a_decode || !a_search.may_hold_percent(a_from, a_to)) {
        return std::string(a_url.data() + a_from, a_to - a_from);
    }
    return decoded(a_url.data() + a_from, a_to - a_from);
}

std::string encoded(std::string const &a_value, bool a_encode, bool a_slash)
{
    return a_encode ? url_encode(a_value, a_slash) : a_value;
}

// --- Key-value text -----------------------------------------------------------------------------

// Splits like strutil::kvmap_with_kvstr and hands each pair, in the text's order, to a_visit.
template <typename t_visit>
void for_each_pair(char const *a_data, size_type a_size, char a_pair, char a_kv, t_visit const &a_visit)
{
    if (a_size == 0) {
        return;
    }
    size_type l_position = 0;
    for (;;) {
        if (a_kv == '\0') {
            a_visit(a_data + l_position, a_size - l_position, a_data, 0);
            return;
        }
        size_type const l_m = find_either(a_data, l_position, a_size, a_kv, a_pair);
        size_type l_end = a_size;
        if (l_m < a_size) {
            l_end = find_byte(a_data, a_pair, l_m, a_size);
            size_type const l_value = l_m + 1;
            a_visit(a_data + l_position, l_m - l_position, a_data + l_value, l_end > l_value ? l_end - l_value : 0);
        } else {
            a_visit(a_data + l_position, a_size - l_position, a_data, 0);
        }
        if (l_end >= a_size) {
            return;
        }
        l_position = l_end + 1;
    }
}

// Undecoded, this is strutil::kvmap_with_kvstr. Decoded, each key and value is decoded after the
// split, and pairs go into the map in the text's order, so that of keys that decode alike the last
// one in the text wins.
void add_pairs(kvmap &a_out, std::string const &a_component, bool a_decode, char a_pair, char a_kv)
{
    if (!a_decode) {
        strutil::kvmap_with_kvstr(a_out, a_component, a_pair, a_kv);
        return;
    }
    for_each_pair(a_component.data(), a_component.size(), a_pair, a_kv,
                  [&](char const *a_key, size_type a_key_size, char const *a_value, size_type a_value_size) {
                      a_out[decoded(a_key, a_key_size)] = decoded(a_value, a_value_size);
                  });
}

// The text of a map as strutil::kvstr_with_kvmap writes it, each key and value encoded on demand.
std::string kvtext(kvmap const &a_values, bool a_encode, char a_pair, char a_kv)
{
    if (!a_encode) {
        return strutil::kvstr_with_kvmap(a_values, a_pair, a_kv);
    }
    // Encoding keeps the map's key order: the keys are encoded one by one as they are written.
    std::string l_text;
    for (auto const &l_entry : a_values) {
        if (!l_entry.first.empty()) {
            if (!l_text.empty()) {
                l_text.push_back(a_pair);
            }
            l_text.append(url_encode(l_entry.first, true));
        }
        if (!l_entry.second.empty()) {
            l_text.push_back(a_kv);
            l_text.append(url_encode(l_entry.second, true));
        }
    }
    return l_text;
}

// --- Editing steps ------------------------------------------------------------------------------

// Before a part is written at the end of the authority: whatever follows there without a delimiter
// of its own becomes a path behind the authority. Without the '/' that text would run on the
// new part and be read as part of it ("x:dir" given a host "h" would be "x://hdir").
void open_authority(std::string &a_url, size_type a_position, size_type a_b)
{
    if (a_position != a_b || a_position >= a_url.size()) {
        return;
    }
    char const l_byte = a_url[a_position];
    if (l_byte != '/' && l_byte != ';' && l_byte != '?' && l_byte != '#') {
        a_url.insert(a_position, 1, '/');
    }
}

// After a part was written at the start of the authority: the authority gets its "//", without
// which the part would be read as the path.
void mark_authority(std::string &a_url, size_type a_position)
{
    if (a_position == 0 || a_url[a_position - 1] != '/') {
        a_url.insert(a_position, "//");
    }
}

// Removes the "//" in front of an authority that starts at a_a, where there is one: a removal that
// empties the authority takes its mark along, so that "scheme://host" without its host is
// "scheme:", not an empty authority.
void erase_mark(std::string &a_url, size_type a_a)
{
    if (a_a >= 2 && a_url[a_a - 1] == '/' && a_url[a_a - 2] == '/') {
        a_url.erase(a_a - 2, 2);
    }
}

// params, query and fragment: the stretch [a_from, a_to) and whether its delimiter stands in front.
// A new part gets its delimiter (';', '?' or '#') unless one stands there already, as it does
// where the part was present but empty ("x:/p?").
std::string &set_delimited(std::string &a_url, size_type a_from, size_type a_to, bool a_present, char a_delimiter,
                           std::string const &a_value, bool a_encode)
{
    if (a_value.empty()) {
        // An absent part has nothing to lose: the byte in front of where it would go belongs to a
        // neighbour even when it looks like this part's delimiter.
        if (a_present) {
            a_url.erase(a_from - 1, a_to - a_from + 1);
        }
        return a_url;
    }
    bool const l_was_empty = a_from == a_to;
    a_url.replace(a_from, a_to - a_from, encoded(a_value, a_encode, true));
    if (l_was_empty && (a_from == 0 || a_url[a_from - 1] != a_delimiter)) {
        a_url.insert(a_from, 1, a_delimiter);
    }
    return a_url;
}

// --- What a getter reads ------------------------------------------------------------------------
// A getter reads its part from the first block where that decides the scheme and the authority,
// and from the whole text, out of line, where it doesn't. Each part is a type whose read() takes
// either search (t_search is url_head or url_reader) and the layout of the scheme and authority.
// The getter of each part comes for every vector level: at the AVX-512 level the first block's
// bitmaps are made in place, in the getter, which is compiled for that level.

using url_scan::getter;

template <typename t_part> ORDWEL_NOINLINE std::string read_whole(std::string const &a_url, bool a_decode)
{
    url_reader l_reader(a_url);
    url_layout l_layout;
    if (t_part::k_authority) {
        l_layout = scan_front_whole(l_reader);
    } else {
        scan_scheme(l_reader, l_layout);
    }
    return t_part::read(l_reader, l_layout, a_url, a_decode);
}

template <typename t_part>
ORDWEL_ALWAYS_INLINE std::string read_part(url_head const &a_head, std::string const &a_url, bool a_decode)
{
    url_layout l_layout;
    if (t_part::k_authority ? front_in(a_head, l_layout) : scheme_in(a_head, l_layout)) {
        return t_part::read(a_head, l_layout, a_url, a_decode);
    }
    return read_whole<t_part>(a_url, a_decode);
}

template <typename t_part> std::string read_portable(std::string const &a_url, bool a_decode)
{
    return read_part<t_part>(url_head(a_url), a_url, a_decode);
}

#if defined(ORDWEL_X86_KERNELS)
template <typename t_part>
ORDWEL_TARGET("avx512f,avx512bw,bmi,bmi2")
std::string read_avx512(std::string const &a_url, bool a_decode)
{
    return read_part<t_part>(url_head(a_url, url_head::avx512(), t_part::k_behind), a_url, a_decode);
}

template <typename t_part>
internal::dispatch<getter> const k_read(read_portable<t_part>, nullptr, nullptr, read_avx512<t_part>);
#else
template <typename t_part> internal::dispatch<getter> const k_read(read_portable<t_part>);
#endif

// The parts. The scheme and the scheme-specific part need only the scheme (k_authority false),
// which the first block decides unless it holds no ':', '/' or '#'. The parts behind the authority
// (k_behind) search on past the first block.
struct scheme_part {
    static constexpr bool k_authority = false;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &, url_layout const &a_layout, std::string const &a_url, bool)
    {
        return a_layout.m_has_scheme ? std::string(a_url.data(), a_layout.m_d) : std::string();
    }
};

struct scheme_specific_part {
    static constexpr bool k_authority = false;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &, url_layout const &a_layout, std::string const &a_url, bool)
    {
        return std::string(a_url.data() + a_layout.m_s, a_url.size() - a_layout.m_s);
    }
};

struct authority_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        return stretch(a_search, a_url, a_layout.m_a, a_layout.m_b, a_decode);
    }
};

struct domain_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        userinfo_layout const l_info = userinfo_in(a_search, a_layout);
        return l_info.m_has_domain ? stretch(a_search, a_url, a_layout.m_a, l_info.m_c, a_decode) : std::string();
    }
};

struct user_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        userinfo_layout const l_info = userinfo_in(a_search, a_layout);
        return stretch(a_search, a_url, l_info.m_s, l_info.m_colon, a_decode);
    }
};

struct password_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        userinfo_layout const l_info = userinfo_in(a_search, a_layout);
        return stretch(a_search, a_url, l_info.m_colon + 1, l_info.m_u, a_decode);
    }
};

// Narrows the host's stretch past its brackets before copying, so the text is copied once.
struct host_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool)
    {
        char const *const l_data = a_url.data();
        host_layout const l_host = host_in(a_search, a_layout, userinfo_in(a_search, a_layout));
        // The brackets of an IPv6 address go, unless there is nothing but brackets.
        size_type l_from = l_host.m_h;
        size_type l_to = l_host.m_t;
        while (l_from < l_to && (l_data[l_from] == '[' || l_data[l_from] == ']')) {
            ++l_from;
        }
        if (l_from == l_to) {
            l_from = l_host.m_h;
        } else {
            while (l_data[l_to - 1] == '[' || l_data[l_to - 1] == ']') {
                --l_to;
            }
        }
        return stretch(a_search, a_url, l_from, l_to, false);
    }
};

struct service_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = false;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        host_layout const l_host = host_in(a_search, a_layout, userinfo_in(a_search, a_layout));
        return stretch(a_search, a_url, l_host.m_t + 1, a_layout.m_b, a_decode);
    }
};

struct path_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = true;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        size_type const l_p = a_layout.m_b;
        return stretch(a_search, a_url, l_p, a_search.template find_to_end<k_semicolon | k_question | k_hash>(l_p),
                       a_decode);
    }
};

struct params_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = true;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        tail_layout const l_tail = tail_in(a_search, a_layout);
        return stretch(a_search, a_url, l_tail.m_semicolon + 1, l_tail.m_q, a_decode);
    }
};

// The query runs up to the fragment, so only here, and for the fragment itself, is the '#' looked
// for.
struct query_part {
    static constexpr bool k_authority = true;
    static constexpr bool k_behind = true;

    template <typename t_search>
    ORDWEL_ALWAYS_INLINE static std::string read(t_search &a_search, url_layout const &a_layout,
                                                 std::string const &a_url, bool a_decode)
    {
        size_type const l_q = a_search.template find_to_end<k_question | k_hash>(a_layout.m_b);
        if (!a_search.is(l_q, '?')) {
            return std::string();
        }
        return stretch(a_search, a_url, l_q + 1, a_search.template find_to_end<k_hash>(l_q + 1), a_decode);
    }
};

} // namespace

url_scan::front url_scan::front_of(std::string const &a_text)
{
    url_reader l_reader(a_text);
    url_layout l_layout;
    if (!scheme_in(l_reader.head(), l_layout)) {
        l_layout = url_layout();
        scan_scheme(l_reader, l_layout);
    }
    size_type const l_e = find_byte(a_text.data(), '#', l_layout.m_s, a_text.size());
    return front{l_e, l_layout.m_s};
}

url_scan::getter url_scan::getter_for_level(std::size_t a_part, internal::simd_level a_level)
{
    static internal::dispatch<getter> const *const k_parts[] = {&k_read<scheme_part>,
                                                                &k_read<authority_part>,
                                                                &k_read<domain_part>,
                                                                &k_read<user_part>,
                                                                &k_read<password_part>,
                                                                &k_read<host_part>,
                                                                &k_read<service_part>,
                                                                &k_read<path_part>,
                                                                &k_read<params_part>,
                                                                &k_read<query_part>,
                                                                nullptr,
                                                                &k_read<scheme_specific_part>};
    static_assert(sizeof k_parts / sizeof k_parts[0] == k_getter_count, "a getter for each part");
    return k_parts[a_part] == nullptr ? &url_fragment : k_parts[a_part]->for_level(a_level);
}

// --- Reading ------------------------------------------------------------------------------------
// Each getter scans only as far as its part needs: the parts of the authority never look behind
// it, and only the query and the fragment look for the fragment's start.

std::string uri_scheme(std::string const &a_url)
{
    return k_read<scheme_part>.get()(a_url, false);
}

std::string url_scheme(std::string const &a_url)
{
    return k_read<scheme_part>.get()(a_url, false);
}

std::string uri_scheme_specific(std::string const &a_url)
{
    return k_read<scheme_specific_part>.get()(a_url, false);
}

std::string url_authority(std::string const &a_url, bool a_decode)
{
    return k_read<authority_part>.get()(a_url, a_decode);
}

std::string url_domain(std::string const &a_url, bool a_decode)
{
    return k_read<domain_part>.get()(a_url, a_decode);
}

std::string url_user(std::string const &a_url, bool a_decode)
{
    return k_read<user_part>.get()(a_url, a_decode);
}

std::string url_password(std::string const &a_url, bool a_decode)
{
    return k_read<password_part>.get()(a_url, a_decode);
}

std::string url_host(std::string const &a_url)
{
    return k_read<host_part>.get()(a_url, false);
}

std::string url_service(std::string const &a_url, bool a_decode)
{
    return k_read<service_part>.get()(a_url, a_decode);
}

std::string url_path(std::string const &a_url, bool a_decode)
{
    return k_read<path_part>.get()(a_url, a_decode);
}

std::string url_params(std::string const &a_url, bool a_decode)
{
    return k_read<params_part>.get()(a_url, a_decode);
}

std::string url_query(std::string const &a_url, bool a_decode)
{
    return k_read<query_part>.get()(a_url, a_decode);
}

std::string url_fragment(std::string const &a_url, bool a_decode)
{
    size_type const l_hash = find_byte(a_url.data(), '#', 0, a_url.size());
    if (l_hash >= a_url.size()) {
        return std::string();
    }
    char const *const l_from = a_url.data() + l_hash + 1;
    size_type const l_size = a_url.size() - l_hash - 1;
    return a_decode ? decoded(l_from, l_size) : std::string(l_from, l_size);
}

void url_query_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    add_pairs(a_out, url_query(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

void url_params_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    add_pairs(a_out, url_params(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

void url_fragment_kvmap(kvmap &a_out, std::string const &a_url, bool a_decode, char a_pair_separator,
                        char a_kv_separator)
{
    add_pairs(a_out, url_fragment(a_url, false), a_decode, a_pair_separator, a_kv_separator);
}

kvmap url_query_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_query_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

kvmap url_params_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_params_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

kvmap url_fragment_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator)
{
    kvmap l_result;
    url_fragment_kvmap(l_result, a_url, a_decode, a_pair_separator, a_kv_separator);
    return l_result;
}

// --- Coding -------------------------------------------------------------------------------------

// Counts the bytes to encode first, so the result is allocated once at its final length (and a
// text with nothing to encode is returned as it is). Its byte loops run several percent faster or
// slower with where they fall against the processor's fetch blocks, so the function starts at a
// fixed boundary: its speed no longer moves with the code in front of it.
ORDWEL_CODE_ALIGN(64) std::string url_encode(std::string const &a_text, bool a_slash)
{
    auto const *const l_data = reinterpret_cast<unsigned char const *>(a_text.data());
    size_type const l_size = a_text.size();
    size_type l_coded = 0;
    for (size_type l_iter = 0; l_iter < l_size; ++l_iter) {
        unsigned char const l_byte = l_data[l_iter];
        l_coded += !k_coding.m_keep[l_byte] || (a_slash && l_byte == '/');
    }
    if (l_coded == 0) {
        return a_text;
    }
    std::string l_result(l_size + 2 * l_coded, '\0');
    char *l_out = &l_result[0];
    for (size_type l_iter = 0; l_iter < l_size; ++l_iter) {
        unsigned char const l_byte = l_data[l_iter];
        if (k_coding.m_keep[l_byte] && !(a_slash && l_byte == '/')) {
            *l_out++ = static_cast<char>(l_byte);
        } else {
            l_out[0] = '%';
            l_out[1] = k_hex_digits_lower[l_byte >> 4];
            l_out[2] = k_hex_digits_lower[l_byte & 0x0f];
            l_out += 3;
        }
    }
    return l_result;
}

std::string url_decode(std::string const &a_text)
{
    return decoded(a_text.data(), a_text.size());
}

std::string url_protected_output(std::string const &a_url)
{
    if (url_password(a_url, true).empty()) {
        return a_url;
    }
    return url_new_password(a_url, "********", true);
}

std::pair<std::string, std::string> split_scheme(std::string const &a_text, char a_separator)
{
    size_type const l_at = find_byte(a_text.data(), a_separator, 0, a_text.size());
    return std::make_pair(a_text.substr(0, l_at), a_text.substr(l_at));
}

// --- Editing the authority ----------------------------------------------------------------------
// Each setter writes its part and the delimiters that make the scan find it again, and a removal
// takes only the delimiters that no remaining part needs. Values are encoded with '/' as well: a
// '/' written into the authority would end it.

// The whole authority goes or is replaced; its "//" goes with it or comes with a new one.
std::string &url_set_authority(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    size_type const l_a = l_layout.m_a;
    size_type const l_b = l_layout.m_b;
    if (a_value.empty()) {
        a_url.erase(l_a, l_b - l_a);
        erase_mark(a_url, l_a);
        return a_url;
    }
    if (l_a == l_b) {
        open_authority(a_url, l_a, l_b);
    }
    a_url.replace(l_a, l_b - l_a, encoded(a_value, a_encode, true));
    if (l_a == l_b) {
        mark_authority(a_url, l_a);
    }
    return a_url;
}

std::string &url_set_domain(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    userinfo_layout const l_info = scan_userinfo(l_reader, l_layout);
    size_type const l_a = l_layout.m_a;
    if (a_value.empty()) {
        // The domain and its ';'; the '@' stays for the user information that may follow.
        if (l_a != 0 && l_info.m_has_domain) {
            size_type const l_end = l_info.m_c + 1;
            a_url.erase(l_a, l_end - l_a);
            if (l_end == l_layout.m_b) {
                erase_mark(a_url, l_a);
            }
        }
        return a_url;
    }
    size_type l_end = l_a;
    if (l_info.m_has_domain) {
        l_end = l_info.m_c;
    } else if (l_a == l_layout.m_b || a_url[l_a] != ';') {
        // A domain always comes with its ';' and the '@' that ends the user information, even
        // without a user: the ';' divides domain from user only in front of an '@', and without one
        // it would be read as host text. Both go in at l_a, the '@' first, so that the text reads
        // ";@".
        if (l_a == l_layout.m_b) {
            open_authority(a_url, l_a, l_layout.m_b);
        }
        if (!l_info.m_has_at) {
            a_url.insert(l_a, 1, '@');
        }
        a_url.insert(l_a, 1, ';');
    }
    a_url.replace(l_a, l_end - l_a, encoded(a_value, a_encode, true));
    mark_authority(a_url, l_a);
    return a_url;
}

std::string &url_set_user(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    userinfo_layout const l_info = scan_userinfo(l_reader, l_layout);
    size_type const l_s = l_info.m_s;
    size_type const l_end = l_info.m_colon;
    if (a_value.empty()) {
        if (l_s == 0) {
            return a_url;
        }
        // Behind a domain the ';' and the '@' stay: the domain needs both.
        if (l_info.m_has_domain) {
            a_url.erase(l_s, l_end - l_s);
            return a_url;
        }
        // Without one the user's '@' goes with it, unless a password stands between them and keeps
        // the '@' for itself.
        size_type l_cut = l_end;
        if (l_cut < a_url.size() && a_url[l_cut] == '@') {
            ++l_cut;
        }
        a_url.erase(l_s, l_cut - l_s);
        if (l_cut == l_layout.m_b) {
            erase_mark(a_url, l_s);
        }
        return a_url;
    }
    // A new user needs the '@' that tells it from the host, unless one follows already: directly,
    // behind an empty user ("x://d;@h"), or behind a password (":pw@").
    if (l_s == l_end) {
        if (l_s == l_layout.m_b) {
            open_authority(a_url, l_s, l_layout.m_b);
            a_url.insert(l_s, 1, '@');
        } else if (a_url[l_s] != ':' && a_url[l_s] != '@') {
            a_url.insert(l_s, 1, '@');
        }
    }
    a_url.replace(l_s, l_end - l_s, encoded(a_value, a_encode, true));
    if (l_s == l_layout.m_a) {
        mark_authority(a_url, l_s);
    }
    return a_url;
}

std::string &url_set_password(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    userinfo_layout const l_info = scan_userinfo(l_reader, l_layout);
    size_type const l_u = l_info.m_u;
    bool const l_has_password = l_info.m_colon < l_u;
    size_type const l_p = l_has_password ? l_info.m_colon + 1 : l_u;
    if (a_value.empty()) {
        if (l_p == 0) {
            return a_url;
        }
        // The password and its ':'; the '@' stays, as the user may still need it.
        if (l_has_password) {
            a_url.erase(l_info.m_colon, l_u - l_info.m_colon);
        }
        if (l_layout.m_a == l_layout.m_b) {
            erase_mark(a_url, l_layout.m_a);
        }
        return a_url;
    }
    // A password needs the '@' behind it, or "user:password" would read as host and service, and
    // the ':' in front of it, which divides it from the user (even an empty one: "x://:pw@host").
    if (l_p == l_u) {
        if (l_p == l_layout.m_b) {
            open_authority(a_url, l_p, l_layout.m_b);
            a_url.insert(l_p, 1, '@');
        } else if (a_url[l_p] != '@') {
            a_url.insert(l_p, 1, '@');
        }
    }
    a_url.replace(l_p, l_u - l_p, encoded(a_value, a_encode, true));
    if (l_p == l_layout.m_a) {
        a_url.insert(l_p, 1, ':');
        mark_authority(a_url, l_p);
    } else if (a_url[l_p - 1] != ':') {
        a_url.insert(l_p, 1, ':');
    }
    return a_url;
}

// The host is never encoded and gets no brackets: the caller writes an IPv6 address in its
// brackets, without which its first ':' would start the service.
std::string &url_set_host(std::string &a_url, std::string const &a_value)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    host_layout const l_host = scan_host(l_reader, l_layout, scan_userinfo(l_reader, l_layout));
    size_type const l_h = l_host.m_h;
    size_type const l_end = l_host.m_t;
    if (a_value.empty()) {
        if (l_h == 0) {
            return a_url;
        }
        // A host that was the whole authority takes the "//" along; user information or a service
        // keeps it.
        a_url.erase(l_h, l_end - l_h);
        if (l_end == l_layout.m_b && a_url[l_h - 1] == '/') {
            erase_mark(a_url, l_h);
        }
        return a_url;
    }
    if (l_h == l_layout.m_b) {
        open_authority(a_url, l_h, l_layout.m_b);
    }
    a_url.replace(l_h, l_end - l_h, a_value);
    // Behind user information the host stands behind its '@'.
    if (l_h == l_layout.m_a) {
        mark_authority(a_url, l_h);
    } else if (a_url[l_h - 1] != '@') {
        a_url.insert(l_h, 1, '@');
    }
    return a_url;
}

// The service stands behind the host's ':', which comes and goes with it.
std::string &url_set_service(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    host_layout const l_host = scan_host(l_reader, l_layout, scan_userinfo(l_reader, l_layout));
    size_type const l_b = l_layout.m_b;
    bool const l_has_service = l_host.m_t < l_b;
    size_type const l_v = l_has_service ? l_host.m_t + 1 : l_b;
    if (a_value.empty()) {
        if (l_v == 0) {
            return a_url;
        }
        size_type l_new_b = l_b;
        if (l_has_service) {
            a_url.erase(l_host.m_t, l_b - l_host.m_t);
            l_new_b = l_host.m_t;
        }
        if (l_new_b == l_layout.m_a) {
            erase_mark(a_url, l_layout.m_a);
        }
        return a_url;
    }
    if (l_v == l_b) {
        open_authority(a_url, l_v, l_b);
    }
    a_url.replace(l_v, l_b - l_v, encoded(a_value, a_encode, true));
    if (l_v == l_layout.m_a) {
        a_url.insert(l_v, 1, ':');
        mark_authority(a_url, l_v);
    } else if (a_url[l_v - 1] != ':') {
        a_url.insert(l_v, 1, ':');
    }
    return a_url;
}

// --- Editing behind the authority ---------------------------------------------------------------

std::string &url_set_path(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    size_type const l_p = l_layout.m_b;
    size_type const l_end = l_reader.find<k_semicolon | k_question>(l_p, l_layout.m_e);
    std::string const l_value = encoded(a_value, a_encode, false);
    a_url.replace(l_p, l_end - l_p, l_value);
    // Behind an authority a path is rooted, or its first segment would read as part of the
    // authority; behind a bare scheme, or with nothing in front, it may stay relative ("x:n").
    // Encoding keeps the '/' separators.
    if (!l_value.empty() && l_p != 0 && a_url[l_p - 1] != ':' && l_value[0] != '/') {
        a_url.insert(l_p, 1, '/');
    }
    return a_url;
}

// The params go between the path and the query. Right behind an authority without an '@' they
// read back as host text, since there a ';' is no delimiter; the scan of the authority says why.
std::string &url_set_params(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    tail_layout const l_tail = tail_in(l_reader, l_layout);
    bool const l_present = l_tail.m_semicolon < l_tail.m_q;
    return set_delimited(a_url, l_present ? l_tail.m_semicolon + 1 : l_tail.m_q, l_tail.m_q, l_present, ';', a_value,
                         a_encode);
}

// The query runs from the first '?' behind the path's start up to the fragment; a new one goes in
// right in front of the fragment.
std::string &url_set_query(std::string &a_url, std::string const &a_value, bool a_encode)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    size_type const l_q = l_reader.find<k_question>(l_layout.m_b, l_layout.m_e);
    bool const l_present = l_q < l_layout.m_e;
    return set_delimited(a_url, l_present ? l_q + 1 : l_layout.m_e, l_layout.m_e, l_present, '?', a_value, a_encode);
}

// The fragment is everything behind the text's first '#', whatever stands in front of it, so the
// search needs no scan of the rest.
std::string &url_set_fragment(std::string &a_url, std::string const &a_value, bool a_encode)
{
    size_type const l_hash = find_byte(a_url.data(), '#', 0, a_url.size());
    bool const l_present = l_hash < a_url.size();
    return set_delimited(a_url, l_present ? l_hash + 1 : a_url.size(), a_url.size(), l_present, '#', a_value, a_encode);
}

std::string &url_set_params(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                            char a_kv_separator)
{
    return url_set_params(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

std::string &url_set_query(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                           char a_kv_separator)
{
    return url_set_query(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

std::string &url_set_fragment(std::string &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                              char a_kv_separator)
{
    return url_set_fragment(a_url, kvtext(a_values, a_encode, a_pair_separator, a_kv_separator), false);
}

// --- Editing the scheme -------------------------------------------------------------------------

// The scheme comes with its ':' and goes with it. A text without a scheme takes one in front of
// whatever it is ("dir" becomes "s:dir"); a text that opens with ':' has an empty scheme, whose ':'
// serves.
std::string &uri_set_scheme(std::string &a_url, std::string const &a_value)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    if (a_value.empty()) {
        if (l_layout.m_has_scheme) {
            a_url.erase(0, l_layout.m_d + 1);
        }
        return a_url;
    }
    size_type l_end = 0;
    if (l_layout.m_has_scheme && l_layout.m_d != 0) {
        l_end = l_layout.m_d;
    } else if (a_url.empty() || a_url[0] != ':') {
        a_url.insert(0, 1, ':');
    }
    a_url.replace(0, l_end, a_value);
    return a_url;
}

std::string &url_set_scheme(std::string &a_url, std::string const &a_value)
{
    return uri_set_scheme(a_url, a_value);
}

std::string &uri_set_scheme_specific(std::string &a_url, std::string const &a_value)
{
    url_reader l_reader(a_url);
    url_layout const l_layout = scan(l_reader);
    size_type const l_keep = l_layout.m_has_scheme && l_layout.m_d != 0 ? l_layout.m_s : 0;
    a_url.replace(l_keep, std::string::npos, a_value);
    return a_url;
}

void url_correct_domain(std::string &a_url)
{
    std::string const l_user = url_user(a_url, true);
    if (l_user.empty()) {
        return;
    }
    size_type l_mark = l_user.find('/');
    if (l_mark == std::string::npos) {
        l_mark = l_user.find('\\');
        if (l_mark == std::string::npos) {
            return;
        }
    }
    if (url_domain(a_url, true).empty()) {
        url_set_domain(a_url, l_user.substr(0, l_mark), false);
    }
    url_set_user(a_url, l_user.substr(l_mark + 1), true);
}

// --- Copying twins ------------------------------------------------------------------------------

std::string url_new_authority(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_authority(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_domain(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_domain(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_user(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_user(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_password(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_password(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_host(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    url_set_host(l_copy, a_value);
    return l_copy;
}

std::string url_new_service(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_service(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_path(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_path(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_params(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_params(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_query(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_query(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_fragment(std::string const &a_url, std::string const &a_value, bool a_encode)
{
    std::string l_copy(a_url);
    url_set_fragment(l_copy, a_value, a_encode);
    return l_copy;
}

std::string url_new_params(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                           char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_params(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string url_new_query(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                          char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_query(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string url_new_fragment(std::string const &a_url, kvmap const &a_values, bool a_encode, char a_pair_separator,
                             char a_kv_separator)
{
    std::string l_copy(a_url);
    url_set_fragment(l_copy, a_values, a_encode, a_pair_separator, a_kv_separator);
    return l_copy;
}

std::string uri_new_scheme(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme(l_copy, a_value);
    return l_copy;
}

std::string url_new_scheme(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme(l_copy, a_value);
    return l_copy;
}

std::string uri_new_scheme_specific(std::string const &a_url, std::string const &a_value)
{
    std::string l_copy(a_url);
    uri_set_scheme_specific(l_copy, a_value);
    return l_copy;
}

// --- The path -----------------------------------------------------------------------------------

namespace {

// Runs a path function over the decoded path and writes the result back encoded.
template <typename t_edit> std::string &edit_path(std::string &a_url, t_edit const &a_edit)
{
    std::string l_path = url_path(a_url, true);
    a_edit(l_path);
    return url_set_path(a_url, l_path, true);
}

template <typename t_edit> std::string edited_path(std::string const &a_url, t_edit const &a_edit)
{
    std::string l_copy(a_url);
    edit_path(l_copy, a_edit);
    return l_copy;
}

} // namespace

std::string url_path_front(std::string const &a_url)
{
    return path_front(url_path(a_url, true), '/');
}

std::string url_path_back(std::string const &a_url)
{
    return path_back(url_path(a_url, true), '/');
}

std::string url_path_file(std::string const &a_url)
{
    return path_file(url_path(a_url, true), '/');
}

std::string url_path_name(std::string const &a_url)
{
    return path_name(url_path(a_url, true), '/');
}

std::string url_path_directory(std::string const &a_url, unsigned int a_levels)
{
    return path_directory(url_path(a_url, true), '/', a_levels);
}

std::string url_path_suffix(std::string const &a_url, unsigned int a_count)
{
    return path_suffix(url_path(a_url, true), '/', a_count);
}

std::string &url_path_append(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_append(a_path, a_other, '/'); });
}

std::string url_path_appended(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_append(a_path, a_other, '/'); });
}

std::string &url_path_push_back(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_push_back(a_path, a_other, '/'); });
}

std::string url_path_pushed_back(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_push_back(a_path, a_other, '/'); });
}

std::string &url_path_prepend(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_prepend(a_path, a_other, '/'); });
}

std::string url_path_prepended(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_prepend(a_path, a_other, '/'); });
}

std::string &url_path_push_front(std::string &a_url, std::string const &a_other)
{
    return edit_path(a_url, [&](std::string &a_path) { path_push_front(a_path, a_other, '/'); });
}

std::string url_path_pushed_front(std::string const &a_url, std::string const &a_other)
{
    return edited_path(a_url, [&](std::string &a_path) { path_push_front(a_path, a_other, '/'); });
}

std::string &url_path_pop_back(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_pop_back(a_path, '/'); });
}

std::string url_path_popped_back(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_pop_back(a_path, '/'); });
}

std::string &url_path_pop_front(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_pop_front(a_path, '/'); });
}

std::string url_path_popped_front(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_pop_front(a_path, '/'); });
}

std::string &url_path_set_directory(std::string &a_url, std::string const &a_directory, unsigned int a_levels)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_directory(a_path, a_directory, '/', a_levels); });
}

std::string url_path_new_directory(std::string const &a_url, std::string const &a_directory, unsigned int a_levels)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_directory(a_path, a_directory, '/', a_levels); });
}

std::string &url_path_set_file(std::string &a_url, std::string const &a_file)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_file(a_path, a_file, '/'); });
}

std::string url_path_new_file(std::string const &a_url, std::string const &a_file)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_file(a_path, a_file, '/'); });
}

std::string &url_path_set_name(std::string &a_url, std::string const &a_name)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_name(a_path, a_name, '/'); });
}

std::string url_path_new_name(std::string const &a_url, std::string const &a_name)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_name(a_path, a_name, '/'); });
}

std::string &url_path_set_suffix(std::string &a_url, std::string const &a_suffix, unsigned int a_count)
{
    return edit_path(a_url, [&](std::string &a_path) { path_set_suffix(a_path, a_suffix, '/', a_count); });
}

std::string url_path_new_suffix(std::string const &a_url, std::string const &a_suffix, unsigned int a_count)
{
    return edited_path(a_url, [&](std::string &a_path) { path_set_suffix(a_path, a_suffix, '/', a_count); });
}

std::string &url_path_normalize(std::string &a_url)
{
    return edit_path(a_url, [](std::string &a_path) { path_normalize(a_path, '/'); });
}

std::string url_path_normalized(std::string const &a_url)
{
    return edited_path(a_url, [](std::string &a_path) { path_normalize(a_path, '/'); });
}

std::string &url_path_root(std::string &a_url, std::string const &a_root)
{
    return edit_path(a_url, [&](std::string &a_path) { path_root(a_path, a_root); });
}

std::string url_path_rooted(std::string const &a_url, std::string const &a_root)
{
    return edited_path(a_url, [&](std::string &a_path) { path_root(a_path, a_root); });
}

std::string &url_path_unroot(std::string &a_url, std::string const &a_root)
{
    return edit_path(a_url, [&](std::string &a_path) { path_unroot(a_path, a_root); });
}

std::string url_path_unrooted(std::string const &a_url, std::string const &a_root)
{
    return edited_path(a_url, [&](std::string &a_path) { path_unroot(a_path, a_root); });
}

} // namespace ordwel
