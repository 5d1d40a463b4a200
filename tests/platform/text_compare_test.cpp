#include "platform/text_compare.h"

#include <gtest/gtest.h>

namespace vellobar::platform {
namespace {

TEST(TextCompare, ascii_letters_fold_to_lower_case) {
  EXPECT_EQ(fold_case(u"Content-TYPE [@`{Z]"), u"content-type [@`{z]");
}

TEST(TextCompare, letters_of_page_1252_fold_to_lower_case) {
  EXPECT_EQ(fold_case(u"\u00C0\u00D6\u00D7\u00D8\u00DE\u00DF\u0160\u0152\u017D\u0178"),
            u"\u00E0\u00F6\u00D7\u00F8\u00FE\u00DF\u0161\u0153\u017E\u00FF");
}

TEST(TextCompare, what_page_1252_cannot_hold_folds_to_a_question_mark) {
  EXPECT_EQ(fold_case(u"X-\u05D0A\xD83D\xDE00"), u"x-?a??");
}

TEST(TextCompare, counted_text_folds_whole) {
  EXPECT_EQ(fold_case(std::u16string_view(u"A\0B", 3)), std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(fold_case(u""), u"");
}

TEST(TextCompare, names_that_differ_are_not_equal_in_the_user_locale) {
  EXPECT_TRUE(equal_in_user_locale(u"Name", u"Name"));
  EXPECT_TRUE(equal_in_user_locale(u"", u""));
  EXPECT_FALSE(equal_in_user_locale(u"Name", u"name"));
  EXPECT_FALSE(equal_in_user_locale(u"Name", u""));
  EXPECT_FALSE(equal_in_user_locale(u"Name", u"Names"));
}

}  // namespace
}  // namespace vellobar::platform
