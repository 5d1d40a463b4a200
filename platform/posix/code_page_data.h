// What the system's iconv has to be told so that its charsets give Windows' tables: which charset stands for which code
// page, and where the two differ. Every row is held by the golden tables of tests/platform, which the Windows build
// made.
#pragma once

#include <cstdint>
#include <span>

namespace vellobar::platform {

/// A page of one byte a character. Bytes that the charset leaves unassigned are C1 controls below 0xA0; from there on
/// Windows gives them private-use characters, numbered upwards in the order of the bytes from `first_private`.
struct SingleBytePage {
  int number;
  const char* charset;  ///< null when `high_half` says it all
  char16_t first_private = 0;
  std::span<const char16_t> high_half =
      {};  ///< the characters of the bytes from 0x80 on, as far as they go; then Latin-1
};

struct ByteRange {
  unsigned char first, last;
  constexpr bool holds(unsigned byte) const noexcept { return byte >= first && byte <= last; }
};

/// A page of one or two bytes a character; the first of two is a lead byte. `unassigned` is what every sequence without
/// a meaning reads as.
struct TwoBytePage {
  int number;
  const char* charset;
  ByteRange leads[2];
  char16_t unassigned;
  char16_t first_private;  ///< for single bytes, as above
  /// Lead bytes whose characters stand elsewhere in the page too and are written the other way. first > last: none.
  ByteRange read_only_leads;
};

/// One character that the page has and the charset lacks or reads differently. A unit of 0 makes the byte unassigned.
struct PageException {
  int number;
  std::uint16_t code;  ///< the byte, or lead byte << 8 | trail byte
  char16_t unit;
};

/// Private-use characters for user-defined ones: for each lead byte the trail bytes of both ranges, counted on without
/// a gap. A second range of {1, 0} is none.
struct UserDefinedArea {
  int number;
  ByteRange leads;
  ByteRange trails[2];
  char16_t first_unit;
};

/// A character that stands twice in a page and is written with the second of its codes.
struct PreferredCode {
  int number;
  std::uint16_t code;
};

std::span<const SingleBytePage> single_byte_pages() noexcept;
std::span<const TwoBytePage> two_byte_pages() noexcept;
std::span<const PageException> page_exceptions() noexcept;
std::span<const UserDefinedArea> user_defined_areas() noexcept;
std::span<const PreferredCode> preferred_codes() noexcept;

}  // namespace vellobar::platform
