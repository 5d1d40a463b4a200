#include "api/utf8.h"

#include <gtest/gtest.h>

namespace vellobar {

TEST(Utf8, characters_of_one_to_four_bytes_come_through_both_ways) {
  EXPECT_EQ(to_utf8(u"a\u00E9\u20AC\U0001F4EC"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xAC");
  EXPECT_EQ(from_utf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xAC"), u"a\u00E9\u20AC\U0001F4EC");
}

TEST(Utf8, nothing_and_nul_characters_are_kept) {
  EXPECT_EQ(to_utf8(u""), "");
  EXPECT_EQ(from_utf8(""), u"");
  EXPECT_EQ(to_utf8(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(from_utf8(std::string_view("a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST(Utf8, what_is_not_well_formed_becomes_the_replacement_character) {
  EXPECT_EQ(to_utf8(u"a\xD83D"
                    u"b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(from_utf8("a\xFF"
                      "b"),
            u"a\uFFFDb");
}

}  // namespace vellobar
