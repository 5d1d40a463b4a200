#include "command/mail/mailbox_rewrite.h"

#include <cstdint>
#include <system_error>

#include "command/mail/mailbox_file.h"
#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "command/output/output.h"
#include "command/output/path.h"
#include "command/output/progress_bar.h"
#include "command/output/standard_streams.h"
#include "platform/file_replacement.h"

namespace vellobar::command {

namespace {

using platform::FileReplacement;

/// Passes everything on, and shows how much of the mailbox was written.
class ShownSink final : public platform::ByteSink {
 public:
  ShownSink(platform::ByteSink& to, std::int64_t total) : to_(to), bar_("writing"), total_(total) {}

  void write(std::string_view bytes) override {
    to_.write(bytes);
    written_ += static_cast<std::int64_t>(bytes.size());
    bar_.show(written_, total_);
  }

 private:
  platform::ByteSink& to_;
  ProgressBar bar_;
  std::int64_t total_;
  std::int64_t written_ = 0;
};

/// Copies what was appended to the file behind `position`. Returns how far it came.
std::int64_t copy_appended_mail(platform::File& file, std::int64_t position, platform::ByteSink& to) {
  const std::int64_t end = file.current_size();
  if (position < end) platform::copy_bytes(file, position, end, to);
  return end;
}

void rewrite(const MailboxFile& mailbox, FileReplacement::Staging where,
             const std::function<void(platform::ByteSink&)>& write_content) {
  FileReplacement replacement(system_path(mailbox.path()), where);
  {
    ShownSink sink(replacement, mailbox.size());
    write_content(sink);
  }
  // Most of the waiting comes before the lock, which keeps others from delivering mail.
  replacement.sync();
  replacement.lock();
  if (!mailbox.is_as_indexed()) {
    throw Failure("cannot write " + mailbox.path() + ": somebody else changed it meanwhile");
  }
  platform::File& file = mailbox.file();
  std::int64_t copied = file.size();
  do {
    copied = copy_appended_mail(file, copied, replacement);
    replacement.sync();
  } while (copied < file.current_size());
  const CompletingWork from_here;
  replacement.commit(file, copied);
}

}  // namespace

void check_editable(const std::string& path) {
  if (is_standard_stream(path)) throw WrongUse("standard input cannot be edited in its place");
}

void rewrite_mailbox(const MailboxFile& mailbox, const std::function<void(platform::ByteSink&)>& write_content) {
  check_editable(mailbox.path());
  const UnfinishedWork until_it_is_whole;
  try {
    try {
      rewrite(mailbox, FileReplacement::Staging::beside, write_content);
    } catch (const std::system_error& error) {
      // Removing mail from a full disk must be possible.
      if (!platform::is_out_of_room(error.code())) throw;
      rewrite(mailbox, FileReplacement::Staging::elsewhere, write_content);
    }
  } catch (const std::system_error& error) {
    stop_if_interrupted();
    if (platform::is_out_of_room(error.code())) throw Failure("cannot write " + mailbox.path() + ": the disk is full");
    throw Failure("cannot write " + mailbox.path() + why_unwritable(mailbox.path()));
  }
}

}  // namespace vellobar::command
