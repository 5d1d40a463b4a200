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
                                   {Pattern::word_end, "?="},
                                   {Pattern::plus, "+"},
                                   {Pattern::unicode_utf7, "=?unicode-1-1-utf-7?"},
                                   {Pattern::utf7, "=?utf-7?"},
                                   {Pattern::utf8, "=?utf-8?"},
                                   {Pattern::windows, "=?windows-"}};

std::size_t plain_find(std::string text, std::string_view lower_case, std::size_t from = 0) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text.find(lower_case, from);
}

TEST(WorkingText, an_edit_can_make_and_break_a_pattern_that_begins_before_it) {
  WorkingText text("ab=?utf7?cd");
  EXPECT_FALSE(text.holds(Pattern::utf7));
  text.replace(7, 0, "-");
  EXPECT_EQ(text.first(Pattern::utf7), 2u);
  text.replace(3, 1, "");
  EXPECT_FALSE(text.holds(Pattern::utf7));
  EXPECT_FALSE(text.holds(Pattern::word));
  EXPECT_EQ(text.copy(0), "ab=utf-7?cd");
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

TEST(WorkingText, the_number_of_a_prefix_is_read_whatever_zeros_lead_it_and_too_large_a_one_is_the_largest) {
  EXPECT_EQ(WorkingText("=?windows-").first_windows_number(), 0);
  EXPECT_EQ(WorkingText("=?windows-000").first_windows_number(), 0);
  EXPECT_EQ(WorkingText("=?windows-0001251?").first_windows_number(), 1251);
  EXPECT_EQ(WorkingText("=?windows-" + std::string(1000, '0') + "1251").first_windows_number(), 1251);
  EXPECT_EQ(WorkingText("=?windows-x1").first_windows_number(), 0);
  EXPECT_EQ(WorkingText("=?windows-00x1").first_windows_number(), 0);
  EXPECT_EQ(WorkingText("=?windows-2147483646").first_windows_number(), 2147483646);
  EXPECT_EQ(WorkingText("=?windows-2147483648").first_windows_number(), 2147483647);
  EXPECT_EQ(WorkingText("=?windows-10000000000000").first_windows_number(), 2147483647);
}

TEST(WorkingText, any_piece_of_it_is_copied_as_far_as_it_goes) {
  WorkingText text("0123456789");
  text.replace(4, 2, "ab+cd");
  EXPECT_EQ(text.copy(0), "0123ab+cd6789");
  EXPECT_EQ(text.copy(6), "+cd6789");
  EXPECT_EQ(text.copy(2, 4), "23ab");
  EXPECT_EQ(text.copy(11, 4), "89");
  EXPECT_EQ(text.copy(13), "");
  EXPECT_EQ(text.copy(3, 0), "");
  EXPECT_EQ(text.first(Pattern::plus), 6u);
  EXPECT_EQ(text.first(Pattern::plus, 6), 6u);
  EXPECT_EQ(text.first(Pattern::plus, 7), WorkingText::npos);
}

TEST(WorkingText, the_markers_of_both_encodings_are_found_in_either_case) {
  const WorkingText text("?x?b?B?q?Q??");
  EXPECT_EQ(text.first(Pattern::encoding), 2u);
  EXPECT_EQ(text.first(Pattern::encoding, 3), 4u);
  EXPECT_EQ(text.first(Pattern::encoding, 5), 6u);
  EXPECT_EQ(text.first(Pattern::encoding, 7), 8u);
  EXPECT_EQ(text.first(Pattern::encoding, 9), WorkingText::npos);
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
        const std::size_t from = below(expected.size() + 2);
        ASSERT_EQ(text.first(spelling.pattern, from), plain_find(expected, spelling.lower_case, from)) << expected;
      }
    }
    ASSERT_EQ(text.copy(0), expected);
  }
}

}  // namespace
}  // namespace vellobar
