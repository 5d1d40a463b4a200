#include "mime/working_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace vellobar {
namespace {

using mime::Pattern;
using mime::WorkingText;

struct Spelling {
  Pattern pattern;
  std::string_view lower_case;
};

constexpr Spelling kSpellings[] = {{Pattern::tab_fold, "\r\n\t"},
                                   {Pattern::word, "=?"},
                                   {Pattern::plus, "+"},
                                   {Pattern::unicode_utf7, "=?unicode-1-1-utf-7?"},
                                   {Pattern::utf7, "=?utf-7?"},
                                   {Pattern::utf8, "=?utf-8?"},
                                   {Pattern::windows, "=?windows-"}};

std::size_t plain_find(std::string text, std::string_view lower_case) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text.find(lower_case);
}

TEST(WorkingText, an_edit_can_make_and_break_a_pattern_that_begins_before_it) {
  WorkingText text("ab=?utf7?cd");
  EXPECT_FALSE(text.holds(Pattern::utf7));
  text.replace(7, 0, "-");
  EXPECT_EQ(text.first(Pattern::utf7), 2u);
  text.replace(3, 1, "");
  EXPECT_FALSE(text.holds(Pattern::utf7));
  EXPECT_FALSE(text.holds(Pattern::word));
  EXPECT_EQ(text.take(), "ab=utf-7?cd");
}

TEST(WorkingText, the_number_of_the_first_windows_prefix_follows_every_edit) {
  WorkingText text("x=?windows-12?=?windows-34?");
  EXPECT_EQ(text.first_windows_number(), 12);
  text.replace(13, 0, "5");
  EXPECT_EQ(text.first_windows_number(), 125);
  text.replace(0, 1, "");
  EXPECT_EQ(text.first_windows_number(), 125);
  text.replace(0, 1, "");
  EXPECT_EQ(text.first_windows_number(), 34);
  text.replace(text.size() - 3, 2, "");
  EXPECT_EQ(text.first_windows_number(), 0);
}

TEST(WorkingText, the_text_from_a_position_on_is_whole) {
  WorkingText text("0123456789");
  text.replace(4, 2, "ab+cd");
  EXPECT_EQ(text.from(0), "0123ab+cd6789");
  EXPECT_EQ(text.from(6), "+cd6789");
  EXPECT_EQ(text.from(13), "");
  EXPECT_EQ(text.at(0), '0');
  EXPECT_EQ(text.at(12), '9');
  EXPECT_EQ(text.first(Pattern::plus), 6u);
}

TEST(WorkingText, after_random_edits_every_pattern_is_where_a_plain_search_finds_it) {
  constexpr std::string_view kPieces[] = {
      "=?", "=",        "?",          "\r\n\t", "\r", "\n\t",      "+",           "utf", "=?utf-", "8?",
      "7?", "=?UTF-8?", "=?windows-", "1251?",  "12", "=?unicode", "-1-1-utf-7?", "xy",  "",       "plain text"};
  std::mt19937 random(5);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  const auto piece = [&] { return kPieces[below(std::size(kPieces))]; };
  for (int round = 0; round < 300; ++round) {
    std::string expected;
    for (int i = 0; i < 30; ++i) expected += piece();
    WorkingText text(expected);
    for (int edit = 0; edit < 40; ++edit) {
      const std::size_t position = below(expected.size() + 1);
      const std::size_t removed = below(std::min<std::size_t>(expected.size() - position, 12) + 1);
      const std::string inserted = std::string(piece()) + std::string(piece());
      text.replace(position, removed, inserted);
      expected.replace(position, removed, inserted);
      ASSERT_EQ(text.size(), expected.size());
      for (const Spelling& spelling : kSpellings) {
        ASSERT_EQ(text.first(spelling.pattern), plain_find(expected, spelling.lower_case)) << expected;
      }
    }
    ASSERT_EQ(text.take(), expected);
  }
}

}  // namespace
}  // namespace vellobar
