// Encoded words in header values (RFC 2047), read and written with this component's own rules: one code page for the
// whole value, folds led by a TAB removed, white space between words kept, decoded text that forms a word again decoded
// again. Reading is defined pass by pass over the whole value; `decode_encoded_words` gives that result without going
// over the whole value for each word.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::mime {

/// A header value without its encoded words, and the code page its bytes are to be widened with.
struct DecodedValue {
  std::string bytes;
  int code_page = 0;
};

/// Decodes the encoded words of a value (bytes in the process code page) and removes its TAB-led folds. A malformed
/// word ends the decoding and stays as it stands. So does, in mail made to burst, a word that would make the value grow
/// beyond what `most_added_bytes` allows.
DecodedValue decode_encoded_words(std::string_view value);

/// How many bytes the words of a value may add to it altogether. Decoding makes a value shorter but for two cases. A
/// UTF-7 run may become three times as long, once. And in a "Q" word broken escapes that share an equals sign, as in
/// "==ZY", decode to more of their kind: words within words around them come to treble the value at every level, so
/// that 300 characters stand for 2^60 and no program can give the text. The bound lies above all that the first case
/// takes.
constexpr std::size_t most_added_bytes(std::size_t value_size) { return (std::size_t{4} << 20) + 4 * value_size; }

/// The same, widened. A code page that the platform lacks gives an empty text.
std::u16string decode_header_value(std::string_view value);

/// A text as one UTF-8 Base64 encoded word of any length; an empty text gives an empty one.
std::u16string utf8_encoded_word(std::u16string_view text);

/// True when a byte has its top bit set, which is what makes a value need encoding.
bool has_8_bit_bytes(std::string_view bytes);

}  // namespace vellobar::mime
