#include "mailbox/message.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::expect_status;
using tests::Mailbox;
using tests::plain;
using tests::wide;

constexpr std::string_view kOneMessage =
    "From ann@example.org today\n"
    "Subject: a\n"
    "\tb\n"
    "\n"
    "line 1\n"
    "line 2\n";

TEST(Message, a_new_record_starts_with_zeros_false_flags_and_empty_texts) {
  CMessage message;
  EXPECT_EQ(message.StartPosition(), 0);
  EXPECT_EQ(message.EndPosition(), 0);
  EXPECT_EQ(message.Size(), 0);
  EXPECT_EQ(message.Bytes(), 0);
  EXPECT_EQ(message.Lines(), 0);
  EXPECT_FALSE(message.Changed());
  EXPECT_TRUE(message.MailInfo().empty());
  EXPECT_FALSE(message.Tag().has_value());
  expect_status(Status::fail, [&] { message.Index(); });
}

TEST(Message, without_a_stream_headers_are_empty_and_the_body_is_an_empty_buffer) {
  CMessage message;
  EXPECT_EQ(message.Headers()->Count(), 0);
  EXPECT_EQ(message.Text(), u"");
  EXPECT_EQ(message.Body(), u"\r\n");
}

TEST(Message, size_equals_bytes_for_every_scanned_message) {
  Mailbox box("lead\n\nFrom a\n\nx\r\nFrom b\nno end");
  box.control().Lock();
  ASSERT_EQ(box.count(), 3);
  const std::int64_t sizes[] = {6, 11, 13};
  for (std::int64_t i = 0; i < 3; ++i) {
    EXPECT_EQ(box.message(i)->Size(), sizes[i]);
    EXPECT_EQ(box.message(i)->Bytes(), sizes[i]);
  }
}

TEST(Message, a_header_continued_over_several_lines_reads_back_with_cr_lf_between_the_pieces) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->Item(u"Subject")->Value(), u"a\r\n\tb");
}

TEST(Message, mail_info_is_read_before_anything_else_is) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->MailInfo(), u"From ann@example.org today");
  EXPECT_EQ(box.message(0)->loaded_headers(), nullptr);
}

TEST(Message, mail_info_that_a_client_put_survives_loading) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->SetMailInfo(u"From me");
  EXPECT_TRUE(box.message(0)->Changed());
  EXPECT_TRUE(box.control().Changed());
  box.message(0)->Load();
  EXPECT_EQ(box.message(0)->MailInfo(), u"From me");
  EXPECT_FALSE(box.message(0)->Changed());
}

TEST(Message, a_leading_message_without_a_separator_line_has_no_mail_info) {
  Mailbox box("Subject: x\n\nbody\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->MailInfo(), u"");
  EXPECT_EQ(box.message(0)->Headers()->Count(), 1);
}

TEST(Message, text_is_the_body_and_body_is_everything) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Text(), u"line 1\nline 2\n");
  EXPECT_EQ(box.message(0)->Body(), u"Subject: a\r\n\tb\r\n\r\nline 1\nline 2\n");
}

TEST(Message, text_is_widened_with_the_process_code_page) {
  Mailbox box("From a\n\ngr\xC3\xBC\xC3\x9F\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Text(), u"gr\u00C3\u00BC\u00C3\u0178\n");
  tests::CodePageGuard utf8(65001);
  EXPECT_EQ(box.message(0)->Text(), u"gr\u00FC\u00DF\n");
}

TEST(Message, nul_bytes_are_kept_in_separator_line_headers_and_body) {
  using namespace std::string_view_literals;
  Mailbox box("From \0a\nX: 1\0002\n\nb\0c\n"sv);
  box.control().Lock();
  EXPECT_EQ(box.message(0)->MailInfo(), u"From \0a"sv);
  EXPECT_EQ(box.message(0)->Headers()->Item(0)->Value(), u"1\0002"sv);
  EXPECT_EQ(box.message(0)->Text(), u"b\0c\n"sv);
}

TEST(Message, unload_then_load_reads_the_same_text_again) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const std::u16string text = box.message(0)->Text();
  box.message(0)->Unload();
  box.message(0)->Load();
  EXPECT_EQ(box.message(0)->Text(), text);
}

TEST(Message, a_message_that_was_unloaded_comes_back_without_its_first_line) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->Load();
  box.message(0)->Unload();
  EXPECT_EQ(box.message(0)->MailInfo(), u"");
  box.message(0)->Load();
  EXPECT_EQ(box.message(0)->MailInfo(), u"");
  EXPECT_EQ(box.message(0)->Headers()->Count(), 1) << "a separator line without a colon is no header";
}

TEST(Message, load_clears_changed) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->SetMailInfo(u"From x");
  box.message(0)->Load();
  EXPECT_FALSE(box.message(0)->Changed());
  EXPECT_TRUE(box.control().Changed());
}

TEST(Message, a_body_that_would_start_behind_the_end_is_empty) {
  Mailbox box("From a\nX: 1\nFrom b\nY: 2\n\nbody\n");
  box.control().Lock();
  ASSERT_EQ(box.count(), 2);
  EXPECT_EQ(box.message(0)->Headers()->Count(), 2) << "the header loader reads on to an empty line";
  EXPECT_EQ(box.message(0)->Text(), u"");
  EXPECT_EQ(box.message(1)->Text(), u"body\n");
}

TEST(Message, a_block_that_begins_with_a_continuation_line_is_read_as_body) {
  Mailbox box("From a\n odd\nSubject: x\n\nbody\n");
  box.control().Lock();
  EXPECT_EQ(box.message(0)->Headers()->Count(), 0);
  EXPECT_EQ(box.message(0)->Text(), u" odd\nSubject: x\n\nbody\n");
}

class LongHeaderLine : public testing::TestWithParam<std::size_t> {};

TEST_P(LongHeaderLine, of_16384_bytes_or_more_makes_the_block_unreadable) {
  const std::size_t length = GetParam();  // line feed included
  Mailbox box("From a\nX: " + std::string(length - 4, 'v') + "\nY: 2\n\nbody\n");
  box.control().Lock();
  CMessage& message = *box.message(0);
  if (length < 16384) {
    EXPECT_EQ(message.Headers()->Count(), 2);
    EXPECT_EQ(message.Text(), u"body\n");
    return;
  }
  expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { message.Headers(); });
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { message.Text(); });
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { message.Body(); });
  message.Load();
  EXPECT_EQ(message.Text(), u"");
  EXPECT_EQ(message.Body(), u"\r\n");
}

INSTANTIATE_TEST_SUITE_P(Message, LongHeaderLine, testing::Values(16383, 16384, 16385, 20000, 40000));

TEST(Message, text_put_on_an_unreadable_header_block_is_30005_and_changes_nothing) {
  const std::string damaged = "From a\nX: " + std::string(20000, 'v') + "\n\nbody\n";
  Mailbox box(damaged);
  box.control().Lock();
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { box.message(0)->SetText(u"new"); });
  box.control().Update();
  EXPECT_TRUE(box.content() == damaged + "\r\n");
}

TEST(Message, save_writes_what_an_update_would_write) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const std::string path = box.folder().path("saved.eml");
  box.message(0)->Save(wide(path));
  EXPECT_EQ(tests::read_file(path), "From ann@example.org today\r\nSubject: a\r\n\tb\r\n\r\nline 1\nline 2\n");
}

TEST(Message, save_replaces_an_existing_file) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const std::string path = box.folder().file("saved.eml", std::string(1000, 'z'));
  box.message(0)->Save(wide(path));
  EXPECT_EQ(tests::read_file(path).find('z'), std::string::npos);
}

TEST(Message, save_to_an_unwritable_path_is_30002) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message,
               [&] { box.message(0)->Save(wide(box.folder().path("no/such/folder"))); });
  CMessage alone;
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { alone.Save(u""); });
}

TEST(Message, save_onto_the_locked_mailbox_is_refused_and_leaves_it_alone) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { box.message(0)->Save(wide(box.path())); });
  EXPECT_EQ(box.content(), kOneMessage);
}

TEST(Message, save_onto_the_file_that_the_message_is_read_from_keeps_the_text) {
  tests::TemporaryFolder folder;
  const std::string path = folder.file("m.eml", "A: b\n\nbody\n");
  CMessage message;
  message.Peek(wide(path));
  message.Save(wide(path));
  EXPECT_EQ(tests::read_file(path), "A: b\r\n\r\nbody\n");
}

TEST(Message, save_onto_the_file_that_a_part_is_read_from_keeps_the_part) {
  const std::string part = "X: " + std::string(20000, 'v') + "\n\nunreadable\n";
  Mailbox box(kOneMessage);
  box.control().Lock();
  const std::string path = box.folder().file("part.eml", part);
  const auto message = box.message(0);
  message->Parts()->Add(wide(path));
  message->Save(wide(path));
  const std::string saved = tests::read_file(path);
  EXPECT_TRUE(saved.find("line 1\nline 2\n") != saved.npos) << "the message itself";
  EXPECT_TRUE(saved.find("\r\n" + part + "--") != saved.npos) << "its part, as its own bytes";
}

TEST(Message, save_of_a_message_that_cannot_be_read_whole_leaves_the_destination_alone) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const auto message = box.message(0);
  box.control().Unlock();
  const std::string path = box.folder().file("saved.eml", "precious");
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { message->Save(wide(path)); });
  EXPECT_EQ(tests::read_file(path), "precious");
}

TEST(Message, peek_reports_the_file_size_as_bytes_and_one_line) {
  tests::TemporaryFolder folder;
  CMessage message;
  message.Peek(wide(folder.file("m.eml", "A: b\n\nbody\nmore\n")));
  EXPECT_EQ(message.Bytes(), 16);
  EXPECT_EQ(message.Lines(), 1);
  EXPECT_EQ(message.StartPosition(), 0);
  EXPECT_EQ(message.EndPosition(), 16);
  EXPECT_EQ(message.Headers()->Count(), 1);
  EXPECT_EQ(message.Text(), u"body\nmore\n");
}

TEST(Message, peek_keeps_the_separator_line_of_a_mailbox_message) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->Peek(wide(box.folder().file("m.eml", "A: b\n\nbody\n")));
  EXPECT_EQ(box.message(0)->MailInfo(), u"From ann@example.org today");
  box.control().Update();
  EXPECT_EQ(box.content(), "From ann@example.org today\r\nA: b\r\n\r\nbody\n\r\n");
}

TEST(Message, peek_that_fails_is_30006_and_leaves_the_message_empty) {
  tests::TemporaryFolder folder;
  CMessage message;
  for (const std::string& path :
       {folder.path("missing"), folder.file("long.eml", "X: " + std::string(16384, 'a') + "\n\nbody\n")}) {
    message.Peek(wide(folder.file("good.eml", "A: b\n\nbody\n")));
    expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { message.Peek(wide(path)); });
    EXPECT_EQ(message.Headers()->Count(), 0);
    EXPECT_EQ(message.Text(), u"");
    EXPECT_EQ(message.Size(), 0);
  }
}

TEST(Message, text_put_replaces_the_body_and_keeps_the_headers) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const auto message = box.message(0);
  message->SetText(u"new text");
  EXPECT_EQ(message->Text(), u"new text\r\n");
  EXPECT_EQ(message->Headers()->Item(0)->Value(), u"a\r\n\tb");
  EXPECT_EQ(message->MailInfo(), u"From ann@example.org today");
  box.control().Update();
  EXPECT_EQ(box.content(), "From ann@example.org today\r\nSubject: a\r\n\tb\r\n\r\nnew text\r\n\r\n");
}

TEST(Message, text_put_ends_the_text_with_a_line_end_unless_it_has_one) {
  CMessage message;
  const struct {
    std::u16string_view put, read;
  } rows[] = {{u"", u"\r\n"},         {u"\r\n", u"\r\n\r\n"},   {u"a", u"a\r\n"},
              {u"ab\n", u"ab\n\r\n"}, {u"abc\r\n", u"abc\r\n"}, {u"a\r\n", u"a\r\n"}};
  for (const auto& row : rows) {
    message.SetText(row.put);
    EXPECT_EQ(message.Text(), row.read) << plain(row.put);
  }
}

TEST(Message, text_put_with_a_header_too_long_to_be_read_back_is_30006_and_loses_nothing) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const std::u16string value(20000, u'v');
  box.message(0)->Headers()->Add(u"To", value);
  expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { box.message(0)->SetText(u"new"); });
  EXPECT_EQ(box.message(0)->Text(), u"new\r\n");
  EXPECT_EQ(box.message(0)->Headers()->Count(), 2);
}

TEST(Message, save_of_a_message_whose_mailbox_was_closed_before_it_was_read_is_30002) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const auto message = box.message(0);
  box.control().Unlock();
  const std::string path = box.folder().path("saved.eml");
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message, [&] { message->Save(wide(path)); });
}

TEST(Message, text_put_does_not_mark_anything_changed) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->SetText(u"new");
  EXPECT_FALSE(box.message(0)->Changed());
  EXPECT_FALSE(box.control().Changed());
}

TEST(Message, text_put_keeps_one_temporary_file_that_unload_deletes) {
  tests::TemporaryFolder folder;
  platform::FixedTemporaryFolder fixed(folder.path(""));
  CMessage message;
  message.SetText(u"one");
  message.SetText(u"two");
  EXPECT_EQ(folder.names().size(), 1u);
  EXPECT_EQ(message.Text(), u"two\r\n");
  message.Unload();
  EXPECT_TRUE(folder.names().empty());
}

TEST(Message, body_put_replaces_the_whole_message_and_keeps_mail_info) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  const auto message = box.message(0);
  message->SetBody(u"X: new\r\n\r\nbody 1\r\nbody 2");
  EXPECT_EQ(message->MailInfo(), u"From ann@example.org today");
  EXPECT_EQ(message->StartPosition(), 0);
  EXPECT_EQ(message->EndPosition(), 24);
  EXPECT_EQ(message->Bytes(), 24);
  EXPECT_EQ(message->Lines(), 4);
  EXPECT_EQ(message->Headers()->Count(), 1);
  EXPECT_EQ(message->Text(), u"body 1\r\nbody 2");
  EXPECT_TRUE(box.control().Changed());
  EXPECT_FALSE(message->Changed());
  box.control().Update();
  EXPECT_EQ(box.content(), "From ann@example.org today\r\nX: new\r\n\r\nbody 1\r\nbody 2\r\n");
}

TEST(Message, a_leading_from_line_in_a_body_that_is_put_is_ordinary_text) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->SetBody(u"From nobody\r\nX: y\r\n\r\nbody\r\n");
  EXPECT_EQ(box.message(0)->MailInfo(), u"From ann@example.org today");
  EXPECT_EQ(box.message(0)->Headers()->Count(), 1);
}

TEST(Message, unload_after_body_put_loses_the_new_text) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->SetBody(u"X: y\r\n\r\nbody\r\n");
  box.message(0)->Unload();
  EXPECT_EQ(box.message(0)->Text(), u"");
}

TEST(Message, body_put_without_a_temporary_folder_is_30012_and_changes_nothing) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  platform::FixedTemporaryFolder fixed(box.folder().path("missing/"));
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::message, [&] { box.message(0)->SetBody(u"x"); });
  EXPECT_EQ(box.message(0)->Text(), u"line 1\nline 2\n");
  EXPECT_FALSE(box.control().Changed());
}

TEST(Message, a_tag_is_kept_as_it_was_given) {
  CMessage message;
  message.Tag() = std::string("mine");
  EXPECT_EQ(std::any_cast<std::string>(message.Tag()), "mine");
}

TEST(Message, a_file_truncated_while_open_reads_as_far_as_it_goes) {
  Mailbox box(kOneMessage);
  box.control().Lock();
  box.message(0)->Headers();
  tests::write_file(box.path(), kOneMessage.substr(0, kOneMessage.size() - 7));
  EXPECT_EQ(box.message(0)->Text(), u"line 1\n");
}

}  // namespace
}  // namespace vellobar
