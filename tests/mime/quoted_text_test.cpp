#include "mime/quoted_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

#include "codecs/quoted_printable.h"
#include "mime/working_text.h"

namespace vellobar {
namespace {

using namespace std::string_view_literals;
using mime::Change;
using mime::is_restless;
using mime::WorkingText;

/// The text of a word, decoded in its place.
std::string decoded_in_place(const std::string& text) {
  const std::string head = "=?x?q?";
  WorkingText word(head + text + "?=");
  const std::vector<Change> changes =
      mime::changes_by_decoding_quoted_text(word, head.size(), head.size() + text.size());
  for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
    word.replace(change->position, change->removed, change->inserted);
  }
  const std::string whole = word.copy(head.size());
  return whole.substr(0, whole.size() - 2);
}

/// Calls `check` with every text of this many of the characters that decoding knows.
template <typename Check>
void for_each_text(std::size_t size, Check check) {
  constexpr std::string_view kCharacters = "=3Da_?\r\n\0"sv;
  std::string text(size, ' ');
  const auto all = static_cast<std::size_t>(std::pow(kCharacters.size(), size));
  for (std::size_t number = 0; number < all && !testing::Test::HasFailure(); ++number) {
    std::size_t left = number;
    for (char& c : text) {
      c = kCharacters[left % kCharacters.size()];
      left /= kCharacters.size();
    }
    check(text);
  }
}

bool holds_restless(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (is_restless(text, i)) return true;
  }
  return false;
}

TEST(QuotedText, escapes_underscores_and_nuls_are_restless_and_upper_case_broken_escapes_are_not) {
  for (const std::string_view text : {"=41"sv, "=4a"sv, "=gx"sv, "=gX"sv, "=Gx"sv, "=\r\n"sv, "_"sv, "\0"sv, "=\0X"sv,
                                      "==41"sv, "=A=41"sv, "==3A"sv, "=G?="sv, "=?="sv, "==?="sv, "=X_ _"sv}) {
    EXPECT_TRUE(holds_restless(text)) << text;
  }
  for (const std::string_view text : {"plain"sv, "?"sv, "=GX"sv, "=?U"sv, "=X_"sv, "=_X"sv, "=\n\r"sv, "==31"sv,
                                      "=GX=GX"sv, "=?X?Q?"sv, "= ="sv.substr(0, 2)}) {
    EXPECT_FALSE(holds_restless(text)) << text;
  }
}

TEST(QuotedText, every_text_of_five_characters_decodes_in_its_place_as_it_does_whole) {
  for_each_text(5, [](const std::string& text) {
    // The text of a word ends before the first "?=".
    if ((text + "?=").find("?=") != text.size()) return;
    std::string expected = codecs::decode_quoted_printable(text, true);
    expected = expected.substr(0, expected.find('\0'));
    EXPECT_EQ(decoded_in_place(text), expected) << testing::PrintToString(text);
  });
}

TEST(QuotedText, what_decoding_leaves_as_it_is_holds_nothing_restless) {
  for_each_text(5, [](const std::string& characters) {
    // Two characters more, so that the end cuts no escape short.
    const std::string text = characters + "XX";
    if (text.find('\0') != std::string::npos || text.find("?=") != std::string::npos) return;
    const bool stays = codecs::decode_quoted_printable(text, true) == text;
    EXPECT_FALSE(stays && holds_restless(text)) << testing::PrintToString(text);
  });
}

TEST(QuotedText, a_change_reaches_from_the_first_of_its_equals_signs_to_two_characters_behind_the_last) {
  const std::string text = "=?x?q?ab=c=dXYab.............................................................._c?=";
  const WorkingText word(text);
  const std::vector<Change> changes = mime::changes_by_decoding_quoted_text(word, 6, text.size() - 2);
  ASSERT_EQ(changes.size(), 2u);
  EXPECT_EQ(changes[0].position, 8u);
  EXPECT_EQ(changes[0].removed, 5u);
  EXPECT_EQ(changes[0].inserted, "=C==DX");
  EXPECT_EQ(changes[1].removed, 1u);
  EXPECT_EQ(changes[1].inserted, " ");
}

TEST(QuotedText, thousands_of_equals_signs_are_one_change) {
  const std::string equals(10'000, '=');
  const WorkingText word("=?x?q?" + equals + "XY?=");
  const std::vector<Change> changes = mime::changes_by_decoding_quoted_text(word, 6, 6 + equals.size() + 2);
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].removed, equals.size() + 2);
  EXPECT_EQ(changes[0].inserted.size(), 3 * equals.size());
}

}  // namespace
}  // namespace vellobar
