#include "mailbox/scanner.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "errors/error.h"
#include "mailbox/line_buffer.h"

namespace vellobar::mailbox {

namespace {

/// What the lines add up to: the position reached and the message that is still open.
class Tally {
 public:
  Tally(std::int64_t from, std::int64_t limit, ExtentSink& sink) : position_(from), limit_(limit), sink_(sink) {}

  std::int64_t position() const noexcept { return position_; }
  bool at_limit() const noexcept { return position_ >= limit_; }
  std::int64_t below_limit() const noexcept { return limit_ - position_; }

  /// Counts lines of which at most the first matches the separator.
  void add(std::int64_t bytes, std::int64_t lines, bool first_matches) {
    if (first_matches || !has_message_) begin_message(first_matches);
    position_ += bytes;
    message_.lines += lines;
  }

  /// Hands out the open message.
  void finish() {
    if (!has_message_) return;
    message_.end = position_;
    has_message_ = false;
    sink_.found(message_);
  }

 private:
  void begin_message(bool matches) {
    finish();
    message_ = {.start = position_, .end = position_, .lines = 0, .has_separator = matches};
    has_message_ = true;
  }

  std::int64_t position_;
  const std::int64_t limit_;
  ExtentSink& sink_;
  Extent message_;
  bool has_message_ = false;
};

const char* behind_next_line_feed(const char* from, const char* end) {
  return static_cast<const char*>(std::memchr(from, '\n', static_cast<std::size_t>(end - from))) + 1;
}

/// Just behind the last line feed, `from` when there is none.
const char* behind_last_line_feed(const char* from, const char* end) {
  // Blocks without any are found fast; otherwise the last one is a line's length away.
  if (from == end || std::memchr(from, '\n', static_cast<std::size_t>(end - from)) == nullptr) return from;
  while (end[-1] != '\n') --end;
  return end;
}

/// A line without its line feed and a carriage return just before it.
std::string_view text_of(const char* line, const char* line_end) {
  std::string_view text(line, static_cast<std::size_t>(line_end - line) - 1);
  if (text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

class Scan {
 public:
  Scan(platform::File& file, std::int64_t from, std::int64_t limit, std::string_view separator, ExtentSink& sink,
       const ScanOptions& options)
      : file_(file),
        separator_(separator),
        options_(options),
        search_(line_search(options.search)),
        separator_is_plain_(!separator.empty() && separator.find_first_of("\r\n") == std::string_view::npos),
        prefix_kept_(separator.size() + 1),
        block_offset_((prefix_kept_ + WipedStorage::kAlignment - 1) & ~(WipedStorage::kAlignment - 1)),
        tally_(from, limit, sink),
        read_position_(from),
        chunk_(options.first_chunk) {}

  ScanResult run() {
    while (!tally_.at_limit() && read_chunk()) {
    }
    tally_.finish();
    return {tally_.position(), tally_.at_limit() && !read_failed_, ran_ahead_};
  }

 private:
  /// Reads one chunk and counts its lines. False at the end of the stream.
  bool read_chunk() {
    reserve_block();
    std::int64_t left = chunk_;
    bool line_feed_came = false;
    while (left > 0 && !tally_.at_limit()) {
      const std::int64_t wanted = std::min(left, options_.read_at_once);
      const std::int64_t got = read_block(wanted);
      if (got > 0 && take_lines(got)) line_feed_came = true;
      left -= got;
      if (got < wanted) break;
    }
    if (left == chunk_) {
      count_last_line();
      return false;
    }
    if (!line_feed_came) count_held_bytes();
    if (chunk_ < options_.chunk_doubles_below) chunk_ *= 2;
    return true;
  }

  std::int64_t read_block(std::int64_t wanted) {
    if (read_failed_) return 0;
    const std::size_t got = file_.read(read_position_, block(), static_cast<std::size_t>(wanted));
    read_failed_ = static_cast<std::int64_t>(got) < wanted && file_.failed();
    read_position_ += static_cast<std::int64_t>(got);
    return static_cast<std::int64_t>(got);
  }

  /// Makes the storage large enough for the kept bytes and one block of the chunk.
  void reserve_block() {
    const std::size_t needed = block_offset_ + static_cast<std::size_t>(std::min(chunk_, options_.read_at_once));
    if (storage_.size() >= needed) return;
    try {
      WipedStorage larger(needed, options_.memory);
      if (kept_ > 0) std::memcpy(larger.data() + block_offset_ - kept_, kept(), kept_);
      storage_ = std::move(larger);
    } catch (const std::bad_alloc&) {
      tally_.finish();
      throw Error(ErrorNumber::scan_out_of_memory, Reporter::messages);
    }
  }

  /// Counts the lines that `got` new bytes behind the kept ones complete, and keeps what the next line needs. False
  /// when no line feed came.
  bool take_lines(std::int64_t got) {
    const char* begin = kept();
    const char* end = block() + got;
    const char* lines_end = behind_last_line_feed(block(), end);
    if (lines_end == block()) {
      keep(begin, held_ + got);
      return false;
    }
    ran_ahead_ |= held_counted_;
    held_counted_ = false;
    const char* line = begin;
    if (held_ > static_cast<std::int64_t>(kept_)) {
      line = behind_next_line_feed(block(), lines_end);
      tally_.add(held_ - static_cast<std::int64_t>(kept_) + (line - begin), 1, matches(text_of(begin, line)));
    }
    count_lines(line, lines_end);
    keep(lines_end, end - lines_end);
    return true;
  }

  /// Counts whole lines until the limit is reached.
  void count_lines(const char* begin, const char* end) {
    if (tally_.at_limit()) return;
    const char* line = begin;
    if (separator_is_plain_) {
      const char* below_limit =
          behind_last_line_feed(begin, begin + std::min<std::int64_t>(end - begin, tally_.below_limit()));
      count_messages(begin, below_limit);
      line = below_limit;
    }
    while (line < end && !tally_.at_limit()) {
      const char* next = behind_next_line_feed(line, end);
      tally_.add(next - line, 1, matches(text_of(line, next)));
      line = next;
    }
  }

  /// Counts whole lines that all end at or below the limit, message by message.
  void count_messages(const char* begin, const char* end) {
    const LinePrefix prefix{separator_.data(), static_cast<std::int64_t>(separator_.size())};
    bool first_matches = matches({begin, static_cast<std::size_t>(end - begin)});
    for (const char* line = begin; line < end;) {
      const FoundLine next = search_(line, end, prefix);
      tally_.add(next.line - line, next.lines_before, first_matches);
      line = next.line;
      first_matches = true;
    }
  }

  /// A chunk without a line feed counts everything held as a line and keeps it, so that the whole line counts it once
  /// more. Deliberate; held by the test a_line_longer_than_a_chunk_is_counted_as_held_and_again_as_a_whole.
  void count_held_bytes() {
    tally_.add(held_, 1, matches({kept(), kept_}));
    ran_ahead_ |= held_counted_;
    held_counted_ = true;
  }

  void count_last_line() {
    if (held_ > 0 && !held_counted_) count_held_bytes();
  }

  /// Holds a line that is not complete. Only as much of its text stays as decides whether it matches.
  void keep(const char* line, std::int64_t length) {
    held_ = length;
    kept_ = static_cast<std::size_t>(std::min<std::int64_t>(length, static_cast<std::int64_t>(prefix_kept_)));
    std::memmove(kept(), line, kept_);
  }

  char* block() noexcept { return storage_.data() + block_offset_; }
  char* kept() noexcept { return block() - kept_; }

  bool matches(std::string_view text) const noexcept { return text.starts_with(separator_); }

  platform::File& file_;
  const std::string_view separator_;
  const ScanOptions& options_;
  const LineSearch search_;
  const bool separator_is_plain_;
  /// One byte more than the separator: a carriage return there, taken for a part of the line end, leaves the separator.
  const std::size_t prefix_kept_;
  /// Where in the storage a block is read to, right behind the kept bytes. Aligned, because the system copies to an
  /// aligned address up to five times as fast.
  const std::size_t block_offset_;
  Tally tally_;
  WipedStorage storage_;
  std::int64_t read_position_;
  std::int64_t chunk_;
  std::int64_t held_ = 0;
  std::size_t kept_ = 0;
  bool held_counted_ = false;
  bool ran_ahead_ = false;
  bool read_failed_ = false;
};

}  // namespace

ScanResult scan(platform::File& file, std::int64_t from, std::int64_t limit, std::string_view separator,
                ExtentSink& sink, const ScanOptions& options) {
  return Scan(file, from, limit, separator, sink, options).run();
}

}  // namespace vellobar::mailbox
