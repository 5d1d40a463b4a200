#include "codecs/binhex.h"

#include <gtest/gtest.h>

#include "tests/codecs/coded_files.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

// "Cat" is the values 16, 54, 5, 52, the letters "3f&d".
const std::string kFullLine = repeated("3f&d", 16) + "\r\n";

TEST(BinHex, a_file_of_48_bytes_gives_one_line_with_its_line_end) {
  EXPECT_EQ(encoded_file(encode_binhex_stream, repeated("Cat", 16)), kFullLine);
}

TEST(BinHex, a_file_of_49_bytes_gives_a_second_line_of_2_characters_without_line_end) {
  EXPECT_EQ(encoded_file(encode_binhex_stream, repeated("Cat", 16) + "C"), kFullLine + "3`");
  EXPECT_EQ(encoded_file(encode_binhex_stream, repeated("Cat", 16) + "Ca"), kFullLine + "3f%");
}

TEST(BinHex, an_empty_file_gives_nothing) { EXPECT_EQ(encoded_file(encode_binhex_stream, ""), ""); }

TEST(BinHex, the_letters_are_those_of_the_alphabet_in_their_order) {
  const unsigned char counted[48] = {0x00, 0x10, 0x83, 0x10, 0x51, 0x87, 0x20, 0x92, 0x8B, 0x30, 0xD3, 0x8F,
                                     0x41, 0x14, 0x93, 0x51, 0x55, 0x97, 0x61, 0x96, 0x9B, 0x71, 0xD7, 0x9F,
                                     0x82, 0x18, 0xA3, 0x92, 0x59, 0xA7, 0xA2, 0x9A, 0xAB, 0xB2, 0xDB, 0xAF,
                                     0xC3, 0x1C, 0xB3, 0xD3, 0x5D, 0xB7, 0xE3, 0x9E, 0xBB, 0xF3, 0xDF, 0xBF};
  const std::string bytes(counted, counted + 48);
  const std::string letters = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
  EXPECT_EQ(encoded_file(encode_binhex_stream, bytes), letters + "\r\n");
  EXPECT_EQ(decoded_file(decode_binhex_stream, letters), bytes);
}

TEST(BinHex, only_the_data_between_the_two_colons_is_decoded) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, "junk:3f&d3f&d:3f&d"), "CatCat");
  EXPECT_EQ(decoded_file(decode_binhex_stream, "junk:3f&d3f:d3f&d"), "CatC");
}

TEST(BinHex, a_range_without_a_colon_is_decoded_from_its_first_byte) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, "3f&d\r\n3f&d"), "CatCat");
}

TEST(BinHex, the_first_stranger_ends_the_data) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3f&d 3f&d:"), "Cat");
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3f&d3f&7:"), "CatCa");
}

TEST(BinHex, line_ends_are_passed_over_and_a_NUL_byte_decodes_as_zero_bits) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3\rf\n&\r\nd:"), "Cat");
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":\0\0\0\0:"s), "\0\0\0"s);
}

TEST(BinHex, an_open_group_at_the_end_of_the_file_gives_three_bytes) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3f&d3`"), "CatC\0\0"s);
}

TEST(BinHex, the_closing_colon_cuts_an_open_group) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3f&d3`:\r\n"), "CatC");
  EXPECT_EQ(decoded_file(decode_binhex_stream, ":3f&d3f%:\r\n"), "CatCa");
}

TEST(BinHex, a_block_of_1024_bytes_that_begins_inside_the_range_is_used_whole) {
  const std::string text = ":" + repeated("3f&d", 600);
  // Behind the colon the first block holds 255 groups and the letters "3f&", whose open bits are zero.
  EXPECT_EQ(decoded_file(decode_binhex_stream, text, 0, 1), repeated("Cat", 255) + "Ca@");
  EXPECT_EQ(decoded_file(decode_binhex_stream, text, 1, 1025), repeated("Cat", 256));
  EXPECT_EQ(decoded_file(decode_binhex_stream, text, 1, 1026), repeated("Cat", 512));
}

TEST(BinHex, a_first_colon_behind_the_end_of_the_range_counts_when_a_block_begun_inside_the_range_holds_it) {
  const std::string text = std::string(1000, 'j') + ":3f&d:";
  EXPECT_EQ(decoded_file(decode_binhex_stream, text, 0, 10), "Cat");
  // A colon in the block behind counts only from where that block is begun.
  const std::string later = repeated("3f&d", 256) + ":3f&d3f&d:";
  EXPECT_EQ(decoded_file(decode_binhex_stream, later, 0, 1024), repeated("Cat", 256));
  EXPECT_EQ(decoded_file(decode_binhex_stream, later, 0, 1025), "CatCat");
}

TEST(BinHex, a_colon_far_inside_the_file_is_found) {
  EXPECT_EQ(decoded_file(decode_binhex_stream, std::string(70000, 'j') + ":3f&d:"), "Cat");
}

}  // namespace
}  // namespace vellobar::codecs
