#include "mailbox/vellobar.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::Mailbox;
using tests::TemporaryFolder;
using tests::wide;

constexpr std::string_view kTwoMessages =
    "From ann@example.org Thu Jan  1 00:00:00 2026\n"
    "Subject: one\n"
    "\n"
    "first\n"
    "\n"
    "From bob@example.org Fri Jan  2 00:00:00 2026\n"
    "Subject: two\n"
    "\n"
    "second\n";

TEST(Vellobar, a_new_control_is_empty_and_unlocked) {
  CVellobar control;
  EXPECT_TRUE(control.Filename().empty());
  EXPECT_FALSE(control.Locked());
  EXPECT_FALSE(control.AutoUpdate());
  EXPECT_FALSE(control.Changed());
  EXPECT_EQ(control.Messages()->Count(), 0);
  EXPECT_EQ(CVellobar::Version(), u"2.2.6.119");
  EXPECT_EQ(CVellobar::CharSet(), 0);
}

TEST(Vellobar, lock_indexes_the_messages_of_the_file) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  EXPECT_TRUE(box.control().Locked());
  ASSERT_EQ(box.count(), 2);
  EXPECT_EQ(box.message(0)->StartPosition(), 0);
  EXPECT_EQ(box.message(0)->EndPosition(), 67);
  EXPECT_EQ(box.message(0)->Lines(), 5);
  EXPECT_EQ(box.message(1)->StartPosition(), 67);
  EXPECT_EQ(box.message(1)->EndPosition(), static_cast<std::int64_t>(kTwoMessages.size()));
  EXPECT_EQ(box.message(1)->Lines(), 4);
}

TEST(Vellobar, lock_twice_in_a_row_succeeds_and_does_not_rescan) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto messages = box.control().Messages();
  tests::append_to_file(box.path(), "From x\n\nmore\n");
  box.control().Lock();
  EXPECT_EQ(box.control().Messages(), messages);
  EXPECT_EQ(box.count(), 2);
}

TEST(Vellobar, unlock_while_unlocked_succeeds) {
  CVellobar control;
  const auto messages = control.Messages();
  control.Unlock();
  EXPECT_EQ(control.Messages(), messages);
}

TEST(Vellobar, unlock_replaces_the_collection_and_leaves_changed_as_it_is) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(0)->SetMailInfo(u"From other");
  const auto messages = box.control().Messages();
  box.control().Unlock();
  EXPECT_FALSE(box.control().Locked());
  EXPECT_TRUE(box.control().Changed());
  EXPECT_NE(box.control().Messages(), messages);
  EXPECT_EQ(box.count(), 0);
}

TEST(Vellobar, filename_put_while_locked_is_refused_and_keeps_the_old_name) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  expect_error(ErrorNumber::mailbox_locked, Reporter::vellobar, [&] { box.control().SetFilename(u"other"); });
  EXPECT_EQ(box.control().Filename(), wide(box.path()));
}

TEST(Vellobar, filename_set_to_the_identical_string_keeps_it) {
  const std::u16string name(300, u'm');
  CVellobar control;
  control.SetFilename(name);
  const char16_t* const stored = control.Filename().data();
  control.SetFilename(control.Filename());
  EXPECT_EQ(control.Filename(), name);
  EXPECT_EQ(control.Filename().data(), stored) << "a string of its own place is not copied anew";
  EXPECT_FALSE(control.Changed());
}

TEST(Vellobar, filename_set_to_an_empty_value_is_cleared) {
  CVellobar control;
  control.SetFilename(u"some.mbox");
  control.SetFilename(u"");
  EXPECT_TRUE(control.Filename().empty());
}

TEST(Vellobar, a_file_that_cannot_be_opened_is_30001_and_leaves_the_control_unlocked) {
  TemporaryFolder folder;
  CVellobar control;
  for (const std::string& path : {folder.path("missing.mbox"), folder.path(""), std::string()}) {
    control.SetFilename(wide(path));
    expect_error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar, [&] { control.Lock(); });
    EXPECT_FALSE(control.Locked()) << path;
  }
}

TEST(Vellobar, a_filename_with_characters_the_code_page_lacks_is_30001) {
  CVellobar control;
  control.SetFilename(u"\u4e2d\u6587.mbox");
  expect_error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar, [&] { control.Lock(); });
}

TEST(Vellobar, a_filename_with_an_embedded_nul_is_not_cut_there) {
  Mailbox box(kTwoMessages);
  box.control().SetFilename(wide(box.path()) + std::u16string(1, u'\0') + u"x");
  expect_error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar, [&] { box.control().Lock(); });
}

TEST(Vellobar, charset_affects_file_names_given_afterwards) {
#ifdef _WIN32
  GTEST_SKIP() << "file names are taken in the system's ANSI code page there";
#endif
  TemporaryFolder folder;
  folder.file("gr\xC3\xBC\xC3\x9F.mbox", kTwoMessages);
  CVellobar control;
  control.SetFilename(wide(folder.path("")) + u"gr\u00FC\u00DF.mbox");
  expect_error(ErrorNumber::cannot_open_mailbox, Reporter::vellobar, [&] { control.Lock(); });
  tests::CodePageGuard utf8(65001);
  control.Lock();
  EXPECT_EQ(control.Messages()->Count(), 2);
}

TEST(Vellobar, an_empty_file_locks_without_messages) {
  Mailbox box("");
  box.control().Lock();
  EXPECT_TRUE(box.control().Locked());
  EXPECT_EQ(box.count(), 0);
}

TEST(Vellobar, update_while_unlocked_is_30010_and_changes_nothing) {
  Mailbox box(kTwoMessages);
  expect_error(ErrorNumber::mailbox_not_locked, Reporter::vellobar, [&] { box.control().Update(); });
  EXPECT_EQ(box.content(), kTwoMessages);
}

TEST(Vellobar, auto_update_put_true_while_changed_writes_the_mailbox_at_once) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(1)->Headers()->Remove(u"subject");
  EXPECT_TRUE(box.control().Changed());
  EXPECT_EQ(box.content(), kTwoMessages);
  box.control().SetAutoUpdate(true);
  EXPECT_FALSE(box.control().Changed());
  EXPECT_EQ(box.content().find("two"), std::string::npos);
}

TEST(Vellobar, auto_update_put_true_while_unchanged_writes_nothing) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  EXPECT_EQ(box.content(), kTwoMessages);
}

TEST(Vellobar, after_update_messages_returns_a_new_collection) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto before = box.control().Messages();
  const auto message = before->Item(1);
  box.control().Update();
  EXPECT_NE(box.control().Messages(), before);
  EXPECT_EQ(message->Index(), 1) << "the old collection is still held";
  EXPECT_NE(box.message(1), message);
}

TEST(Vellobar, any_charset_number_is_accepted_and_read_back_unchanged) {
  tests::CodePageGuard guard(123456);
  EXPECT_EQ(CVellobar::CharSet(), 123456);
  CVellobar::SetCharSet(-7);
  EXPECT_EQ(CVellobar::CharSet(), -7);
}

TEST(Vellobar, language_is_stored_and_read_back_only) {
  const std::int32_t before = CVellobar::Language();
  CVellobar::SetLanguage(1050);
  EXPECT_EQ(CVellobar::Language(), 1050);
  CVellobar::SetLanguage(before);
}

TEST(Vellobar, messages_added_before_lock_come_before_those_of_the_file) {
  Mailbox box(kTwoMessages);
  box.control().Messages()->Add();
  box.control().Lock();
  EXPECT_EQ(box.count(), 3);
  EXPECT_EQ(box.message(1)->StartPosition(), 0);
}

TEST(Vellobar, what_a_client_holds_after_the_control_is_gone_stays_readable_and_notifies_nobody) {
  std::shared_ptr<CMessages> messages;
  std::shared_ptr<CMessage> read, unread;
  std::shared_ptr<CHeader> header;
  {
    Mailbox box(kTwoMessages);
    box.control().Lock();
    messages = box.control().Messages();
    read = messages->Item(0);
    unread = messages->Item(1);
    header = read->Headers()->Item(u"Subject");
    EXPECT_EQ(read->Text(), u"first\n\n");
  }
  EXPECT_EQ(read->Text(), u"first\n\n");
  EXPECT_EQ(unread->Headers()->Count(), 0);
  EXPECT_EQ(unread->Text(), u"");
  EXPECT_EQ(unread->Index(), 1);
  header->SetValue(u"changed");
  messages->Remove(*unread);
  EXPECT_EQ(messages->Count(), 1);
}

TEST(Vellobar, index_of_a_message_whose_collection_is_gone_fails) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto message = box.message(1);
  box.control().Unlock();
  tests::expect_status(Status::fail, [&] { message->Index(); });
}

}  // namespace
}  // namespace vellobar
