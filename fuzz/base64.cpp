// Base64: what was encoded decodes to itself, in memory and through files, and any range of any file decodes as the
// rule says.
#include "codecs/base64.h"

#include <algorithm>

#include "fuzz/choices.h"
#include "fuzz/coding.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::fuzz {

void fuzz_base64(std::string_view input) {
  Choices choices(input);
  const std::size_t before = choices.below(64), behind = choices.below(64);
  const std::string text = maybe_stretched(choices);
  require_same(codecs::decode_base64(codecs::encode_base64(text)), text, "what was encoded decodes to itself");
  require_same(through_files(&codecs::CEncoder::Base64, &codecs::CDecoder::Base64, text), text,
               "what was encoded to a file decodes to itself");
  const std::size_t start = std::min(before, text.size());
  const std::size_t end = std::max(text.size() - std::min(behind, text.size()), start);
  // A block of 1024 bytes that begins in the range is used whole.
  const std::string_view used = std::string_view(text).substr(start, (end - start + 1023) / 1024 * 1024);
  require_same(decoded_range(codecs::AttachmentEncoding::base64, text, start, end),
               codecs::reference::decode_base64(used), "a range of a file decodes as the rule says");
}

}  // namespace vellobar::fuzz
