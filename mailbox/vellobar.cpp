#include "mailbox/vellobar.h"

#include <atomic>
#include <exception>
#include <new>
#include <system_error>
#include <utility>

#include "errors/error.h"
#include "mailbox/messages.h"
#include "mailbox/separator_line.h"
#include "platform/code_page.h"
#include "platform/file.h"
#include "platform/file_replacement.h"
#include "platform/locale.h"
#include "platform/overwriting.h"

namespace vellobar {

namespace {

using platform::FileReplacement;

std::atomic<std::int32_t>& language() {
  static std::atomic<std::int32_t> value{platform::user_default_locale()};
  return value;
}

/// Copies what was appended to the file behind `position`, also while this runs. Returns how far it came.
std::int64_t copy_appended_mail(platform::File& file, std::int64_t position, platform::ByteSink& sink) {
  for (std::int64_t end = file.current_size(); position < end; end = file.current_size()) {
    platform::copy_bytes(file, position, end, sink);
    position = end;
  }
  return position;
}

/// Throws std::system_error when the path does not name the locked file any longer, or that was cut.
void require_same_mailbox(const std::string& path, const platform::File& file) {
  if (!file.is_same_file(path) || file.current_size() < file.size()) {
    throw std::system_error(std::make_error_code(std::errc::io_error), "the mailbox was replaced or cut");
  }
}

/// Writes the messages of a mailbox and what was appended to it since it was locked, and puts that in its place.
void replace_mailbox(const std::string& path, platform::File& file, CMessages& messages,
                     FileReplacement::Staging where) {
  FileReplacement replacement(path, where);
  messages.write_mailbox(replacement);
  // Most of the waiting comes before the lock, which keeps others from delivering mail.
  replacement.sync();
  replacement.lock();
  // While this waited, somebody else may have rewritten it.
  require_same_mailbox(path, file);
  messages.check_positions();
  // Not everybody looks at a lock; syncing takes a while.
  std::int64_t copied = file.size();
  do {
    copied = copy_appended_mail(file, copied, replacement);
    replacement.sync();
  } while (copied < file.current_size());
  replacement.commit(file, copied);
}

}  // namespace

/// What an unlocked control has: a collection without messages, and the way back from there.
struct CVellobar::Collection {
  OwnerLink owner;
  std::shared_ptr<CMessages> messages;
};

CVellobar::CVellobar() { use(new_collection()); }

CVellobar::~CVellobar() {
  keep_what_is_held();
  if (file_) file_->close();
  owner_->control = nullptr;
}

CVellobar::Collection CVellobar::new_collection() {
  auto owner = std::make_shared<Owner>();
  auto messages = std::make_shared<CMessages>(owner);
  return {std::move(owner), std::move(messages)};
}

void CVellobar::use(Collection next) noexcept {
  if (file_) file_->close();
  file_.reset();
  if (owner_) owner_->control = nullptr;
  owner_ = std::move(next.owner);
  owner_->control = this;
  messages_ = std::move(next.messages);
}

/// What clients hold below messages that were let go stays below those that they hold. As far as there is memory for
/// it.
void CVellobar::keep_what_is_held() noexcept {
  try {
    messages_->leave_trees();
  } catch (const std::exception&) {
  }
}

void CVellobar::SetFilename(std::u16string_view filename) {
  if (Locked()) throw Error(ErrorNumber::mailbox_locked, Reporter::vellobar);
  filename_ = filename;
}

void CVellobar::SetAutoUpdate(bool on) {
  auto_update_ = on;
  if (on && changed_) update_quietly();
}

void CVellobar::Lock() {
  if (Locked()) return;
  std::string path = platform::process_bytes(filename_);
  try {
    platform::finish_interrupted_replacement(path);
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar);
  }
  std::shared_ptr<platform::File> file = platform::File::open(path);
  if (!file) throw Error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar);
  path_ = std::move(path);
  file_ = std::move(file);
  wholly_indexed_ = false;
  owner_->recent.allow_for(file_->size());
  wholly_indexed_ = messages_->scan(file_, 0, file_->size());
}

void CVellobar::Unlock() {
  if (!Locked()) return;
  Collection next = new_collection();
  keep_what_is_held();
  use(std::move(next));
}

void CVellobar::Update() {
  if (!Locked()) throw Error(ErrorNumber::mailbox_not_locked, Reporter::vellobar);
  // A mailbox that is not wholly indexed would be written back with messages missing.
  if (!wholly_indexed_) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar);
  // Had before the file is touched: once it is written, nothing that follows may fail.
  Collection first = new_collection();
  Collection second = new_collection();
  try {
    platform::finish_interrupted_replacement(path_);
    write_mailbox();
  } catch (const std::system_error& failure) {
    if (failure.code() == std::errc::not_enough_memory) throw std::bad_alloc();
    throw Error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar);
  }
  changed_ = false;
  use(std::move(first));
  try {
    Lock();
  } catch (const std::exception&) {
    // The mailbox is written; a client that finds it unlocked can lock it again.
    use(std::move(second));
  }
}

void CVellobar::write_mailbox() {
  if (!mailbox::can_write_separator_lines()) {
    throw std::system_error(std::make_error_code(std::errc::illegal_byte_sequence), "no code page for a mailbox");
  }
  require_same_mailbox(path_, *file_);
  file_->forget_failure();
  try {
    replace_mailbox(path_, *file_, *messages_, FileReplacement::Staging::beside);
  } catch (const std::system_error& error) {
    if (!platform::is_out_of_room(error.code())) throw;
    // Removing mail from a full disk must be possible.
    replace_mailbox(path_, *file_, *messages_, FileReplacement::Staging::elsewhere);
  }
}

void CVellobar::mark_changed() {
  changed_ = true;
  if (auto_update_) update_quietly();
}

void CVellobar::update_quietly() {
  try {
    Update();
  } catch (const std::exception&) {
    // Whoever made the change succeeded; `Changed` stays set and says that the mailbox was not written.
  }
}

bool CVellobar::is_locked_file(const std::string& path) const noexcept { return file_ && file_->is_same_file(path); }

std::int32_t CVellobar::Language() noexcept { return language(); }

void CVellobar::SetLanguage(std::int32_t value) noexcept { language() = value; }

std::u16string_view CVellobar::Version() { return u"" VELLOBAR_VERSION; }

std::int32_t CVellobar::CharSet() noexcept { return platform::process_code_page(); }

void CVellobar::SetCharSet(std::int32_t code_page) noexcept { platform::set_process_code_page(code_page); }

}  // namespace vellobar
