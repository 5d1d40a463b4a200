#include "mime/character_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace vellobar {
namespace {

using mime::CharacterTree;
using mime::Marks;

std::string whole(const CharacterTree& tree) {
  std::string text;
  tree.copy(0, CharacterTree::npos, text);
  return text;
}

TEST(CharacterTree, an_empty_tree_holds_nothing) {
  const CharacterTree tree;
  EXPECT_EQ(tree.size(), 0u);
  EXPECT_EQ(tree.marks(), 0);
  EXPECT_EQ(tree.find(0xFFFF, 0), CharacterTree::npos);
  EXPECT_EQ(whole(tree), "");
}

TEST(CharacterTree, characters_are_put_in_the_place_of_others) {
  CharacterTree tree;
  tree.replace(0, 0, "0123456789", std::vector<Marks>(10));
  tree.replace(3, 4, "ab", {0, 0});
  EXPECT_EQ(whole(tree), "012ab789");
  tree.replace(8, 0, "z", {0});
  tree.replace(0, 1, "", {});
  EXPECT_EQ(whole(tree), "12ab789z");
  EXPECT_EQ(tree.size(), 8u);
}

TEST(CharacterTree, the_first_character_with_any_of_the_marks_is_found_from_a_position_on) {
  CharacterTree tree;
  tree.replace(0, 0, "abcdef", {0, 1, 0, 2, 4, 1});
  EXPECT_EQ(tree.marks(), 7);
  EXPECT_EQ(tree.find(1, 0), 1u);
  EXPECT_EQ(tree.find(1, 1), 1u);
  EXPECT_EQ(tree.find(1, 2), 5u);
  EXPECT_EQ(tree.find(6, 2), 3u);
  EXPECT_EQ(tree.find(4, 5), CharacterTree::npos);
  EXPECT_EQ(tree.find(8, 0), CharacterTree::npos);
  EXPECT_EQ(tree.find(1, 6), CharacterTree::npos);
}

TEST(CharacterTree, after_random_edits_it_holds_what_a_plain_list_holds) {
  std::mt19937 random(1);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  CharacterTree tree;
  std::string text;
  std::vector<Marks> marks;
  for (int edit = 0; edit < 20'000; ++edit) {
    const std::size_t position = below(text.size() + 1);
    const std::size_t removed = below(std::min<std::size_t>(text.size() - position, 30) + 1);
    std::string inserted;
    std::vector<Marks> inserted_marks;
    for (std::size_t i = below(30); i > 0; --i) {
      inserted += static_cast<char>('a' + below(26));
      inserted_marks.push_back(static_cast<Marks>(below(20) == 0 ? 1 << below(11) : 0));
    }
    tree.replace(position, removed, inserted, inserted_marks);
    text.replace(position, removed, inserted);
    const auto at = marks.begin() + static_cast<std::ptrdiff_t>(position);
    marks.insert(marks.erase(at, at + static_cast<std::ptrdiff_t>(removed)), inserted_marks.begin(),
                 inserted_marks.end());
    ASSERT_EQ(tree.size(), text.size());
    const auto wanted = static_cast<Marks>(1 << below(11));
    const std::size_t from = below(text.size() + 1);
    const auto found = std::find_if(marks.begin() + static_cast<std::ptrdiff_t>(from), marks.end(),
                                    [&](Marks own) { return (own & wanted) != 0; });
    ASSERT_EQ(tree.find(wanted, from),
              found == marks.end() ? CharacterTree::npos : static_cast<std::size_t>(found - marks.begin()));
    std::string piece;
    tree.copy(from, 12, piece);
    ASSERT_EQ(piece, text.substr(from, 12));
    if (edit % 100 == 0) {
      ASSERT_TRUE(whole(tree) == text);
    }
  }
}

}  // namespace
}  // namespace vellobar
