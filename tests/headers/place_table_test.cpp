#include "headers/place_table.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellobar::headers {
namespace {

constexpr std::uint64_t kFourGigabytes = std::uint64_t{1} << 32;

std::vector<std::uint64_t> places(const PlaceTable& table) {
  std::vector<std::uint64_t> all;
  for (std::size_t i = 0; i < table.size(); ++i) all.push_back(table[i]);
  return all;
}

PlaceTable table_of(const std::vector<std::uint64_t>& all) {
  PlaceTable table;
  for (const std::uint64_t place : all) table.push_back(place);
  return table;
}

using Places = std::vector<std::uint64_t>;

TEST(PlaceTable, keeps_places_on_both_sides_of_4_gigabytes) {
  const Places all{0, 3, kFourGigabytes - 1, kFourGigabytes, kFourGigabytes + 7, 5 * kFourGigabytes};
  EXPECT_EQ(places(table_of(all)), all);
}

TEST(PlaceTable, forgets_one_place_and_keeps_the_order_of_the_others) {
  PlaceTable small = table_of({1, 2, 3});
  small.erase(1);
  EXPECT_EQ(places(small), (Places{1, 3}));
  PlaceTable large = table_of({1, kFourGigabytes + 2, 3 * kFourGigabytes});
  large.erase(0);
  EXPECT_EQ(places(large), (Places{kFourGigabytes + 2, 3 * kFourGigabytes}));
}

TEST(PlaceTable, is_cut_behind_its_first_places_and_goes_on_from_there) {
  PlaceTable table = table_of({1, kFourGigabytes + 2, 3 * kFourGigabytes});
  table.cut(2);
  table.push_back(2 * kFourGigabytes);
  EXPECT_EQ(places(table), (Places{1, kFourGigabytes + 2, 2 * kFourGigabytes}));
}

TEST(PlaceTable, finds_the_position_of_a_place) {
  const PlaceTable table = table_of({0, 5, 9, kFourGigabytes + 5, kFourGigabytes + 9});
  EXPECT_EQ(table.position_of(0), 0u);
  EXPECT_EQ(table.position_of(9), 2u);
  EXPECT_EQ(table.position_of(kFourGigabytes + 9), 4u);
}

}  // namespace
}  // namespace vellobar::headers
