// Attachments: found again the same, each one decodes, and what Save writes under a name from the mail is one file in
// the current folder.
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "attachments/safe_name.h"
#include "fuzz/choices.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"
#include "platform/temporary_file.h"

namespace vellobar::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr int kCodePages[] = {0, 1252, 932, 65001, 65000, 874};

/// Paths of all files below a folder.
std::set<std::string> files_below(const std::string& folder) {
  std::set<std::string> paths;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_directory()) paths.insert(entry.path().string());
  }
  return paths;
}

void require_safe(std::u16string_view name, int code_page) {
  const std::u16string safe = attachments::safe_file_name(name, code_page);
  const std::string bytes = platform::narrow(code_page, safe);
  require(bytes.find_first_of("<>:\"/\\|?*") == bytes.npos, "a safe name has nothing that a file system reads");
  require(bytes.find('\0') == bytes.npos, "a safe name has no NUL");
  require(bytes != "." && bytes != "..", "a safe name is no folder");
  require(!bytes.ends_with('.') && !bytes.ends_with(' '), "a safe name ends with neither a dot nor a blank");
  require(attachments::safe_file_name(safe, code_page) == safe, "a safe name is left as it is");
}

/// A message in a folder of folders, with the innermost one current, that saves its attachments there.
class SavingFolder {
 public:
  SavingFolder() : before_(fs::current_path()) {
    fs::create_directories(inner());
    fs::current_path(inner());
  }
  ~SavingFolder() {
    std::error_code ignored;
    fs::current_path(before_, ignored);
    fs::remove_all(outer(), ignored);
  }
  SavingFolder(const SavingFolder&) = delete;
  SavingFolder& operator=(const SavingFolder&) = delete;

  static std::string outer() { return in_scratch("outer"); }
  static std::string inner() { return (fs::path(outer()) / "middle" / "inner").string(); }
  static std::size_t saved() { return files_below(inner()).size(); }
  static std::size_t anywhere() { return files_below(in_scratch("")).size(); }

 private:
  fs::path before_;
};

void require_saved_here(CAttachment& attachment) {
  const std::size_t here = SavingFolder::saved(), anywhere = SavingFolder::anywhere();
  const bool is_saved = succeeds([&] { attachment.Save(); });
  const std::size_t more = SavingFolder::saved() - here;
  require(more <= 1, "saving makes one file");
  require(SavingFolder::anywhere() - anywhere == more, "saving makes no file in any other folder");
  require(is_saved || more == 0 || !attachment.Name().empty(), "nothing is saved without a name");
}

}  // namespace

void fuzz_attachments(std::string_view input) {
  Choices choices(input);
  const int code_page = choices.among(kCodePages);
  const bool scans_text = choices.flip();
  require_safe(platform::widen(choices.flip() ? platform::kUtf8CodePage : 0, choices.text()), code_page);
  const platform::FixedTemporaryFolder temporary(in_scratch("temporary/"));
  fs::create_directories(in_scratch("temporary"));
  {
    const auto file = file_of(choices.text());
    const auto message = std::make_shared<CMessage>(nullptr, nullptr, file, mailbox::Extent{0, file->size(), 0, false});
    succeeds([&] {
      const auto attachments = message->Attachments();
      attachments->SetScanText(scans_text);
      const std::int64_t count = attachments->Count();
      require(attachments->Count() == count, "attachments are counted once");
      const SavingFolder folder;
      for (std::int64_t i = 0; i < std::min<std::int64_t>(count, 20); ++i) require_saved_here(*attachments->Item(i));
    });
  }
  fs::remove_all(in_scratch("temporary"));
}

}  // namespace vellobar::fuzz
