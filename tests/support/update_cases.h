// Mailboxes of every shape and edits of every kind, for tests that let an update go wrong, and the three ways in which
// an update puts its result in place.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"
#include "tests/support/files.h"

namespace vellobar::tests {

struct MailboxShape {
  const char* name;
  std::string content;
};

/// 22 mailboxes.
const std::vector<MailboxShape>& mailbox_shapes();

struct MailboxEdit {
  const char* name;
  /// Changes something in a locked mailbox whatever it holds, as a client would.
  std::function<void(CVellobar&)> make;
};

/// 10 edits; what each one writes depends on the mailbox alone.
const std::vector<MailboxEdit>& mailbox_edits();

/// For tests that try every change of every case. Where calls on files cost much more than elsewhere (Windows programs,
/// sanitizers) that is some of them.
#if defined(_WIN32) || defined(__SANITIZE_ADDRESS__)
inline constexpr bool kTriesAll = false;
#else
inline constexpr bool kTriesAll = true;
#endif
std::vector<MailboxShape> swept_shapes();
std::vector<MailboxEdit> swept_edits();

/// How the new mailbox takes the old one's place.
enum class Way {
  by_renaming,
  over_the_old_one,  ///< the file has a second hard link
  staged_elsewhere,  ///< no file can be made beside the mailbox
};
/// As a part of a test's name.
const char* name_of(Way way) noexcept;
inline constexpr Way kWays[] = {Way::by_renaming, Way::over_the_old_one, Way::staged_elsewhere};

/// A folder with one mailbox, which can be given the same content again and again, and a folder for temporary files.
class MailboxToBreak {
 public:
  explicit MailboxToBreak(Way way);

  const std::string& path() const { return path_; }
  /// The other names of a mailbox that has some: in the same folder and in another one.
  const std::string& near_link() const { return near_link_; }
  const std::string& far_link() const { return far_link_; }
  /// Whether its file system keeps notes.
  bool keeps_notes() const;
  /// Makes this the content of the mailbox and removes every other file.
  void reset(const std::string& content);
  std::string content() const { return read_file(path_); }
  /// Paths of all files in both folders.
  std::vector<std::string> paths() const;
  /// Those of them that belong to a replacement that was not finished.
  std::vector<std::string> leftovers() const;

  /// Opens the mailbox, by its first name or another one.
  void lock(CVellobar& control) const { lock(control, path_); }
  void lock(CVellobar& control, const std::string& name) const;

 private:
  TemporaryFolder folder_;
  TemporaryFolder temporary_, elsewhere_;
  platform::FixedTemporaryFolder fixed_;
  std::string path_, near_link_, far_link_;
};

}  // namespace vellobar::tests
