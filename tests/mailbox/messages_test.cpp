#include "mailbox/messages.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::expect_status;
using tests::Mailbox;
using tests::wide;

constexpr std::string_view kThreeMessages =
    "From a\nSubject: 1\n\none\n"
    "From b\nSubject: 2\n\ntwo\n"
    "From c\nSubject: 3\n\nthree\n";

std::string subject_of(CMessage& message) { return tests::plain(message.Headers()->Item(u"Subject")->Value()); }

TEST(Messages, item_of_an_empty_collection_and_item_minus_one_are_invalid_arguments) {
  CMessages messages;
  expect_status(Status::invalid_argument, [&] { messages.Item(0); });
  expect_status(Status::invalid_argument, [&] { messages.Item(-1); });
}

TEST(Messages, item_count_is_an_invalid_argument) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  expect_status(Status::invalid_argument, [&] { box.message(3); });
}

TEST(Messages, the_same_message_is_the_same_object_each_time) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  EXPECT_EQ(box.message(1), box.message(1));
  EXPECT_NE(box.message(0), box.message(1));
}

TEST(Messages, add_without_argument_adds_an_empty_message_from_unknown) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto added = box.control().Messages()->Add();
  EXPECT_EQ(added->MailInfo(), u"From <unknown>");
  EXPECT_EQ(added->Index(), 3);
  EXPECT_EQ(added->Headers()->Count(), 0);
  EXPECT_EQ(added->Text(), u"");
  EXPECT_TRUE(box.control().Changed());
}

TEST(Messages, add_of_a_file_makes_the_separator_line_from_sender_and_date) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const std::string path =
      box.folder().file("new.eml", "From: Ann <ann@example.org>\nDATE: Mon, 5 Jan 2026 10:00:00 +0000\n\nhello\n");
  const auto added = box.control().Messages()->Add(wide(path));
  EXPECT_EQ(added->MailInfo(), u"From ann@example.org Mon, 5 Jan 2026 10:00:00 +0000");
  EXPECT_EQ(added->Text(), u"hello\n");
}

TEST(Messages, a_message_added_from_a_file_reports_its_size_as_lines) {
  Mailbox box("");
  box.control().Lock();
  const auto added = box.control().Messages()->Add(wide(box.folder().file("new.eml", "A: b\n\nhello\n")));
  EXPECT_EQ(added->StartPosition(), 0);
  EXPECT_EQ(added->EndPosition(), 12);
  EXPECT_EQ(added->Bytes(), 12);
  EXPECT_EQ(added->Lines(), 12);
}

TEST(Messages, add_of_a_file_that_begins_with_a_separator_line_keeps_that_line) {
  Mailbox box("");
  box.control().Lock();
  const auto added =
      box.control().Messages()->Add(wide(box.folder().file("new.eml", "From z@example.org today\nA: b\n\nhello\n")));
  EXPECT_EQ(added->MailInfo(), u"From z@example.org today");
  EXPECT_EQ(added->Headers()->Count(), 1);
  box.control().Update();
  EXPECT_EQ(box.content(), "From z@example.org today\r\nA: b\r\n\r\nhello\n\r\n");
}

TEST(Messages, add_with_an_empty_file_name_adds_an_empty_message) {
  CMessages messages;
  messages.Add(u"");
  EXPECT_EQ(messages.Count(), 1);
  EXPECT_EQ(messages.Item(0)->Size(), 0);
}

TEST(Messages, add_of_a_file_that_cannot_be_opened_is_30011_and_adds_nothing) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  expect_error(ErrorNumber::cannot_open_file, Reporter::messages,
               [&] { box.control().Messages()->Add(wide(box.folder().path("missing"))); });
  EXPECT_EQ(box.count(), 3);
  EXPECT_FALSE(box.control().Changed());
}

TEST(Messages, without_an_owner_a_file_that_cannot_be_opened_is_a_bare_failure) {
  CMessages messages;
  expect_status(Status::fail, [&] { messages.Add(u"no such file"); });
  EXPECT_EQ(messages.Count(), 0);
}

TEST(Messages, add_of_a_file_with_an_unreadable_header_block_succeeds) {
  Mailbox box("");
  box.control().Lock();
  const std::string damaged = "X: " + std::string(20000, 'a') + "\n\nbody\n";
  const auto added = box.control().Messages()->Add(wide(box.folder().file("damaged.eml", damaged)));
  EXPECT_EQ(box.count(), 1);
  expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { added->Headers(); });
  box.control().Update();
  EXPECT_TRUE(box.content() == "From <unknown>\r\n" + damaged + "\r\n");
}

TEST(Messages, add_of_a_message_object_shares_it_and_leaves_its_own_links_alone) {
  Mailbox box(kThreeMessages), other("From z\nSubject: z\n\nzz\n");
  box.control().Lock();
  other.control().Lock();
  const auto shared = other.message(0);
  box.control().Messages()->Add(shared);
  EXPECT_EQ(box.message(3), shared);
  EXPECT_EQ(shared->collection(), other.control().Messages().get());
  EXPECT_TRUE(box.control().Changed());
  EXPECT_FALSE(other.control().Changed());
  box.control().Update();
  EXPECT_EQ(subject_of(*box.message(3)), "z");
}

TEST(Messages, add_of_nothing_is_an_invalid_argument_and_adds_nothing) {
  CMessages messages;
  expect_status(Status::invalid_argument, [&] { messages.Add(std::shared_ptr<CMessage>()); });
  EXPECT_EQ(messages.Count(), 0);
}

TEST(Messages, remove_moves_later_items_down_and_marks_the_mailbox_changed) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto last = box.message(2);
  EXPECT_EQ(last->Index(), 2);
  box.control().Messages()->Remove(*box.message(0));
  EXPECT_EQ(box.count(), 2);
  EXPECT_EQ(last->Index(), 1);
  EXPECT_EQ(box.message(1), last);
  EXPECT_TRUE(box.control().Changed());
}

TEST(Messages, remove_of_the_same_message_twice_is_an_invalid_argument_the_second_time) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto message = box.message(1);
  box.control().Messages()->Remove(*message);
  expect_status(Status::invalid_argument, [&] { box.control().Messages()->Remove(*message); });
  expect_status(Status::fail, [&] { message->Index(); });
  EXPECT_EQ(box.count(), 2);
}

TEST(Messages, a_removed_message_that_a_client_holds_still_notifies_its_mailbox) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto message = box.message(1);
  box.control().Messages()->Remove(*message);
  box.control().Update();
  EXPECT_FALSE(box.control().Changed());
  const auto kept = box.message(0);
  box.control().Messages()->Remove(*kept);
  box.control().SetAutoUpdate(false);
  kept->SetMailInfo(u"From x");
  EXPECT_TRUE(box.control().Changed());
}

TEST(Messages, remove_all_of_an_empty_collection_still_marks_the_mailbox_changed) {
  Mailbox box("");
  box.control().Lock();
  box.control().Messages()->RemoveAll();
  EXPECT_TRUE(box.control().Changed());
}

TEST(Messages, a_message_held_twice_is_found_at_its_first_place) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto message = box.message(2);
  box.control().Messages()->Add(message);
  EXPECT_EQ(message->Index(), 2);
  box.control().Messages()->Remove(*message);
  EXPECT_EQ(message->Index(), 2) << "the second place has moved down";
  EXPECT_EQ(box.count(), 3);
}

TEST(Messages, a_message_in_several_places_is_found_at_the_first_one_after_removals_before_it) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto message = box.message(1);
  EXPECT_EQ(message->Index(), 1);
  box.control().Messages()->Remove(*box.message(2));
  box.control().Messages()->Add(message);
  box.control().Messages()->Remove(*box.message(0));
  EXPECT_EQ(message->Index(), 0);
}

TEST(Messages, index_of_a_removed_message_fails_also_after_its_collection_is_gone) {
  Mailbox box(kThreeMessages);
  box.control().Lock();
  const auto message = box.message(1);
  box.control().Messages()->Remove(*message);
  box.control().Unlock();
  expect_status(Status::fail, [&] { message->Index(); });
  EXPECT_EQ(message->Text(), u"");
}

TEST(Messages, a_stand_alone_collection_is_a_mailboxs_collection) {
  CMessages messages;
  EXPECT_EQ(messages.separator(), u"From ");
  EXPECT_EQ(messages.Add()->MailInfo(), u"From <unknown>");
}

TEST(Messages, a_part_added_to_a_plain_message_makes_it_multipart) {
  Mailbox box("From a\nSubject: 1\nContent-Type: text/plain\nX: y\n\nbody\n");
  box.control().Lock();
  const auto message = box.message(0);
  message->Headers();
  const auto part = message->Parts()->Add(wide(box.folder().file("part", "Content-Type: text/html\n\n<p>\n")));
  const std::string boundary = tests::plain(message->PartsBoundary());
  ASSERT_TRUE(boundary.starts_with("------=_NextPart_")) << boundary;
  EXPECT_EQ(part->MailInfo(), message->PartsBoundary());
  EXPECT_EQ(message->Headers()->Count(), 3);
  EXPECT_EQ(tests::plain(message->Headers()->Item(2)->ToString()),
            "Content-Type: multipart/mixed; boundary=\"" + boundary.substr(2) + "\"");
  box.control().Update();
  EXPECT_EQ(box.content(), "From a\r\nSubject: 1\r\nX: y\r\nContent-Type: multipart/mixed; boundary=\"" +
                               boundary.substr(2) + "\"\r\n\r\nbody\n" + boundary +
                               "\r\nContent-Type: text/html\r\n\r\n<p>\n" + boundary + "--\r\n\r\n\r\n");
}

TEST(Messages, inside_a_part_a_separator_line_is_never_written) {
  Mailbox box("From a\n\nbody\n"), other("From z\nSubject: z\n\nzz\n");
  box.control().Lock();
  other.control().Lock();
  const auto part = box.message(0)->Parts()->Add();
  part->SetMailInfo(u"From somebody");
  box.control().Update();
  EXPECT_EQ(box.content().find("somebody"), std::string::npos);
}

}  // namespace
}  // namespace vellobar
