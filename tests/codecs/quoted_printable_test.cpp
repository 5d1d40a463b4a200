#include "codecs/quoted_printable.h"

#include <gtest/gtest.h>

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

TEST(QuotedPrintable, bytes_above_127_and_equals_signs_are_escaped) {
  EXPECT_EQ(encode_quoted_printable("\xE9"), "=E9");
  EXPECT_EQ(encode_quoted_printable("a=b"), "a=3Db");
}

TEST(QuotedPrintable, a_soft_break_decodes_to_nothing) { EXPECT_EQ(decode_quoted_printable("=\r\n"), ""); }

TEST(QuotedPrintable, lower_case_hex_digits_are_accepted) { EXPECT_EQ(decode_quoted_printable("=e9"), "\xE9"); }

TEST(QuotedPrintable, an_escape_without_hex_digits_is_passed_on) { EXPECT_EQ(decode_quoted_printable("=G1"), "=G1"); }

TEST(QuotedPrintable, an_underscore_is_a_space_only_where_asked_for) {
  EXPECT_EQ(decode_quoted_printable("a_b", true), "a b");
  EXPECT_EQ(decode_quoted_printable("a_b"), "a_b");
}

TEST(QuotedPrintable, equals_signs_in_a_row_are_no_escape) {
  EXPECT_EQ(decode_quoted_printable("==41"), "==4A");
  EXPECT_EQ(decode_quoted_printable("===4"), "=====4");
}

}  // namespace
}  // namespace vellobar::codecs
