// The line search over blocks of 64 bytes, for any way of comparing 64 bytes with one byte: a bit mask of the line
// feeds and one of the prefix's first byte give the few lines worth comparing, and counting lines is counting bits.
// Included by the files that are compiled for one instruction set each; so that no other file ever runs code compiled
// for such a set, everything here is local to the including file and no function of another header is called.
#pragma once

#include <cstdint>
#include <cstring>

#include "mailbox/scanner_search_forms.h"

namespace vellobar::mailbox {
namespace {

constexpr int kBlock = 64;

struct BlockMasks {
  std::uint64_t line_feeds;
  std::uint64_t first_bytes;
};

/// The first candidate at which the prefix stands; `end` when none does. Bit i of `candidates` stands for block[i].
inline const char* matching_candidate(const char* block, std::uint64_t candidates, const char* end, LinePrefix prefix) {
  for (; candidates != 0; candidates &= candidates - 1) {
    const char* line = block + __builtin_ctzll(candidates);
    const bool fits = end - line >= prefix.size;
    if (fits && std::memcmp(line, prefix.bytes, static_cast<std::size_t>(prefix.size)) == 0) return line;
  }
  return end;
}

/// `Compare::masks(block, first_byte)` compares 64 bytes.
template <class Compare>
inline FoundLine search_blocks(const char* begin, const char* end, LinePrefix prefix) {
  const char first_byte = prefix.bytes[0];
  std::int64_t lines = 0;
  std::uint64_t line_starts_next = 0;
  for (const char* block = begin; block < end; block += kBlock) {
    BlockMasks masks;
    if (end - block >= kBlock) {
      masks = Compare::masks(block, first_byte);
    } else {
      char last[kBlock] = {};
      std::memcpy(last, block, static_cast<std::size_t>(end - block));
      masks = Compare::masks(last, first_byte);
    }
    const std::uint64_t candidates = (masks.line_feeds << 1 | line_starts_next) & masks.first_bytes;
    line_starts_next = masks.line_feeds >> (kBlock - 1);
    const char* match = candidates == 0 ? end : matching_candidate(block, candidates, end, prefix);
    if (match != end) {
      const std::uint64_t before = (std::uint64_t{1} << (match - block)) - 1;
      return {match, lines + __builtin_popcountll(masks.line_feeds & before)};
    }
    lines += __builtin_popcountll(masks.line_feeds);
  }
  return {end, lines};
}

}  // namespace
}  // namespace vellobar::mailbox
