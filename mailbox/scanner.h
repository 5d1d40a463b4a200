// The scan: splits a stream into messages at the lines that begin with a separator ("From " in a mailbox, "--" and the
// boundary in a multipart body). It knows no message; what it finds are extents. A message runs from its separator line
// up to the next one; what stands before the first separator line is a message without one. Lines end with a line feed,
// a carriage return just before it belongs to the line end, and a lone carriage return is data.
//
// The stream is counted in chunks of 16 KB, doubling up to 16 MB. A line that a chunk does not end is counted as far as
// it is held and then again as a whole, so positions run ahead behind a line longer than a chunk. The sizes of the
// chunks show in nothing else, and the memory used depends neither on them nor on the length of a line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string_view>

#include "mailbox/extent.h"
#include "mailbox/scanner_search.h"
#include "platform/file.h"

namespace vellobar::mailbox {

struct ScanResult {
  /// Where the stream is left: just behind the last line counted. Bytes.
  std::int64_t position = 0;
  /// The limit was reached and no read failed.
  bool whole = false;
  /// A line was counted more than once, so that positions behind it are not those of the file.
  bool ran_ahead = false;
};

/// What a test varies; the defaults are the rule.
struct ScanOptions {
  std::int64_t first_chunk = 16384;
  std::int64_t chunk_doubles_below = 12'800'000;
  /// The most that one call reads. A chunk larger than this is read in several calls.
  std::int64_t read_at_once = std::int64_t{256} * 1024;
  SearchLevel search = best_search_level();
  /// Where the read buffer comes from.
  std::pmr::memory_resource* memory = std::pmr::new_delete_resource();
};

/// Scans `file` from the byte position `from`, the first byte of a line, until a line ends at or behind the byte
/// position `limit` or the file ends. Each message goes to `sink` when the next one begins or the scan ends. An empty
/// separator matches every line. Throws Error(scan_out_of_memory) when the read buffer cannot be had, after handing out
/// what was found, and whatever `sink` throws.
ScanResult scan(platform::File& file, std::int64_t from, std::int64_t limit, std::string_view separator,
                ExtentSink& sink, const ScanOptions& options = {});

}  // namespace vellobar::mailbox
