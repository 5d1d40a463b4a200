#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "attachments/attachments.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

namespace fs = std::filesystem;
using tests::expect_error;
using tests::Mailbox;
using tests::wide;

constexpr std::string_view kTwoMessages =
    "From a\nSubject: 1\n\none\n\n"
    "From b\nSubject: 2\n\ntwo\n";

constexpr std::string_view kTwoMessagesWritten =
    "From a\r\nSubject: 1\r\n\r\none\n\n"
    "From b\r\nSubject: 2\r\n\r\ntwo\n\r\n";

void expect_refused(Mailbox& box) {
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { box.control().Update(); });
  EXPECT_TRUE(box.control().Locked());
}

TEST(Update, of_an_unchanged_mailbox_rewrites_separator_lines_headers_and_empty_lines_with_cr_lf) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().Update();
  EXPECT_EQ(box.content(), kTwoMessagesWritten);
  EXPECT_TRUE(box.control().Locked());
  EXPECT_EQ(box.count(), 2);
}

TEST(Update, of_a_mailbox_without_messages_writes_an_empty_file) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().Messages()->RemoveAll();
  box.control().Update();
  EXPECT_EQ(box.content(), "");
  EXPECT_FALSE(box.control().Changed());
}

TEST(Update, writes_an_added_header_behind_the_others) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(1)->Headers()->Add(u"X-New", u"yes");
  box.control().Update();
  EXPECT_EQ(box.content(),
            "From a\r\nSubject: 1\r\n\r\none\n\n"
            "From b\r\nSubject: 2\r\nX-New: yes\r\n\r\ntwo\n\r\n");
  EXPECT_FALSE(box.control().Changed());
}

TEST(Update, with_auto_update_add_remove_and_value_write_the_mailbox_once_each) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  box.message(0)->Headers()->Add(u"X", u"1");
  EXPECT_EQ(box.content().size(), kTwoMessagesWritten.size() + 6) << "one update: one empty line at the end";
  box.message(0)->Headers()->Item(u"X")->SetValue(u"2");
  EXPECT_EQ(box.content().size(), kTwoMessagesWritten.size() + 6 + 2);
  box.message(0)->Headers()->Remove(u"X");
  EXPECT_EQ(box.content().size(), kTwoMessagesWritten.size() + 4);
}

TEST(Update, leaves_no_file_behind_beside_the_mailbox) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().Update();
  EXPECT_EQ(box.folder().names(), std::vector<std::string>{"test.mbox"});
}

TEST(Update, keeps_held_messages_readable) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto held = box.message(1);
  box.control().Update();
  EXPECT_EQ(held->Text(), u"two\n");
  EXPECT_EQ(held->Headers()->Item(u"Subject")->Value(), u"2");
}

TEST(Update, keeps_edits_of_a_message_that_no_client_holds) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(0)->Headers()->Item(0)->SetValue(u"edited");
  box.control().Update();
  EXPECT_EQ(box.message(0)->Headers()->Item(0)->Value(), u"edited");
}

TEST(Update, carries_over_mail_that_was_appended_after_lock_byte_for_byte) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  constexpr std::string_view delivered = "From new\nSubject: 3\n\nthree\n";
  tests::append_to_file(box.path(), delivered);
  box.control().Messages()->Remove(*box.message(0));
  box.control().Update();
  EXPECT_EQ(box.content(), "From b\r\nSubject: 2\r\n\r\ntwo\n\r\n" + std::string(delivered));
  EXPECT_EQ(box.count(), 2);
}

TEST(Update, of_a_mailbox_emptied_by_the_client_keeps_appended_mail) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  tests::append_to_file(box.path(), "From new\n\nthree\n");
  box.control().Messages()->RemoveAll();
  box.control().Update();
  EXPECT_EQ(box.content(), "From new\n\nthree\n");
}

TEST(Update, refuses_a_file_that_shrank_and_touches_nothing) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const std::string cut(kTwoMessages.substr(0, 30));
  tests::write_file(box.path(), cut);
  expect_refused(box);
  EXPECT_EQ(box.content(), cut);
}

TEST(Update, refuses_a_file_that_was_replaced_and_touches_nothing) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const std::string other = box.folder().file("other", kTwoMessages);
  std::error_code failed;
  fs::rename(other, box.path(), failed);
  if (failed) GTEST_SKIP() << "an open file cannot be replaced here";
  expect_refused(box);
  EXPECT_EQ(box.content(), kTwoMessages);
}

TEST(Update, refuses_a_file_in_which_a_message_does_not_begin_where_it_was_found) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  std::string moved(kTwoMessages);
  moved.replace(moved.find("From b"), 6, "Form b");
  tests::write_file(box.path(), moved);
  expect_refused(box);
  EXPECT_EQ(box.content(), moved);
}

TEST(Update, refuses_also_when_the_message_that_moved_was_removed) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  std::string moved(kTwoMessages);
  moved.replace(moved.find("From b"), 6, "Form b");
  tests::write_file(box.path(), moved);
  box.control().Messages()->Remove(*box.message(1));
  expect_refused(box);
  EXPECT_EQ(box.content(), moved);
}

// A line runs positions ahead when a chunk of the scan ends without a line feed in it: the first chunks are 16,384 and
// 32,768 bytes long.

TEST(Update, refuses_positions_that_ran_ahead_behind_an_over_long_line) {
  const std::string mailbox =
      std::string(20000, 'x') + "\n\nFrom b\n\n" + std::string(50000, '\n') + "From c\n\nthree\n";
  Mailbox box(mailbox);
  box.control().Lock();
  ASSERT_EQ(box.count(), 2) << "the scan ends ahead of the last message";
  EXPECT_EQ(box.message(1)->StartPosition(), 20002 + 16384);
  expect_refused(box);
  EXPECT_TRUE(box.content() == mailbox);
}

TEST(Update, writes_an_over_long_line_in_the_last_message_whole_and_once) {
  const std::string line(60000, 'x');
  const std::string mailbox = "From a\n\none\n\nFrom b\n\n" + line + "\nend\n";
  Mailbox box(mailbox);
  box.control().Lock();
  ASSERT_EQ(box.count(), 2);
  EXPECT_GT(box.message(1)->EndPosition(), static_cast<std::int64_t>(mailbox.size()));
  tests::append_to_file(box.path(), "From c\n\nthree\n");
  box.control().Update();
  EXPECT_TRUE(box.content() == "From a\r\n\r\none\n\nFrom b\r\n\r\n" + line + "\nend\n\r\nFrom c\n\nthree\n");
}

TEST(Update, that_fails_keeps_messages_and_edits_and_a_later_one_succeeds) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(0)->Headers()->Add(u"X", u"y");
  const std::string whole = box.content();
  std::string moved(whole);
  moved.replace(moved.find("From b"), 6, "Form b");
  tests::write_file(box.path(), moved);
  expect_refused(box);
  EXPECT_TRUE(box.control().Changed());
  EXPECT_EQ(box.message(0)->Headers()->Count(), 2);
  tests::write_file(box.path(), whole);
  EXPECT_EQ(box.message(1)->Text(), u"two\n");
  box.control().Update();
  EXPECT_NE(box.content().find("X: y\r\n"), std::string::npos);
  EXPECT_FALSE(box.control().Changed());
}

TEST(Update, writes_an_unreadable_header_block_back_as_its_own_bytes) {
  const std::string damaged = "From b\nX: " + std::string(30000, 'v') + "\n\nlast\n";
  Mailbox box("From a\n\none\n" + damaged);
  box.control().Lock();
  ASSERT_EQ(box.count(), 2);
  box.control().Update();
  EXPECT_TRUE(box.content() == "From a\r\n\r\none\n" + damaged + "\r\n");
}

TEST(Update, gives_an_unreadable_message_the_separator_line_that_a_client_put) {
  const std::string rest = "X: " + std::string(30000, 'v') + "\n\nlast\n";
  Mailbox box("From b\n" + rest);
  box.control().Lock();
  box.message(0)->SetMailInfo(u"From me");
  box.control().Update();
  EXPECT_TRUE(box.content() == "From me\r\n" + rest + "\r\n");
}

TEST(Update, a_mail_info_that_does_not_start_with_from_is_not_written) {
  Mailbox box("From a\nX: 1\n\none\n");
  box.control().Lock();
  box.message(0)->SetMailInfo(u"from a");
  box.control().Update();
  EXPECT_EQ(box.content(), "X: 1\r\n\r\none\n\r\n");
}

TEST(Update, a_message_with_an_empty_body_gets_nothing_behind_its_empty_line) {
  Mailbox box("From a\nX: 1\n\nFrom b\nY: 2\n\n");
  box.control().Lock();
  box.control().Update();
  EXPECT_EQ(box.content(), "From a\r\nX: 1\r\n\r\nFrom b\r\nY: 2\r\n\r\n\r\n");
}

TEST(Update, keeps_every_byte_of_headers_in_the_default_code_page) {
  std::string bytes;
  for (int c = 1; c < 256; ++c) {
    if (c != '\n' && c != '\r') bytes += static_cast<char>(c);
  }
  Mailbox box("From a\nX: v" + bytes + "\n\n" + bytes + "\n");
  box.control().Lock();
  box.message(0)->Headers()->Item(0)->SetValue(box.message(0)->Headers()->Item(0)->Value());
  box.control().Update();
  EXPECT_EQ(box.content(), "From a\r\nX: v" + bytes + "\r\n\r\n" + bytes + "\n\r\n");
}

TEST(Update, ends_a_text_without_a_line_end_before_the_next_message_begins) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.message(0)->SetBody(u"X: new\r\n\r\nhello");
  box.control().Update();
  ASSERT_EQ(box.count(), 2);
  EXPECT_EQ(box.content(), "From a\r\nX: new\r\n\r\nhello\r\nFrom b\r\nSubject: 2\r\n\r\ntwo\n\r\n");
}

TEST(Update, keeps_messages_apart_that_were_added_behind_a_mailbox_without_a_last_line_end) {
  Mailbox box("From a\n\nx");
  box.control().Lock();
  box.control().Messages()->Add(wide(box.folder().file("one.eml", "A: 1\n\none")));
  box.control().Messages()->Add(wide(box.folder().file("two.eml", "B: 2\n\ntwo")));
  box.control().Update();
  ASSERT_EQ(box.count(), 3);
  EXPECT_EQ(box.message(1)->Text(), u"one\r\n");
}

TEST(Update, keeps_a_removed_message_that_a_client_holds_and_puts_back) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  const auto message = box.message(0);
  box.control().Messages()->Remove(*message);
  box.control().Messages()->Add(message);
  ASSERT_EQ(box.count(), 2);
  EXPECT_EQ(box.message(1)->Headers()->Item(u"Subject")->Value(), u"1");
  EXPECT_EQ(box.message(1)->MailInfo(), u"From a");
}

TEST(Update, of_two_mailboxes_moves_a_multipart_message_from_one_to_the_other_whole) {
  Mailbox from("From a\nContent-Type: multipart/mixed; boundary=\"xyzw\"\n\n--xyzw\n\npart\n--xyzw--\n"),
      to(kTwoMessages);
  from.control().Lock();
  to.control().Lock();
  const auto message = from.message(0);
  to.control().Messages()->Add(message);
  from.control().Messages()->Remove(*message);
  from.control().Update();
  to.control().Update();
  ASSERT_EQ(to.count(), 3);
  ASSERT_EQ(to.message(2)->Parts()->Count(), 1);
  EXPECT_EQ(to.message(2)->Parts()->Item(0)->Text(), u"part\n");
}

TEST(Update, writes_a_message_of_another_mailbox_whole_also_when_that_one_was_unlocked) {
  Mailbox from("From a\nContent-Type: multipart/mixed; boundary=\"xyzw\"\n\n--xyzw\n\npart\n--xyzw--\n"),
      to(kTwoMessages);
  from.control().Lock();
  to.control().Lock();
  to.control().Messages()->Add(from.message(0));
  from.control().Unlock();
  to.control().Update();
  EXPECT_EQ(to.message(2)->Parts()->Item(0)->Text(), u"part\n");
}

TEST(Update, writes_headers_of_another_mailbox_that_run_on_also_when_a_search_for_attachments_had_dropped_them) {
  Mailbox from(
      "From a\nContent-Type: multipart/mixed; boundary=\"xyzw\"\n\n--xyzw\nX-Runs: on\n--xyzw\n"
      "Content-Type: multipart/mixed; boundary=none\n\npart\n--xyzw--\n"),
      to("");
  from.control().Lock();
  to.control().Lock();
  EXPECT_EQ(from.message(0)->Attachments()->Count(), 0);
  to.control().Messages()->Add(from.message(0));
  from.control().Unlock();
  to.control().Update();
  EXPECT_EQ(to.content(),
            "From a\r\nContent-Type: multipart/mixed; boundary=\"xyzw\"\r\n\r\n--xyzw\r\n"
            "X-Runs: on\r\nContent-Type: multipart/mixed; boundary=none\r\n\r\n--xyzw\r\n"
            "Content-Type: multipart/mixed; boundary=none\r\n\r\npart\n--xyzw--\r\n\r\n\r\n");
}

TEST(Update, refuses_a_message_whose_own_mailbox_was_closed_before_it_was_read) {
  Mailbox from(kTwoMessages), to(kTwoMessages);
  from.control().Lock();
  to.control().Lock();
  const auto message = from.message(0);
  from.control().Unlock();
  to.control().Messages()->Add(message);
  expect_refused(to);
  EXPECT_EQ(to.content(), kTwoMessages);
}

TEST(Update, gives_a_stand_alone_message_that_was_added_a_separator_line) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto message = std::make_shared<CMessage>();
  message->SetBody(u"From: Ann <ann@example.org>\r\n\r\nhello\r\n");
  box.control().Messages()->Add(message);
  box.control().Update();
  ASSERT_EQ(box.count(), 3);
  EXPECT_EQ(box.message(2)->MailInfo(), u"From ann@example.org");
}

TEST(Update, refuses_a_code_page_in_which_a_mailbox_cannot_be_written) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  const auto message = box.message(0);
  {
    tests::CodePageGuard unknown(99999);
    expect_refused(box);
    expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { message->Save(u"x"); });
  }
  EXPECT_EQ(box.content(), kTwoMessages);
  box.control().Update();
  EXPECT_EQ(box.content(), kTwoMessagesWritten);
}

TEST(Update, takes_what_was_appended_to_an_unfinished_header_block_as_appended_mail) {
  Mailbox box("From a\nSubject: 1\n");
  box.control().Lock();
  tests::append_to_file(box.path(), "From b\nSubject: 2\n\ntwo\n");
  EXPECT_EQ(box.message(0)->Headers()->Count(), 1);
  box.control().Update();
  EXPECT_EQ(box.content(), "From a\r\nSubject: 1\r\n\r\n\r\nFrom b\nSubject: 2\n\ntwo\n");
}

TEST(Update, of_a_read_only_file_is_30002_before_anything_is_touched) {
  Mailbox box(kTwoMessages);
  box.control().Lock();
  fs::permissions(box.path(), fs::perms::owner_read);
#ifndef _WIN32
  if (std::ofstream(box.path(), std::ios::app)) GTEST_SKIP() << "this user may write anything";
#endif
  expect_refused(box);
  EXPECT_EQ(box.content(), kTwoMessages);
  EXPECT_EQ(box.folder().names(), std::vector<std::string>{"test.mbox"});
  fs::permissions(box.path(), fs::perms::owner_all);
  box.control().Update();
  EXPECT_EQ(box.content(), kTwoMessagesWritten);
}

#ifndef _WIN32

TEST(Update, keeps_the_mode_of_the_file) {
  Mailbox box(kTwoMessages);
  const fs::perms mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(box.path(), mode);
  box.control().Lock();
  box.control().Update();
  EXPECT_EQ(fs::status(box.path()).permissions(), mode);
}

TEST(Update, keeps_a_symbolic_link_a_link) {
  Mailbox box(kTwoMessages);
  const std::string link = box.folder().path("link.mbox");
  fs::create_symlink(box.path(), link);
  CVellobar control;
  control.SetFilename(wide(link));
  control.Lock();
  control.Update();
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(box.content(), kTwoMessagesWritten);
}

TEST(Update, keeps_hard_links_together) {
  Mailbox box(kTwoMessages);
  const std::string link = box.folder().path("hard.mbox");
  fs::create_hard_link(box.path(), link);
  box.control().Lock();
  box.control().Messages()->Remove(*box.message(0));
  box.control().Update();
  EXPECT_EQ(fs::hard_link_count(box.path()), 2u);
  EXPECT_EQ(tests::read_file(link), "From b\r\nSubject: 2\r\n\r\ntwo\n\r\n");
  EXPECT_EQ(box.folder().names().size(), 2u);
}

TEST(Update, of_something_that_is_no_regular_file_is_refused) {
  CVellobar control;
  control.SetFilename(u"/dev/null");
  control.Lock();
  EXPECT_EQ(control.Messages()->Count(), 0);
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::vellobar, [&] { control.Update(); });
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

#endif

}  // namespace
}  // namespace vellobar
