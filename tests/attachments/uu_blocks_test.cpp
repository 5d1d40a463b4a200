#include "attachments/uu_blocks.h"

#include <gtest/gtest.h>

#include <vector>

namespace vellobar::attachments {
namespace {

std::vector<UuBlock> blocks_of(std::string_view text) {
  UuBlocks blocks(text);
  std::vector<UuBlock> all;
  while (std::optional<UuBlock> block = blocks.next()) all.push_back(*std::move(block));
  return all;
}

TEST(UuBlocks, hold_exactly_the_lines_from_begin_to_end_each_with_cr_lf) {
  const auto blocks = blocks_of("hello\nbegin 644 f.txt\n#86)C\n`\r\nend\nbye\n");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].name, "f.txt");
  EXPECT_EQ(blocks[0].lines, "begin 644 f.txt\r\n#86)C\r\n`\r\nend\r\n");
}

TEST(UuBlocks, a_last_line_without_a_line_feed_counts) { EXPECT_EQ(blocks_of("begin 644 f\nend").size(), 1u); }

TEST(UuBlocks, a_carriage_return_inside_or_at_the_end_of_the_text_is_kept) {
  const auto blocks = blocks_of("begin 644 f\na\rb\r\r\nend\r");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].lines, "begin 644 f\r\na\rb\r\r\nend\r\r\n");
}

TEST(UuBlocks, the_mode_and_the_name_may_be_empty) {
  EXPECT_EQ(name_on_begin_line("begin  f"), "f");
  EXPECT_EQ(name_on_begin_line("begin 644 "), "");
  EXPECT_EQ(name_on_begin_line("begin 644  f"), "");
}

TEST(UuBlocks, the_character_behind_begin_is_not_looked_at) {
  EXPECT_EQ(name_on_begin_line("begin-644 f"), "f");
  EXPECT_EQ(name_on_begin_line("begins 644"), "644");
}

TEST(UuBlocks, a_line_of_another_shape_begins_nothing) {
  EXPECT_EQ(name_on_begin_line("begin"), std::nullopt);
  EXPECT_EQ(name_on_begin_line("begin "), std::nullopt);
  EXPECT_EQ(name_on_begin_line("begin 644"), std::nullopt);
  EXPECT_EQ(name_on_begin_line("begin x f"), std::nullopt);
  EXPECT_EQ(name_on_begin_line("Begin 644 f"), std::nullopt);
  EXPECT_EQ(name_on_begin_line(" begin 644 f"), std::nullopt);
  EXPECT_EQ(name_on_begin_line("begin 64x f"), std::nullopt);
}

TEST(UuBlocks, a_name_ends_at_a_blank_a_control_character_or_a_byte_above_127) {
  EXPECT_EQ(name_on_begin_line("begin 644 a b"), "a");
  EXPECT_EQ(name_on_begin_line("begin 644 a\tb"), "a");
  EXPECT_EQ(name_on_begin_line("begin 644 a\xFC"), "a");
  EXPECT_EQ(name_on_begin_line("begin 644 a\x80"), "a");
  EXPECT_EQ(name_on_begin_line("begin 644 a\x7F"), "a\x7F");
}

TEST(UuBlocks, an_end_line_is_told_by_its_first_three_characters) {
  const auto blocks = blocks_of("begin 644 f\n end\nEnd\nending\n");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].lines, "begin 644 f\r\n end\r\nEnd\r\nending\r\n");
}

TEST(UuBlocks, an_unfinished_block_is_none) {
  EXPECT_TRUE(blocks_of("begin 644 f\n#86)C\n").empty());
  EXPECT_EQ(blocks_of("begin 644 f\nend\n\nbegin 644 g\n").size(), 1u);
}

TEST(UuBlocks, a_begin_line_inside_a_block_is_data) {
  const auto blocks = blocks_of("begin 644 f\nbegin 644 g\nend\n");
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].name, "f");
  EXPECT_EQ(blocks[0].lines, "begin 644 f\r\nbegin 644 g\r\nend\r\n");
}

TEST(UuBlocks, a_begin_line_right_behind_an_end_line_is_missed) {
  const auto blocks = blocks_of("begin 644 a\nend\nbegin 644 b\nend\nbegin 644 c\nend\n");
  ASSERT_EQ(blocks.size(), 2u);
  EXPECT_EQ(blocks[0].name, "a");
  // The missed block's own "end" line is ordinary text, so the line behind it is looked at.
  EXPECT_EQ(blocks[1].name, "c");
}

TEST(UuBlocks, a_nul_inside_a_line_is_an_ordinary_character) {
  using namespace std::string_view_literals;
  const auto blocks = blocks_of("begin 644 f\na\0b\nend\n"sv);
  ASSERT_EQ(blocks.size(), 1u);
  EXPECT_EQ(blocks[0].lines, "begin 644 f\r\na\0b\r\nend\r\n"sv);
}

TEST(UuBlocks, thousands_of_begin_lines_make_one_pass) {
  // Every line stands in one unfinished block. Were each "begin" searched to the end of the text again, this would take
  // minutes.
  std::string text;
  for (int i = 0; i < 200'000; ++i) text += "begin 644 f\n";
  EXPECT_TRUE(blocks_of(text).empty());
  EXPECT_EQ(blocks_of(text + "end").size(), 1u);
}

TEST(UuBlocks, an_empty_text_has_none) { EXPECT_TRUE(blocks_of("").empty()); }

}  // namespace
}  // namespace vellobar::attachments
