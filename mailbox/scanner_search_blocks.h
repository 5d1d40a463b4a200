// The line search over blocks of 64 bytes, for any way of comparing 64 bytes with one byte: where a line feed stands
// one byte earlier a line starts, and only starts that hold the prefix's first byte are worth comparing. Counting lines
// is counting starts.
//
// Included by the files that are compiled for one instruction set each; so that no other file ever runs code compiled
// for such a set, everything here is local to the including file and no function of another header is called.
#pragma once

#include <cstdint>
#include <cstring>

#include "mailbox/scanner_search_forms.h"

namespace vellobar::mailbox {
namespace {

constexpr int kBlock = 64;

/// Bit i stands for block[i].
struct BlockMasks {
  std::uint64_t line_starts;
  /// The line starts that hold the prefix's first byte.
  std::uint64_t candidates;
};

/// The first candidate at which the prefix stands; `end` when none does.
inline const char* matching_candidate(const char* block, std::uint64_t candidates, const char* end, LinePrefix prefix) {
  for (; candidates != 0; candidates &= candidates - 1) {
    const char* line = block + __builtin_ctzll(candidates);
    const bool fits = end - line >= prefix.size;
    if (fits && std::memcmp(line, prefix.bytes, static_cast<std::size_t>(prefix.size)) == 0) return line;
  }
  return end;
}

/// Passes whole blocks without candidates and counts their lines. A function of its own, without any call, so that the
/// loop stays in registers.
template <class Compare>
[[gnu::noinline]] FoundLine pass_blocks(const char* block, const char* end, char first_byte) {
  std::int64_t lines = 0;
  for (; end - block >= kBlock; block += kBlock) {
    const BlockMasks masks = Compare::masks(block, first_byte);
    if (masks.candidates != 0) break;
    lines += __builtin_popcountll(masks.line_starts);
  }
  return {block, lines};
}

/// The masks of a block, which `end` may cut short.
template <class Compare>
inline BlockMasks masks_at(const char* block, const char* end, char first_byte) {
  if (end - block >= kBlock) return Compare::masks(block, first_byte);
  char last[1 + kBlock] = {};
  std::memcpy(last, block - 1, static_cast<std::size_t>(end - block) + 1);
  return Compare::masks(last + 1, first_byte);
}

/// `Compare::masks(block, first_byte)` looks at 64 bytes and the one before them. The search begins behind the first
/// byte, which starts the line that is not compared, and takes in the start of a line at `end`: so it counts as many
/// starts as lines are passed.
template <class Compare>
inline FoundLine search_blocks(const char* begin, const char* end, LinePrefix prefix) {
  const char first_byte = prefix.bytes[0];
  std::int64_t lines = 0;
  for (const char* block = begin + 1; block <= end; block += kBlock) {
    const FoundLine passed = pass_blocks<Compare>(block, end, first_byte);
    block = passed.line;
    lines += passed.lines_before;
    const BlockMasks masks = masks_at<Compare>(block, end, first_byte);
    const char* match = matching_candidate(block, masks.candidates, end, prefix);
    if (match != end) {
      const std::uint64_t behind = ~std::uint64_t{1} << (match - block);
      return {match, lines + __builtin_popcountll(masks.line_starts & ~behind)};
    }
    lines += __builtin_popcountll(masks.line_starts);
  }
  return {end, lines};
}

}  // namespace
}  // namespace vellobar::mailbox
