#include "platform/code_page.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

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
  EXPECT_FALSE(keeps_ascii(37)) << "EBCDIC";
}

TEST(CodePage, an_ascii_run_of_any_length_before_another_byte_is_kept) {
  for (std::size_t length = 0; length < 70; ++length) {
    const std::string plain(length, 'x');
    const std::u16string wide(length, u'x');
    EXPECT_EQ(widen(1252, plain + "\xE9y"), wide + u"\u00E9y");
    EXPECT_EQ(widen(65001, plain + "\xC3\xA9y"), wide + u"\u00E9y");
    EXPECT_EQ(narrow(1252, wide + u"\u00E9y"), plain + "\xE9y");
    EXPECT_EQ(narrow(65001, wide + u"\u00E9y"), plain + "\xC3\xA9y");
  }
}

TEST(CodePage, every_number_that_clients_can_choose_by_name_converts) {
  // Page, bytes and characters of one word each, from the charts of the pages.
  const struct {
    int page;
    const char* bytes;
    const char16_t* text;
  } rows[] = {
      {0, "caf\xE9", u"caf\u00E9"},
      {3, "caf\xE9", u"caf\u00E9"},
      {20127, "cafe", u"cafe"},
      {437, "caf\x82", u"caf\u00E9"},
      {720, "\x9F\xA0", u"\u0627\u0628"},
      {737, "\x80\x98", u"\u0391\u03B1"},
      {775, "\x80\x82", u"\u0106\u00E9"},
      {850, "caf\x82", u"caf\u00E9"},
      {852, "\x9F\x82", u"\u010D\u00E9"},
      {855, "\xA0\xA1", u"\u0430\u0410"},
      {857, "\x8D\x98", u"\u0131\u0130"},
      {862, "\x80\x9A", u"\u05D0\u05EA"},
      {866, "\x80\xE0", u"\u0410\u0440"},
      {874, "\xA1\xC5", u"\u0E01\u0E25"},
      {932, "\x93\xFA\x96\x7B", u"\u65E5\u672C"},
      {936, "\xD6\xD0\xCE\xC4", u"\u4E2D\u6587"},
      {949, "\xC7\xD1\xB1\xDB", u"\uD55C\uAE00"},
      {950, "\xA4\xA4\xA4\xE5", u"\u4E2D\u6587"},
      {1250, "\xE8\x9A", u"\u010D\u0161"},
      {1251, "\xCF\xF0", u"\u041F\u0440"},
      {1252, "caf\xE9\x80", u"caf\u00E9\u20AC"},
      {1253, "\xC1\xE1", u"\u0391\u03B1"},
      {1254, "\xFD\xDD", u"\u0131\u0130"},
      {1255, "\xE0\xFA", u"\u05D0\u05EA"},
      {1256, "\xC7\xC8", u"\u0627\u0628"},
      {1257, "\xE8\xF0", u"\u010D\u0161"},
      {1258, "\xD0\xFE", u"\u0110\u20AB"},
      {20866, "\xF0\xD2", u"\u041F\u0440"},
      {20932, "\xC6\xFC\xCB\xDC", u"\u65E5\u672C"},
      {21866, "\xA4\xA6", u"\u0454\u0456"},
      {28591, "caf\xE9", u"caf\u00E9"},
      {28592, "\xE8\xB9", u"\u010D\u0161"},
      {28593, "\xA1\xE6", u"\u0126\u0109"},
      {28594, "\xA1\xB9", u"\u0104\u0161"},
      {28595, "\xB0\xD0", u"\u0410\u0430"},
      {28596, "\xC7\xC8", u"\u0627\u0628"},
      {28597, "\xC1\xE1", u"\u0391\u03B1"},
      {28598, "\xE0\xFA", u"\u05D0\u05EA"},
      {28599, "\xFD\xDD", u"\u0131\u0130"},
      {28603, "\xE8\xF0", u"\u010D\u0161"},
      {28605, "\xA4\xBC", u"\u20AC\u0152"},
      {65000, "caf+AOk-", u"caf\u00E9"},
      {65001, "caf\xC3\xA9", u"caf\u00E9"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(widen(row.page, row.bytes), row.text) << row.page;
    EXPECT_EQ(narrow(row.page, row.text), row.bytes) << row.page;
  }
}

TEST(CodePage, utf_8_holds_every_plane) {
  EXPECT_EQ(widen(65001, "A\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"),
            u"A\x80\x7FF\x800\xFFFF\xD800\xDC00\xDBFF\xDFFF");
  EXPECT_EQ(narrow(65001, u"A\x80\x7FF\x800\xFFFF\xD800\xDC00\xDBFF\xDFFF"),
            "A\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(CodePage, a_byte_order_mark_is_a_character_like_any_other) {
  EXPECT_EQ(widen(65001, "\xEF\xBB\xBFx"), u"\uFEFFx");
  EXPECT_EQ(narrow(65001, u"\uFEFFx"), "\xEF\xBB\xBFx");
}

TEST(CodePage, a_lone_surrogate_narrows_to_the_replacement_character_in_utf_8) {
  EXPECT_EQ(narrow(65001, u"\xD800x"), "\xEF\xBF\xBDx");
  EXPECT_EQ(narrow(65001, u"\xDC00x"), "\xEF\xBF\xBDx");
  EXPECT_EQ(narrow(65001, u"\xD800"), "\xEF\xBF\xBD");
  EXPECT_EQ(narrow(65001, u"\xD800\xD83D\xDE00"), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(CodePage, utf_7_writes_a_run_of_base64_and_always_closes_it) {
  EXPECT_EQ(narrow(65000, u"A\u2262\u0391."), "A+ImIDkQ-.");
  EXPECT_EQ(narrow(65000, u"\u65E5\u672C\u8A9E"), "+ZeVnLIqe-");
  EXPECT_EQ(narrow(65000, u"a+b"), "a+-b");
  EXPECT_EQ(narrow(65000, u"\u00E9+\u00E9"), "+AOk-+-+AOk-");
  EXPECT_EQ(narrow(65000, u"~\\="), "+AH4AXAA9-");
  EXPECT_EQ(narrow(65000, u"\xD83D\xDE00"), "+2D3eAA-");
  EXPECT_EQ(narrow(65000, u"'(),-./:? \t\r\n"), "'(),-./:? \t\r\n");
}

TEST(CodePage, utf_7_reads_runs_of_base64) {
  EXPECT_EQ(widen(65000, "A+ImIDkQ."), u"A\u2262\u0391.");
  EXPECT_EQ(widen(65000, "Hi Mom -+Jjo--!"), u"Hi Mom -\u263A-!");
  EXPECT_EQ(widen(65000, "+ZeVnLIqe-x"), u"\u65E5\u672C\u8A9Ex");
  EXPECT_EQ(widen(65000, "1+-1"), u"1+1");
}

TEST(CodePage, any_bytes_convert_without_a_failure_and_never_grow) {
  std::mt19937 random(20240107);
  for (int page : {0, 437, 874, 932, 936, 949, 950, 1255, 1258, 20127, 20932, 28596, 65000, 65001}) {
    for (int round = 0; round < 2000; ++round) {
      std::string bytes(random() % 40, '\0');
      for (char& c : bytes) c = static_cast<char>(random());
      const std::u16string text = widen(page, bytes);
      ASSERT_LE(text.size(), bytes.size()) << page;
      ASSERT_LE(narrow(page, text).size(), text.size() * 5) << page;
      if (!keeps_ascii(page)) continue;
      ASSERT_EQ(widen(page, "plain: " + bytes), u"plain: " + text) << page;
    }
  }
}

TEST(CodePage, any_units_convert_without_a_failure) {
  std::mt19937 random(7);
  for (int page : {0, 932, 950, 1255, 20127, 20932, 65000, 65001}) {
    for (int round = 0; round < 2000; ++round) {
      std::u16string text(random() % 40, u'\0');
      for (char16_t& unit : text) unit = static_cast<char16_t>(random());
      const std::string bytes = narrow(page, text);
      ASSERT_GE(bytes.size(), text.size() * (page == 65001 ? 0 : 1)) << page;
      ASSERT_LE(bytes.size(), text.size() * 5) << page;
      if (page == kUtf7CodePage) {
        ASSERT_EQ(widen(page, bytes), text);
      }
    }
  }
}

TEST(CodePage, threads_may_use_a_page_for_the_first_time_together) {
  std::vector<std::u16string> texts(4);
  std::vector<std::thread> threads;
  for (auto& text : texts) threads.emplace_back([&text] { text = widen(1257, "\xE8\xF0"); });
  for (auto& thread : threads) thread.join();
  for (const auto& text : texts) EXPECT_EQ(text, u"\u010D\u0161");
}

// Many tests write letters of the system's code page as bytes of 1252; the programs that start them see to it.
TEST(CodePage, tests_run_where_the_code_page_of_the_system_and_of_the_thread_is_1252) {
  for (const int page : {kAnsiCodePage, kThreadCodePage}) {
    EXPECT_EQ(widen(page, "\x80\x8A\xE9\xFF"), u"\u20AC\u0160\u00E9\u00FF") << page;
  }
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
