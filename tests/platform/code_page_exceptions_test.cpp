// What the record of Windows' conversions leaves out, or what in it is worth naming: sequences without a meaning,
// user-defined characters, pages that a system may lack, and malformed text on which systems differ. Each row says what
// we give and why.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/code_page.h"

namespace vellobar::platform {
namespace {

using namespace std::string_literals;

#ifdef _WIN32
constexpr bool kOnWindows = true;
#else
constexpr bool kOnWindows = false;
#endif

// -- Pages that Wine 8 lacks. The tables are those of another implementation of the same pages.

struct MissingPage {
  int number;
  const char* why;
  const char16_t* high_half;
};

const MissingPage kPagesThatWineLacks[] = {
    {858, "Windows has it: page 850 with the euro sign in place of the dotless i",
     u"\u00C7\u00FC\u00E9\u00E2\u00E4\u00E0\u00E5\u00E7\u00EA\u00EB\u00E8\u00EF\u00EE\u00EC\u00C4\u00C5"
     u"\u00C9\u00E6\u00C6\u00F4\u00F6\u00F2\u00FB\u00F9\u00FF\u00D6\u00DC\u00F8\u00A3\u00D8\u00D7\u0192"
     u"\u00E1\u00ED\u00F3\u00FA\u00F1\u00D1\u00AA\u00BA\u00BF\u00AE\u00AC\u00BD\u00BC\u00A1\u00AB\u00BB"
     u"\u2591\u2592\u2593\u2502\u2524\u00C1\u00C2\u00C0\u00A9\u2563\u2551\u2557\u255D\u00A2\u00A5\u2510"
     u"\u2514\u2534\u252C\u251C\u2500\u253C\u00E3\u00C3\u255A\u2554\u2569\u2566\u2560\u2550\u256C\u00A4"
     u"\u00F0\u00D0\u00CA\u00CB\u00C8\u20AC\u00CD\u00CE\u00CF\u2518\u250C\u2588\u2584\u00A6\u00CC\u2580"
     u"\u00D3\u00DF\u00D4\u00D2\u00F5\u00D5\u00B5\u00FE\u00DE\u00DA\u00DB\u00D9\u00FD\u00DD\u00AF\u00B4"
     u"\u00AD\u00B1\u2017\u00BE\u00B6\u00A7\u00F7\u00B8\u00B0\u00A8\u00B7\u00B9\u00B3\u00B2\u25A0\u00A0"},
    {1125, "Ukrainian DOS page; not in every Windows, clients can still choose it by name",
     u"\u0410\u0411\u0412\u0413\u0414\u0415\u0416\u0417\u0418\u0419\u041A\u041B\u041C\u041D\u041E\u041F"
     u"\u0420\u0421\u0422\u0423\u0424\u0425\u0426\u0427\u0428\u0429\u042A\u042B\u042C\u042D\u042E\u042F"
     u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439\u043A\u043B\u043C\u043D\u043E\u043F"
     u"\u2591\u2592\u2593\u2502\u2524\u2561\u2562\u2556\u2555\u2563\u2551\u2557\u255D\u255C\u255B\u2510"
     u"\u2514\u2534\u252C\u251C\u2500\u253C\u255E\u255F\u255A\u2554\u2569\u2566\u2560\u2550\u256C\u2567"
     u"\u2568\u2564\u2565\u2559\u2558\u2552\u2553\u256B\u256A\u2518\u250C\u2588\u2584\u258C\u2590\u2580"
     u"\u0440\u0441\u0442\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044B\u044C\u044D\u044E\u044F"
     u"\u0401\u0451\u0490\u0491\u0404\u0454\u0406\u0456\u0407\u0457\u00B7\u221A\u2116\u00A4\u25A0\u00A0"},
};

TEST(CodePageExceptions, pages_that_wine_lacks_read_by_their_own_tables_and_give_no_text_where_the_system_lacks_them) {
  std::string high_bytes;
  for (int byte = 0x80; byte < 0x100; ++byte) high_bytes += static_cast<char>(byte);
  for (const MissingPage& page : kPagesThatWineLacks) {
    const std::u16string text = widen(page.number, high_bytes);
    if (kOnWindows && text.empty()) continue;
    EXPECT_EQ(text, page.high_half) << page.number << ": " << page.why;
    EXPECT_EQ(narrow(page.number, text), high_bytes) << page.number;
  }
}

constexpr const char* kRecord[] = {
#include "platform_record.inc"
};

TEST(CodePageExceptions, every_page_that_the_recording_system_lacked_is_listed_here) {
  std::vector<std::string> lacked, listed;
  for (const std::string line : kRecord) {
    if (line.ends_with(" is not there")) lacked.push_back(line);
  }
  for (const MissingPage& page : kPagesThatWineLacks) listed.push_back(std::to_string(page.number) + " is not there");
  EXPECT_EQ(lacked, listed);
}

// -- Sequences without a meaning and user-defined characters: the same on every system.

struct OddSequence {
  int page;
  std::string bytes;
  std::u16string text;
  const char* what_and_why;
};

const OddSequence kOddSequences[] = {
    {932, "\x81", u"\u30FB", "a lead byte at the end reads as the page's default character, a katakana middle dot"},
    {932, "\x81\0"s, u"\u30FB\0"s, "a lead byte before NUL stands alone; NUL is kept"},
    {932, "\x82\x40", u"\u30FB", "an unassigned pair reads as one default character"},
    {932, "\x81\x20z", u"\u30FBz", "a second byte that never follows is taken with the lead byte"},
    {932, "\x80\xA0\xFD\xFE\xFF", u"\x80\uF8F0\uF8F1\uF8F2\uF8F3", "single bytes without a meaning are private use"},
    {932, "\xF0\x40\xF9\xFC", u"\uE000\uE757", "user-defined characters are private use"},
    {932, "\x5C\x7E", u"\\~", "backslash and tilde, not yen and overline"},
    {932, "\xED\x40\xFA\x5C", u"\u7E8A\u7E8A", "NEC's selection and IBM's extension are the same character"},
    {936, "\x80", u"\u20AC", "the euro sign is a single byte"},
    {936, "\xFF", u"\uF8F5", "a single byte without a meaning is private use"},
    {936, "\x81\x7F", u"?", "an unassigned pair reads as one question mark"},
    {936, "\xAA\xA1\xF8\xA1\xA1\x40", u"\uE000\uE234\uE4C6", "the three user-defined areas"},
    {936, "\xA2\xAB\xFE\x50", u"\uE766\uE815", "gaps between assigned characters count as user-defined"},
    {936, "\x81\x30\x81\x30", u"??", "the four bytes of GB 18030 are not read"},
    {949, "\xC9\xA1\xFE\xA1", u"\uE000\uE05E", "the two user-defined rows"},
    {949, "\x81\x40", u"?", "an unassigned pair reads as one question mark"},
    {950, "\xFA\x40\x8E\x40\x81\x40", u"\uE000\uE311\uEEB8", "the three user-defined areas"},
    {950, "\xA2\xCC\xA2\xCE", u"\u5341\u5345", "two characters that stand twice in the page"},
    {20932, "\x8E\xB1", u"\uFF71", "half-width katakana"},
    {20932, "\xB0\x21", u"\u4E02", "JIS X 0212 has two bytes in this page, the second below 0x80"},
    {20932, "\x8F\xB0\xA1", u"\x8F\u4E9C", "so the three bytes of EUC-JP read as a control and another character"},
    {20932, "\xF5\xA1\xF5\x21", u"\uE000\uE3AC", "the two user-defined areas"},
    {20127, "\xE9\x80", u"i\0"s, "US-ASCII drops the top bit"},
    {874, "\xDB\xFC", u"\uF8C1\uF8C5", "unassigned bytes are private use"},
    {1253, "\xAA\xD2\xFF", u"\uF8F9\uF8FA\uF8FB", "unassigned bytes are private use"},
    {28597, "\xA1\xA4\xFF", u"\u02BD\uF7C2\uF7C7", "the first edition of the Greek standard, without the euro sign"},
    {28598, "\xAF\xFD", u"\u203E\uF7BF", "the first edition of the Hebrew standard, without marks of direction"},
    {21866, "\xAE\xBE", u"\u045E\u040E", "the Ukrainian page holds the Belarusian letter"},
};

TEST(CodePageExceptions, unassigned_and_user_defined_sequences_read_as_listed) {
  for (const OddSequence& row : kOddSequences) {
    EXPECT_EQ(widen(row.page, row.bytes), row.text) << row.page << ": " << row.what_and_why;
  }
}

TEST(CodePageExceptions, characters_that_stand_twice_are_written_with_one_code) {
  EXPECT_EQ(narrow(932, u"\u7E8A"), "\xFA\x5C") << "IBM's extension, not NEC's selection of it";
  EXPECT_EQ(narrow(932, u"\u2252\u2160"), "\x81\xE0\x87\x54") << "otherwise the lower code";
  EXPECT_EQ(narrow(932, u"\u30FB"), "\x81\x45") << "the default character is a character of its own, too";
  EXPECT_EQ(narrow(950, u"\u5341\u5345\u2550"), "\xA4\x51\xA4\xCA\xF9\xF9");
  EXPECT_EQ(narrow(20932, u"~\u30FB"), "~\xA1\xA6");
  EXPECT_EQ(narrow(20932, u"\x80\uF8F0"), "??") << "controls of this page are read, never written";
}

TEST(CodePageExceptions, a_best_fit_applies_on_windows_only) {
  EXPECT_EQ(narrow(1252, u"\u0100\u221E"), kOnWindows ? "A8" : "??");
  EXPECT_EQ(narrow(20127, u"caf\u00E9"), kOnWindows ? "cafe" : "caf?");
}

// -- Malformed UTF-8. The rule is that of the Unicode standard: one U+FFFD for each longest beginning that could have
// been completed. Wine 8 departs from it in two ways: what follows a sequence cut short by the end is dropped with it,
// and a second byte that cannot follow its lead byte is taken with it. A newer system may follow the rule there.

struct MalformedUtf8 {
  std::string bytes;
  std::u16string text;
  std::u16string wine;  ///< what Wine 8 gives, where it differs
  const char* why;
};

const MalformedUtf8 kMalformedUtf8[] = {
    {"\x80\xBF", u"\uFFFD\uFFFD", u"", "stray continuation bytes"},
    {"\xC0\x80z", u"\uFFFD\uFFFDz", u"", "C0 and C1 begin nothing"},
    {"\xF5\x80z", u"\uFFFD\uFFFDz", u"", "F5 to FF begin nothing"},
    {"\xFE\xFF", u"\uFFFD\uFFFD", u"", "F5 to FF begin nothing"},
    {"\xE2\x82-end", u"\uFFFD-end", u"", "a beginning of two bytes is one mistake"},
    {"\xF0\x9F\x98-end", u"\uFFFD-end", u"", "a beginning of three bytes is one mistake"},
    {"\xE2\x82\xE2\x82\xAC", u"\uFFFD\u20AC", u"", "a beginning before a whole character"},
    {"\xC3", u"\uFFFD", u"", "cut short by the end"},
    {"\xE2\x82", u"\uFFFD", u"", "cut short by the end"},
    {"\xF0\x9F\x98", u"\uFFFD", u"", "cut short by the end"},
    {"\xE2z", u"\uFFFDz", u"\uFFFD", "a letter behind a beginning near the end must not be lost"},
    {"\xF0\x9Fz", u"\uFFFDz", u"\uFFFD", "a letter behind a beginning near the end must not be lost"},
    {"\xE0\x80-end", u"\uFFFD\uFFFD-end", u"\uFFFD-end", "overlong"},
    {"\xED\xA0\x80-end", u"\uFFFD\uFFFD\uFFFD-end", u"\uFFFD\uFFFD-end", "a surrogate"},
    {"\xF0\x80\x80\x80-end", u"\uFFFD\uFFFD\uFFFD\uFFFD-end", u"\uFFFD\uFFFD\uFFFD-end", "overlong"},
    {"\xF4\x90\x80\x80-end", u"\uFFFD\uFFFD\uFFFD\uFFFD-end", u"\uFFFD\uFFFD\uFFFD-end", "above U+10FFFF"},
};

TEST(CodePageExceptions, malformed_utf_8_becomes_one_replacement_for_each_mistake) {
  for (const MalformedUtf8& row : kMalformedUtf8) {
    const std::u16string text = widen(kUtf8CodePage, row.bytes);
    if (kOnWindows && !row.wine.empty()) {
      EXPECT_THAT(text, testing::AnyOf(row.text, row.wine)) << row.why;
    } else {
      EXPECT_EQ(text, row.text) << row.why;
    }
  }
}

// -- Malformed UTF-7: the same on every system.

TEST(CodePageExceptions, malformed_utf7_ends_as_on_windows) {
  const struct {
    std::string bytes;
    std::u16string text;
    const char* why;
  } rows[] = {
      {"a+", u"a", "a run that never begins"},
      {"+A", u"", "bits that fill no unit are dropped"},
      {"+AGE", u"a", "the end closes a run"},
      {"+AGE!b", u"a!b", "any character outside Base64 closes a run and stays"},
      {"+!-", u"!-", "an empty run vanishes, the minus behind it belongs to the text"},
      {"\xE9\xFF", u"\u00E9\u00FF", "bytes beyond ASCII stand for themselves"},
      {"+A\xE9+GE-",
       u"\u00E9"
       u"a",
       "a byte beyond ASCII keeps the six bits before it for the next run"},
      {"+A!+GE-", u"!", "any other character discards them"},
      {"+2D0-", u"\xD83D", "half a pair stays half a pair"},
      {"+AG+IE-", u"o", "a plus inside a run is a Base64 digit"},
  };
  for (const auto& row : rows) EXPECT_EQ(widen(kUtf7CodePage, row.bytes), row.text) << row.why;
}

}  // namespace
}  // namespace vellobar::platform
