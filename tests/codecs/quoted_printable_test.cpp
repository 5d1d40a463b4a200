#include "codecs/quoted_printable.h"

#include <gtest/gtest.h>

#include "tests/codecs/coded_files.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

std::string xs(std::size_t count) { return std::string(count, 'x'); }

TEST(QuotedPrintable, bytes_above_127_and_equals_signs_are_escaped) {
  EXPECT_EQ(encode_quoted_printable("\xE9"), "=E9");
  EXPECT_EQ(encode_quoted_printable("\x80\xFF"), "=80=FF");
  EXPECT_EQ(encode_quoted_printable("a=b"), "a=3Db");
}

TEST(QuotedPrintable, nothing_else_is_escaped) {
  const std::string controls = "\0\x01\t\x0B\x1B\x7F"s;
  EXPECT_EQ(encode_quoted_printable(controls), controls);
  EXPECT_EQ(encode_quoted_printable("blank \r\ntab\t\r\n"), "blank \r\ntab\t\r\n");
  EXPECT_EQ(encode_quoted_printable(""), "");
}

TEST(QuotedPrintable, memory_is_broken_after_73_characters) {
  EXPECT_EQ(encode_quoted_printable(xs(73)), xs(73));
  EXPECT_EQ(encode_quoted_printable(xs(100)), xs(73) + "=\r\n" + xs(27));
}

TEST(QuotedPrintable, a_file_is_broken_after_76_characters) {
  EXPECT_EQ(encoded_file(encode_quoted_printable_stream, xs(76)), xs(76));
  EXPECT_EQ(encoded_file(encode_quoted_printable_stream, xs(100)), xs(76) + "=\r\n" + xs(24));
  EXPECT_EQ(encoded_file(encode_quoted_printable_stream, ""), "");
}

TEST(QuotedPrintable, the_byte_behind_a_soft_break_does_not_count_on_its_line) {
  EXPECT_EQ(encode_quoted_printable(xs(150)), xs(73) + "=\r\n" + xs(74) + "=\r\n" + xs(3));
  EXPECT_EQ(encode_quoted_printable(xs(73) + "=" + xs(74)), xs(73) + "=\r\n=3D" + xs(73) + "=\r\nx");
}

TEST(QuotedPrintable, an_escape_that_begins_below_the_limit_is_written_whole) {
  EXPECT_EQ(encode_quoted_printable(xs(72) + "\xE9y"), xs(72) + "=E9=\r\ny");
  EXPECT_EQ(encode_quoted_printable(std::string(26, '=')), repeated("=3D", 25) + "=\r\n=3D");
}

TEST(QuotedPrintable, only_CR_LF_resets_the_count) {
  EXPECT_EQ(encode_quoted_printable(xs(72) + "\r\n" + xs(73)), xs(72) + "\r\n" + xs(73));
  EXPECT_EQ(encode_quoted_printable(xs(72) + "\n" + xs(2)), xs(72) + "\n=\r\n" + xs(2));
  EXPECT_EQ(encode_quoted_printable(xs(71) + "\r" + xs(2)), xs(71) + "\rx=\r\nx");
}

TEST(QuotedPrintable, a_CR_and_the_line_feed_behind_it_never_wait_for_a_soft_break) {
  EXPECT_EQ(encode_quoted_printable(xs(73) + "\r\ny"), xs(73) + "\r\ny");
  EXPECT_EQ(encode_quoted_printable(xs(73) + "\r\r\r\ny"), xs(73) + "\r\r\r\ny");
  EXPECT_EQ(encode_quoted_printable(xs(73) + "\ry"), xs(73) + "\r=\r\ny");
  EXPECT_EQ(encode_quoted_printable(xs(73) + "\ny"), xs(73) + "=\r\n\ny");
}

TEST(QuotedPrintable, a_CR_LF_across_two_reads_of_a_file_resets_the_count) {
  // Blocks of 512 and of 12 KB both end between the CR and the LF; the lines before hold nothing that is changed.
  for (const std::size_t block : {512u, 12u * 1024u}) {
    const std::string text = repeated(xs(62) + "\r\n", block / 64 - 1) + xs(63) + "\r\n" + xs(76);
    EXPECT_EQ(encoded_file(encode_quoted_printable_stream, text), text);
  }
}

TEST(QuotedPrintable, a_soft_break_decodes_to_nothing) {
  EXPECT_EQ(decode_quoted_printable("=\r\n"), "");
  EXPECT_EQ(decode_quoted_printable("ab=\r\ncd"), "abcd");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "ab=\r\ncd"), "abcd");
}

TEST(QuotedPrintable, a_soft_break_with_a_bare_line_feed_is_passed_on) {
  EXPECT_EQ(decode_quoted_printable("ab=\ncd"), "ab=\nCd");
}

TEST(QuotedPrintable, lower_case_hex_digits_are_accepted) {
  EXPECT_EQ(decode_quoted_printable("=e9"), "\xE9");
  EXPECT_EQ(decode_quoted_printable("=3d"), "=");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "=e9=3d"), "\xE9=");
}

TEST(QuotedPrintable, an_escape_without_hex_digits_is_passed_on_in_upper_case) {
  EXPECT_EQ(decode_quoted_printable("=G1"), "=G1");
  EXPECT_EQ(decode_quoted_printable("=g1=1g"), "=G1=1G");
  EXPECT_EQ(decode_quoted_printable("=\xE9\xE0"), "=\xE9\xE0");
  EXPECT_EQ(decode_quoted_printable("=\0\0"s), "=\0\0"s);
}

TEST(QuotedPrintable, an_underscore_is_a_space_only_where_asked_for) {
  EXPECT_EQ(decode_quoted_printable("a_b", true), "a b");
  EXPECT_EQ(decode_quoted_printable("a_b"), "a_b");
  EXPECT_EQ(decode_quoted_printable("=5F_=_1", true), "_ =_1");
}

TEST(QuotedPrintable, equals_signs_in_a_row_are_no_escape) {
  EXPECT_EQ(decode_quoted_printable("==41"), "==4A");
  EXPECT_EQ(decode_quoted_printable("===4"), "=====4");
  EXPECT_EQ(decode_quoted_printable("===="), "======");
}

TEST(QuotedPrintable, an_equals_sign_that_ends_a_broken_escape_begins_the_next_one) {
  EXPECT_EQ(decode_quoted_printable("=a=41"), "=A=A");
}

TEST(QuotedPrintable, a_truncated_escape_at_the_end_is_dropped) {
  EXPECT_EQ(decode_quoted_printable("ab="), "ab");
  EXPECT_EQ(decode_quoted_printable("ab=4"), "ab");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "ab=4"), "ab");
}

TEST(QuotedPrintable, the_second_character_of_an_escape_is_stored_back_in_upper_case) {
  unsigned char text[] = "=ea=gh=\r\nx";
  unsigned char bytes[3 * sizeof text];
  ASSERT_EQ(decode_quoted_printable(text, 10, bytes), 5u);
  EXPECT_EQ(std::string(bytes, bytes + 5), "\xEA=GHx");
  EXPECT_EQ(std::string(text, text + 10), "=eA=gH=\r\nx");
}

TEST(QuotedPrintable, an_escape_across_two_slices_is_read) {
  for (const std::size_t slice : {512u, 32u * 1024u}) {
    for (std::size_t before = slice - 4; before <= slice; ++before) {
      const std::string text = xs(before) + "=41=\r\ny";
      EXPECT_EQ(decode_quoted_printable(text), xs(before) + "Ay");
      EXPECT_EQ(decoded_file(decode_quoted_printable_stream, text), xs(before) + "Ay");
    }
  }
}

TEST(QuotedPrintable, a_broken_escape_in_a_file_gives_one_byte_with_no_digit_counting_as_minus_one) {
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "=G1"), "\xF1");   // -16 + 1
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "=1G"), "\x0F");   // 16 - 1
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "=\nz"), "\xEF");  // -16 - 1
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "==41"),
            "\xF4"
            "A");  // -16 + 4, then an escape
}

TEST(QuotedPrintable, a_file_is_never_read_beyond_the_end_of_the_range) {
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "abc=41def", 3, 6), "A");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "abc=41def", 1, 5), "bc");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "abc", 1, 99), "bc");
  EXPECT_EQ(decoded_file(decode_quoted_printable_stream, "abc", 2, 1), "");
}

TEST(QuotedPrintable, an_empty_text_leaves_the_target_alone) {
  unsigned char untouched = 7;
  EXPECT_EQ(decode_quoted_printable(&untouched, 0, &untouched), 0u);
  EXPECT_EQ(encode_quoted_printable(&untouched, 0, &untouched), 0u);
  EXPECT_EQ(untouched, 7);
}

}  // namespace
}  // namespace vellobar::codecs
