// The line search over blocks of 64 bytes, for any way of comparing 64 bytes with one byte: only where a line starts
// with the prefix's first byte is it worth comparing, and counting lines is counting line feeds. The blocks are whole
// cache lines, for a load across two of them costs twice.
//
// Included by the files that are compiled for one instruction set each; so that no other file ever runs code compiled
// for such a set, everything here is local to the including file and no function of another header is called.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "mailbox/scanner_search_forms.h"

namespace vellobar::mailbox {
namespace {

constexpr std::ptrdiff_t kBlock = 64;

/// Bit i stands for block[i].
struct BlockMasks {
  std::uint64_t line_feeds;
  /// Line starts that hold the prefix's first byte.
  std::uint64_t candidates;
};

/// Where a search stands: before a block, behind so many line feeds.
struct Place {
  const char* block;
  std::int64_t lines;
  /// 1 when a line feed is the last byte before the block, else 0.
  std::uint64_t at_line_start;

  void pass(std::ptrdiff_t size, std::uint64_t line_feeds) {
    block += size;
    lines += __builtin_popcountll(line_feeds);
    at_line_start = line_feeds >> (size - 1);
  }
};

template <class Compare>
inline BlockMasks masks_of(const char* block, std::uint64_t at_line_start, char first_byte) {
  const std::uint64_t line_feeds = Compare::equal(block, '\n');
  return {line_feeds, (line_feeds << 1 | at_line_start) & Compare::equal(block, first_byte)};
}

/// The masks of a block or less.
template <class Compare>
inline BlockMasks masks_of_piece(const Place& place, std::ptrdiff_t size, char first_byte) {
  alignas(kBlock) char piece[kBlock] = {};
  std::memcpy(piece, place.block, static_cast<std::size_t>(size));
  const std::uint64_t inside = ~std::uint64_t{0} >> (kBlock - size);
  const BlockMasks masks = masks_of<Compare>(piece, place.at_line_start, first_byte);
  return {masks.line_feeds & inside, masks.candidates & inside};
}

/// No look at the end is needed: it stands behind a line feed, which no prefix has.
inline bool starts_with(const char* line, LinePrefix prefix) {
  std::int64_t same = 0;
  while (same < prefix.size && line[same] == prefix.bytes[same]) ++same;
  return same == prefix.size;
}

/// The first candidate at which the prefix stands; null when none does.
inline const char* match_among(std::uint64_t candidates, const char* block, LinePrefix prefix) {
  for (; candidates != 0; candidates &= candidates - 1) {
    const char* line = block + __builtin_ctzll(candidates);
    if (starts_with(line, prefix)) return line;
  }
  return nullptr;
}

/// Passes whole blocks up to one with a match. A function of its own, without any call, so that the loop stays in
/// registers.
template <class Compare>
[[gnu::noinline]] Place pass_blocks(Place place, const char* end, LinePrefix prefix) {
  const char first_byte = prefix.bytes[0];
  while (end - place.block >= kBlock) {
    const BlockMasks masks = masks_of<Compare>(place.block, place.at_line_start, first_byte);
    if (masks.candidates != 0 && match_among(masks.candidates, place.block, prefix) != nullptr) break;
    place.pass(kBlock, masks.line_feeds);
  }
  return place;
}

/// Bytes from here to the next whole block, at most to the end.
inline std::ptrdiff_t piece_size(const char* at, const char* end) {
  const std::ptrdiff_t to_block = kBlock - static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(at) % kBlock);
  return to_block < end - at ? to_block : end - at;
}

/// `Compare::equal(block, byte)` has a bit for each of 64 bytes that is the wanted one.
template <class Compare>
inline FoundLine search_blocks(const char* begin, const char* end, LinePrefix prefix) {
  Place place{begin, 0, 0};
  for (;;) {
    if (piece_size(place.block, end) == kBlock) place = pass_blocks<Compare>(place, end, prefix);
    const std::ptrdiff_t size = piece_size(place.block, end);
    if (size == 0) return {end, place.lines};
    const BlockMasks masks = masks_of_piece<Compare>(place, size, prefix.bytes[0]);
    if (const char* match = match_among(masks.candidates, place.block, prefix)) {
      const std::uint64_t before = (std::uint64_t{1} << (match - place.block)) - 1;
      return {match, place.lines + __builtin_popcountll(masks.line_feeds & before)};
    }
    place.pass(size, masks.line_feeds);
  }
}

}  // namespace
}  // namespace vellobar::mailbox
