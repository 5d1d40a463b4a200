// The conversion tables of one code page of one or two bytes a character, in both directions. They are built from the
// system's iconv and from `code_page_data` when a page is first used, kept for the life of the process and never
// changed, so conversions need no iconv descriptor, no state and no lock.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace vellobar::platform {

struct CodePageTables {
  std::array<char16_t, 256> units{};  ///< what a byte alone reads as
  std::array<bool, 256> leads{};      ///< bytes that take a second one
  std::vector<char16_t> pairs;        ///< by lead byte << 8 | trail byte; empty in a page of single bytes
  std::vector<std::uint16_t>
      codes;  ///< by UTF-16 unit: the byte, or the pair; 0 for what the page cannot hold (and for NUL)
};

/// Null for a number that is no page of one or two bytes, and for one whose charset the system lacks.
const CodePageTables* code_page_tables(int number);

}  // namespace vellobar::platform
