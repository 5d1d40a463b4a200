#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/code_page.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::CodePageGuard;
using tests::expect_status;
using tests::Mailbox;
using tests::wide;

/// A locked mailbox of one message with these header lines (LF ends).
class OneMessage : public Mailbox {
 public:
  explicit OneMessage(std::string_view headers) : Mailbox("From a\n" + std::string(headers) + "\nbody\n") {
    control().Lock();
    message_ = Mailbox::message(0);
  }

  CMessage* operator->() { return message_.get(); }
  CMessage& operator*() { return *message_; }
  /// The header block as it would be written.
  std::u16string block() { return message_->Headers()->ToString(); }

 private:
  std::shared_ptr<CMessage> message_;
};

using TextGetter = std::u16string (CMessage::*)();
using TextSetter = void (CMessage::*)(std::u16string_view);

struct Property {
  const char* header;
  TextGetter get;
  TextSetter set;
};

/// The properties that store what they are given.
constexpr Property kPlainProperties[] = {
    {"Subject", &CMessage::Subject, &CMessage::SetSubject},
    {"Content-Description", &CMessage::ContentDescription, &CMessage::SetContentDescription},
    {"Content-Disposition", &CMessage::ContentDisposition, &CMessage::SetContentDisposition},
    {"Content-ID", &CMessage::ContentID, &CMessage::SetContentID},
    {"Content-Transfer-Encoding", &CMessage::ContentTransferEncoding, &CMessage::SetContentTransferEncoding},
    {"Content-Type", &CMessage::ContentType, &CMessage::SetContentType},
    {"Message-ID", &CMessage::MessageID, &CMessage::SetMessageID},
    {"MIME-Version", &CMessage::MIMEVersion, &CMessage::SetMIMEVersion},
    {"Content-Subtype", &CMessage::ContentSubtype, &CMessage::SetContentSubtype},
    {"Content-Subtype-Parameters", &CMessage::ContentSubtypeParameters, &CMessage::SetContentSubtypeParameters},
};

constexpr Property kAddressProperties[] = {
    {"From", &CMessage::From, &CMessage::SetFrom},
    {"To", &CMessage::To, &CMessage::SetTo},
    {"CC", &CMessage::CC, &CMessage::SetCC},
    {"BCC", &CMessage::BCC, &CMessage::SetBCC},
};

// ---- Reading ----

TEST(NamedProperties, each_reads_the_header_of_its_name_in_any_case) {
  for (const Property& property : kPlainProperties) {
    OneMessage mail(std::string(property.header) + ": value\n");
    EXPECT_EQ(((*mail).*property.get)(), u"value") << property.header;
  }
  for (const Property& property : kAddressProperties) {
    OneMessage mail(std::string(property.header) + ": a@x\n");
    EXPECT_EQ(((*mail).*property.get)(), u"a@x") << property.header;
  }
  EXPECT_EQ(OneMessage("sUBJECT: value\n")->Subject(), u"value");
  EXPECT_EQ(OneMessage("Subjects: value\n")->Subject(), u"");
  EXPECT_EQ(OneMessage("Subject : value\n")->Subject(), u"");
}

TEST(NamedProperties, a_missing_header_an_empty_one_and_unreadable_headers_all_read_as_empty) {
  OneMessage missing("X: y\n");
  OneMessage empty("Subject:\nSubject: second\n");
  OneMessage unreadable("Subject: x\nX: " + std::string(20'000, 'y') + "\n");
  CMessage alone;
  for (CMessage* message : {&*missing, &*unreadable, &alone}) {
    for (const Property& property : kPlainProperties) EXPECT_EQ((message->*property.get)(), u"");
    for (const Property& property : kAddressProperties) EXPECT_EQ((message->*property.get)(), u"");
    for (const TextGetter getter :
         {&CMessage::FromName, &CMessage::FromEmail, &CMessage::ToName, &CMessage::ToEmail, &CMessage::CharSet}) {
      EXPECT_EQ((message->*getter)(), u"");
    }
    EXPECT_EQ(message->code_page(), 0);
  }
  EXPECT_EQ(empty->Subject(), u"");
}

TEST(NamedProperties, only_the_first_header_of_a_name_is_read_and_replaced) {
  OneMessage mail("To: a@x\nTo: b@y\n");
  EXPECT_EQ(mail->To(), u"a@x");
  mail->SetTo(u"c@z");
  EXPECT_EQ(mail.block(), u"To: \"c@z\" <c@z>\r\nTo: b@y\r\n");
}

TEST(NamedProperties, a_tab_fold_is_removed_on_reading_and_a_space_fold_stays) {
  EXPECT_EQ(OneMessage("Subject: a\n\tb\n")->Subject(), u"ab");
  EXPECT_EQ(OneMessage("Subject: a\n b\n")->Subject(), u"a\r\n b");
}

TEST(NamedProperties, values_are_narrowed_with_the_process_code_page_before_they_are_decoded) {
  OneMessage mail("Subject: \xE9 =?windows-1252?q?=E9?=\n");
  EXPECT_EQ(mail->Subject(), u"\u00E9 \u00E9");
  // In 1251 there is no such letter.
  const CodePageGuard guard(1251);
#ifdef _WIN32
  EXPECT_EQ(mail->Subject(), u"e \u00E9");
#else
  EXPECT_EQ(mail->Subject(), u"? \u00E9");
#endif
}

TEST(NamedProperties, a_process_code_page_the_platform_lacks_gives_empty_texts) {
  OneMessage mail("Subject: x\n");
  const CodePageGuard guard(4321);
  EXPECT_EQ(mail->Subject(), u"");
}

TEST(NamedProperties, a_megabyte_value_is_read) {
  std::string lines;
  std::u16string expected;
  while (expected.size() < (std::size_t{1} << 20)) {
    lines += "\t" + std::string(100, 'x') + "\n";
    expected += std::u16string(100, u'x');
  }
  EXPECT_EQ(OneMessage("Subject: \n" + lines)->Subject(), expected);
}

TEST(NamedProperties, no_header_is_lost_to_the_bad_value_of_another) {
  const std::string wrong[] = {"=?utf-8?q?open", "=?no-such-charset?q?x?=", "=?windows-4321?q?x?=",
                               "\"<'@;,",        "=?utf-8?b?!!!!?=",        std::string("\xED\xA0\x80\0x", 5)};
  for (const std::string& value : wrong) {
    OneMessage mail("From: " + value + "\nTo: " + value + "\nDate: 15 Nov\nSubject: " + value + "\nX: y\n");
    for (const Property& property : kPlainProperties) ((*mail).*property.get)();
    for (const Property& property : kAddressProperties) ((*mail).*property.get)();
    mail->FromName();
    mail->FromEmail();
    mail->ToName();
    mail->ToEmail();
    EXPECT_EQ(mail->Headers()->Count(), 5) << value;
    EXPECT_EQ(mail->Headers()->Item(u"X")->Value(), u"y") << value;
    mail->SetContentID(u"z");
    mail.control().Update();
    EXPECT_TRUE(mail.content().starts_with("From a\r\nFrom: " + value + "\r\nTo: " + value + "\r\nDate: 15 Nov\r\n" +
                                           "Subject: " + value + "\r\nX: y\r\nContent-ID: z\r\n\r\n"))
        << value;
  }
}

// ---- Writing ----

TEST(NamedProperties, a_set_after_a_read_keeps_the_headers_place_and_the_spelling_of_its_name) {
  OneMessage mail("A: 1\nsubject: Hello\nB: 2\n");
  EXPECT_EQ(mail->Subject(), u"Hello");
  mail->SetSubject(u"Bye");
  EXPECT_EQ(mail.block(), u"A: 1\r\nsubject: Bye\r\nB: 2\r\n");
}

TEST(NamedProperties, setting_a_property_before_anything_was_read_appends_a_second_header) {
  OneMessage mail("Subject: old\nA: 1\n");
  mail->SetSubject(u"new");
  EXPECT_EQ(mail->Subject(), u"old");
  EXPECT_EQ(mail.block(), u"Subject: old\r\nA: 1\r\nSubject: new\r\n");
  mail.control().Update();
  EXPECT_TRUE(mail.content().starts_with("From a\r\nSubject: old\r\nA: 1\r\nSubject: new\r\n\r\nbody\n"));
}

TEST(NamedProperties, setting_an_empty_subject_after_a_read_removes_the_first_and_adds_nothing_when_there_is_none) {
  OneMessage mail("Subject: one\nSubject: two\n");
  mail->Subject();
  mail->SetSubject(u"");
  EXPECT_EQ(mail.block(), u"Subject: two\r\n");
  mail->SetSubject(u"");
  mail->SetSubject(u"");
  EXPECT_EQ(mail.block(), u"");
}

TEST(NamedProperties, an_empty_value_before_anything_was_read_adds_and_removes_nothing) {
  OneMessage mail("Subject: one\n");
  mail->SetSubject(u"");
  EXPECT_EQ(mail.block(), u"Subject: one\r\n");
}

TEST(NamedProperties, each_is_appended_last_under_its_own_spelling) {
  for (const Property& property : kPlainProperties) {
    OneMessage mail("A: 1\n");
    ((*mail).*property.set)(u"value");
    EXPECT_EQ(mail.block(), u"A: 1\r\n" + wide(property.header) + u": value\r\n");
    EXPECT_EQ(((*mail).*property.get)(), u"value");
  }
  for (const Property& property : kAddressProperties) {
    OneMessage mail("A: 1\n");
    ((*mail).*property.set)(u"a <a@x>");
    EXPECT_EQ(mail.block(), u"A: 1\r\n" + wide(property.header) + u": \"a\" <a@x>\r\n");
  }
}

TEST(NamedProperties, headers_that_cannot_be_read_are_not_written_either) {
  OneMessage mail("X: " + std::string(20'000, 'y') + "\n");
  mail->SetSubject(u"new");
  mail->SetDate(0);
  mail->SetTo(u"a@x");
  EXPECT_EQ(mail->load_headers(), nullptr);
  EXPECT_EQ(mail->Subject(), u"");
}

TEST(NamedProperties, setting_any_property_leaves_the_mailbox_unchanged_and_writes_nothing) {
  OneMessage mail("A: 1\n");
  mail.control().SetAutoUpdate(true);
  const std::string before = mail.content();
  for (const Property& property : kPlainProperties) ((*mail).*property.set)(u"value");
  for (const Property& property : kAddressProperties) ((*mail).*property.set)(u"a@x");
  mail->SetDate(0);
  mail->SetCharSet(u"utf-8");
  EXPECT_FALSE(mail.control().Changed());
  EXPECT_FALSE(mail->Changed());
  EXPECT_EQ(mail.content(), before);
}

TEST(NamedProperties, values_are_stored_as_given_whatever_their_form) {
  OneMessage mail("A: 1\n");
  mail->SetContentType(u"text/plain;\r\n\tcharset=utf-8");
  mail->SetMIMEVersion(u"2");
  mail->SetMessageID(u" no brackets ");
  EXPECT_EQ(
      mail.block(),
      u"A: 1\r\nContent-Type: text/plain;\r\n\tcharset=utf-8\r\nMIME-Version: 2\r\nMessage-ID:  no brackets \r\n");
  EXPECT_EQ(mail->ContentType(), u"text/plain;charset=utf-8");
  mail.control().Update();
  EXPECT_TRUE(
      mail.content().starts_with("From a\r\nA: 1\r\nContent-Type: text/plain;\r\n\tcharset=utf-8\r\nMIME-Version: 2\r\n"
                                 "Message-ID:  no brackets \r\n\r\nbody\n"));
}

TEST(NamedProperties, a_subject_with_8_bit_text_becomes_one_utf8_word_and_plain_text_stays) {
  const CodePageGuard guard(1252);
  OneMessage mail("A: 1\n");
  mail->SetSubject(u"Gr\u00FC\u00DFe");
  EXPECT_EQ(mail.block(), u"A: 1\r\nSubject: =?UTF-8?B?R3LDvMOfZQ==?=\r\n");
  EXPECT_EQ(mail->Subject(), u"Gr\u00FC\u00DFe");
  mail->SetSubject(u"plain");
  EXPECT_EQ(mail.block(), u"A: 1\r\nSubject: plain\r\n");
}

TEST(NamedProperties, what_the_process_code_page_cannot_hold_does_not_cause_encoding) {
  const CodePageGuard guard(1252);
  OneMessage mail("A: 1\n");
  mail->SetSubject(u"\u4E00");
  EXPECT_EQ(mail->Headers()->Item(u"Subject")->Value(), u"\u4E00");
  // Beside one that it can hold, all of the text is encoded: U+4E00 is E4 B8 80, U+00FC is C3 BC.
  mail->SetSubject(u"\u4E00\u00FC");
  EXPECT_EQ(mail->Headers()->Item(u"Subject")->Value(), u"=?UTF-8?B?5LiAw7w=?=");
}

TEST(NamedProperties, setting_cc_to_an_empty_text_removes_the_first_cc) {
  OneMessage mail("CC: a@x\nCC: b@y\n");
  mail->CC();
  mail->SetCC(u"");
  EXPECT_EQ(mail.block(), u"CC: b@y\r\n");
  mail->SetCC(u" , ,");
  EXPECT_EQ(mail.block(), u"");
}

TEST(NamedProperties, setting_to_with_a_semicolon_stores_one_entry) {
  OneMessage mail("A: 1\n");
  mail->SetTo(u"a@x; b@y");
  EXPECT_EQ(mail->To(), u"\"a@x; b@y\" <a@x;>");
}

// ---- The charset ----

TEST(NamedProperties, the_charset_of_a_message_and_its_code_page_come_from_its_content_type) {
  const struct {
    const char* header;
    const char16_t* charset;
    int code_page;
  } rows[] = {
      {"Content-Type: text/html; charset=\"windows-1250\"\n", u"windows-1250", 1250},
      {"Content-Type: text/plain; charset=utf-8; format=flowed\n", u"utf-8;", 0},
      {"Content-Type: text/plain;\n\tcharset=UTF-8\n", u"UTF-8", 65001},
      {"Content-Type: text/plain; charset==?utf-8?q?utf-7?=\n", u"utf-7", 65000},
      {"Content-Type: text/plain; charset=iso-8859-1\n", u"iso-8859-1", 0},
      {"Content-Type: text/plain\n", u"", 0},
      {"X: charset=utf-8\n", u"", 0},
  };
  for (const auto& row : rows) {
    OneMessage mail(row.header);
    EXPECT_EQ(mail->CharSet(), row.charset) << row.header;
    EXPECT_EQ(mail->code_page(), row.code_page) << row.header;
  }
}

TEST(NamedProperties, setting_char_set_changes_nothing_and_reading_gives_the_one_in_content_type) {
  OneMessage mail("Content-Type: text/plain; charset=utf-8\n");
  mail->SetCharSet(u"windows-1250");
  EXPECT_EQ(mail->CharSet(), u"utf-8");
  EXPECT_EQ(mail.block(), u"Content-Type: text/plain; charset=utf-8\r\n");
}

TEST(NamedProperties, the_control_takes_any_number_as_its_char_set_and_reads_it_back) {
  const CodePageGuard guard(0);
  CVellobar::SetCharSet(-17);
  EXPECT_EQ(CVellobar::CharSet(), -17);
}

// ---- Dates and addresses ----

constexpr platform::ClockReading kNoonAtOneHourEast = {{2026, 6, 1, 15, 12, 0, 0, 0}, {2026, 6, 1, 15, 13, 0, 0, 0}};
constexpr double kTenthOfASecond = 0.1 / 86400;

TEST(NamedProperties, a_date_reads_in_the_local_time_of_the_machine) {
  const platform::FixedClock clock(kNoonAtOneHourEast, 0);
  // 15 November 1994 is day 34653; 09:12:31 are 33,151 seconds.
  EXPECT_NEAR(OneMessage("Date: Tue, 15 Nov 1994 08:12:31 GMT\n")->Date(), 34653 + 33151 / 86400.0, kTenthOfASecond);
}

TEST(NamedProperties, a_message_without_a_date_reads_as_the_current_local_time) {
  const platform::FixedClock clock(kNoonAtOneHourEast, 0);
  // 15 June 2026 is day 46188.
  EXPECT_NEAR(OneMessage("A: 1\n")->Date(), 46188 + 13 / 24.0, kTenthOfASecond);
  EXPECT_NEAR(OneMessage("Date:\n")->Date(), 46188 + 13 / 24.0, kTenthOfASecond);
}

TEST(NamedProperties, a_date_whose_month_cannot_be_read_is_an_invalid_argument) {
  OneMessage mail("Date: Tue, 15 Foo 1994 08:12:31 GMT\n");
  expect_status(Status::invalid_argument, [&] { mail->Date(); });
}

TEST(NamedProperties, a_date_is_written_in_its_fixed_form) {
  const platform::FixedClock clock(kNoonAtOneHourEast, 0);
  OneMessage mail("Date: x\nA: 1\n");
  mail->Headers();
  mail->SetDate(34653.5);
  EXPECT_EQ(mail.block(), u"Date: Tue, 15 Nov 1994 12:00:00 +0001\r\nA: 1\r\n");
}

TEST(NamedProperties, names_and_addresses_come_from_from_and_to) {
  OneMessage mail("From: \"Smith, John\" <js@example>\nTo: a <a@x>, b <b@y>; c@z\n");
  EXPECT_EQ(mail->FromName(), u"Smith, John");
  EXPECT_EQ(mail->FromEmail(), u"js@example");
  EXPECT_EQ(mail->ToName(), u"a, b, c@z");
  EXPECT_EQ(mail->ToEmail(), u"a@x, b@y, c@z");
}

TEST(NamedProperties, from_is_not_split_so_the_first_of_two_addresses_is_found) {
  OneMessage mail("From: a <a@x>, b <b@y>\n");
  EXPECT_EQ(mail->FromName(), u"a");
  EXPECT_EQ(mail->FromEmail(), u"a@x");
}

TEST(NamedProperties, a_comma_in_quotes_does_not_split_to_when_read_and_does_when_set) {
  OneMessage mail("To: \"Doe, Jane\" <jd@x>\n");
  EXPECT_EQ(mail->ToEmail(), u"jd@x");
  mail->SetTo(u"\"Doe, Jane\" <jd@x>");
  EXPECT_EQ(mail->To(), u"\"Doe\", \"Jane\" <<jd@x>>");
}

TEST(NamedProperties, names_are_taken_from_decoded_text_in_the_process_code_page) {
  OneMessage mail("From: =?utf-8?q?J=C3=B6rg?= <j@x>\n");
  EXPECT_EQ(mail->FromName(), u"J\u00F6rg");
  EXPECT_EQ(mail->FromEmail(), u"j@x");
}

TEST(NamedProperties, names_taken_as_UTF8_are_read_in_the_code_page_of_the_thread) {
  // Deliberate: the bytes C3 B6 of a letter become two letters, where that code page has a letter for each byte.
  const CodePageGuard guard(65001);
  const std::u16string name = platform::widen(platform::kThreadCodePage, "J\xC3\xB6rg");
  ASSERT_NE(name, u"J\u00F6rg") << "these tests need a thread whose code page is not UTF-8";
  OneMessage mail("From: =?utf-8?q?J=C3=B6rg?= <j@x>\nTo: \"=?utf-8?q?J=C3=B6rg?=\" <j@x>, b <b@y>\n");
  EXPECT_EQ(mail->From(), u"J\u00F6rg <j@x>");
  EXPECT_EQ(mail->FromName(), name);
  EXPECT_EQ(mail->FromEmail(), u"j@x");
  EXPECT_EQ(mail->ToName(), name + u", b");
  EXPECT_EQ(mail->ToEmail(), u"j@x, b@y");
  // Outside quotes both bytes divide.
  EXPECT_EQ(OneMessage("To: =?utf-8?q?J=C3=B6rg?= <j@x>\n")->ToName(), u"J, rg");
}

TEST(NamedProperties, a_charset_taken_as_UTF8_is_read_in_the_code_page_of_the_thread) {
  const CodePageGuard guard(65001);
  OneMessage mail("Content-Type: text/plain; charset=\"=?utf-8?q?x=C3=A9?=\"\nA: 1\n");
  EXPECT_EQ(mail->ContentType(), u"text/plain; charset=\"x\u00E9\"");
  EXPECT_EQ(mail->CharSet(), platform::widen(platform::kThreadCodePage, "x\xC3\xA9"));
  EXPECT_EQ(OneMessage("Content-Type: text/plain; charset=utf-8\n")->CharSet(), u"utf-8");
}

}  // namespace
}  // namespace vellobar
