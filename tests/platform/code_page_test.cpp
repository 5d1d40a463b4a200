#include "platform/code_page.h"

#include <gtest/gtest.h>

#include <string>

namespace vellobar::platform {
namespace {

using namespace std::string_literals;

TEST(CodePage, ascii_text_reads_and_writes_the_same_in_every_page_but_utf_7) {
  const std::string text = "From: somebody+else <user@example.org>\t~!@#$%^&*()\\\"'";
  const std::u16string wide = u"From: somebody+else <user@example.org>\t~!@#$%^&*()\\\"'";
  for (int page : {0, 3, 437, 720, 874, 932, 936, 949, 950, 1252, 20127, 20866, 20932, 28591, 65001}) {
    EXPECT_EQ(widen(page, text), wide) << page;
    EXPECT_EQ(narrow(page, wide), text) << page;
    EXPECT_TRUE(keeps_ascii(page)) << page;
  }
  EXPECT_FALSE(keeps_ascii(kUtf7CodePage));
}

TEST(CodePage, the_bytes_that_page_1252_leaves_undefined_are_c1_controls) {
  EXPECT_EQ(widen(1252, "\x80\x81\x8D\x8F\x90\x9D\x9F\xA0\xFF"),
            u"\u20AC\u0081\u008D\u008F\u0090\u009D\u0178\u00A0\u00FF");
}

TEST(CodePage, all_256_bytes_come_back_from_the_default_pages) {
  std::string every_byte;
  for (int byte = 0; byte < 256; ++byte) every_byte += static_cast<char>(byte);
  for (int page : {0, 3, 1252}) {
    const std::u16string text = widen(page, every_byte);
    EXPECT_EQ(text.size(), 256u) << page;
    EXPECT_EQ(narrow(page, text), every_byte) << page;
  }
}

TEST(CodePage, nul_bytes_are_kept_in_both_directions) {
  for (int page : {0, 1251, 932, 65000, 65001}) {
    EXPECT_EQ(widen(page, "a\0b\0"s), u"a\0b\0"s) << page;
    EXPECT_EQ(narrow(page, u"a\0b\0"s), "a\0b\0"s) << page;
  }
  EXPECT_EQ(widen(932, "\x83\0x"s), u"\u30FB\0x"s) << "a lead byte swallows no NUL";
}

TEST(CodePage, a_code_page_the_platform_lacks_gives_no_text) {
  for (int page : {-1, 4711, 65002, 2147483647}) {
    EXPECT_EQ(widen(page, "plain"), u"") << page;
    EXPECT_EQ(narrow(page, u"plain"), "") << page;
    EXPECT_FALSE(keeps_ascii(page)) << page;
  }
}

TEST(CodePage, the_process_code_page_starts_at_0_and_takes_any_number) {
  EXPECT_EQ(process_code_page(), 0);
  set_process_code_page(-12345);
  EXPECT_EQ(process_code_page(), -12345);
  set_process_code_page(0);
}

TEST(CodePage, what_a_page_has_no_letter_like_becomes_a_question_mark) {
  EXPECT_EQ(narrow(1252, u"a\u4E2Db"), "a?b");
  EXPECT_EQ(narrow(1251, u"\u05D0"), "?");
  EXPECT_EQ(narrow(932, u"\u05D0\u3042"), "?\x82\xA0");
  EXPECT_EQ(narrow(1252, u"\xD83D\xDE00"), "??") << "each half of a pair for itself";
}

}  // namespace
}  // namespace vellobar::platform
