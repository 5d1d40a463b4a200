// The control: names one mailbox file, locks it, owns the collection of its messages, and writes it back. The
// collection lives from the control's construction, or from an unlock, to the next unlock; messages that a client still
// holds then stay valid without a mailbox. One thread uses a control and everything reached from it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "mailbox/owner.h"

namespace vellobar {

class CMessages;

namespace platform {
class File;
}

class CVellobar {
 public:
  CVellobar();
  ~CVellobar();
  CVellobar(const CVellobar&) = delete;
  CVellobar& operator=(const CVellobar&) = delete;

  /// Path of the mailbox file; narrowed with the process code page when it is opened.
  const std::u16string& Filename() const { return filename_; }
  /// Error 30000 while locked.
  void SetFilename(std::u16string_view filename);

  bool Locked() const { return file_ != nullptr; }

  bool AutoUpdate() const { return auto_update_; }
  /// Turned on while something is changed, the mailbox is updated at once; that update's failure is not reported.
  void SetAutoUpdate(bool on);

  /// True from the first change to the next successful update.
  bool Changed() const { return changed_; }

  /// The collection in force; another one after every unlock and update.
  const std::shared_ptr<CMessages>& Messages() const { return messages_; }

  /// Opens and indexes the mailbox; nothing when it is locked already. Error 30001 when the file cannot be opened;
  /// error 8 when memory runs out while scanning: the control is then locked with what was found.
  void Lock();
  /// Closes the mailbox and lets its messages go; nothing when it is not locked.
  void Unlock();
  /// Writes the mailbox and locks it afresh. Error 30010 when not locked. Error 30002 when it cannot be written: the
  /// file is then as it was, and the control stays locked with its messages and edits.
  void Update();

  // Builders, implemented in compose/. Each writes one new message to the file `save_as`, which it replaces; the
  // mailbox has no part in it. Error 30002 when that file cannot be written or is the locked mailbox itself. A file to
  // attach that cannot be opened: error 30011, 30007 for an empty name; nothing is written then.

  void CreateSimpleMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                           std::u16string_view subject, std::u16string_view text);
  void CreateTextHtmlMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                             std::u16string_view subject, std::u16string_view plain_text,
                             std::u16string_view html_text);
  void CreateSimpleAttachmentMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                                     std::u16string_view subject, std::u16string_view text,
                                     std::u16string_view attachment);
  void CreateTextHtmlAttachmentMessage(std::u16string_view save_as, std::u16string_view from, std::u16string_view to,
                                       std::u16string_view subject, std::u16string_view plain_text,
                                       std::u16string_view html_text, std::u16string_view attachment);

  static std::u16string_view Version();

  /// Process-wide; stored and read back only.
  static std::int32_t Language() noexcept;
  static void SetLanguage(std::int32_t language) noexcept;
  /// Process-wide code page of every conversion between client text and bytes; any number is accepted.
  static std::int32_t CharSet() noexcept;
  static void SetCharSet(std::int32_t code_page) noexcept;

  /// For the component's own use: notes a change and, with AutoUpdate on, updates (failures are not reported).
  void mark_changed();
  /// True when the path names the mailbox file that is locked now.
  bool is_locked_file(const std::string& path) const noexcept;

 private:
  struct Collection;
  static Collection new_collection();
  void use(Collection next) noexcept;
  void keep_what_is_held() noexcept;
  void write_mailbox();
  void update_quietly();

  std::u16string filename_;
  std::string path_;  ///< of the locked file, as it was when it was locked
  bool auto_update_ = false;
  bool changed_ = false;
  bool wholly_indexed_ = false;
  std::shared_ptr<platform::File> file_;
  OwnerLink owner_;
  std::shared_ptr<CMessages> messages_;
};

}  // namespace vellobar
