#include "codecs/uuencode.h"

#include <gtest/gtest.h>

#include "tests/codecs/coded_files.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

// "Cat" is 0x43 0x61 0x74, the values 16, 54, 5, 52, the letters "0V%T".
const std::string kFullLine = "M" + repeated("0V%T", 15) + "\r\n";
const std::string kFullLineBytes = repeated("Cat", 15);

TEST(Uuencode, a_file_of_45_bytes_ends_with_a_stray_length_character) {
  EXPECT_EQ(encoded_file(encode_uu_stream, kFullLineBytes), kFullLine + "M");
  EXPECT_EQ(encoded_file(encode_uu_stream, kFullLineBytes + kFullLineBytes), kFullLine + kFullLine + "M");
}

TEST(Uuencode, a_file_of_46_bytes_ends_with_a_line_of_its_own_length) {
  EXPECT_EQ(encoded_file(encode_uu_stream, kFullLineBytes + "C"), kFullLine + "!0P\r\n");
  EXPECT_EQ(encoded_file(encode_uu_stream, kFullLineBytes + "Ca"), kFullLine + "\"0V$\r\n");
}

TEST(Uuencode, a_last_line_of_whole_groups_keeps_the_length_before_it_and_has_no_line_end) {
  EXPECT_EQ(encoded_file(encode_uu_stream, kFullLineBytes + "Cat"), kFullLine + "M0V%T");
  EXPECT_EQ(encoded_file(encode_uu_stream, "Cat"), "`0V%T");
}

TEST(Uuencode, an_empty_file_gives_one_grave_accent) { EXPECT_EQ(encoded_file(encode_uu_stream, ""), "`"); }

TEST(Uuencode, three_zero_bytes_in_memory_give_four_grave_accents) { EXPECT_EQ(encode_uu("\0\0\0"s), "````"); }

TEST(Uuencode, memory_is_encoded_to_letters_alone) {
  EXPECT_EQ(encode_uu("Cat"), "0V%T");
  EXPECT_EQ(encode_uu("CatC"), "0V%T0P");
  EXPECT_EQ(encode_uu("CatCa"), "0V%T0V$");
  EXPECT_EQ(encode_uu(kFullLineBytes + "Cat"), repeated("0V%T", 16));
  EXPECT_EQ(encode_uu(""), "");
}

TEST(Uuencode, memory_is_decoded_letter_by_letter_line_ends_included) {
  EXPECT_EQ(decode_uu("0V%T"), "Cat");
  EXPECT_EQ(decode_uu("````    "), "\0\0\0\0\0\0"s);
  // CR is (13 - 32) & 63 = 45 and LF 42: the bits 101101 101010 are 0xB6 0xA0.
  EXPECT_EQ(decode_uu("\r\n"), "\xB6\xA0\0"s);
  EXPECT_EQ(decode_uu(""), "");
}

TEST(Uuencode, an_incomplete_last_group_in_memory_gives_three_bytes) {
  EXPECT_EQ(decode_uu("0V%T0"), "Cat@\0\0"s);
  EXPECT_EQ(decode_uu("0V%T0P"), "CatC\0\0"s);
  EXPECT_EQ(decode_uu("0V%T0V$"), "CatCa\0"s);
}

TEST(Uuencode, decoding_a_file_starts_behind_the_line_that_holds_begin) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "a text\r\nbegin 644 x\r\n#0V%T\r\nend\r\n"), "Cat");
  EXPECT_EQ(decoded_file(decode_uu_stream, "> begin\n#0V%T\nend\n"), "Cat");
}

TEST(Uuencode, begin_is_case_sensitive) {
  // No line holds "begin", so all of it is data: "B" is a length of 34.
  EXPECT_EQ(decoded_file(decode_uu_stream, "B0V%T"), "Cat");
  EXPECT_EQ(decoded_file(decode_uu_stream, "BEGIN 644 x\nbegin 644 x\n#0V%T\nend\n"), "Cat");
}

TEST(Uuencode, a_file_without_any_begin_is_decoded_from_its_first_line) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "#0V%T\r\n#0V%T\r\nend\r\n#0V%T"), "CatCat");
}

TEST(Uuencode, end_stands_at_the_start_of_a_line) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n#0V%T\nend of it\n#0V%T\n"), "Cat");
  // " end": a length of 0, the "e" that settles it and stays in its group, "n" as the next length (14), then "d", "#"
  // and "0" fill the group of 5, 4, 3, 16 and "V%T" begins another one of 54, 5, 52.
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n end\n#0V%T\n"), "\x14\x40\xD0\xD8\x5D\x00"s);
}

TEST(Uuencode, lengths_and_letters_follow_each_other_across_lines) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n&0V\n%T0V%\nT#0V%T\n`\nend\n"), "CatCatCat");
}

TEST(Uuencode, exactly_as_many_bytes_as_the_length_says_are_written) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n!0V%T\n\"0V%T\n#0V%T\nend\n"), "CCaCat");
}

TEST(Uuencode, the_character_that_settles_a_length_of_0_stays_in_the_open_group) {
  // "`" is a length of 0, "0" settles it and opens a group, "#" is a length of 3, "V%T" fills the group.
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n`0#V%T\nend\n"), "Cat");
  // A length of 0 right before the end has no character to settle it.
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n#0V%T\n`\nend\n"), "Cat");
}

TEST(Uuencode, a_line_cut_short_gives_what_it_has) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\nM0V%T0V%T\nend\n"), "CatCat");
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\nM0V%T0P\nend\n"), "CatC\0\0"s);
}

TEST(Uuencode, what_the_encoder_made_of_a_size_that_is_no_multiple_of_three_comes_back_longer) {
  EXPECT_EQ(decoded_file(decode_uu_stream, kFullLine + "!0P\r\n"), kFullLineBytes + "C\0\0"s);
  EXPECT_EQ(decoded_file(decode_uu_stream, kFullLine + "\"0V$\r\n"), kFullLineBytes + "Ca\0"s);
}

TEST(Uuencode, a_line_is_cut_at_its_first_CR) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n#0V%T\rjunk\n#0V%T\nend\n"), "CatCat");
}

TEST(Uuencode, a_NUL_inside_a_line_is_an_ordinary_character) {
  // NUL is (0 - 32) & 63 = 32: the values 32, 54, 5, 52 are 0x83 0x61 0x74.
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n#\0V%T\nend\n"s), "\x83\x61\x74");
}

TEST(Uuencode, each_piece_of_254_characters_counts_as_a_line) {
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin" + std::string(249, '.') + "#0V%T\nend\n"), "Cat");
  // 50 lines of three bytes in one, and two lengths of 0 whose settling characters leave a group of two open.
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n" + repeated("#0V%T", 50) + "`  `end\n#0V%T\n"),
            repeated("Cat", 50) + "\0\0\0"s);
  // "begin" across two pieces is not seen, so all is data. 126 of the 252 spaces settle a length of 0 and leave a group
  // of two open; "b" is a length of 2, "e" and "g" fill the group with 5 and 7.
  EXPECT_EQ(decoded_file(decode_uu_stream, std::string(252, ' ') + "begin\n#0V%T\n").substr(0, 2), "\0\x01"s);
}

TEST(Uuencode, the_last_line_of_a_range_is_used_whole) {
  const std::string text = "begin\n#0V%T\n#0V%T\n#0V%T\n";
  EXPECT_EQ(decoded_file(decode_uu_stream, text, 0, 13), "CatCat");
  EXPECT_EQ(decoded_file(decode_uu_stream, text, 0, 12), "Cat");
  EXPECT_EQ(decoded_file(decode_uu_stream, text, 6, 7), "Cat");
  EXPECT_EQ(decoded_file(decode_uu_stream, text, 6, 6), "");
}

TEST(Uuencode, full_lines_are_decoded_with_either_line_end) {
  const std::string line = "M" + repeated("0V%T", 15);
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\r\n" + repeated(line + "\r\n", 2000) + "`\r\nend\r\n"),
            repeated("Cat", 30000));
  EXPECT_EQ(decoded_file(decode_uu_stream, "begin\n" + repeated(line + "\n", 2000) + "`\nend\n"),
            repeated("Cat", 30000));
}

}  // namespace
}  // namespace vellobar::codecs
