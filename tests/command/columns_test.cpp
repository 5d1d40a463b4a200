#include "command/output/columns.h"

#include <gtest/gtest.h>

namespace vellobar::command {
namespace {

TEST(Columns, a_latin_letter_takes_one_column) { EXPECT_EQ(display_width(u"gr\u00FC\u00DFe"), 5u); }

TEST(Columns, a_character_of_an_east_asian_script_takes_two) {
  EXPECT_EQ(display_width(u"\u65E5\u672C"), 4u);
  EXPECT_EQ(display_width(u"\uD55C\uAE00"), 4u);
  EXPECT_EQ(display_width(u"\uFF21"), 2u);
}

TEST(Columns, an_emoji_beyond_the_first_plane_takes_two) { EXPECT_EQ(display_width(u"\U0001F600"), 2u); }

TEST(Columns, a_combining_mark_and_a_joiner_take_none) {
  EXPECT_EQ(display_width(u"e\u0301"), 1u);
  EXPECT_EQ(display_width(u"a\u200Db"), 2u);
}

TEST(Columns, half_a_surrogate_pair_is_a_character) { EXPECT_EQ(display_width(u"a\xD83D"), 2u); }

TEST(Columns, what_fits_stays_as_it_is) {
  EXPECT_EQ(cut_to(u"hello", 5), u"hello");
  EXPECT_EQ(cut_to(u"\u65E5\u672C", 4), u"\u65E5\u672C");
  EXPECT_EQ(cut_to(u"", 0), u"");
}

TEST(Columns, what_does_not_fit_ends_with_an_ellipsis_in_the_last_column) {
  EXPECT_EQ(cut_to(u"hello", 4), u"hel\u2026");
  EXPECT_EQ(cut_to(u"hello", 1), u"\u2026");
  EXPECT_EQ(cut_to(u"hello", 0), u"");
}

TEST(Columns, a_wide_character_is_never_split) {
  EXPECT_EQ(cut_to(u"\u65E5\u672C\u8A9E", 5), u"\u65E5\u672C\u2026");
  EXPECT_EQ(cut_to(u"\u65E5\u672C\u8A9E", 4), u"\u65E5\u2026");
  EXPECT_EQ(cut_to(u"\U0001F600\U0001F600", 3), u"\U0001F600\u2026");
}

TEST(Columns, fitted_text_has_exactly_the_width) {
  EXPECT_EQ(fitted(u"ab", 4), u"ab  ");
  EXPECT_EQ(fitted(u"abcdef", 4), u"abc\u2026");
  EXPECT_EQ(fitted(u"\u65E5\u672C\u8A9E", 4), u"\u65E5\u2026 ");
}

}  // namespace
}  // namespace vellobar::command
