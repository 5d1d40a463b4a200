#include <gtest/gtest.h>

#include "platform/clock.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::Mailbox;
using tests::plain;
using tests::wide;

constexpr std::string_view kMultipart =
    "From a\nContent-Type: multipart/mixed; boundary=bound\n\n"
    "pre\n--bound\nA: 1\n\none\n--bound\nB: 2\n\ntwo\n--bound--\nepilogue\n";

std::string saved(CMessage& message, const tests::TemporaryFolder& folder) {
  const std::string path = folder.path("saved.eml");
  message.Save(wide(path));
  return tests::read_file(path);
}

TEST(MakeMultipart, writes_a_folded_content_type_and_keeps_the_bare_boundary) {
  CMessage message;
  message.make_multipart(u"alternative");
  const std::u16string boundary = message.PartsBoundary();
  ASSERT_TRUE(boundary.starts_with(u"----_=_Vellobar.")) << plain(boundary);
  EXPECT_EQ(message.MailInfo(), boundary);
  EXPECT_EQ(message.Parts()->separator(), u"--" + boundary);
  EXPECT_EQ(message.Headers()->Item(u"Content-Type")->Value(),
            u"multipart/alternative;\r\n\t boundary=\"" + boundary + u"\"");
}

TEST(MakeMultipart, the_boundary_shows_random_number_tick_count_process_and_thread) {
  platform::FixedClock clock({}, 0xABCDEF);
  CMessage one, two;
  one.make_multipart(u"mixed");
  two.make_multipart(u"mixed");
  EXPECT_NE(one.PartsBoundary(), two.PartsBoundary());
  char tail[64];
  std::snprintf(tail, sizeof tail, ".ABCDEF.%x.%X", platform::process_identifier(), platform::thread_identifier());
  EXPECT_TRUE(plain(one.PartsBoundary()).ends_with(tail)) << plain(one.PartsBoundary());
}

TEST(MakeMultipart, of_a_message_that_is_multipart_changes_nothing_unless_its_type_is_in_capitals) {
  CMessage message;
  message.SetContentType(u"multipart/x");
  message.make_multipart(u"mixed");
  EXPECT_EQ(message.ContentType(), u"multipart/x");
  EXPECT_EQ(message.PartsBoundary(), u"");
  message.SetContentType(u"Multipart/x");
  message.make_multipart(u"mixed");
  EXPECT_TRUE(message.ContentType().starts_with(u"multipart/mixed;"));
}

TEST(MakeMultipart, keeps_the_text_that_the_message_has_as_its_preamble) {
  Mailbox box("From a\nA: b\n\nbody\n");
  box.control().Lock();
  box.message(0)->make_multipart(u"mixed");
  EXPECT_EQ(box.message(0)->Text(), u"body\n");
  EXPECT_FALSE(box.message(0)->PartsBoundary().starts_with(u"------"));
}

TEST(SetTextPart, the_first_call_makes_a_plain_message_multipart_alternative_with_one_part) {
  tests::TemporaryFolder folder;
  CMessage message;
  message.set_text_part(u"text/plain", u"hello");
  const std::string boundary = plain(message.PartsBoundary());
  ASSERT_EQ(message.Parts()->Count(), 1);
  EXPECT_EQ(message.PlainText(), u"hello\r\n");
  EXPECT_EQ(saved(message, folder), "MIME-Version: 1.0\r\nContent-Type: multipart/alternative;\r\n\t boundary=\"" +
                                        boundary + "\"\r\n\r\n--" + boundary +
                                        "\r\nContent-Type: text/plain\r\n\r\nhello\r\n--" + boundary + "--\r\n\r\n");
}

TEST(SetTextPart, a_second_call_with_the_other_type_adds_the_second_part) {
  CMessage message;
  message.set_text_part(u"text/plain", u"hello");
  message.set_text_part(u"text/html", u"<p>");
  ASSERT_EQ(message.Parts()->Count(), 2);
  EXPECT_EQ(message.PlainText(), u"hello\r\n");
  EXPECT_EQ(message.HTMLText(), u"<p>\r\n");
}

TEST(SetTextPart, a_repeated_call_replaces_the_text_of_the_part) {
  CMessage message;
  message.set_text_part(u"text/plain", u"hello");
  const auto part = message.Parts()->Item(0);
  message.set_text_part(u"text/plain", u"again");
  EXPECT_EQ(message.Parts()->Count(), 1);
  EXPECT_EQ(message.Parts()->Item(0), part);
  EXPECT_EQ(message.PlainText(), u"again\r\n");
  EXPECT_EQ(message.MIMEVersion(), u"1.0");
}

TEST(SetTextPart, of_a_message_of_that_type_sets_its_own_text) {
  CMessage message;
  message.SetContentType(u"multipart/related; type=\"text/html\"");
  message.set_text_part(u"text/html", u"<p>");
  EXPECT_EQ(message.Parts()->Count(), 0);
  EXPECT_EQ(message.Text(), u"<p>\r\n");
}

TEST(SetTextPart, a_text_part_goes_through_a_file_and_is_read_and_written_the_same_again) {
  tests::TemporaryFolder folder;
  CMessage message;
  message.set_text_part(u"text/plain", u"a");
  message.set_text_part(u"text/html", u"b");
  const std::string first = saved(message, folder);
  CMessage again;
  again.Peek(wide(folder.file("first.eml", first)));
  ASSERT_EQ(again.Parts()->Count(), 2);
  EXPECT_EQ(again.Parts()->Item(1)->MailInfo(), again.PartsBoundary());
  EXPECT_EQ(again.PartsBoundary(), u"--" + message.PartsBoundary());
  EXPECT_EQ(saved(again, folder), first);
}

TEST(AddedPart, of_a_message_with_parts_comes_behind_them) {
  Mailbox box(kMultipart);
  box.control().Lock();
  const auto added = box.message(0)->Parts()->Add(wide(box.folder().file("part", "C: 3\n\nthree\n")));
  EXPECT_EQ(added->MailInfo(), u"--bound");
  box.control().Update();
  EXPECT_EQ(box.content(),
            "From a\r\nContent-Type: multipart/mixed; boundary=bound\r\n\r\npre\n--bound\r\nA: 1\r\n\r\none\n"
            "--bound\r\nB: 2\r\n\r\ntwo\n--bound\r\nC: 3\r\n\r\nthree\n--bound--\r\n\r\n\r\n");
}

TEST(AddedPart, of_a_message_with_a_boundary_but_no_delimiter_line_is_written_between_delimiters) {
  Mailbox box("From a\nContent-Type: multipart/mixed; boundary=bound\n\ntext\n");
  box.control().Lock();
  box.message(0)->Parts()->Add(wide(box.folder().file("part", "C: 3\n\nthree\n")));
  box.control().Update();
  EXPECT_EQ(box.content(),
            "From a\r\nContent-Type: multipart/mixed; boundary=bound\r\n\r\ntext\n--bound\r\nC: 3\r\n\r\nthree\n"
            "--bound--\r\n\r\n\r\n");
}

TEST(AddedPart, an_existing_message_object_makes_a_plain_message_multipart_too) {
  Mailbox box("From a\nContent-Type: text/plain\n\ntext\n"), other("From z\nS: z\n\nzz\n");
  box.control().Lock();
  other.control().Lock();
  box.message(0)->Parts()->Add(other.message(0));
  const std::string boundary = plain(box.message(0)->PartsBoundary());
  box.control().Update();
  EXPECT_EQ(box.content(), "From a\r\nContent-Type: multipart/mixed; boundary=\"" + boundary.substr(2) +
                               "\"\r\n\r\ntext\n" + boundary + "\r\nS: z\r\n\r\nzz\n" + boundary + "--\r\n\r\n\r\n");
}

TEST(AddedPart, a_message_cannot_become_a_part_of_itself) {
  const auto message = std::make_shared<CMessage>();
  const auto inner = message->Parts()->Add();
  tests::expect_status(Status::invalid_argument, [&] { message->Parts()->Add(message); });
  tests::expect_status(Status::invalid_argument, [&] { inner->Parts()->Add(message); });
  tests::expect_status(Status::invalid_argument, [&] { inner->Parts()->Add(inner); });
  EXPECT_EQ(message->Parts()->Count(), 1);
  EXPECT_EQ(inner->Parts()->Count(), 0);
}

TEST(AddedPart, only_the_first_content_type_header_is_replaced) {
  Mailbox box("From a\nContent-Type: text/plain\nX: y\nContent-type: text/html\n\ntext\n");
  box.control().Lock();
  box.message(0)->Parts()->Add();
  CHeaders& headers = *box.message(0)->Headers();
  ASSERT_EQ(headers.Count(), 3);
  EXPECT_EQ(headers.Item(0)->Name(), u"X");
  EXPECT_EQ(headers.Item(1)->Value(), u"text/html");
  EXPECT_TRUE(headers.Item(2)->Value().starts_with(u"multipart/mixed; boundary=\"----=_NextPart_"));
}

}  // namespace
}  // namespace vellobar
