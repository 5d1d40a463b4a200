#include "mime/boundary.h"

#include <gtest/gtest.h>

#include "headers/headers.h"

namespace vellobar::mime {
namespace {

constexpr std::nullopt_t kNone = std::nullopt;

struct Row {
  std::string_view value;
  std::optional<std::string_view> delimiter;
};

void expect_delimiters(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    const std::optional<std::string> found = delimiter_in_content_type(row.value);
    EXPECT_EQ(found.value_or("(none)"), row.delimiter.value_or("(none)")) << row.value;
  }
}

TEST(Boundary, type_and_parameter_name_are_found_in_any_letter_case) {
  expect_delimiters({{"Multipart/Mixed; Boundary=\"XyZ\"", "--XyZ"}, {"MULTIPART/x; BOUNDARY=xYz", "--xYz"}});
}

TEST(Boundary, unquoted_it_ends_at_a_space_or_at_a_semicolon) {
  expect_delimiters({{"multipart/mixed; boundary=abc;charset=x", "--abc"},
                     {"multipart/mixed; boundary=abc charset=x", "--abc"},
                     {"multipart/mixed; boundary=abc", "--abc"}});
}

TEST(Boundary, unquoted_it_goes_on_over_a_tab_and_a_line_end) {
  expect_delimiters({{"multipart/mixed; boundary=a\tb\r\n\tc", "--a\tb\r\n\tc"}});
}

TEST(Boundary, quoted_it_keeps_spaces_and_is_cut_at_a_semicolon) {
  expect_delimiters({{"multipart/mixed; boundary=\"a b c\"; x=y", "--a b c"},
                     {"multipart/mixed; boundary=\"a;b\"", "--a"},
                     {"multipart/mixed; boundary=\";b\"", "--"}});
}

TEST(Boundary, a_quoted_one_has_at_least_one_character_be_it_a_quote) {
  expect_delimiters({{"multipart/mixed; boundary=\"\"", kNone}, {"multipart/mixed; boundary=\"\"a\"", "--\"a"}});
}

TEST(Boundary, without_its_closing_quote_is_none) {
  expect_delimiters({{"multipart/mixed; boundary=\"abc", kNone}, {"multipart/mixed; boundary=\"", kNone}});
}

TEST(Boundary, an_unquoted_empty_one_gives_two_hyphens) {
  expect_delimiters({{"multipart/mixed; boundary=", "--"},
                     {"multipart/mixed; boundary=   ", "--"},
                     {"multipart/mixed; boundary=;x", "--"}});
}

TEST(Boundary, control_bytes_blanks_and_bytes_above_127_in_front_of_a_boundary_are_passed_over) {
  expect_delimiters({{"multipart/mixed; boundary= \t\r\n abc", "--abc"},
                     {"multipart/mixed; boundary=\x80\xFF\"abc\"", "--abc"},
                     {std::string_view("multipart/mixed; boundary=\0\x01"
                                       "abc",
                                       31),
                      "--abc"}});
}

TEST(Boundary, a_byte_above_127_or_a_nul_inside_belongs_to_it) {
  expect_delimiters({{"multipart/mixed; boundary=a\x80z", "--a\x80z"},
                     {std::string_view("multipart/mixed; boundary=\"a\0z\"", 31), std::string_view("--a\0z", 5)}});
}

TEST(Boundary, needs_both_the_multipart_type_and_the_parameter_anywhere_in_the_value) {
  expect_delimiters({{"text/plain; boundary=abc", kNone},
                     {"multipart/mixed", kNone},
                     {"", kNone},
                     {"boundary=abc multipart/mixed", "--abc"},
                     {"text/plain; x=multipart/; boundary=abc", "--abc"}});
}

TEST(Boundary, the_first_parameter_of_its_name_counts) {
  expect_delimiters(
      {{"multipart/mixed; boundary=\"a; boundary=b", kNone}, {"multipart/mixed; x-boundary=a; boundary=b", "--a"}});
}

TEST(Boundary, above_1021_characters_is_refused_before_it_is_cut) {
  const std::string type = "multipart/mixed; boundary=";
  const std::string longest(1021, 'b');
  EXPECT_EQ(delimiter_in_content_type(type + longest), "--" + longest);
  EXPECT_EQ(delimiter_in_content_type(type + longest + "b"), "");
  EXPECT_EQ(delimiter_in_content_type(type + "a;" + longest), "");
  EXPECT_EQ(delimiter_in_content_type(type + "\"" + longest + "\""), "--" + longest);
  EXPECT_EQ(delimiter_in_content_type(type + "\"" + longest + "b\""), "");
}

std::string delimiter_of_block(std::u16string_view block) {
  CHeaders headers;
  headers.FromString(block);
  return delimiter_of(headers);
}

TEST(Boundary, the_first_content_type_header_that_yields_one_wins) {
  EXPECT_EQ(delimiter_of_block(u"Content-Type: text/plain\r\ncontent-type: multipart/x; boundary=a\r\n"
                               u"CONTENT-TYPE: multipart/x; boundary=b\r\n"),
            "--a");
  EXPECT_EQ(delimiter_of_block(u"Content-Type: multipart/x; boundary=\"a\r\nContent-Type: multipart/x; boundary=b\r\n"),
            "--b");
  EXPECT_EQ(delimiter_of_block(u"X-Content-Type: multipart/x; boundary=a\r\n"), "");
  EXPECT_EQ(delimiter_of_block(u""), "");
}

TEST(Boundary, one_that_is_too_long_ends_the_search) {
  const std::u16string too_long(1022, u'b');
  EXPECT_EQ(delimiter_of_block(u"Content-Type: multipart/x; boundary=" + too_long +
                               u"\r\nContent-Type: multipart/x; boundary=b\r\n"),
            "");
}

}  // namespace
}  // namespace vellobar::mime
