#include "codecs/base64.h"

#include <gtest/gtest.h>

#include "tests/codecs/coded_files.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

TEST(Base64, memory_is_encoded_to_one_unbroken_padded_line) {
  EXPECT_EQ(encode_base64(repeated("Man", 33) + "M"), repeated("TWFu", 33) + "TQ==");
  EXPECT_EQ(encode_base64("Ma"), "TWE=");
  EXPECT_EQ(encode_base64(""), "");
}

TEST(Base64, a_hundred_bytes_in_memory_give_136_characters_and_no_line_end) {
  const std::string text = encode_base64(std::string(100, '\xAB'));
  EXPECT_EQ(text.size(), 136u);
  EXPECT_EQ(text.find_first_of("\r\n"), text.npos);
}

TEST(Base64, the_letters_are_those_of_the_alphabet_in_their_order) {
  // 0x00108310518720928B30D38F41149351559761969B71D79F8218A39259A7A29AABB2DBAFC31CB3D35DB7E39EBBF3DFBF counts 0 to 63.
  const unsigned char counted[48] = {0x00, 0x10, 0x83, 0x10, 0x51, 0x87, 0x20, 0x92, 0x8B, 0x30, 0xD3, 0x8F,
                                     0x41, 0x14, 0x93, 0x51, 0x55, 0x97, 0x61, 0x96, 0x9B, 0x71, 0xD7, 0x9F,
                                     0x82, 0x18, 0xA3, 0x92, 0x59, 0xA7, 0xA2, 0x9A, 0xAB, 0xB2, 0xDB, 0xAF,
                                     0xC3, 0x1C, 0xB3, 0xD3, 0x5D, 0xB7, 0xE3, 0x9E, 0xBB, 0xF3, 0xDF, 0xBF};
  const std::string bytes(counted, counted + 48);
  const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  EXPECT_EQ(encode_base64(bytes), letters);
  EXPECT_EQ(decode_base64(letters), bytes);
}

TEST(Base64, a_file_of_57_bytes_ends_with_an_empty_line) {
  EXPECT_EQ(encoded_file(encode_base64_stream, repeated("Man", 19)), repeated("TWFu", 19) + "\r\n\r\n");
  EXPECT_EQ(encoded_file(encode_base64_stream, repeated("Man", 38)),
            repeated("TWFu", 19) + "\r\n" + repeated("TWFu", 19) + "\r\n\r\n");
}

TEST(Base64, a_file_of_58_bytes_gives_a_full_line_and_a_padded_one) {
  EXPECT_EQ(encoded_file(encode_base64_stream, repeated("Man", 19) + "M"), repeated("TWFu", 19) + "\r\nTQ==\r\n");
}

TEST(Base64, a_file_of_56_bytes_gives_one_padded_line) {
  EXPECT_EQ(encoded_file(encode_base64_stream, repeated("Man", 18) + "Ma"), repeated("TWFu", 18) + "TWE=\r\n");
}

TEST(Base64, an_empty_file_gives_one_line_end) { EXPECT_EQ(encoded_file(encode_base64_stream, ""), "\r\n"); }

TEST(Base64, line_ends_inside_the_text_are_passed_over) {
  EXPECT_EQ(decode_base64("QUJD\r\nREVG"), "ABCDEF");
  EXPECT_EQ(decode_base64("Q\rU\nJ\r\nD"), "ABC");
}

TEST(Base64, a_space_ends_decoding_at_the_group_that_holds_it) {
  EXPECT_EQ(decode_base64("QUJD REVG"), "ABC");
  EXPECT_EQ(decode_base64("QUJDRE VG"), "ABCD");
}

TEST(Base64, a_group_with_a_stranger_gives_one_byte_less_than_the_letters_before_it) {
  EXPECT_EQ(decode_base64("QUJD-EFG"), "ABC");
  EXPECT_EQ(decode_base64("QUJDQ.JD"), "ABC");
  EXPECT_EQ(decode_base64("QUJDQU\tD"), "ABCA");
  EXPECT_EQ(decode_base64("QUJDQUJ\xE9"), "ABCAB");
}

TEST(Base64, padding_ends_the_data) {
  EXPECT_EQ(decode_base64("QQ=="), "A");
  EXPECT_EQ(decode_base64("QUI="), "AB");
  EXPECT_EQ(decode_base64("QUI=QUJD"), "AB");
  EXPECT_EQ(decode_base64("QQ=\r\n="), "A");
}

TEST(Base64, an_unpadded_last_group_gives_three_bytes) {
  EXPECT_EQ(decode_base64("QUI"), "AB\0"s);
  EXPECT_EQ(decode_base64("QQ"), "A\0\0"s);
  EXPECT_EQ(decode_base64("Q"), "@\0\0"s);
  EXPECT_EQ(decode_base64("QUJDQUI\r\n"), "ABCAB\0"s);
}

TEST(Base64, a_short_last_group_with_a_stranger_gives_what_its_letters_reach) {
  EXPECT_EQ(decode_base64("QQ="), "A");
  EXPECT_EQ(decode_base64("Q="), "");
  EXPECT_EQ(decode_base64("="), "");
}

TEST(Base64, a_NUL_byte_decodes_as_zero_bits) {
  EXPECT_EQ(decode_base64("Q\0JD"s), "@\x02\x43"s);
  EXPECT_EQ(decode_base64("\0\0\0\0QUJD"s), "\0\0\0ABC"s);
}

TEST(Base64, nothing_decodes_to_nothing) {
  EXPECT_EQ(decode_base64(""), "");
  EXPECT_EQ(decode_base64("\r\n\r\n"), "");
  unsigned char untouched = 7;
  EXPECT_EQ(decode_base64(&untouched, 0, &untouched), 0u);
  EXPECT_EQ(encode_base64(&untouched, 0, &untouched), 0u);
  EXPECT_EQ(untouched, 7);
}

TEST(Base64, a_file_is_decoded_by_the_rules_of_memory) {
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUJD\r\nREVG"), "ABCDEF");
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUJD REVG"), "ABC");
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUI"), "AB\0"s);
  EXPECT_EQ(decoded_file(decode_base64_stream, ""), "");
}

TEST(Base64, a_block_of_1024_bytes_that_begins_inside_the_range_is_used_whole) {
  // 1024 letters of the first block, whatever part of it the range takes; the second block begins at the end of the
  // range.
  const std::string text = repeated("QUJD", 600);
  EXPECT_EQ(decoded_file(decode_base64_stream, text, 0, 1), repeated("ABC", 256));
  EXPECT_EQ(decoded_file(decode_base64_stream, text, 0, 1024), repeated("ABC", 256));
  EXPECT_EQ(decoded_file(decode_base64_stream, text, 0, 1025), repeated("ABC", 512));
  EXPECT_EQ(decoded_file(decode_base64_stream, text, 4, 1028), repeated("ABC", 256));
  EXPECT_EQ(decoded_file(decode_base64_stream, text, 2396, 2397), "ABC");
}

TEST(Base64, an_empty_range_or_one_behind_the_file_decodes_to_nothing) {
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUJD", 2, 2), "");
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUJD", 3, 1), "");
  EXPECT_EQ(decoded_file(decode_base64_stream, "QUJD", 4, 9), "");
}

}  // namespace
}  // namespace vellobar::codecs
