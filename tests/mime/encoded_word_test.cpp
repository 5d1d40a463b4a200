#include "mime/encoded_word.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace vellobar {
namespace {

using namespace std::string_view_literals;
using mime::decode_encoded_words;
using mime::decode_header_value;
using mime::utf8_encoded_word;

struct Row {
  std::string_view value;
  std::string_view bytes;
  int code_page;
};

template <std::size_t count>
void expect_rows(const Row (&rows)[count]) {
  for (const Row& row : rows) {
    const mime::DecodedValue decoded = decode_encoded_words(row.value);
    EXPECT_EQ(decoded.bytes, row.bytes) << row.value;
    EXPECT_EQ(decoded.code_page, row.code_page) << row.value;
  }
}

class EncodedWord : public testing::Test {
 protected:
  ~EncodedWord() override { platform::set_process_code_page(0); }
};

TEST_F(EncodedWord, a_utf8_base64_word_reads_as_its_text_in_any_case_of_prefix_and_marker) {
  EXPECT_EQ(decode_header_value("=?utf-8?B?w6TDtsO8?="), u"\u00E4\u00F6\u00FC");
  EXPECT_EQ(decode_header_value("=?UTF-8?b?w6TDtsO8?="), u"\u00E4\u00F6\u00FC");
}

TEST_F(EncodedWord, a_windows_word_is_widened_with_its_number_and_an_iso_word_with_the_system_code_page) {
  EXPECT_EQ(decode_header_value("=?windows-1251?Q?=EF=F0=E8?="), u"\u043F\u0440\u0438");
  EXPECT_EQ(decode_header_value("=?iso-8859-1?Q?caf=E9?="), u"caf\u00E9");
  expect_rows({{"=?windows-1251?Q?=EF=F0=E8?=", "\xEF\xF0\xE8", 1251}, {"=?iso-8859-1?Q?caf=E9?=", "caf\xE9", 0}});
}

TEST_F(EncodedWord, the_space_between_two_words_stays) {
  EXPECT_EQ(decode_header_value("=?utf-8?Q?a?= =?utf-8?Q?b?="), u"a b");
}

TEST_F(EncodedWord, a_value_with_two_words_in_different_charsets_is_widened_with_a_single_code_page) {
  // Both passes see what is still there: the last one sees only the second word.
  expect_rows({{"=?utf-8?Q?=C3=A9?= =?windows-1251?Q?=EF?=", "\xC3\xA9 \xEF", 1251},
               {"=?windows-1251?Q?=EF?= =?utf-8?Q?=C3=A9?=", "\xEF \xC3\xA9", 65001},
               {"=?windows-1251?Q?=EF?= =?windows-1250?Q?=E9?=", "\xEF \xE9", 1250}});
}

TEST_F(EncodedWord, a_tab_fold_is_removed_and_a_fold_led_by_a_space_stays) {
  expect_rows({{"a\r\n\tb", "ab", 0}, {"a\r\n b", "a\r\n b", 0}});
}

TEST_F(EncodedWord, a_value_with_a_word_start_but_no_marker_reads_unchanged) {
  expect_rows({{"what =? this", "what =? this", 0}, {"=?utf-8?x?abc?=", "=?utf-8?x?abc?=", 65001}});
}

TEST_F(EncodedWord, values_read_as_worked_out_by_hand) {
  const Row rows[] = {
      // Nothing to decode.
      {"", "", 0},
      {"plain", "plain", 0},
      {"caf\xE9", "caf\xE9", 0},
      {"a = b ? c ?= d", "a = b ? c ?= d", 0},
      {"two  spaces and\ttab", "two  spaces and\ttab", 0},
      {"nul \0 inside"sv, "nul \0 inside"sv, 0},
      // One word of each kind.
      {"=?us-ascii?Q?abc?=", "abc", 0},
      {"=?utf-8?Q?a_b=5Fc?=", "a b_c", 65001},
      {"=?utf-8?q?=3d=3D?=", "==", 65001},
      {"=?utf-8?B?YWJj?=", "abc", 65001},
      {"=?utf-8?B?YWI=?=", "ab", 65001},
      {"=?utf-8?B?YQ==?=", "a", 65001},
      {"=?koi8-r?B?8NLJ?=", "\xF0\xD2\xC9", 0},
      {"=?utf-7?Q?Hi+AOk-?=", "Hi+AOk-", 65000},
      {"=?windows-1250?Q?=E9?=", "\xE9", 1250},
      {"=?WINDOWS-1253?q?=E1?=", "\xE1", 1253},
      {"before =?utf-8?q?in?= after", "before in after", 65001},
      {"a=?utf-8?q?b?=c", "abc", 65001},
      {"=?utf-8?Q?"
       "?=",
       "", 65001},
      {"=?utf-8?B?"
       "?=",
       "", 65001},
      {"x=?utf-8?B?"
       "?=y",
       "xy", 65001},
      // The charset is not read on the way to the marker.
      {"=??q?a?=", "a", 0},
      {"=?a b c?q?x?=", "x", 0},
      {"=?a?b=?c?q?x?=", "x", 0},
      {"=?utf-8*de?Q?x?=", "x", 0},
      {"=?utf8?Q?=C3=A9?=", "\xC3\xA9", 0},
      // The nearer marker counts, whatever letter stands in the text or the charset.
      {"=?utf-8?q?a?b?c?=", "a?b?c", 65001},
      {"=?utf-8?b?YWJj?= =?utf-8?q?d?=", "abc d", 65001},
      {"=?utf-8?q?d?= =?utf-8?b?YWJj?=", "d abc", 65001},
      {"=?x?b?YQ==?q?b?=", "a", 0},
      {"=?b?q?x?=", "x", 0},
      // Broken words end the decoding and stay.
      {"=?utf-8?q?open", "=?utf-8?q?open", 65001},
      {"=?utf-8?q?open?", "=?utf-8?q?open?", 65001},
      {"=?utf-8?q", "=?utf-8?q", 65001},
      {"=?utf-8?", "=?utf-8?", 65001},
      {"=?utf-8", "=?utf-8", 0},
      {"=?", "=?", 0},
      {"=?utf-8?q?one?= =?utf-8?q?two", "one =?utf-8?q?two", 65001},
      {"=?utf-8?q?one?= =?big5 two", "one =?big5 two", 65001},
      {"=?no marker =?utf-8?q?x?=", "x", 65001},
      // Base64 ends at the first stranger; an open group gives what bits it has.
      {"=?utf-8?B?YWJj ZGVm?=", "abc", 65001},
      {"=?utf-8?B?YWJjZGVm!?=", "abcdef", 65001},
      {"=?utf-8?B?YWI?=", "ab", 65001},
      {"=?utf-8?B?YQ?=", "a", 65001},
      {"=?utf-8?B?YWJj\r\nZGVm?=", "abcdef", 65001},
      {"=?utf-8?B?!YWJj?=", "", 65001},
      // Quoted-printable passes broken escapes on, in upper case.
      {"=?utf-8?Q?=G1?=", "=G1", 65001},
      {"=?utf-8?Q?=zz?=", "=ZZ", 65001},
      {"=?utf-8?Q?a=4?=", "a", 65001},
      {"=?utf-8?Q?a=?=", "a", 65001},
      {"=?utf-8?Q?a=\r\nb?=", "ab", 65001},
      {"=?utf-8?Q?==41?=", "==4A", 65001},
      // Decoded text ends at its first NUL; a NUL outside a word stays.
      {"=?utf-8?Q?ab=00cd?=ef", "abef", 65001},
      {"=?utf-8?B?YQBi?=", "a", 65001},
      {"a\0=?utf-8?q?b?=\0c"sv, "a\0b\0c"sv, 65001},
      // Folds: before any word, inside words, brought together by a removal.
      {"\r\n\t", "", 0},
      {"a\r\n\t\r\n\tb", "ab", 0},
      {"a\r\n\r\n\t\tb", "ab", 0},
      {"a\r\n\t b", "a b", 0},
      {"a\n\tb\r\tc", "a\n\tb\r\tc", 0},
      {"=?utf-8?q?a?=\r\n\t=?utf-8?q?b?=", "ab", 65001},
      {"=?utf-8?q?a?=\r\n =?utf-8?q?b?=", "a\r\n b", 65001},
      {"=?ut\r\n\tf-8?q?=C3=A9?=", "\xC3\xA9", 65001},
      {"=\r\n\t?utf-8?q?x?=", "x", 65001},
      {"=?windows-12\r\n\t51?q?x?=", "x", 1251},
      // Decoded text that forms a fold or a word is decoded again.
      {"=?utf-8?Q?a=0D=0A=09b?=", "ab", 65001},
      {"=?utf-8?Q?=0D=0A?=\tx", "x", 65001},
      {"=?utf-8?Q?=3D=3Futf-8=3Fq=3Fx=3F=3D?=", "x", 65001},
      {"=?utf-8?B?PT93aW5kb3dzLTEyNTE/cT94Pz0=?=", "x", 1251},
      {"=?utf-8?q?=3D?=?windows-1251?q?x?=", "x", 1251},
      {"=?x?q?=?y?q?in?=?=", "in", 0},
      {"=?utf-8?q?=3D=3Fopen?=", "=?open", 65001},
      // One code page for the whole value, from prefixes anywhere in it.
      {"\xE9 =?utf-8?q?=C3=A9?=", "\xE9 \xC3\xA9", 65001},
      {"=?iso-8859-2?Q?=B1?= =?utf-8?Q?=C4=85?=", "\xB1 \xC4\x85", 65001},
      {"=?utf-8?Q?=C4=85?= =?iso-8859-2?Q?=B1?=", "\xC4\x85 \xB1", 65001},
      {"=?windows-1251?q?a?= =?utf-7?q?b?= =?utf-8?", "a b =?utf-8?", 65001},
      {"=?utf-7?q?a?= =?utf-8?q?b?= =?utf-7?", "a b =?utf-7?", 65000},
      {"=?iso-8859-1?q?a?= =?windows-1250", "a =?windows-1250", 1250},
      {"=?windows-1250?q?a?= =?windows-", "a =?windows-", 0},
      {"=?windows-?q?a?=", "a", 0},
      {"=?windows-x?q?a?=", "a", 0},
      {"=?utf-8?q?a?= =?windows-99999999999?q?b?=", "a b", 2147483647},
      {"=?windows-1251?q?a?= =?windows-1250?= =?windows-1253?q?b?=", "a b", 1250},
  };
  static_assert(std::size(rows) >= 80);
  expect_rows(rows);
}

TEST_F(EncodedWord, a_word_of_a_code_page_the_platform_lacks_gives_an_empty_text) {
  EXPECT_EQ(decode_header_value("a =?windows-4321?q?b?="), u"");
}

TEST_F(EncodedWord, nul_bytes_are_widened_like_any_other) {
  EXPECT_EQ(decode_header_value("a\0b"sv), u"a\0b"sv);
  EXPECT_EQ(decode_header_value("a\0=?utf-8?q?b?="sv), u"a\0b"sv);
}

TEST_F(EncodedWord, decoded_bytes_end_at_their_first_nul) {
  EXPECT_EQ(decode_header_value("=?utf-8?Q?ab=00cd?=!"), u"ab!");
}

// "Gr+APw-n": the Base64 letters behind the plus, "APw", are the bytes 00 FC 00; the first NUL is skipped and the next
// one ends them, so that FC is read as UTF-7, where it is the character FC, and narrowed with the process code page.
TEST_F(EncodedWord, the_utf7_fix_up_reads_the_decoded_bytes_as_utf7_again) {
  const Row rows[] = {
      {"=?unicode-1-1-utf-7?Q?Gr+APw-n?=", "Gr\xFCn", 65000},
      {"=?UNICODE-1-1-UTF-7?q?Gr+APw-n?=", "Gr\xFCn", 65000},
      // Without a "-" behind the run nothing more is skipped.
      {"=?unicode-1-1-utf-7?Q?+APw n?=", "\xFC n", 65000},
      // 41 42 43: no NUL among them.
      {"=?unicode-1-1-utf-7?Q?+QUJD-?=", "ABC", 65000},
      // A plus without letters disappears with its minus.
      {"=?unicode-1-1-utf-7?Q?1+-2?=", "12", 65000},
      {"=?unicode-1-1-utf-7?Q?1+ 2?=", "1 2", 65000},
      {"=?unicode-1-1-utf-7?Q?1+?=", "1", 65000},
      // "=" is no letter.
      {"=?unicode-1-1-utf-7?Q?+YQ=3D=3D?=", "a==", 65000},
      // One run a pass, the first of the whole value: the one before the word.
      {"1+AGE- =?unicode-1-1-utf-7?Q?+AGI-?=", "1a +AGI-", 65000},
      {"=?unicode-1-1-utf-7?Q?+AGI- +AGM-?=", "b +AGM-", 65000},
      {"=?unicode-1-1-utf-7?Q?+AGI-?= =?unicode-1-1-utf-7?Q?+AGM-?=", "b c", 65000},
      // The first pass sees the second word's prefix, too.
      {"=?utf-8?q?+AGI-?= =?unicode-1-1-utf-7?Q?x?=", "b x", 65000},
      // ... and the fix-up of the first pass reaches into the second word before that is decoded.
      {"=?unicode-1-1-utf-7?Q?x?= =?utf-8?q?+AGI-?=", "x b", 65001},
      // Removing a fold is a pass with its own fix-up.
      {"+AGE-\r\n\t+AGI- =?unicode-1-1-utf-7?Q?+AGM-?=", "ab +AGM-", 65000},
      // The other prefixes take precedence for the code page.
      {"=?unicode-1-1-utf-7?Q?+APw-?= =?utf-8?q?x", "\xFC =?utf-8?q?x", 65001},
  };
  expect_rows(rows);
  EXPECT_EQ(decode_header_value("=?unicode-1-1-utf-7?Q?Gr+APw-n?="), u"Gr\u00FCn");
}

TEST_F(EncodedWord, the_utf7_fix_up_narrows_with_the_process_code_page) {
  platform::set_process_code_page(65001);
  expect_rows({{"=?unicode-1-1-utf-7?Q?Gr+APw-n?=", "Gr\xC3\xBCn", 65000}});
  platform::set_process_code_page(1251);
  expect_rows({{"=?unicode-1-1-utf-7?Q?+AGE-?=", "a", 65000}});
}

// "==ZY" decodes to "==Z=ZY", that to "==Z=Z==ZY", and so on to ever more equals signs. Before them stands a character
// that no word begins with.
TEST_F(EncodedWord, equals_signs_side_by_side_grow_at_every_level_of_words_within_words) {
  expect_rows({{"=?x?q?==ZY?=", "==Z=ZY", 0},
               {"=?x?q?.=?x?q?,==ZY?=?=", ".,==Z=Z==ZY", 0},
               {"=?x?q?.=?x?q?,=?x?q?;==ZY?=?=?=", ".,;==Z=Z==Z===Z=ZY", 0}});
}

TEST_F(EncodedWord, a_word_that_would_make_a_value_burst_is_left_as_it_stands_and_ends_the_decoding) {
  const auto nested = [](std::size_t levels) {
    std::string value;
    for (std::size_t i = 0; i < levels; ++i) value += "=?a?q?.";
    value += ",==ZY";
    for (std::size_t i = 0; i < levels; ++i) value += "?=";
    return value;
  };
  // After fifteen levels "==ZY" is 1,438,359 characters long, after sixteen 4,310,283.
  const auto decoded_size = [&](std::size_t levels) { return decode_encoded_words(nested(levels)).bytes.size(); };
  EXPECT_EQ(decoded_size(14), 14u + 1 + 480'441);
  EXPECT_EQ(decoded_size(15), 15u + 1 + 1'438'359);
  const std::string value = nested(60);
  const mime::DecodedValue burst = decode_encoded_words(value);
  EXPECT_LE(burst.bytes.size(), value.size() + mime::most_added_bytes(value.size()));
  EXPECT_GT(burst.bytes.size(), 480'441u);
  EXPECT_TRUE(burst.bytes.starts_with("..............."sv)) << burst.bytes.substr(0, 60);
  EXPECT_NE(burst.bytes.find(".,==Z=Z==Z===Z=Z="), std::string::npos);
  EXPECT_TRUE(burst.bytes.ends_with("?=?=?="));
}

TEST_F(EncodedWord, megabyte_values_are_decoded_whole) {
  constexpr std::size_t kSize = std::size_t{1} << 20;
  EXPECT_EQ(decode_encoded_words(std::string(kSize, 'x')).bytes, std::string(kSize, 'x'));

  std::string folds;
  std::string words;
  std::string starts;
  std::string words_expected;
  while (folds.size() < kSize) folds += "\r\n\t";
  while (starts.size() < kSize) starts += "=?";
  while (words.size() < kSize) {
    words += "=?utf-8?Q?=C3=A9?= ";
    words_expected += "\xC3\xA9 ";
  }
  EXPECT_EQ(decode_encoded_words(folds).bytes, "");
  EXPECT_EQ(decode_encoded_words(starts).bytes, starts);
  EXPECT_EQ(decode_encoded_words(words).bytes, words_expected);

  const std::size_t levels = kSize / 13;
  std::string nested;
  for (std::size_t i = 0; i < levels; ++i) nested += "=?utf-8?q?.";
  nested += "core";
  for (std::size_t i = 0; i < levels; ++i) nested += "?=";
  // The point keeps "?" and the next "=" apart, which would end the word.
  EXPECT_EQ(decode_encoded_words(nested).bytes, std::string(levels, '.') + "core");
  EXPECT_EQ(decode_encoded_words(nested).code_page, 65001);
}

TEST_F(EncodedWord, words_within_words_with_escapes_or_line_ends_behind_are_decoded_whole) {
  constexpr std::size_t kLevels = 50'000;
  const struct {
    std::string_view tail;
    std::string_view decoded;
  } rows[] = {{"x=41", "xA"},       {"=gx.", "=GX."},  {"x\r\n", "x\r\n"},
              {"=0D=0A.", "\r\n."}, {"x=\r\ny", "xy"}, {"a_b", "a b"}};
  for (const auto& row : rows) {
    std::string nested, expected;
    for (std::size_t i = 0; i < kLevels; ++i) nested += "=?utf-8?q?.";
    nested += "core";
    for (std::size_t i = 0; i < kLevels; ++i) nested += std::string(row.tail) + "?=";
    expected = std::string(kLevels, '.') + "core";
    for (std::size_t i = 0; i < kLevels; ++i) expected += row.decoded;
    const mime::DecodedValue decoded = decode_encoded_words(nested);
    EXPECT_TRUE(decoded.bytes == expected) << row.tail;
    EXPECT_EQ(decoded.code_page, 65001) << row.tail;
  }
}

TEST_F(EncodedWord, a_text_is_written_as_one_utf8_base64_word_of_any_length) {
  EXPECT_EQ(utf8_encoded_word(u"Gr\u00FC\u00DFe"), u"=?UTF-8?B?R3LDvMOfZQ==?=");
  EXPECT_EQ(utf8_encoded_word(u"a"), u"=?UTF-8?B?YQ==?=");
  EXPECT_EQ(utf8_encoded_word(u"\U0001F600"), u"=?UTF-8?B?8J+YgA==?=");
  EXPECT_EQ(utf8_encoded_word(u""), u"");
  // 300 bytes of "a" are 400 characters without a line break.
  std::u16string expected = u"=?UTF-8?B?";
  for (int i = 0; i < 100; ++i) expected += u"YWFh";
  EXPECT_EQ(utf8_encoded_word(std::u16string(300, u'a')), expected + u"?=");
}

TEST_F(EncodedWord, a_lone_surrogate_is_written_as_the_replacement_character) {
  const char16_t lone[] = {u'a', 0xD800, u'b', 0};
  EXPECT_EQ(utf8_encoded_word(lone), u"=?UTF-8?B?Ye+/vWI=?=");
}

}  // namespace
}  // namespace vellobar
