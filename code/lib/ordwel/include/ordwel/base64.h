// SPDX-License-Identifier: MIT
#ifndef ORDWEL_BASE64_H
#define ORDWEL_BASE64_H

#include <string>
#include <vector>

#include <ordwel/buffer.h>
#include <ordwel/codecs.h>
#include <ordwel/export.h>
#include <ordwel/stream.h>
#include <ordwel/types.h>

namespace ordwel {

// Base64 in both alphabets of RFC 4648, with a choice of padding, a strict decoder that accepts
// only canonical text, and stream adapters that code on the fly. The two-argument functions of
// <ordwel/codecs.h> are the standard alphabet with padding and the lenient decoder; the forms
// here with k_base64_standard give the very same results.

/// The characters for the values 62 and 63; the other 62 are those of both alphabets.
enum class base64_alphabet : unsigned char {
    standard, ///< "+" and "/".
    url,      ///< "-" and "_": safe in URLs and file names.
};

/// The "=" that fill the last group of four characters.
enum class base64_padding : unsigned char {
    required,  ///< Encoding writes them; strict decoding demands them.
    optional,  ///< Encoding leaves them out; strict decoding takes the last group with or without them.
    forbidden, ///< Encoding leaves them out; strict decoding rejects any "=".
};

/// An alphabet and a padding rule.
struct base64_format {
    base64_alphabet m_alphabet; ///< The characters.
    base64_padding m_padding;   ///< The padding rule.
};

/// The standard alphabet with padding, as <ordwel/codecs.h> codes it.
constexpr base64_format k_base64_standard{base64_alphabet::standard, base64_padding::required};
/// The URL-safe alphabet, written without padding and read with or without.
constexpr base64_format k_base64_url{base64_alphabet::url, base64_padding::optional};

/// Base64 of the a_size bytes at a_bytes in a_format, as a buffer or a string; "=" only when
/// the format's padding is required. A null pointer or a size of 0 gives an empty result.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_encode_base64(unsigned char const *a_bytes, uint64 a_size,
                                                     base64_format a_format);
[[nodiscard]] ORDWEL_API std::string string_encode_base64(unsigned char const *a_bytes, uint64 a_size,
                                                          base64_format a_format);
///@}

/// The lenient decoder of <ordwel/codecs.h> over a_format's alphabet: foreign characters are not
/// detected and decode by the rules told there. With padding required, a text whose length is no
/// multiple of 4 raises es::arg (null message); otherwise a last group of 2 or 3 characters
/// decodes as if it had its padding, and one of a single character raises es::arg.
///@{
[[nodiscard]] ORDWEL_API buffer buffer_decode_base64(unsigned char const *a_bytes, uint64 a_size,
                                                     base64_format a_format);
[[nodiscard]] ORDWEL_API std::string string_decode_base64(unsigned char const *a_bytes, uint64 a_size,
                                                          base64_format a_format);
///@}

/// The outcome of a strict decode.
struct base64_result {
    bool m_valid;    ///< Whether the text is canonical Base64 of the format.
    uint64 m_offset; ///< When not valid: see base64_decode_strict.
    buffer m_bytes;  ///< When valid: the bytes; empty otherwise.
};

/// Decodes canonical Base64 of a_format and nothing else: every character from the alphabet,
/// padding as the format's rule says and only at the end, the unused low bits of the last group
/// zero, no whitespace or line breaks. So every valid text is the encoding of its bytes, and
/// re-encoding gives it back exactly (with padding or without, as the text had it, where padding
/// is optional).
///
/// An invalid text gives m_valid false and the offset of the first character that no valid text
/// could have at that place, reading from the start: a foreign character, an "=" where none may
/// stand, a character after the padding, the "=" behind non-zero trailing bits. When the text ends
/// where a valid one could not (a lone last character, missing padding, non-zero trailing bits
/// of an unpadded last group), the offset is its length. A null pointer or a size of 0 is valid.
/// Never raises, for callers that check untrusted text; the forms below raise instead.
[[nodiscard]] ORDWEL_API base64_result base64_decode_strict(unsigned char const *a_text, uint64 a_size,
                                                            base64_format a_format);

/// base64_decode_strict, which raises es::arg on invalid text, its message naming the offset:
/// "invalid Base64 at offset 17" (the offset as base64_decode_strict gives it).
///@{
[[nodiscard]] ORDWEL_API buffer buffer_decode_base64_strict(unsigned char const *a_text, uint64 a_size,
                                                            base64_format a_format);
[[nodiscard]] ORDWEL_API std::string string_decode_base64_strict(unsigned char const *a_text, uint64 a_size,
                                                                 base64_format a_format);
///@}

/// Whether a decoding reader accepts only canonical text or decodes anything by the lenient rules.
enum class base64_check : unsigned char {
    strict,  ///< As base64_decode_strict.
    lenient, ///< As buffer_decode_base64 with a format.
};

namespace stream {

/// A writer that takes bytes and writes their Base64 text to another writer, which the caller
/// keeps alive. Each write passes on the text of every whole group of three bytes at once and
/// holds back up to two bytes; finish writes those with the padding of the format.
///
/// The destructor writes nothing: a text that was not finished stays unfinished, and the held
/// bytes are lost, so that a producer that stopped on a failure does not leave a text that looks
/// complete.
class ORDWEL_API base64_wr : public wr {
public:
    /// Writes to a_target in a_format.
    explicit base64_wr(wr &a_target, base64_format a_format = k_base64_standard);
    /// Writes nothing and never raises.
    ~base64_wr() override;
    base64_wr(base64_wr const &) = delete;
    base64_wr &operator=(base64_wr const &) = delete;

    /// Codes a_size bytes; passes on the text of the whole groups. Raises es::unsupp after finish,
    /// and what the target raises.
    void write(void const *a_source, uint64 a_size) override;
    /// Flushes the target. The bytes held back stay held: writing them would end the text.
    void flush() override;
    /// The count of bytes taken so far.
    [[nodiscard]] uint64 tell() override;
    /// Writes the last group (with padding if the format requires it) and flushes the target.
    /// Further calls do nothing.
    void finish();

private:
    wr *m_target;
    base64_format m_format;
    std::vector<char> m_text;
    unsigned char m_held[2];
    unsigned m_held_size;
    uint64 m_position;
    bool m_finished;
};

/// A reader that reads Base64 text from another reader, which the caller keeps alive, and gives
/// its bytes. It reads the source in pieces of 4 KiB and holds no more than one such piece and its
/// bytes, whatever the length of the text.
///
/// Invalid text raises es::arg, strict decoding with the message of buffer_decode_base64_strict
/// (the offset counted from the start of the text), lenient decoding with the null message. It
/// comes from the first read that has no byte left to give: the bytes of the groups before the
/// failing one are all given out first. Every later read raises again.
class ORDWEL_API base64_rd : public rd {
public:
    /// Reads text in a_format from a_source.
    explicit base64_rd(rd &a_source, base64_format a_format = k_base64_standard,
                       base64_check a_check = base64_check::strict);
    ~base64_rd() override;
    base64_rd(base64_rd const &) = delete;
    base64_rd &operator=(base64_rd const &) = delete;

    /// Gives up to a_size bytes; fewer only at the end of the text, and 0 after it.
    uint64 read(void *a_destination, uint64 a_size) override;
    /// The count of bytes given out so far.
    [[nodiscard]] uint64 tell() override;

private:
    void refill();

    rd *m_source;
    base64_format m_format;
    base64_check m_check;
    std::vector<unsigned char> m_text;  // the text read and not yet decoded
    std::vector<unsigned char> m_bytes; // the bytes decoded and not yet given out
    uint64 m_text_size;
    uint64 m_text_offset; // where m_text starts in the whole text
    uint64 m_bytes_pos;
    uint64 m_bytes_size;
    uint64 m_position;
    uint64 m_error_offset; // where strict decoding failed
    bool m_source_ended;
    bool m_finished;
    bool m_failed;
};

} // namespace stream

} // namespace ordwel

#endif
