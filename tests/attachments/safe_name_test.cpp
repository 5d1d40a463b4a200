#include "attachments/safe_name.h"

#include <gtest/gtest.h>

#include "platform/code_page.h"

namespace vellobar::attachments {
namespace {

using namespace std::string_view_literals;

constexpr int kJapanese = 932;

std::u16string safe_name(std::u16string_view name, int code_page = platform::kAnsiCodePage) {
  return safe_file_name(name, code_page);
}

TEST(SafeName, an_ordinary_name_stays_as_it_is) {
  for (const std::u16string_view name :
       {u"a.txt"sv, u"gr\u00FC\u00DFe (1).tar.gz"sv, u".profile"sv, u"a b"sv, u"-x"sv}) {
    EXPECT_EQ(safe_name(name), name);
  }
}

TEST(SafeName, only_the_last_path_component_is_kept) {
  EXPECT_EQ(safe_name(u"/etc/passwd"), u"passwd");
  EXPECT_EQ(safe_name(u"..\\..\\windows\\a.dll"), u"a.dll");
  EXPECT_EQ(safe_name(u"a/b\\c/d"), u"d");
  EXPECT_EQ(safe_name(u"\\\\server\\share\\x"), u"x");
}

TEST(SafeName, a_name_that_is_nothing_but_a_folder_is_empty) {
  EXPECT_EQ(safe_name(u"C:\\dir\\"), u"");
  EXPECT_EQ(safe_name(u"/"), u"");
  EXPECT_EQ(safe_name(u""), u"");
}

TEST(SafeName, a_drive_prefix_is_dropped) {
  EXPECT_EQ(safe_name(u"C:a.txt"), u"a.txt");
  EXPECT_EQ(safe_name(u"z:\\a.txt"), u"a.txt");
  EXPECT_EQ(safe_name(u"x/c:a.txt"), u"a.txt");
  EXPECT_EQ(safe_name(u"C:"), u"");
  EXPECT_EQ(safe_name(u"C:D:a"), u"D_a");
}

TEST(SafeName, the_names_of_this_folder_and_the_one_above_become_harmless) {
  EXPECT_EQ(safe_name(u"."), u"_");
  EXPECT_EQ(safe_name(u".."), u"__");
  EXPECT_EQ(safe_name(u"a/.."), u"__");
}

TEST(SafeName, dots_and_blanks_at_the_end_become_underscores) {
  EXPECT_EQ(safe_name(u"a.txt. ."), u"a.txt___");
  EXPECT_EQ(safe_name(u"a "), u"a_");
}

TEST(SafeName, streams_wildcards_and_control_characters_become_underscores) {
  EXPECT_EQ(safe_name(u"file:stream"), u"file_stream");
  EXPECT_EQ(safe_name(u"a<b>c\"d|e?f*g"), u"a_b_c_d_e_f_g");
  EXPECT_EQ(safe_name(u"a\0b\r\n\x1B[2J\x7F"sv), u"a_b___[2J_");
}

TEST(SafeName, device_names_get_an_underscore_in_front) {
  EXPECT_EQ(safe_name(u"CON"), u"_CON");
  EXPECT_EQ(safe_name(u"nul.txt"), u"_nul.txt");
  EXPECT_EQ(safe_name(u"Aux .tar.gz"), u"_Aux .tar.gz");
  EXPECT_EQ(safe_name(u"COM1"), u"_COM1");
  EXPECT_EQ(safe_name(u"lpt9.prn"), u"_lpt9.prn");
  EXPECT_EQ(safe_name(u"com\u00B2"), u"_com\u00B2");
  EXPECT_EQ(safe_name(u"CONOUT$"), u"_CONOUT$");
  EXPECT_EQ(safe_name(u"C:\\dev\\prn"), u"_prn");
}

TEST(SafeName, names_that_only_resemble_devices_stay) {
  for (const std::u16string_view name : {u"console"sv, u"com"sv, u"com12"sv, u"a.con"sv, u"lpt"sv, u"nul_"sv}) {
    EXPECT_EQ(safe_name(name), name);
  }
}

TEST(SafeName, what_the_code_page_cannot_hold_becomes_an_underscore) {
  EXPECT_EQ(safe_name(u"\u540D.txt"), u"_.txt");
  EXPECT_EQ(safe_name(u"\u540D\U0001F600.txt", platform::kUtf8CodePage), u"\u540D\U0001F600.txt");
}

TEST(SafeName, a_character_whose_bytes_hold_a_separator_becomes_an_underscore) {
  // U+8868 is 95 5C in Shift JIS: a backslash to whoever reads bytes.
  EXPECT_EQ(safe_name(u"\u8868x\u540D", kJapanese), u"_x\u540D");
}

TEST(SafeName, is_judged_in_the_form_in_which_the_code_page_opens_it) {
  // Where the code page takes these for plain letters, digits, blanks and stops, they name devices like these do.
  for (const std::u16string_view name :
       {u"nul\uFF0Etxt"sv, u"\uFF23\uFF2F\uFF2E"sv, u"COM\u2074"sv, u"NUL\u3000"sv, u"\u207Ful"sv, u"aux\uFF0E"sv}) {
    const std::u16string safe = safe_name(name);
    const std::string opened = platform::narrow(1252, safe);
    EXPECT_EQ(platform::widen(1252, opened), safe);
    const std::string stem = opened.substr(0, opened.find('.'));
    for (const std::string_view device : {"nul", "NUL", "CON", "COM4", "aux"}) EXPECT_NE(stem, device);
    EXPECT_FALSE(opened.ends_with(' ') || opened.ends_with('.')) << opened;
  }
}

TEST(SafeName, characters_that_make_a_separator_together_become_underscores) {
  // In UTF-7 the sixth letter of the two is "/", the sextet 63.
  const std::u16string safe = safe_file_name(u"\u4E00\u3F00", platform::kUtf7CodePage);
  EXPECT_EQ(safe, u"__");
}

TEST(SafeName, control_characters_become_underscores_in_every_code_page) {
  for (const int code_page : {1252, 932, 65001, platform::kUtf7CodePage}) {
    EXPECT_EQ(safe_file_name(u"a\x01\x02\x7F", code_page), u"a___") << code_page;
  }
}

}  // namespace
}  // namespace vellobar::attachments
