#include "headers/headers.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_status;
using tests::Mailbox;

CHeaders& block(CHeaders& headers, std::u16string_view text) {
  headers.FromString(text);
  return headers;
}

TEST(Headers, one_leading_blank_of_the_value_is_dropped_and_nothing_else) {
  CHeaders headers;
  block(headers, u"X-A:value\r\nX-B:  two\r\nX-C :v\r\nX-D:\ttab \r\nX-E: a:b\r\nX-F:\r\n");
  ASSERT_EQ(headers.Count(), 6);
  EXPECT_EQ(headers.Item(0)->Value(), u"value");
  EXPECT_EQ(headers.Item(1)->Value(), u" two");
  EXPECT_EQ(headers.Item(2)->Name(), u"X-C ");
  EXPECT_EQ(headers.Item(2)->Value(), u"v");
  EXPECT_EQ(headers.Item(3)->Value(), u"\ttab ");
  EXPECT_EQ(headers.Item(4)->Value(), u"a:b");
  EXPECT_EQ(headers.Item(5)->Value(), u"");
}

TEST(Headers, item_finds_a_name_whatever_its_case) {
  CHeaders headers;
  block(headers, u"To: x\r\nSubject: y\r\n");
  const auto subject = headers.Item(1);
  EXPECT_EQ(headers.Item(u"subject"), subject);
  EXPECT_EQ(headers.Item(u"SUBJECT"), subject);
  EXPECT_EQ(headers.Item(u"Subject"), subject);
}

TEST(Headers, item_finds_a_name_beyond_ascii_whatever_its_case) {
  CHeaders headers;
  headers.Add(u"X-\u00C4rger", u"1");
  EXPECT_EQ(headers.Item(u"x-\u00E4RGER")->Value(), u"1");
}

TEST(Headers, with_two_of_a_name_item_returns_and_remove_removes_the_first) {
  CHeaders headers;
  block(headers, u"Received: 1\r\nReceived: 2\r\n");
  EXPECT_EQ(headers.Item(u"received")->Value(), u"1");
  headers.Remove(u"Received");
  ASSERT_EQ(headers.Count(), 1);
  EXPECT_EQ(headers.Item(0)->Value(), u"2");
}

TEST(Headers, item_outside_the_positions_is_an_invalid_argument_and_exists_is_false) {
  CHeaders headers;
  block(headers, u"A: 1\r\n");
  EXPECT_EQ(headers.Item(0)->Name(), u"A");
  for (const std::int64_t position : {std::int64_t{1}, std::int64_t{-1}}) {
    expect_status(Status::invalid_argument, [&] { headers.Item(position); });
    EXPECT_FALSE(headers.Exists(position));
  }
  EXPECT_TRUE(headers.Exists(std::int64_t{0}));
}

TEST(Headers, item_given_the_text_0_looks_up_a_name_not_a_position) {
  CHeaders headers;
  block(headers, u"A: 1\r\n");
  expect_status(Status::invalid_argument, [&] { headers.Item(u"0"); });
  EXPECT_FALSE(headers.Exists(u"0"));
  EXPECT_TRUE(headers.Exists(u"a"));
}

TEST(Headers, an_empty_collection_has_no_name_and_no_text) {
  CHeaders headers;
  EXPECT_EQ(headers.ToString(), u"");
  expect_status(Status::invalid_argument, [&] { headers.Item(u""); });
}

TEST(Headers, to_string_ends_each_header_with_cr_lf_and_adds_no_blank_line) {
  CHeaders headers;
  headers.Add(u"Name", u"Value");
  EXPECT_EQ(headers.ToString(), u"Name: Value\r\n");
  headers.Add(u"", u"");
  EXPECT_EQ(headers.ToString(), u"Name: Value\r\n: \r\n");
}

TEST(Headers, add_without_a_value_appends_the_bare_name) {
  CHeaders headers;
  block(headers, u"A: 1\r\n");
  EXPECT_EQ(headers.Add(u"X-New")->Value(), u"");
  EXPECT_EQ(headers.ToString(), u"A: 1\r\nX-New: \r\n");
}

TEST(Headers, add_never_replaces_or_merges) {
  CHeaders headers;
  headers.Add(u"A", u"1");
  headers.Add(u"a", u"2");
  EXPECT_EQ(headers.ToString(), u"A: 1\r\na: 2\r\n");
}

TEST(Headers, from_string_appends_up_to_the_first_blank_line) {
  CHeaders headers;
  headers.Add(u"Old", u"0");
  headers.FromString(u"A: 1\r\nB: 2\r\n\r\nC: 3");
  EXPECT_EQ(headers.ToString(), u"Old: 0\r\nA: 1\r\nB: 2\r\n");
}

TEST(Headers, from_string_reads_a_last_line_without_a_line_end) {
  CHeaders headers;
  headers.FromString(u"A: 1\nB: 2");
  EXPECT_EQ(headers.ToString(), u"A: 1\r\nB: 2\r\n");
}

TEST(Headers, from_string_does_not_join_continuation_lines) {
  CHeaders headers;
  headers.FromString(u"A: 1\r\n\tfolded: yes\r\n dropped\r\nB: 2\r\n");
  ASSERT_EQ(headers.Count(), 3);
  EXPECT_EQ(headers.Item(1)->Name(), u"\tfolded");
  EXPECT_EQ(headers.Item(1)->Value(), u"yes");
  EXPECT_EQ(headers.Item(0)->Value(), u"1");
}

TEST(Headers, a_line_without_a_colon_is_skipped) {
  CHeaders headers;
  headers.FromString(u"nothing here\r\nA: 1\r\n");
  EXPECT_EQ(headers.Count(), 1);
}

TEST(Headers, remove_of_a_header_object_from_another_message_is_an_invalid_argument) {
  CHeaders headers, others;
  block(headers, u"A: 1\r\n");
  const auto stranger = others.Add(u"A", u"1");
  expect_status(Status::invalid_argument, [&] { headers.Remove(*stranger); });
  EXPECT_EQ(headers.Count(), 1);
}

TEST(Headers, remove_of_a_header_object_removes_that_very_one) {
  CHeaders headers;
  block(headers, u"A: 1\r\nA: 2\r\n");
  const auto second = headers.Item(1);
  headers.Remove(*second);
  EXPECT_EQ(headers.ToString(), u"A: 1\r\n");
  expect_status(Status::invalid_argument, [&] { headers.Remove(*second); });
}

TEST(Headers, the_same_header_is_the_same_object_each_time) {
  CHeaders headers;
  block(headers, u"A: 1\r\nB: 2\r\n");
  const auto second = headers.Item(1);
  headers.Remove(u"A");
  EXPECT_EQ(headers.Item(0), second);
  second->SetValue(u"changed");
  EXPECT_EQ(headers.ToString(), u"B: changed\r\n");
}

TEST(Headers, edits_mark_the_mailbox_changed_but_not_the_message) {
  Mailbox box("From a\nX: 1\nY: 2\nZ: 3\n\n");
  const auto changed_by = [&](auto edit) {
    box.control().Update();
    edit(*box.message(0)->Headers());
    EXPECT_FALSE(box.message(0)->Changed());
    return box.control().Changed();
  };
  box.control().Lock();
  EXPECT_TRUE(changed_by([](CHeaders& headers) { headers.Add(u"N", u"v"); }));
  EXPECT_TRUE(changed_by([](CHeaders& headers) { headers.Remove(u"X"); }));
  EXPECT_TRUE(changed_by([](CHeaders& headers) { headers.Remove(std::int64_t{0}); }));
  EXPECT_TRUE(changed_by([](CHeaders& headers) { headers.RemoveAll(); }));
  EXPECT_FALSE(changed_by([](CHeaders& headers) { headers.FromString(u"A: 1\r\n"); }));
}

TEST(Headers, with_auto_update_add_writes_the_mailbox_once) {
  Mailbox box("From a\nX: 1\n\n");
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  box.message(0)->Headers()->Add(u"N", u"v");
  EXPECT_EQ(box.content(), "From a\r\nX: 1\r\nN: v\r\n\r\n\r\n");
}

TEST(Headers, with_auto_update_each_value_put_and_remove_write_the_mailbox) {
  Mailbox box("From a\nX: 1\nY: 2\n\n");
  box.control().Lock();
  box.control().SetAutoUpdate(true);
  box.message(0)->Headers()->Item(u"X")->SetValue(u"3");
  EXPECT_EQ(box.content(), "From a\r\nX: 3\r\nY: 2\r\n\r\n\r\n");
  // The mailbox was read again: its messages are new ones.
  box.message(0)->Headers()->Remove(u"Y");
  EXPECT_TRUE(box.content().starts_with("From a\r\nX: 3\r\n\r\n")) << box.content();
}

}  // namespace
}  // namespace vellobar
