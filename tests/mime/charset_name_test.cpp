#include "mime/charset_name.h"

#include <gtest/gtest.h>

#include <string_view>

namespace vellobar {
namespace {

using mime::charset_in_content_type;
using mime::code_page_of_charset;

TEST(CharsetName, utf8_utf7_and_windows_names_are_known_in_any_case) {
  const struct {
    std::string_view name;
    int code_page;
  } table[] = {
      {"utf8", 65001},
      {"utf-8", 65001},
      {"UTF-8", 65001},
      {"Utf8", 65001},
      {"utf7", 65000},
      {"UTF-7", 65000},
      {"windows-1250", 1250},
      {"WINDOWS-1251", 1251},
      {"Windows-874", 874},
      {"windows-1252;", 1252},
      {"windows-12x34", 12},
      {"windows-0", 0},
      {"windows-00932", 932},
      {"windows-", 0},
      {"windows-x1252", 0},
      {"windows--1252", 0},
      {"windows- 1252", 0},
      {"windows-65001", 65001},
      {"windows-2147483647", 2147483647},
      {"windows-99999999999999999999", 2147483647},
  };
  for (const auto& row : table) EXPECT_EQ(code_page_of_charset(row.name), row.code_page) << row.name;
}

TEST(CharsetName, every_other_name_stands_for_the_system_code_page) {
  for (const std::string_view name : {"", "iso-8859-1", "us-ascii", "koi8-r", "big5", "utf-8;", "utf-8 ", " utf-8",
                                      "utf-16", "utf_8", "cp1252", "window-1252", "windows1252", "x-windows-1252"}) {
    EXPECT_EQ(code_page_of_charset(name), 0) << name;
  }
}

TEST(CharsetName, a_nul_in_a_name_is_an_ordinary_character) {
  using namespace std::string_view_literals;
  EXPECT_EQ(code_page_of_charset("utf-8\0"sv), 0);
  EXPECT_EQ(code_page_of_charset("windows-12\0"sv), 12);
}

TEST(CharsetName, the_name_runs_from_the_first_letter_behind_the_equals_sign_to_a_space_or_quote) {
  const struct {
    std::string_view content_type;
    std::string_view charset;
  } table[] = {
      {"text/html; charset=\"windows-1250\"", "windows-1250"},
      {"text/plain; charset=utf-8", "utf-8"},
      {"text/plain; charset='utf-8'", "utf-8"},
      {"text/plain; charset = utf-8 ; x", "utf-8"},
      {"text/plain; CHARSET=UTF-8", "UTF-8"},
      {"text/plain; charset=8859-latin", "latin"},
      {"text/plain; charset=\r\n\tutf-8", "utf-8"},
      {"text/plain; charset=utf-8\r\n\tx", "utf-8\r\n\tx"},
      {"text/plain; charset x; y=utf-8", "utf-8"},
      {"text/plain; charset", ""},
      {"text/plain; charset=", ""},
      {"text/plain; charset=123 \"'", ""},
      {"text/plain", ""},
      {"", ""},
      {"a=b; charset", ""},
      {"text/plain; charset=\"utf-8", "utf-8"},
      {"text/plain; charset=\xE9utf-8", "utf-8"},
  };
  for (const auto& row : table) EXPECT_EQ(charset_in_content_type(row.content_type), row.charset) << row.content_type;
}

TEST(CharsetName, a_semicolon_does_not_end_the_name) {
  EXPECT_EQ(charset_in_content_type("text/plain; charset=utf-8; format=flowed"), "utf-8;");
  EXPECT_EQ(code_page_of_charset("utf-8;"), 0);
}

}  // namespace
}  // namespace vellobar
