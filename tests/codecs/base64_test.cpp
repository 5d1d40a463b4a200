#include "codecs/base64.h"

#include <gtest/gtest.h>

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

TEST(Base64, line_ends_inside_the_text_are_passed_over) {
  EXPECT_EQ(decode_base64("QUJD\r\nREVG"), "ABCDEF");
  EXPECT_EQ(decode_base64("Q\rU\nJ\r\nD"), "ABC");
}

TEST(Base64, a_space_ends_decoding_at_the_group_that_holds_it) {
  EXPECT_EQ(decode_base64("QUJD REVG"), "ABC");
  EXPECT_EQ(decode_base64("QUJDRE VG"), "ABCD");
}

TEST(Base64, an_unpadded_last_group_gives_three_bytes) {
  EXPECT_EQ(decode_base64("QUI"), "AB\0"s);
  EXPECT_EQ(decode_base64("QQ"), "A\0\0"s);
  EXPECT_EQ(decode_base64("Q"), "@\0\0"s);
}

TEST(Base64, a_NUL_byte_decodes_as_zero_bits) {
  EXPECT_EQ(decode_base64("Q\0JD"s), "@\x02\x43"s);
  EXPECT_EQ(decode_base64("\0\0\0\0QUJD"s), "\0\0\0ABC"s);
}

}  // namespace
}  // namespace vellobar::codecs
