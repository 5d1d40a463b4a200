#include "mime/part_outline.h"

#include <algorithm>
#include <cstring>
#include <memory_resource>
#include <optional>
#include <utility>

#include "headers/header_block.h"
#include "headers/headers.h"
#include "mailbox/line_buffer.h"
#include "mailbox/scanner.h"
#include "mailbox/scanner_search.h"
#include "mime/ascii.h"
#include "mime/boundary.h"
#include "mime/delimiter_set.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::mime {

namespace {

constexpr std::string_view kDashes = "--";
/// A line this long can fill a chunk of the scan, and is too long for a header block.
constexpr std::int64_t kTooLong = static_cast<std::int64_t>(headers::kLongestLine);
constexpr std::int64_t kBlock = std::int64_t{256} * 1024;

int plain_splittings = 0;

/// What a collection with this delimiter compares lines with.
std::string separator_of(std::string_view delimiter) {
  return platform::narrow(platform::process_code_page(), platform::widen(platform::kThreadCodePage, delimiter));
}

/// The header lines of a part as they come by, as far as they tell its boundary.
class HeaderLines {
 public:
  enum class State { more, over, none };

  void restart() {
    has_any_ = false;
    last_is_type_ = false;
    types_.reset();
  }

  /// Takes a line. `none` when the block ends before it began, so that the line is text.
  State take(std::string_view text) {
    text = text.substr(0, text.find('\r'));
    if (text.empty()) return State::over;
    if (text.front() == ' ' || text.front() == '\t') return continue_last(text);
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return State::more;
    has_any_ = true;
    constexpr std::string_view kName = "content-type";
    last_is_type_ = colon == kName.size() && starts_with_ignoring_case(text, kName);
    if (!last_is_type_) return State::more;
    if (!types_) types_.emplace();
    types_->add_line(text);
    return State::more;
  }

  std::string delimiter() const { return types_ ? delimiter_of(*types_) : std::string(); }

 private:
  State continue_last(std::string_view text) {
    if (!has_any_) return State::none;
    if (last_is_type_) types_->continue_last(text);
    return State::more;
  }

  bool has_any_ = false;
  bool last_is_type_ = false;
  std::optional<CHeaders> types_;
};

}  // namespace

/// Takes the lines one after the other and keeps the multiparts that are open. What a line means is asked of the
/// outermost one first: where it goes on, everything inside it has ended.
class OutlineReader {
 public:
  OutlineReader(platform::File& file, std::int64_t from, std::int64_t limit, std::string_view separator)
      : file_(file), limit_(limit), position_(from), read_position_(from), outline_(std::make_shared<PartOutline>()) {
    open_multipart(separator);
  }

  std::shared_ptr<PartOutline> read() && {
    reserve();
    while (position_ < limit_) {
      const Block block = next_block();
      if (block == Block::refused) return nullptr;
      if (block == Block::end) break;
      if (!take_lines()) return nullptr;
    }
    if (file_.failed() || is_refused_) return nullptr;
    close_multiparts(1);
    if (levels_.front().open != kNone) drop_from(levels_.front().open);
    outline_->end_ = position_;
    outline_->is_whole_ = position_ >= limit_;
    return std::move(outline_);
  }

 private:
  using Node = PartOutline::Node;
  using Multipart = PartOutline::Multipart;
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  enum class Block { read, end, refused };
  enum class Place { headers, preamble, text };

  /// A multipart whose parts are being read.
  struct Level {
    std::size_t node;  ///< kNone for the message itself
    std::size_t open;  ///< its part that is being read; kNone before the first
    std::int64_t scan_start;
  };

  // ---- Lines

  void reserve() {
    const std::int64_t wanted = std::clamp<std::int64_t>(limit_ - position_ + kTooLong, 2 * kTooLong, kBlock);
    storage_ = mailbox::WipedStorage(static_cast<std::size_t>(wanted), std::pmr::new_delete_resource());
  }

  /// Reads behind the bytes that are held. `end` when the file has no more and nothing is held.
  Block next_block() {
    if (held_ >= kTooLong && !skip_long_line()) return Block::refused;
    const std::int64_t got = read_more();
    is_last_ = got == 0;
    return got == 0 && held_ == 0 ? Block::end : Block::read;
  }

  std::int64_t read_more() {
    const std::int64_t room = static_cast<std::int64_t>(storage_.size()) - held_;
    const std::int64_t below_limit = limit_ - read_position_;
    const std::int64_t wanted = std::min(room, below_limit > 0 ? below_limit : kTooLong);
    const std::int64_t got = static_cast<std::int64_t>(
        file_.read(read_position_, storage_.data() + held_, static_cast<std::size_t>(wanted)));
    read_position_ += got;
    held_ += got;
    return got;
  }

  /// False when the plain form has to answer for a line.
  bool take_lines() {
    const char* line = storage_.data();
    const char* end = line + held_;
    const char* lines_end = behind_last_line(line, end);
    while (line < end && position_ < limit_) {
      const char* next = next_line(line, end);
      if (next == nullptr) break;
      const std::string_view text(line, static_cast<std::size_t>(next - line));
      if (next - line < kTooLong) {
        take_line(text);
      } else if (!take_long_line(text, next - line)) {
        return false;
      }
      line = next;
      if (is_in_text() && line < lines_end && !is_dashes(line, lines_end)) {
        line = pass_text(line, lines_end);
        if (line == nullptr) return false;
      }
    }
    held_ = end - line;
    std::memmove(storage_.data(), line, static_cast<std::size_t>(held_));
    return true;
  }

  /// Just behind the last line that is whole and ends at or below the limit.
  const char* behind_last_line(const char* begin, const char* end) const {
    end = begin + std::min<std::int64_t>(end - begin, limit_ - position_);
    while (end > begin && end[-1] != '\n') --end;
    return end;
  }

  /// Just behind the line, null when it is not finished yet.
  const char* next_line(const char* line, const char* end) const {
    const void* feed = std::memchr(line, '\n', static_cast<std::size_t>(end - line));
    if (feed != nullptr) return static_cast<const char*>(feed) + 1;
    return is_last_ ? end : nullptr;
  }

  /// In the text or preamble of a part, where a line that does not begin with two hyphens means nothing.
  bool is_in_text() const { return place_ != Place::headers && levels_.back().open != kNone; }

  static bool is_dashes(const char* line, const char* end) {
    return end - line >= 2 && line[0] == '-' && line[1] == '-';
  }

  /// Passes lines of text up to one that begins with two hyphens. Null when the plain form has to answer.
  const char* pass_text(const char* line, const char* lines_end) {
    const mailbox::FoundLine found = search_(line, lines_end, {kDashes.data(), 2});
    if (!take_long_lines_of_text(line, found.line)) return nullptr;
    position_ += found.line - line;
    lines_ += found.lines_before;
    return found.line;
  }

  /// Takes what the long lines among these do to the levels. Looks for them without looking at every line: a window
  /// that holds a line end breaks none.
  bool take_long_lines_of_text(const char* line, const char* end) {
    std::int64_t position = position_;
    while (end - line >= kTooLong) {
      const char* next = line + kTooLong - 1;
      while (next > line && next[-1] != '\n') --next;
      if (next == line) {
        next = next_line(line, end);
        if (!leave_levels_that_run_ahead(position, position + (next - line) - 1)) return false;
      }
      position += next - line;
      line = next;
    }
    return true;
  }

  /// The outermost level whose scan in the plain form reads a whole chunk inside the line, so that it counts it twice;
  /// kNone when no scan does.
  std::size_t outermost_that_runs_ahead(std::int64_t line, std::int64_t line_feed) const {
    const mailbox::ScanOptions rule;
    const auto found = std::find_if(levels_.begin(), levels_.end(), [&](const Level& level) {
      std::int64_t chunk = rule.first_chunk;
      for (std::int64_t begin = level.scan_start; begin + chunk <= line_feed;) {
        if (begin >= line) return true;
        begin += chunk;
        if (chunk < rule.chunk_doubles_below) chunk *= 2;
      }
      return false;
    });
    return found == levels_.end() ? kNone : static_cast<std::size_t>(found - levels_.begin());
  }

  /// Leaves the multiparts whose positions run ahead in a line to the plain form: from here on they are text of the
  /// part that holds them. False when the message itself is among them.
  bool leave_levels_that_run_ahead(std::int64_t line, std::int64_t line_feed) {
    const std::size_t level = outermost_that_runs_ahead(line, line_feed);
    if (level == kNone) return true;
    if (level == 0) return false;
    const std::size_t node = levels_[level].node;
    outline_->multiparts_.cut(outline_->nodes_[node].multiparts_before);
    outline_->nodes_.cut(node + 1);
    close_levels(level);
    place_ = Place::text;
    return true;
  }

  /// Passes a line longer than what is held of it, all of which it is.
  bool skip_long_line() {
    const std::string start(storage_.data(), static_cast<std::size_t>(kTooLong));
    std::int64_t length = 0;
    for (const char* next = nullptr; next == nullptr;) {
      length += std::exchange(held_, 0);
      if (read_more() == 0) break;
      next = next_line(storage_.data(), storage_.data() + held_);
      if (next == nullptr) continue;
      const std::int64_t last = next - storage_.data();
      length += last;
      held_ -= last;
      std::memmove(storage_.data(), next, static_cast<std::size_t>(held_));
    }
    return take_long_line(start, length);
  }

  // ---- What a line means

  void take_line(std::string_view line) {
    const std::int64_t start = position_;
    position_ += static_cast<std::int64_t>(line.size());
    ++lines_;
    std::string_view text = line;
    if (text.ends_with('\n')) {
      text.remove_suffix(1);
      if (text.ends_with('\r')) text.remove_suffix(1);
    }
    if (begin_part_at_delimiter(text, start)) return;
    if (levels_.back().open == kNone) begin_part(start, false);
    if (place_ == Place::headers) {
      take_header_line(text);
    } else if (place_ == Place::preamble && text == delimiter_) {
      open_preamble(start);
    }
  }

  /// Takes a line that is too long for a header block, of which `text` is the start. A part with such a header line is
  /// unreadable and has no parts; one with such a delimiter line is read by the plain form. False when that has to
  /// answer for all of the message.
  bool take_long_line(std::string_view text, std::int64_t length) {
    if (!leave_levels_that_run_ahead(position_, position_ + length - 1)) return false;
    const std::int64_t start = position_;
    position_ += length;
    ++lines_;
    if (begin_part_at_delimiter(text, start)) {
      place_ = Place::text;
      return true;
    }
    if (levels_.back().open == kNone) begin_part(start, false);
    if (place_ == Place::headers) place_ = Place::text;
    return true;
  }

  /// False when the line is no delimiter.
  bool begin_part_at_delimiter(std::string_view text, std::int64_t start) {
    if (!text.starts_with(kDashes)) return false;
    const std::size_t level = delimiters_.outermost_match(text);
    if (level == DelimiterSet::kNone) return false;
    close_multiparts(level + 1);
    if (levels_.back().open != kNone) end_part(start, lines_ - 1);
    begin_part(start, true);
    return true;
  }

  void take_header_line(std::string_view text) {
    const HeaderLines::State state = header_.take(text);
    if (state == HeaderLines::State::more) return;
    place_ = Place::text;
    if (state == HeaderLines::State::none) return;
    delimiter_ = header_.delimiter();
    if (delimiter_.empty()) return;
    place_ = Place::preamble;
    body_start_ = position_;
  }

  void open_preamble(std::int64_t start) {
    const std::size_t node = levels_.back().open;
    outline_->multiparts_.push_back({body_start_, start, node});
    open_multipart(separator_of(delimiter_), node);
  }

  // ---- The tree

  void open_multipart(std::string_view separator, std::size_t node = kNone) {
    // A separator that the code pages have changed beyond recognition is a matter for the plain form.
    if (!separator.starts_with(kDashes)) is_refused_ = true;
    delimiters_.push(separator);
    levels_.push_back({node, kNone, position_});
  }

  void begin_part(std::int64_t start, bool has_separator) {
    levels_.back().open = outline_->nodes_.size();
    if (levels_.back().open == PartOutline::kMostNodes) is_refused_ = true;
    const std::int64_t lines_before = lines_ - 1;
    const mailbox::Extent begun{start, start, lines_before, has_separator};
    outline_->nodes_.push_back({mailbox::PackedExtent(begun), 0, position_of(outline_->multiparts_.size())});
    place_ = Place::headers;
    header_.restart();
  }

  /// Ends the part being read of the innermost multipart.
  void end_part(std::int64_t end, std::int64_t lines) {
    Node& node = outline_->nodes_[levels_.back().open];
    mailbox::Extent extent = node.extent.extent();
    extent.end = end;
    extent.lines = lines - extent.lines;
    node.extent = mailbox::PackedExtent(extent);
    node.subtree_end = position_of(outline_->nodes_.size());
  }

  /// Closes multiparts until this many are open. The last part of each is never a part.
  void close_multiparts(std::size_t remaining) {
    while (levels_.size() > remaining) {
      if (levels_.back().open != kNone) drop_from(levels_.back().open);
      close_levels(levels_.size() - 1);
    }
  }

  void close_levels(std::size_t remaining) {
    for (; levels_.size() > remaining; levels_.pop_back()) delimiters_.pop();
  }

  void drop_from(std::size_t node) {
    outline_->multiparts_.cut(outline_->nodes_[node].multiparts_before);
    outline_->nodes_.cut(node);
  }

  static PartOutline::Position position_of(std::size_t size) { return static_cast<PartOutline::Position>(size); }

  platform::File& file_;
  const std::int64_t limit_;
  std::int64_t position_;
  std::int64_t read_position_;
  std::shared_ptr<PartOutline> outline_;
  mailbox::WipedStorage storage_;
  std::int64_t held_ = 0;
  bool is_last_ = false;
  bool is_refused_ = false;
  const mailbox::LineSearch search_ = mailbox::line_search(mailbox::best_search_level());
  std::int64_t lines_ = 0;
  DelimiterSet delimiters_;
  std::vector<Level> levels_;
  // The part being read.
  Place place_ = Place::headers;
  HeaderLines header_;
  std::string delimiter_;
  std::int64_t body_start_ = 0;
};

std::shared_ptr<PartOutline> PartOutline::read(platform::File& file, std::int64_t from, std::int64_t limit,
                                               std::string_view separator) {
  if (plain_splittings > 0) return nullptr;
  return OutlineReader(file, from, limit, separator).read();
}

void PartOutline::take_parts(mailbox::ExtentSink& sink) {
  if (has_multiparts()) return children(0, nodes_.size(), sink);
  nodes_.hand_over([&](const Node& node) { sink.found(node.extent.extent()); });
}

void PartOutline::children(std::size_t begin, std::size_t end, mailbox::ExtentSink& sink) const {
  for (std::size_t i = begin; i < end; i = nodes_[i].subtree_end) sink.found(nodes_[i].extent.extent());
}

const PartOutline::Multipart* PartOutline::find(std::int64_t start, std::int64_t body_start) const {
  const auto found = std::lower_bound(multiparts_.begin(), multiparts_.end(), body_start,
                                      [](const Multipart& m, std::int64_t at) { return m.body_start < at; });
  if (found == multiparts_.end() || found->body_start != body_start) return nullptr;
  return nodes_[found->node].extent.start() == start ? &*found : nullptr;
}

PlainSplitting::PlainSplitting() { ++plain_splittings; }

PlainSplitting::~PlainSplitting() { --plain_splittings; }

}  // namespace vellobar::mime
