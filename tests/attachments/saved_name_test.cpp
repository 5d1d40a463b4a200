// Where an attachment is saved whose mail wants it elsewhere: in the current folder, whatever the name says, and also
// where a name says it only once it is decoded or narrowed to the bytes that name the file.
#include <gtest/gtest.h>

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "platform/code_page.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::CodePageGuard;
using tests::expect_error;
using tests::Mailbox;
using tests::wide;

/// The name of a file, whatever code page its bytes are in.
[[maybe_unused]] std::string bytes_of(const std::string& name) { return name; }
[[maybe_unused]] std::string bytes_of(const std::wstring& name) {
  return platform::narrow(platform::kUtf8CodePage, std::u16string(name.begin(), name.end()));
}

/// A folder in a folder, of which the inner one is the current one.
class SavedName : public testing::Test {
 protected:
  SavedName() {
    std::filesystem::create_directory(outer_.path("inner"));
    std::filesystem::current_path(outer_.path("inner"));
  }
  ~SavedName() override { std::filesystem::current_path(before_); }

  /// Saves an attachment that the mail calls so, and returns what is in the inner folder then.
  std::vector<std::string> saved(const std::string& header) {
    box_.emplace("From a\nContent-Transfer-Encoding: base64\n" + header + "\n\nQUJD\n");
    box_->control().Lock();
    attachment()->Save();
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(outer_.path("inner"))) {
      names.push_back(bytes_of(entry.path().filename().native()));
      EXPECT_EQ(std::filesystem::file_size(entry), 3u);
      std::filesystem::remove(entry);
    }
    EXPECT_EQ(outer_.names(), std::vector<std::string>{"inner"}) << header;
    return names;
  }
  std::vector<std::string> saved_named(const std::string& name) {
    return saved("Content-Type: application/x; name=\"" + name + "\"");
  }
  std::shared_ptr<CAttachment> attachment() { return box_->message(0)->Attachments()->Item(0); }

  tests::TemporaryFolder outer_;
  std::optional<Mailbox> box_;

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
};

using Names = std::vector<std::string>;

TEST_F(SavedName, drops_every_way_out_of_the_folder) {
  EXPECT_EQ(saved_named("..\\../up.txt"), Names{"up.txt"});
  EXPECT_EQ(saved_named("a/../../up.txt"), Names{"up.txt"});
  EXPECT_EQ(saved_named("\\\\server\\share\\up.txt"), Names{"up.txt"});
  EXPECT_EQ(saved_named("\\\\?\\C:\\up.txt"), Names{"up.txt"});
  EXPECT_EQ(saved_named("D:up.txt"), Names{"up.txt"});
  EXPECT_EQ(saved_named("."), Names{"_"});
  EXPECT_EQ(saved_named("../.."), Names{"__"});
}

TEST_F(SavedName, opens_no_stream_and_no_device) {
  EXPECT_EQ(saved_named("file.txt:stream"), Names{"file.txt_stream"});
  EXPECT_EQ(saved_named("file.txt::$DATA"), Names{"file.txt__$DATA"});
  EXPECT_EQ(saved_named("con"), Names{"_con"});
  EXPECT_EQ(saved_named("Lpt1.tar.gz"), Names{"_Lpt1.tar.gz"});
  EXPECT_EQ(saved_named("aux .txt"), Names{"_aux .txt"});
  EXPECT_EQ(saved_named("..\\nul"), Names{"_nul"});
}

TEST_F(SavedName, has_no_control_characters_and_no_dots_and_blanks_at_its_end) {
  EXPECT_EQ(saved_named("a\x01\x1B\x7F.txt"), Names{"a___.txt"});
  EXPECT_EQ(saved_named("a\tb.txt"), Names{"a_b.txt"});
  EXPECT_EQ(saved_named("a.txt. . "), Names{"a.txt____"});
  EXPECT_EQ(saved_named("..."), Names{"___"});
}

TEST_F(SavedName, from_a_disposition_is_no_freer) {
  EXPECT_EQ(saved("Content-Disposition: attachment; filename=\"..\\..\\up.txt\""), Names{"up.txt"});
  EXPECT_EQ(saved("Content-Disposition: attachment; filename=\"/up.txt\""), Names{"up.txt"});
}

TEST_F(SavedName, that_is_a_path_only_once_it_is_decoded_is_none) {
  EXPECT_EQ(saved_named("=?utf-8?Q?..=2Fup.txt?="), Names{"up.txt"});
  EXPECT_EQ(saved_named("=?utf-8?B?Li5cdXAudHh0?="), Names{"up.txt"});
  EXPECT_EQ(saved_named("=?windows-1252?Q?C:=5Cup.txt?="), Names{"up.txt"});
  EXPECT_EQ(saved_named("=?utf-7?Q?..+AC8-up.txt?="), Names{"up.txt"});
  EXPECT_EQ(saved_named("=?utf-7?Q?..+AFw-up.txt?="), Names{"up.txt"});
}

/// Slashes and dots in forms that a system may take for the plain ones: an overlong form, and characters that a code
/// page without them puts plain ones for.
TEST_F(SavedName, that_only_looks_like_a_path_is_none_in_any_code_page) {
  const std::string looks[] = {
      "=C0=AF",     "=C1=9C",    "=E0=80=AF", "=F0=80=80=AF",               // overlong
      "=E2=88=95",  "=E2=81=84", "=EF=BC=8F", "=EF=BC=BC",    "=E2=88=96",  // division, fraction, full-width ones
      "=E2=81=BAx", "=EF=BC=9A", "=C2=A5",    "=E2=82=A9",                  // full-width colon, yen and won
  };
  for (const int code_page : {0, 932, 949, 1252, 65001}) {
    const CodePageGuard guard(code_page);
    for (const std::string& look : looks) {
      const Names names = saved_named("=?utf-8?Q?.." + look + "up.txt?=");
      ASSERT_EQ(names.size(), 1u) << code_page << " " << look;
      EXPECT_EQ(names[0].find_first_of("/\\:"), std::string::npos) << code_page << " " << names[0];
    }
  }
}

TEST_F(SavedName, of_300_characters_reports_30008_and_saves_nothing) {
  box_.emplace("From a\nContent-Transfer-Encoding: base64\nContent-Type: application/x; name=\"" +
               std::string(300, 'a') + "\"\n\nQUJD\n");
  box_->control().Lock();
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment, [&] { attachment()->Save(); });
  EXPECT_TRUE(std::filesystem::is_empty(outer_.path("inner")));
  EXPECT_EQ(outer_.names(), Names{"inner"});
}

TEST_F(SavedName, of_the_clients_own_may_lead_out_of_the_folder) {
  saved_named("a.txt");
  attachment()->Save(u"../one.txt");
  attachment()->SetName(u"../two.txt");
  attachment()->Save();
  EXPECT_EQ(outer_.names(), (Names{"inner", "one.txt", "two.txt"}));
}

}  // namespace
}  // namespace vellobar
