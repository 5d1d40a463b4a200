#include <gtest/gtest.h>

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "platform/clock.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::wide;

// Wednesday, 4 November 2026, 9:05:07 in a place three hours east of UTC.
const platform::ClockReading kClock = {{2026, 11, 3, 4, 6, 5, 7, 0}, {2026, 11, 3, 4, 9, 5, 7, 0}};

constexpr std::string_view kFirstHeaders =
    "From: \"Ann\" <ann@example.org>\r\n"
    "To: \"bob@example.org\" <bob@example.org>\r\n"
    "Subject: greetings\r\n"
    "Date: Wed, 4 Nov 2026 09:05:07 +0003\r\n";

// The identifier's digits belong to tick 1000; see the tests of the identifier.
constexpr std::string_view kComponentHeaders =
    "X-Mailer: Quorvane! Vellobar Component 2.2.6.119\r\n"
    "X-MimeOLE: X-MimeOLE: Produced by Quorvane! Vellobar Component 2.2.6.119\r\n"
    "Message-ID: <8D165F0280B32FCCA5461D2788550FF6@my_host>\r\n";

constexpr std::u16string_view kFrom = u"Ann <ann@example.org>";
constexpr std::u16string_view kTo = u"bob@example.org";
constexpr std::u16string_view kSubject = u"greetings";

class Builders : public testing::Test {
 protected:
  std::u16string target() const { return wide(files_.path("new.eml")); }
  std::string written() const { return tests::read_file(files_.path("new.eml")); }
  bool is_written() const { return std::filesystem::exists(files_.path("new.eml")); }
  std::u16string file_to_attach(std::string_view content) const { return wide(files_.file("x\\a.bin", content)); }

  void SetUp() override { std::filesystem::create_directory(files_.path("x")); }

  /// The boundary that the written message names, which holds the process and the thread.
  std::string boundary() const {
    const std::string text = written();
    constexpr std::string_view kBefore = "boundary=\"";
    const std::size_t start = text.find(kBefore) + kBefore.size();
    return text.substr(start, text.find('"', start) - start);
  }

  tests::TemporaryFolder files_;
  tests::TemporaryFolder temporary_;
  platform::FixedTemporaryFolder fixed_folder_{temporary_.path("")};
  platform::FixedClock clock_{kClock, 1000};
  platform::FixedHostName host_{"my host"};
  CVellobar control_;
};

TEST_F(Builders, the_component_headers_are_exact) {
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"hello\r\n");
  EXPECT_EQ(written(), std::string(kFirstHeaders) + "Content-Type: text/plain\r\n" + std::string(kComponentHeaders) +
                           "\r\nhello\r\n");
}

TEST_F(Builders, an_empty_text_still_produces_a_text_plain_message_with_an_empty_body) {
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"");
  EXPECT_EQ(written(),
            std::string(kFirstHeaders) + "Content-Type: text/plain\r\n" + std::string(kComponentHeaders) + "\r\n\r\n");
}

TEST_F(Builders, empty_addresses_and_subject_leave_their_headers_out) {
  control_.CreateSimpleMessage(target(), u"", u"", u"", u"x");
  EXPECT_TRUE(written().starts_with("Date: Wed, 4 Nov 2026 09:05:07 +0003\r\nContent-Type: text/plain\r\n"));
}

TEST_F(Builders, two_messages_built_within_the_same_clock_tick_get_the_same_identifier) {
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"1");
  const std::string first = written();
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"2");
  const std::string identifier = "Message-ID: <8D165F0280B32FCCA5461D2788550FF6@my_host>\r\n";
  EXPECT_NE(first.find(identifier), first.npos);
  EXPECT_NE(written().find(identifier), first.npos);
}

TEST_F(Builders, without_a_host_name_the_identifier_says_localhost) {
  const platform::FixedHostName none{""};
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"1");
  EXPECT_NE(written().find("@localhost>\r\n"), std::string::npos);
}

TEST_F(Builders, the_written_file_never_begins_with_a_from_line) {
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"From me to you\r\n");
  EXPECT_TRUE(written().starts_with("From: "));
  control_.CreateTextHtmlAttachmentMessage(target(), kFrom, kTo, kSubject, u"t", u"h", file_to_attach("x"));
  EXPECT_TRUE(written().starts_with("From: "));
}

TEST_F(Builders, two_texts_make_a_multipart_alternative) {
  control_.CreateTextHtmlMessage(target(), kFrom, kTo, kSubject, u"plain\r\n", u"<p>rich</p>\r\n");
  const std::string boundary = this->boundary();
  EXPECT_TRUE(boundary.starts_with("----_=_Vellobar.")) << boundary;
  EXPECT_EQ(written(), std::string(kFirstHeaders) +
                           "MIME-Version: 1.0\r\n"
                           "Content-Type: multipart/alternative;\r\n\t boundary=\"" +
                           boundary + "\"\r\n" + std::string(kComponentHeaders) + "\r\n--" + boundary +
                           "\r\nContent-Type: text/plain\r\n\r\nplain\r\n--" + boundary +
                           "\r\nContent-Type: text/html\r\n\r\n<p>rich</p>\r\n--" + boundary + "--\r\n\r\n");
}

TEST_F(Builders, a_text_with_an_attachment_makes_a_multipart_mixed) {
  control_.CreateSimpleAttachmentMessage(target(), kFrom, kTo, kSubject, u"plain\r\n", file_to_attach("ABC"));
  const std::string boundary = this->boundary();
  EXPECT_EQ(written(), std::string(kFirstHeaders) + "Content-Type: multipart/mixed;\r\n\t boundary=\"" + boundary +
                           "\"\r\nMIME-Version: 1.0\r\n" + std::string(kComponentHeaders) + "\r\n--" + boundary +
                           "\r\nContent-Type: text/plain\r\n\r\nplain\r\n--" + boundary +
                           "\r\nContent-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
                           "Content-Transfer-Encoding: base64\r\n"
                           "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\nQUJD\r\n--" +
                           boundary + "--\r\n\r\n");
}

TEST_F(Builders, an_attachment_beside_two_texts_is_the_third_part_of_the_alternative) {
  control_.CreateTextHtmlAttachmentMessage(target(), kFrom, kTo, kSubject, u"plain\r\n", u"<p>\r\n",
                                           file_to_attach("ABC"));
  const std::string boundary = this->boundary();
  EXPECT_EQ(written(), std::string(kFirstHeaders) +
                           "MIME-Version: 1.0\r\n"
                           "Content-Type: multipart/alternative;\r\n\t boundary=\"" +
                           boundary + "\"\r\n" + std::string(kComponentHeaders) + "\r\n--" + boundary +
                           "\r\nContent-Type: text/plain\r\n\r\nplain\r\n--" + boundary +
                           "\r\nContent-Type: text/html\r\n\r\n<p>\r\n--" + boundary +
                           "\r\nContent-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
                           "Content-Transfer-Encoding: base64\r\n"
                           "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\nQUJD\r\n--" +
                           boundary + "--\r\n\r\n");
}

TEST_F(Builders, a_missing_attachment_reports_30011_and_writes_nothing) {
  const std::u16string missing = wide(files_.path("missing"));
  expect_error(ErrorNumber::cannot_open_file, Reporter::vellobar,
               [&] { control_.CreateSimpleAttachmentMessage(target(), kFrom, kTo, kSubject, u"t", missing); });
  expect_error(ErrorNumber::cannot_open_file, Reporter::vellobar,
               [&] { control_.CreateTextHtmlAttachmentMessage(target(), kFrom, kTo, kSubject, u"t", u"h", missing); });
  EXPECT_FALSE(is_written());
}

TEST_F(Builders, an_empty_attachment_name_reports_30007_and_writes_nothing) {
  expect_error(ErrorNumber::filename_not_given, Reporter::vellobar,
               [&] { control_.CreateSimpleAttachmentMessage(target(), kFrom, kTo, kSubject, u"t", u""); });
  EXPECT_FALSE(is_written());
}

TEST_F(Builders, an_unwritable_target_reports_30002) {
  const std::u16string target = wide(files_.path("missing/new.eml"));
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message,
               [&] { control_.CreateSimpleMessage(target, kFrom, kTo, kSubject, u"t"); });
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message,
               [&] { control_.CreateTextHtmlMessage(u"", kFrom, kTo, kSubject, u"t", u"h"); });
}

TEST_F(Builders, the_locked_mailbox_is_refused_as_a_target_and_stays_whole) {
  tests::Mailbox box("From a\n\nbody\n");
  box.control().Lock();
  expect_error(ErrorNumber::cannot_update_mailbox, Reporter::message,
               [&] { box.control().CreateSimpleMessage(wide(box.path()), kFrom, kTo, kSubject, u"t"); });
  EXPECT_EQ(box.content(), "From a\n\nbody\n");
}

TEST_F(Builders, leave_the_mailbox_alone_and_unchanged) {
  tests::Mailbox box("From a\n\nbody\n");
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  box.control().CreateSimpleAttachmentMessage(target(), kFrom, kTo, kSubject, u"t", file_to_attach("x"));
  EXPECT_FALSE(box.control().Changed());
  EXPECT_EQ(box.count(), 1);
  EXPECT_EQ(box.content(), "From a\n\nbody\n");
}

TEST_F(Builders, an_existing_target_is_replaced) {
  files_.file("new.eml", std::string(100'000, 'x'));
  control_.CreateSimpleMessage(target(), kFrom, kTo, kSubject, u"hello\r\n");
  EXPECT_TRUE(written().ends_with("\r\n\r\nhello\r\n"));
}

TEST_F(Builders, what_they_write_is_locked_listed_and_extracted_again) {
  std::vector<std::size_t> sizes;
  for (std::size_t size = 0; size <= 200; ++size) sizes.push_back(size);
  for (const std::size_t edge : {260, 512, 570, 1024, 16384, 32768, 49152, 65536, 262144}) {
    for (std::size_t size = edge - 1; size <= edge + 1; ++size) sizes.push_back(size);
  }
  for (const std::size_t size : sizes) {
    std::string content;
    for (std::size_t i = 0; i < size; ++i) content += static_cast<char>(i * 37 + i / 256 + 11);
    control_.CreateTextHtmlAttachmentMessage(target(), kFrom, kTo, kSubject, u"plain\r\n", u"<p>\r\n",
                                             file_to_attach(content));
    CVellobar reader;
    reader.SetFilename(target());
    reader.Lock();
    ASSERT_EQ(reader.Messages()->Count(), 1);
    const auto message = reader.Messages()->Item(0);
    EXPECT_EQ(message->From(), u"\"Ann\" <ann@example.org>");
    EXPECT_EQ(message->Subject(), kSubject);
    EXPECT_EQ(message->PlainText(), u"plain\r\n");
    EXPECT_EQ(message->HTMLText(), u"<p>\r\n");
    ASSERT_EQ(message->Attachments()->Count(), 1);
    EXPECT_EQ(message->Attachments()->Item(0)->Name(), u"a.bin");
    message->Attachments()->Item(0)->Save(wide(files_.path("out")));
    EXPECT_TRUE(tests::read_file(files_.path("out")) == content) << size;
  }
}

}  // namespace
}  // namespace vellobar
