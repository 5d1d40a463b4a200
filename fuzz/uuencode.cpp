// UUencode: what was encoded decodes to itself as far as the code keeps its length, and any range of any file decodes
// as the rule says.
#include "codecs/uuencode.h"

#include <algorithm>

#include "fuzz/choices.h"
#include "fuzz/coding.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::fuzz {

namespace {

/// The only line of a file of whole groups has no length of its own, deliberately; so it cannot be read back.
bool keeps_its_length(std::string_view bytes) { return bytes.size() >= 45 || bytes.size() % 3 != 0; }

}  // namespace

void fuzz_uuencode(std::string_view input) {
  Choices choices(input);
  const std::size_t before = choices.below(64), behind = choices.below(64);
  const std::string text = maybe_stretched(choices);
  // Letters alone say nothing of the bytes in their last group.
  require_same(codecs::decode_uu(codecs::encode_uu(text)), text + std::string((3 - text.size() % 3) % 3, '\0'),
               "what was encoded decodes to itself and zeros up to a whole group");
  if (keeps_its_length(text)) {
    // Deliberate: the last group is read as three bytes, or with the "end" behind it as a group more.
    const std::string again = through_files(&codecs::CEncoder::Uuencode, &codecs::CDecoder::Uudecode, text);
    require_same(again.substr(0, text.size()), text, "what was encoded to a file begins with itself when decoded");
    require(again.size() <= text.size() + 3, "no more than one group follows it");
  }
  const std::size_t start = std::min(before, text.size());
  const std::size_t end = std::max(text.size() - std::min(behind, text.size()), start);
  require_same(decoded_range(codecs::AttachmentEncoding::uuencode, text, start, end),
               codecs::reference::decode_uu_file(text, start, end), "a range of a file decodes as the rule says");
}

}  // namespace vellobar::fuzz
