#include "command/mail/appending.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "command/mail/mailbox_file.h"
#include "command/mail/message_date.h"
#include "mailbox/message.h"
#include "mailbox/separator_line.h"
#include "platform/ascii.h"

namespace vellobar::command {

namespace {

constexpr const char* kDayNames[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonthNames[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

bool is_plain_word(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

std::string ascii_or_nothing(std::u16string_view text) {
  return platform::ascii_length(text) == text.size() ? platform::narrow_ascii(text) : std::string();
}

}  // namespace

std::string separator_line(std::string_view sender, const platform::BrokenDownTime& utc) {
  char date[80];
  std::snprintf(date, sizeof date, " %s %s %2d %02d:%02d:%02d %04d", kDayNames[utc.day_of_week % 7],
                kMonthNames[(utc.month + 11) % 12], utc.day, utc.hour, utc.minute, utc.second, utc.year);
  return std::string(mailbox::kSeparator) + std::string(is_plain_word(sender) ? sender : "MAILER-DAEMON") + date;
}

void QuotingSink::write(std::string_view bytes) {
  std::size_t passed = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    if (is_open_ && bytes[at] == mailbox::kSeparator[matched_]) {
      // Held back until it is decided; what came before it in this piece goes first.
      to_.write(bytes.substr(passed, at - passed));
      passed = at + 1;
      if (++matched_ < mailbox::kSeparator.size()) continue;
      to_.write(">");
    }
    if (matched_ > 0) {
      to_.write(mailbox::kSeparator.substr(0, matched_));
      matched_ = 0;
    }
    is_open_ = bytes[at] == '\n';
    if (is_open_) continue;
    const std::size_t feed = bytes.find('\n', at);
    if (feed == bytes.npos) break;
    at = feed;
    is_open_ = true;
  }
  to_.write(bytes.substr(passed));
}

void QuotingSink::end() {
  to_.write(mailbox::kSeparator.substr(0, matched_));
  matched_ = 0;
}

void Appender::write(std::string_view bytes) {
  constexpr std::size_t kTold = 3;
  to_.write(bytes);
  last_ += bytes.substr(bytes.size() - std::min(bytes.size(), kTold));
  if (last_.size() > kTold) last_.erase(0, last_.size() - kTold);
}

void Appender::begin_message() {
  if (last_.empty()) return;
  if (!last_.ends_with('\n')) write(line_end_);
  if (!last_.ends_with("\n\n") && !last_.ends_with("\n\r\n")) write(line_end_);
}

void Appender::write_separator_of(CMessage& message) {
  const std::optional<double> date = date_of(message);
  const platform::BrokenDownTime utc = date ? in_utc(*date) : platform::read_clock().utc;
  write(separator_line(ascii_or_nothing(message.FromEmail()), utc) + line_end_);
}

void Appender::add(const MailboxFile& from, std::int64_t index) {
  begin_message();
  if (!from.extent(index).has_separator) write_separator_of(*from.message(index));
  from.copy(index, *this);
  begin_message();
}

void Appender::add(platform::File& message_file) {
  begin_message();
  const auto message = std::make_shared<CMessage>(
      nullptr, nullptr, std::shared_ptr<platform::File>(&message_file, [](platform::File*) {}),
      mailbox::Extent{0, message_file.size(), 0, false});
  write_separator_of(*message);
  QuotingSink quoting(*this);
  platform::copy_bytes(message_file, 0, message_file.size(), quoting);
  quoting.end();
  begin_message();
}

}  // namespace vellobar::command
