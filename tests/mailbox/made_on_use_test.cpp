#include "mailbox/made_on_use.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace vellobar::mailbox {
namespace {

MadeOnUse<int> numbers_below(int end) {
  MadeOnUse<int> numbers;
  for (int i = 0; i < end; ++i) numbers.push_back(i);
  return numbers;
}

TEST(MadeOnUse, takes_one_pointer_while_it_is_empty) {
  EXPECT_EQ(sizeof(MadeOnUse<int>), sizeof(void*));
  EXPECT_TRUE(MadeOnUse<int>().empty());
}

TEST(MadeOnUse, gives_back_in_order_what_was_put_in_whatever_the_number) {
  for (const int size : {1, 2, 3, 255, 256, 257, 1000}) {
    const MadeOnUse<int> numbers = numbers_below(size);
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(size));
    int next = 0;
    for (const int number : numbers) ASSERT_EQ(number, next++);
    EXPECT_EQ(next, size);
  }
}

TEST(MadeOnUse, closes_the_gap_where_an_item_is_taken_out) {
  MadeOnUse<int> numbers = numbers_below(600);
  numbers.erase(599);
  numbers.erase(255);
  numbers.erase(0);
  ASSERT_EQ(numbers.size(), 597u);
  EXPECT_EQ(numbers[0], 1);
  EXPECT_EQ(numbers[253], 254);
  EXPECT_EQ(numbers[254], 256);
  EXPECT_EQ(numbers[596], 598);
}

TEST(MadeOnUse, goes_on_growing_after_it_was_cut_at_any_place) {
  for (const std::size_t remaining : {0u, 1u, 255u, 256u, 257u, 512u, 600u}) {
    MadeOnUse<int> numbers = numbers_below(600);
    numbers.cut(remaining);
    ASSERT_EQ(numbers.size(), remaining);
    for (int i = 0; i < 600; ++i) numbers.push_back(-i);
    ASSERT_EQ(numbers.size(), remaining + 600);
    EXPECT_EQ(numbers[remaining], 0);
    EXPECT_EQ(numbers.back(), -599);
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(remaining)));
  }
}

TEST(MadeOnUse, is_searched_like_other_sequences) {
  const MadeOnUse<int> numbers = numbers_below(1000);
  EXPECT_EQ(std::lower_bound(numbers.begin(), numbers.end(), 700) - numbers.begin(), 700);
  EXPECT_EQ(std::find(numbers.begin() + 300, numbers.end(), 299) - numbers.begin(), 1000);
}

TEST(MadeOnUse, lets_go_of_an_item_that_is_taken_off_the_end) {
  MadeOnUse<std::shared_ptr<int>> items;
  const auto item = std::make_shared<int>(1);
  items.push_back(item);
  items.pop_back();
  EXPECT_EQ(item.use_count(), 1);
}

TEST(MadeOnUse, hands_all_items_over_in_order_and_is_empty_then) {
  MadeOnUse<int> numbers = numbers_below(600);
  std::vector<int> taken;
  numbers.hand_over([&](int number) { taken.push_back(number); });
  ASSERT_EQ(taken.size(), 600u);
  EXPECT_TRUE(std::is_sorted(taken.begin(), taken.end()));
  EXPECT_EQ(taken.back(), 599);
  EXPECT_TRUE(numbers.empty());
}

}  // namespace
}  // namespace vellobar::mailbox
