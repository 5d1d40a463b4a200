#include "fuzz/target.h"

#include <algorithm>
#include <cstdio>

#include "fuzz/targets.h"

namespace vellobar::fuzz {

namespace {

constexpr Target kTargets[] = {
    {"addresses", fuzz_addresses},
    {"attachments", fuzz_attachments},
    {"base64", fuzz_base64},
    {"binhex", fuzz_binhex},
    {"charsets", fuzz_charsets},
    {"codec_forms", fuzz_codec_forms},
    {"dates", fuzz_dates},
    {"encoded_words", fuzz_encoded_words},
    {"header_block", fuzz_header_block},
    {"letting_go", fuzz_letting_go},
    {"line_search", fuzz_line_search},
    {"mailbox", fuzz_mailbox},
    {"parts", fuzz_parts},
    {"quoted_printable", fuzz_quoted_printable},
    {"scan", fuzz_scan},
    {"uuencode", fuzz_uuencode},
};

std::string shown(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char escape[8];
    const auto byte = static_cast<unsigned char>(c);
    const bool is_plain = byte >= ' ' && byte <= '~' && byte != '\\';
    std::snprintf(escape, sizeof escape, is_plain ? "%c" : "\\x%02X", static_cast<unsigned>(byte));
    text += escape;
  }
  return text;
}

}  // namespace

std::span<const Target> targets() { return kTargets; }

void require(bool holds, const char* law) {
  if (!holds) throw BrokenLaw(law);
}

void require_same(std::string_view got, std::string_view expected, const char* law) {
  if (got == expected) return;
  const auto* const parting = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end()).first;
  const auto at = static_cast<std::size_t>(parting - got.begin());
  const std::size_t from = at - std::min<std::size_t>(at, 60);
  throw BrokenLaw(std::string(law) + "\n  at byte " + std::to_string(at) + "\n  got      ..." +
                  shown(got.substr(from, 160)) + "\n  expected ..." + shown(expected.substr(from, 160)));
}

}  // namespace vellobar::fuzz
