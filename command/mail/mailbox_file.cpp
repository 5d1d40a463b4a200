#include "command/mail/mailbox_file.h"

#include <system_error>
#include <utility>

#include "command/mail/counted.h"
#include "command/output/failure.h"
#include "command/output/path.h"
#include "command/output/standard_streams.h"
#include "mailbox/message.h"
#include "mailbox/owner.h"
#include "mailbox/scanner.h"
#include "mailbox/separator_line.h"
#include "platform/file.h"
#include "platform/overwriting.h"

namespace vellobar::command {

std::shared_ptr<platform::File> open_mail(const std::string& path) {
  if (is_standard_stream(path)) return standard_input();
  try {
    platform::finish_interrupted_replacement(system_path(path));
  } catch (const std::system_error&) {
    throw Failure("cannot open mailbox " + path + ": an interrupted update of it cannot be finished");
  }
  std::shared_ptr<platform::File> file = platform::File::open(system_path(path));
  if (!file) throw Failure("cannot open mailbox " + path + ": " + why_unreadable(path));
  return file;
}

MailboxFile::MailboxFile(const std::string& path) : MailboxFile(path, open_mail(path)) {}

MailboxFile::MailboxFile(std::string path, std::shared_ptr<platform::File> file)
    : path_(std::move(path)), file_(std::move(file)) {
  mailbox::ScanOptions options;
  options.first_chunk = kEndlessChunk;
  const mailbox::ScanResult scanned = mailbox::scan(*file_, 0, file_->size(), mailbox::kSeparator, extents_, options);
  if (!scanned.whole) throw Failure("cannot read mailbox " + path_ + " to its end");
}

std::int64_t MailboxFile::size() const { return file_->size(); }

std::string MailboxFile::described_count() const { return "holds " + counted_messages(count()) + ", counted from 0"; }

std::shared_ptr<CMessage> MailboxFile::message(std::int64_t index) const {
  // An owner of its own, without a control: it lets go of parts that nobody holds, and goes with the message.
  auto owner = std::make_shared<Owner>();
  owner->recent.allow_for(extent(index).end - extent(index).start);
  return std::make_shared<CMessage>(std::move(owner), nullptr, file_, extent(index));
}

void MailboxFile::copy(std::int64_t index, platform::ByteSink& to) const {
  copy_range(extent(index).start, extent(index).end, to);
}

void MailboxFile::copy_range(std::int64_t from, std::int64_t to, platform::ByteSink& sink) const {
  try {
    platform::copy_bytes(*file_, from, to, sink);
  } catch (const std::system_error&) {
    if (!file_->failed()) throw;
    throw Failure("cannot read mailbox " + path_ + " to its end");
  }
}

bool MailboxFile::is_as_indexed() const {
  if (!file_->is_same_file(system_path(path_)) || file_->current_size() < file_->size()) return false;
  for (const mailbox::Extent& extent : extents_) {
    // The line end before it counts as well, where there is one: the same letters inside a line begin no message.
    const bool has_line_before = extent.start > 0;
    const std::string expected = std::string(has_line_before ? "\n" : "").append(mailbox::kSeparator);
    std::string bytes(expected.size(), '\0');
    const std::int64_t from = extent.start - (has_line_before ? 1 : 0);
    if (extent.has_separator && (file_->read(from, bytes.data(), bytes.size()) != bytes.size() || bytes != expected)) {
      return false;
    }
  }
  return true;
}

}  // namespace vellobar::command
