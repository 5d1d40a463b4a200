#include "command/mail/message_check.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "command/mail/mailbox_file.h"
#include "command/mail/open_multiparts.h"
#include "command/mail/separator_form.h"
#include "headers/header_block.h"
#include "headers/headers.h"
#include "mime/boundary.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

constexpr std::size_t kShortDelimiter = 5;  // "--" and three characters

class MessageCheck {
 public:
  MessageCheck(const MailboxFile& mailbox, std::int64_t index, const FindingSink& tell)
      : index_(index),
        is_last_(index + 1 == mailbox.count()),
        extent_(mailbox.extent(index)),
        reader_(mailbox.file(), extent_.start),
        tell_(tell),
        multiparts_([this](const std::string& delimiter, bool has_parts) { not_closed(delimiter, has_parts); }) {}

  void run() {
    check_separator_line();
    CHeaders headers;
    if (!check_headers(headers)) return;
    open_multipart(headers);
    if (!multiparts_.is_empty()) check_parts();
  }

 private:
  bool is_at_end() const { return reader_.position() >= extent_.end; }

  void found(FindingKind kind, std::int64_t position, std::string_view detail = {}) {
    constexpr std::size_t kLongestDetail = 200;
    tell_({kind, index_, position, std::string(detail.substr(0, kLongestDetail))});
  }

  /// The next whole line, cut to its first piece, and where it begins.
  std::string_view next_line() {
    line_start_ = reader_.position();
    std::string_view line = reader_.next();
    if (line.size() < headers::kLongestLine || line.ends_with('\n')) return line;
    first_piece_ = line;
    while (!line.empty() && !line.ends_with('\n') && !is_at_end()) line = reader_.next();
    return first_piece_;
  }

  void check_separator_line() {
    if (!extent_.has_separator) {
      found(FindingKind::text_before_first_message, extent_.start);
      return;
    }
    separator_ = headers::cut_line(next_line());
  }

  /// The separator line is judged by what follows it, too: text goes on as text.
  void judge_separator_line(std::string_view next) {
    if (!extent_.has_separator) return;
    const bool has_headers = next.empty() || looks_like_header_line(next) || next.starts_with(">From ");
    is_doubtful_ = !looks_like_separator_line(separator_) || !has_headers;
    if (!is_doubtful_) return;
    found(FindingKind::doubtful_separator_line, extent_.start, separator_);
  }

  /// Reads the header block. False when it cannot be read or has no text behind it.
  bool check_headers(CHeaders& headers) {
    bool is_first = true;
    while (!is_at_end()) {
      const std::string_view whole = next_line();
      const std::string_view line = headers::cut_line(whole);
      if (is_first) judge_separator_line(line);
      if (whole.size() >= headers::kLongestLine) {
        found(FindingKind::long_header_line, line_start_, line.substr(0, 40));
        return false;
      }
      if (line.empty()) return true;
      if (!take_header_line(line, headers)) {
        if (is_first) found(FindingKind::headers_begin_with_blank, line_start_);
        return false;
      }
      is_first = false;
    }
    if (is_first) judge_separator_line({});
    // Text that was taken for a message has no headers to end.
    if (!is_last_ && !is_doubtful_) found(FindingKind::headers_without_end, extent_.end);
    return false;
  }

  /// False for a continuation line that continues nothing.
  static bool take_header_line(std::string_view line, CHeaders& headers) {
    if (line.front() != ' ' && line.front() != '\t') {
      headers.add_line(line);
    } else if (headers.Count() > 0) {
      headers.continue_last(line);
    } else {
      return false;
    }
    return true;
  }

  void open_multipart(const CHeaders& headers) {
    const std::string delimiter = mime::delimiter_of(headers);
    if (delimiter.empty()) return;
    if (delimiter.size() <= kShortDelimiter) found(FindingKind::short_boundary, extent_.start, delimiter);
    multiparts_.open(delimiter);
  }

  void check_parts() {
    while (!is_at_end()) {
      const std::string_view line = headers::cut_line(next_line());
      if (multiparts_.take(line) == OpenMultiparts::Line::part_begins) read_part_headers();
    }
    line_start_ = extent_.end;
    multiparts_.end();
  }

  /// The headers of a part may say that it has parts of its own. A delimiter line among them begins the next part.
  void read_part_headers() {
    CHeaders headers;
    while (!is_at_end()) {
      const std::string_view whole = next_line();
      const std::string_view line = headers::cut_line(whole);
      const OpenMultiparts::Line kind = multiparts_.take(line);
      if (kind == OpenMultiparts::Line::parts_end) return;
      if (kind == OpenMultiparts::Line::part_begins) {
        headers.RemoveAll();
        continue;
      }
      if (line.empty()) return open_multipart(headers);
      if (whole.size() >= headers::kLongestLine || !take_header_line(line, headers)) return;
    }
  }

  void not_closed(const std::string& delimiter, bool has_parts) {
    if (has_parts) {
      found(FindingKind::missing_closing_delimiter, line_start_, delimiter + "--");
    } else {
      found(FindingKind::boundary_without_parts, extent_.start, delimiter);
    }
  }

  const std::int64_t index_;
  const bool is_last_;
  const mailbox::Extent extent_;
  headers::LineReader reader_;
  const FindingSink& tell_;
  OpenMultiparts multiparts_;
  std::string separator_;
  std::string first_piece_;
  std::int64_t line_start_ = 0;
  bool is_doubtful_ = false;
};

}  // namespace

void check_message(const MailboxFile& mailbox, std::int64_t index, const FindingSink& tell) {
  MessageCheck(mailbox, index, tell).run();
}

}  // namespace vellobar::command
