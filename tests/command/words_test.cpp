// Words at the command line and in mail: the nearest one, and letters in either case.
#include <gtest/gtest.h>

#include "command/mail/letters.h"
#include "command/nearest_word.h"

namespace vellobar::command {
namespace {

const std::vector<std::string> kVerbs{"list", "show", "headers", "attachments", "extract", "export", "encode"};

TEST(NearestWord, letters_typed_left_out_changed_and_exchanged_count_one_each) {
  EXPECT_EQ(distance_between("list", "list"), 0u);
  EXPECT_EQ(distance_between("lst", "list"), 1u);
  EXPECT_EQ(distance_between("liist", "list"), 1u);
  EXPECT_EQ(distance_between("lisp", "list"), 1u);
  EXPECT_EQ(distance_between("lsit", "list"), 1u);
  EXPECT_EQ(distance_between("", "list"), 4u);
}

TEST(NearestWord, a_slip_finds_the_word_that_was_meant) {
  EXPECT_EQ(nearest_word("lsit", kVerbs), "list");
  EXPECT_EQ(nearest_word("exprot", kVerbs), "export");
  EXPECT_EQ(nearest_word("atachment", kVerbs), "attachments");
}

TEST(NearestWord, the_beginning_of_a_word_finds_it) { EXPECT_EQ(nearest_word("att", kVerbs), "attachments"); }

TEST(NearestWord, nothing_is_near_what_is_far) {
  EXPECT_EQ(nearest_word("frobnicate", kVerbs), "");
  EXPECT_EQ(nearest_word("", kVerbs), "");
  EXPECT_EQ(nearest_word(std::string(5000, 'l'), kVerbs), "");
}

TEST(Letters, capitals_of_three_alphabets_become_small) {
  EXPECT_EQ(lower_letters(u"AZ\u00C4\u00D6\u00DC\u0160\u017D\u0394\u0416\u0401"),
            u"az\u00E4\u00F6\u00FC\u0161\u017E\u03B4\u0436\u0451");
}

TEST(Letters, what_is_no_capital_stays) {
  EXPECT_EQ(lower_letters(u"az09\u00D7\u00DF\u65E5[@"), u"az09\u00D7\u00DF\u65E5[@");
}

TEST(Letters, a_text_is_found_in_either_case) {
  EXPECT_TRUE(contains_ignoring_case(u"Re: \u00DCbung", u"\u00FCbung"));
  EXPECT_TRUE(contains_ignoring_case(u"anything", u""));
  EXPECT_FALSE(contains_ignoring_case(u"Re: \u00DCbung", u"ubung"));
}

}  // namespace
}  // namespace vellobar::command
