#include "command/mail/index_ranges.h"

#include <gtest/gtest.h>

#include "command/output/failure.h"

namespace vellobar::command {
namespace {

constexpr std::int64_t kOpen = IndexRange::kToTheLast;
using Ranges = std::vector<IndexRange>;

TEST(IndexRanges, a_number_is_one_message) { EXPECT_EQ(parse_index_ranges("3"), (Ranges{{3, 3}})); }

TEST(IndexRanges, two_numbers_are_all_from_one_to_the_other) { EXPECT_EQ(parse_index_ranges("0-9"), (Ranges{{0, 9}})); }

TEST(IndexRanges, a_number_and_a_hyphen_go_to_the_last_message) {
  EXPECT_EQ(parse_index_ranges("5-"), (Ranges{{5, kOpen}}));
}

TEST(IndexRanges, commas_divide_several) {
  EXPECT_EQ(parse_index_ranges("7,0-2,9-"), (Ranges{{7, 7}, {0, 2}, {9, kOpen}}));
}

TEST(IndexRanges, anything_else_is_wrong_use) {
  for (const char* wrong :
       {"", "-", "x", "1x", "-3", "3-1", "1,", ",1", "1--2", "1-2-3", "1 2", "+1", "9223372036854775808"}) {
    EXPECT_THROW(parse_index_ranges(wrong), WrongUse) << wrong;
  }
}

TEST(IndexRanges, joining_sorts_and_leaves_nothing_twice) {
  EXPECT_EQ(joined({{7, 9}, {0, 2}, {2, 4}, {5, 5}, {8, 8}}), (Ranges{{0, 5}, {7, 9}}));
}

TEST(IndexRanges, an_open_range_swallows_what_follows) {
  EXPECT_EQ(joined({{3, kOpen}, {9, 9}, {1, 1}, {5, kOpen}}), (Ranges{{1, 1}, {3, kOpen}}));
}

}  // namespace
}  // namespace vellobar::command
