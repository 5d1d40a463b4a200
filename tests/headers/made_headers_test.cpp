// Headers are objects only while somebody holds them or after they were changed; a client must never notice.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "headers/header.h"
#include "headers/headers.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

constexpr std::int64_t kMany = 1000;

/// 0, X-1: 1 and so on.
class MadeHeaders : public ::testing::Test {
 protected:
  MadeHeaders() {
    std::u16string text;
    for (std::int64_t i = 0; i < kMany; ++i) text += u"X-" + number(i) + u": " + number(i) + u"\r\n";
    headers_.FromString(text);
  }

  static std::u16string number(std::int64_t value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
  }

  void walk() {
    for (std::int64_t i = 0; i < headers_.Count(); ++i) headers_.Item(i);
  }

  CHeaders headers_;
};

}  // namespace

TEST_F(MadeHeaders, that_nobody_holds_and_nobody_changed_are_let_go) {
  const std::weak_ptr<CHeader> seen = headers_.Item(0);
  walk();
  EXPECT_TRUE(seen.expired());
  EXPECT_EQ(headers_.Item(0)->Name(), u"X-0");
  EXPECT_EQ(headers_.Item(0)->Value(), u"0");
}

TEST_F(MadeHeaders, that_a_client_holds_stay_the_same_objects) {
  std::vector<std::shared_ptr<CHeader>> held;
  for (std::int64_t i = kMany; i-- > 0;) {
    if (i % 7 == 0) held.push_back(headers_.Item(i));
  }
  walk();
  for (const auto& header : held) EXPECT_EQ(headers_.Item(header->Name()), header);
}

TEST_F(MadeHeaders, whose_value_or_name_was_put_keep_it_when_they_are_let_go) {
  headers_.Item(3)->SetValue(u"three");
  headers_.Item(4)->SetName(u"Four");
  EXPECT_TRUE(headers_.Item(5)->parse_line(u"Five: five"));
  headers_.set_value(6, u"six");
  walk();
  walk();
  EXPECT_EQ(headers_.Item(3)->Value(), u"three");
  EXPECT_EQ(headers_.Item(u"four")->Value(), u"4");
  EXPECT_FALSE(headers_.Exists(u"X-4"));
  EXPECT_EQ(headers_.Item(u"Five")->Value(), u"five");
  EXPECT_EQ(headers_.Item(6)->Value(), u"six");
  EXPECT_TRUE(headers_.ToString().starts_with(
      u"X-0: 0\r\nX-1: 1\r\nX-2: 2\r\nX-3: three\r\nFour: 4\r\nFive: five\r\nX-6: six\r\nX-7: 7\r\n"));
}

TEST_F(MadeHeaders, that_were_added_stay_whoever_holds_them) {
  headers_.Add(u"Added", u"\u4e2d");
  headers_.Add(u"X-0", u"again");
  walk();
  walk();
  EXPECT_EQ(headers_.Item(kMany)->Value(), u"\u4e2d");
  EXPECT_EQ(headers_.Item(kMany + 1)->Value(), u"again");
  EXPECT_EQ(headers_.Item(u"x-0")->Value(), u"0");
}

TEST_F(MadeHeaders, that_were_removed_can_be_changed_and_change_nothing_else) {
  const auto removed = headers_.Item(1);
  headers_.Remove(1);
  removed->SetValue(u"changed");
  walk();
  EXPECT_EQ(removed->Name(), u"X-1");
  EXPECT_EQ(removed->Value(), u"changed");
  EXPECT_FALSE(headers_.Exists(u"X-1"));
  EXPECT_EQ(headers_.Item(1)->Name(), u"X-2");
}

TEST_F(MadeHeaders, are_removed_by_the_object_wherever_they_are) {
  const auto last = headers_.Item(kMany - 1);
  const auto middle = headers_.Item(kMany / 2);
  headers_.Remove(0);
  headers_.Remove(*middle);
  headers_.Remove(*last);
  EXPECT_EQ(headers_.Count(), kMany - 3);
  EXPECT_FALSE(headers_.Exists(u"X-500"));
  EXPECT_FALSE(headers_.Exists(u"X-999"));
  EXPECT_EQ(headers_.Item(kMany / 2 - 1)->Name(), u"X-501");
  tests::expect_status(Status::invalid_argument, [&] { headers_.Remove(*middle); });
}

TEST_F(MadeHeaders, outlive_the_removal_of_all_and_are_no_part_of_what_comes_then) {
  const auto held = headers_.Item(0);
  headers_.RemoveAll();
  headers_.FromString(u"X-0: new\r\n");
  EXPECT_EQ(held->Value(), u"0");
  EXPECT_NE(headers_.Item(0), held);
  EXPECT_EQ(headers_.Item(0)->Value(), u"new");
}

TEST(HeaderLines, that_end_with_cr_keep_it) {
  CHeaders headers;
  headers.FromString(u"A: 1\r\r\nB: 2\rC: 3\r\nD:\r\r\n");
  ASSERT_EQ(headers.Count(), 3);
  EXPECT_EQ(headers.Item(0)->Value(), u"1\r");
  EXPECT_EQ(headers.Item(1)->Value(), u"2\rC: 3");
  EXPECT_EQ(headers.Item(2)->Value(), u"\r");
  EXPECT_EQ(headers.ToString(), u"A: 1\r\r\nB: 2\rC: 3\r\nD: \r\r\n");
}

TEST(HeaderLines, are_found_by_a_name_with_a_colon_only_where_a_client_put_it) {
  CHeaders headers;
  headers.FromString(u"a:b: c\r\n");
  EXPECT_FALSE(headers.Exists(u"a:b"));
  EXPECT_TRUE(headers.Exists(u"A"));
  headers.Add(u"a:b", u"d");
  EXPECT_EQ(headers.Item(u"A:B")->Value(), u"d");
}

TEST(HeaderLines, without_a_name_are_found_by_the_empty_name) {
  CHeaders headers;
  headers.FromString(u"A: 1\r\n: 2\r\n");
  EXPECT_EQ(headers.Item(u"")->Value(), u"2");
}

TEST(HeaderLines, beyond_ascii_do_not_hide_the_names_beside_them) {
  tests::Mailbox box("From a\nX-\xC4: 1\nSubject: 2\n\tmore\nEmpty:\n\nbody\n");
  box.control().Lock();
  const auto headers = box.message(0)->Headers();
  EXPECT_EQ(headers->Count(), 3);
  EXPECT_EQ(headers->Item(u"SUBJECT")->Value(), u"2\r\n\tmore");
  EXPECT_EQ(headers->Item(u"x-\u00E4")->Value(), u"1");
  EXPECT_EQ(headers->Item(u"empty")->Value(), u"");
}

}  // namespace vellobar
