// The scan for messages, with any size of chunk and every form of its inner loop, against the rule told word for word.
#include <string>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mailbox/scanner.h"
#include "tests/mailbox/literal_scan.h"

namespace vellobar::fuzz {

namespace {

using mailbox::Extent;
using mailbox::scanner_tests::Scanned;

void require_tiling(const Scanned& scanned, std::string_view text, std::int64_t from, std::string_view separator) {
  std::int64_t position = from;
  for (const Extent& extent : scanned.extents) {
    require(extent.start == position, "a message begins where the one before it ends");
    require(extent.end > extent.start, "a message has a line");
    const auto line = text.substr(static_cast<std::size_t>(extent.start));
    // Not the other way round: a scan may end, at its limit, within the chunk that holds half a separator.
    require(!extent.has_separator || line.starts_with(separator), "a message with a separator begins with it");
    position = extent.end;
  }
  require(position == scanned.result.position, "the last message ends where the scan ends");
}

}  // namespace

void fuzz_scan(std::string_view input) {
  Choices choices(input);
  static constexpr std::string_view kSeparators[] = {"From ", "From ", "--b", "", "\xE4"};
  const std::string_view separator = choices.among(kSeparators);
  mailbox::ScanOptions options;
  options.first_chunk = std::int64_t{1} << choices.below(15);
  options.chunk_doubles_below = options.first_chunk << choices.below(4);
  options.read_at_once = std::int64_t{1} << choices.below(15);
  const std::size_t cut = choices.below(64);
  const bool starts_late = choices.flip();
  const std::string text = maybe_stretched(choices);
  const std::int64_t from = starts_late ? static_cast<std::int64_t>(text.find('\n') + 1) : 0;
  const auto size = static_cast<std::int64_t>(text.size());
  const std::int64_t limit = std::max<std::int64_t>(size - static_cast<std::int64_t>(cut), 0);
  const auto file = file_of(text);
  const Scanned expected = mailbox::scanner_tests::LiteralScan(text, from, options).run(limit, separator);
  for (const mailbox::SearchLevel level : mailbox::scanner_tests::available_levels()) {
    options.search = level;
    const Scanned scanned = mailbox::scanner_tests::scan_file(*file, from, limit, separator, options);
    require(scanned.extents == expected.extents, "the scan finds what the rule finds");
    require(scanned.result.position == expected.result.position, "the scan ends where the rule ends");
    require(scanned.result.whole == (scanned.result.position >= limit), "a scan is whole when it reached its limit");
    if (!scanned.result.ran_ahead) require_tiling(scanned, text, from, separator);
  }
}

}  // namespace vellobar::fuzz
