// Quoted-printable: what was encoded decodes to itself, in memory and through files, and any range of any file decodes
// as the rule says.
#include "codecs/quoted_printable.h"

#include <algorithm>

#include "fuzz/choices.h"
#include "fuzz/coding.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::fuzz {

void fuzz_quoted_printable(std::string_view input) {
  Choices choices(input);
  const std::size_t before = choices.below(64), behind = choices.below(64);
  const std::string text = maybe_stretched(choices);
  require_same(codecs::decode_quoted_printable(codecs::encode_quoted_printable(text)), text,
               "what was encoded decodes to itself");
  require_same(through_files(&codecs::CEncoder::QuotedPrintable, &codecs::CDecoder::QuotedPrintable, text), text,
               "what was encoded to a file decodes to itself");
  for (const bool underscore_is_space : {false, true}) {
    require_same(codecs::decode_quoted_printable(text, underscore_is_space),
                 codecs::reference::decode_quoted_printable(text, underscore_is_space),
                 "any text decodes as the rule says");
  }
  const std::size_t start = std::min(before, text.size());
  const std::size_t end = std::max(text.size() - std::min(behind, text.size()), start);
  require_same(decoded_range(codecs::AttachmentEncoding::quoted_printable, text, start, end),
               codecs::reference::decode_quoted_printable_file(text.substr(start, end - start)),
               "a range of a file decodes as the rule says");
}

}  // namespace vellobar::fuzz
