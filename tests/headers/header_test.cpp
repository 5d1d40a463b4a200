#include "headers/header.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

TEST(Header, to_string_joins_name_and_value) {
  EXPECT_EQ(CHeader(nullptr, u"Subject", u"hello").ToString(), u"Subject: hello");
}

TEST(Header, with_an_empty_value_to_string_ends_behind_the_blank) {
  EXPECT_EQ(CHeader(nullptr, u"Name", u"").ToString(), u"Name: ");
}

TEST(Header, with_an_empty_name_to_string_begins_with_the_colon) {
  EXPECT_EQ(CHeader(nullptr, u"", u"Value").ToString(), u": Value");
}

TEST(Header, to_string_folds_nothing) {
  const std::u16string value(5000, u'v');
  EXPECT_EQ(CHeader(nullptr, u"X", value + u"\r\n\tw").ToString(), u"X: " + value + u"\r\n\tw");
}

TEST(Header, characters_that_the_process_code_page_cannot_hold_come_back_as_question_marks) {
  const CHeader header(nullptr, u"X", u"\u4e2d\u00e9");
  tests::CodePageGuard latin2(1251);
  EXPECT_EQ(header.ToString().substr(0, 4), u"X: ?");
}

TEST(Header, parse_line_splits_at_the_first_colon_that_a_blank_follows) {
  CHeader header;
  EXPECT_TRUE(header.parse_line(u"a:b: c: d"));
  EXPECT_EQ(header.Name(), u"a:b");
  EXPECT_EQ(header.Value(), u"c: d");
}

TEST(Header, parse_line_without_colon_and_blank_fails_and_changes_nothing) {
  CHeader header(nullptr, u"N", u"V");
  EXPECT_FALSE(header.parse_line(u"a:b"));
  EXPECT_EQ(header.Name(), u"N");
  EXPECT_EQ(header.Value(), u"V");
}

TEST(Header, name_and_value_puts_mark_the_mailbox_changed) {
  tests::Mailbox box("From a\nX: 1\n\n");
  box.control().Lock();
  const auto header = box.message(0)->Headers()->Item(0);
  header->SetName(u"Y");
  EXPECT_TRUE(box.control().Changed());
  box.control().Update();
  box.message(0)->Headers()->Item(0)->SetValue(u"2");
  EXPECT_TRUE(box.control().Changed());
  EXPECT_FALSE(box.message(0)->Changed()) << "the message's own flag is another one";
}

TEST(Header, parsing_a_line_marks_nothing) {
  tests::Mailbox box("From a\nX: 1\n\n");
  box.control().Lock();
  box.message(0)->Headers()->Item(0)->parse_line(u"Y: 2");
  EXPECT_FALSE(box.control().Changed());
}

}  // namespace
}  // namespace vellobar
