#include "mime/body_text.h"

#include <algorithm>

#include "platform/file.h"

namespace vellobar::mime {

namespace {

constexpr std::int64_t kFirstBlock = 16 * 1024;
constexpr std::int64_t kLargestBlock = 256 * 1024;

/// A line without its line end.
std::string_view text_of(std::string_view line) {
  if (!line.ends_with('\n')) return line;
  line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

class Reader {
 public:
  Reader(platform::File& file, std::int64_t from, std::int64_t end, std::string_view delimiter)
      : file_(file), delimiter_(delimiter), from_(from), limit_(file.size()), end_(std::min(end, limit_)) {}

  BodyText read() && {
    std::int64_t block = delimiter_.empty() ? std::max<std::int64_t>(end_ - from_, 0) : kFirstBlock;
    while (position() < end_) {
      if (!append(std::min(block, end_ - position()))) break;
      if (take_whole_lines()) return std::move(found_);
      block = std::min(2 * block, kLargestBlock);
    }
    read_rest_of_line();
    take_line(found_.bytes.size());
    return std::move(found_);
  }

 private:
  std::int64_t position() const { return from_ + static_cast<std::int64_t>(found_.bytes.size()); }

  /// False when the file has no more than it gave.
  bool append(std::int64_t wanted) {
    const std::size_t held = found_.bytes.size();
    found_.bytes.resize(held + static_cast<std::size_t>(wanted));
    const std::size_t got = file_.read(from_ + static_cast<std::int64_t>(held), found_.bytes.data() + held,
                                       static_cast<std::size_t>(wanted));
    found_.bytes.resize(held + got);
    found_.is_cut_short = static_cast<std::int64_t>(got) < wanted;
    return !found_.is_cut_short;
  }

  /// Lengthens a last line that begins before the end and runs on behind it.
  void read_rest_of_line() {
    char block[4096];
    while (position() < limit_ && !found_.bytes.empty() && !found_.bytes.ends_with('\n')) {
      const std::int64_t wanted = std::min<std::int64_t>(sizeof block, limit_ - position());
      const std::string_view got(block, file_.read(position(), block, static_cast<std::size_t>(wanted)));
      if (got.empty()) return;
      found_.bytes += got.substr(0, std::min(got.find('\n'), got.size() - 1) + 1);
    }
  }

  /// Looks at the lines that are complete by now. True when the opening delimiter is among them.
  bool take_whole_lines() {
    if (delimiter_.empty()) return false;
    for (;;) {
      const std::size_t feed = found_.bytes.find('\n', unfinished_);
      if (feed == std::string::npos) break;
      if (take_line(feed + 1)) return true;
    }
    unfinished_ = found_.bytes.size();
    return false;
  }

  /// Looks at the line that ends here. When it is the opening delimiter, the text ends in front of it.
  bool take_line(std::size_t line_end) {
    const std::string_view line = std::string_view(found_.bytes).substr(line_, line_end - line_);
    if (delimiter_.empty() || text_of(line) != delimiter_) {
      line_ = unfinished_ = line_end;
      return false;
    }
    found_.parts_start = from_ + static_cast<std::int64_t>(line_end);
    found_.bytes.resize(line_);
    return true;
  }

  platform::File& file_;
  const std::string_view delimiter_;
  const std::int64_t from_;
  const std::int64_t limit_;
  const std::int64_t end_;
  BodyText found_;
  std::size_t line_ = 0;        ///< where the line begins that was not looked at yet
  std::size_t unfinished_ = 0;  ///< up to here it has no line feed
};

}  // namespace

BodyText read_body_text(platform::File& file, std::int64_t from, std::int64_t end, std::string_view delimiter) {
  return Reader(file, from, end, delimiter).read();
}

}  // namespace vellobar::mime
