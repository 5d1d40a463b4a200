// A header value that was decoded once is kept; whatever may change it must still be seen by the next read.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "headers/header.h"
#include "headers/headers.h"
#include "platform/code_page.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::CodePageGuard;
using tests::Mailbox;

class DecodedHeader : public ::testing::Test {
 protected:
  DecodedHeader() : mailbox_("From a\nSubject: first\nX-Other: =?utf-8?Q?=C3=A4?=\nSubject: later\n\nbody\n") {
    mailbox_.control().Lock();
    message_ = mailbox_.message(0);
  }

  std::u16string subject() { return message_->Subject(); }
  /// Reads twice, so that the value is surely kept, changes something, and reads twice again.
  void expect_after(const std::function<void()>& change, std::u16string_view expected) {
    EXPECT_EQ(subject(), subject());
    change();
    EXPECT_TRUE(subject() == expected);
    EXPECT_TRUE(subject() == expected);
  }
  CMessage& message() { return *message_; }
  CHeaders& headers() { return *message_->Headers(); }

 private:
  Mailbox mailbox_;
  std::shared_ptr<CMessage> message_;
};

}  // namespace

TEST_F(DecodedHeader, follows_the_value_and_the_name_of_the_header_object) {
  const auto header = headers().Item(u"Subject");
  expect_after([&] { header->SetValue(u"second"); }, u"second");
  expect_after([&] { header->SetName(u"X-Renamed"); }, u"later");
  expect_after([&] { headers().Item(u"X-Renamed")->SetName(u"subject"); }, u"second");
  expect_after([&] { header->parse_line(u"Subject: third"); }, u"third");
}

TEST_F(DecodedHeader, follows_the_property_itself) {
  expect_after([&] { message().SetSubject(u"put"); }, u"put");
  expect_after([&] { message().SetSubject(u""); }, u"later");
  expect_after([&] { message().SetSubject(u""); }, u"");
  expect_after([&] { message().SetSubject(u"back"); }, u"back");
}

TEST_F(DecodedHeader, follows_headers_added_and_removed_in_every_way) {
  expect_after([&] { headers().Remove(std::int64_t{0}); }, u"later");
  expect_after([&] { headers().Remove(*headers().Item(u"Subject")); }, u"");
  expect_after([&] { headers().Add(u"SUBJECT", u"added"); }, u"added");
  expect_after([&] { headers().RemoveAll(); }, u"");
  expect_after([&] { headers().FromString(u"Subject: imported\r\n"); }, u"imported");
  expect_after([&] { headers().continue_last("\tmore"); }, u"importedmore");
  expect_after([&] { headers().Remove(u"Subject"); }, u"");
}

TEST_F(DecodedHeader, is_that_of_the_name_that_is_asked_for) {
  EXPECT_EQ(subject(), u"first");
  EXPECT_EQ(message().decoded_header("X-Other"), u"\u00e4");
  EXPECT_EQ(subject(), u"first");
  EXPECT_EQ(message().decoded_header("X-None"), u"");
  EXPECT_EQ(subject(), u"first");
}

TEST_F(DecodedHeader, of_another_message_is_not_disturbed_by_edits_elsewhere) {
  Mailbox other("From a\nSubject: other\n\nbody\n");
  other.control().Lock();
  EXPECT_EQ(other.message(0)->Subject(), u"other");
  expect_after([&] { message().SetSubject(u"put"); }, u"put");
  EXPECT_EQ(other.message(0)->Subject(), u"other");
}

TEST_F(DecodedHeader, follows_the_process_code_page) {
  const CodePageGuard restored(1252);
  headers().Item(u"Subject")->SetValue(u"caf\u00e9");
  EXPECT_EQ(subject(), u"caf\u00e9");
  // The two bytes of the letter in UTF-8 are two letters in the ANSI code page that reads them.
  expect_after([&] { platform::set_process_code_page(platform::kUtf8CodePage); }, u"caf\u00c3\u00a9");
}

TEST_F(DecodedHeader, is_read_again_after_an_unload) {
  expect_after([&] { message().SetSubject(u"put"); }, u"put");
  expect_after([&] { message().Unload(); }, u"first");
}

}  // namespace vellobar
