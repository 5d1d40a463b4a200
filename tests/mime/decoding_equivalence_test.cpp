// Random values made of the tokens that steer decoding: the component and the rule written down pass by pass give the
// same bytes and the same code page.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "mime/decoding_passes.h"
#include "mime/encoded_word.h"
#include "platform/code_page.h"
#include "tests/mime/literal_decoding.h"

namespace vellobar {
namespace {

using namespace std::string_view_literals;

constexpr std::array kTokens = {
    "=?"sv, "=?"sv, "=?"sv, "?="sv, "?="sv, "?="sv, "?b?"sv, "?B?"sv, "?q?"sv, "?Q?"sv, "?q?"sv, "\r\n\t"sv, "\r\n\t"sv,
    "\r\n "sv, "\r"sv, "\n"sv, "\t"sv, "+"sv, "+"sv, "-"sv, "="sv, "?"sv, "_"sv, "\0"sv, "=?utf-8?"sv, "=?UTF-8?"sv,
    "=?utf-7?"sv, "=?windows-1251?"sv, "=?windows-1250?"sv, "=?windows-"sv, "=?unicode-1-1-utf-7?"sv, "=?utf-8?q?"sv,
    "=?utf-8?b?"sv, "=?iso-8859-1?q?"sv, "=?windows-1252?Q?"sv, "=?unicode-1-1-utf-7?q?"sv, "=?ut"sv, "f-8?"sv,
    "=?utf"sv, "-7?"sv, "7?q?"sv, "1251"sv, "00"sv,
    // Escapes of the tokens themselves.
    "=3D"sv, "=3F"sv, "=3d=3f"sv, "=3D?"sv, "?=3D"sv, "=0D"sv, "=0A"sv, "=09"sv, "=0D=0A=09"sv, "=00"sv, "=2B"sv,
    "=5F"sv, "=3D=3Futf-8?q?"sv, "=3Fq=3F"sv, "=3F=3D"sv, "==41"sv, "==x"sv, "=\r\n"sv, "=e"sv,
    // Base64 of "=?", "?=", CR LF TAB, "=?utf-8?q?", "=?utf-7?", "a", NUL, "+", "?q?", "=?windows-1251?q?x?=".
    "PT8="sv, "Pz0="sv, "DQoJ"sv, "PT91dGYtOD9xPw=="sv, "PT91dGYtNz8="sv, "YQ=="sv, "AA=="sv, "Kw=="sv, "P3E/"sv,
    "PT93aW5kb3dzLTEyNTE/cT94Pz0="sv, "AOk"sv, "APw-"sv, "+AOk-"sv, "+AGEAYg-"sv, "+DQoJ"sv, "+PT8"sv, "+KwBBDQ-"sv,
    "a"sv, "b"sv, "q"sv, "word "sv, " "sv, "\xC3\xA9"sv, "\xE9"sv, "x\xFF"sv};

class RandomValue {
 public:
  explicit RandomValue(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::string tokens(std::size_t most) {
    std::string value;
    for (std::size_t i = below(most) + 1; i > 0; --i) value += kTokens[below(kTokens.size())];
    return value;
  }

  /// Words within words: as many beginnings, something in the middle, as many ends, each with something beside it.
  std::string nest(std::size_t most) {
    constexpr std::array kHeads = {"=?q?q?"sv,          "=?utf-8?q?"sv, "=?windows-1251?Q?"sv,
                                   "=?x=?utf-7?a?q?"sv, "=??q?"sv,      "=?x?b?"sv};
    const std::size_t levels = below(most) + 1;
    const bool is_plain = below(2) == 0;
    std::string value = below(3) == 0 ? tokens(3) : "";
    for (std::size_t i = 0; i < levels; ++i) {
      value += kHeads[below(is_plain ? 3 : kHeads.size())];
      // Without a character between them, "?" and the next "=" would end the word.
      if (below(8) != 0) value += below(3) == 0 ? "text" : "x";
      if (!is_plain && below(6) == 0) value += tokens(1);
    }
    value += below(2) == 0 ? tokens(4) : "middle";
    for (std::size_t i = 0; i < levels; ++i) {
      if (below(5) == 0) value += below(3) == 0 ? tokens(1) : "a_b";
      value += "?=";
    }
    if (below(2) == 0) value += tokens(3);
    return value;
  }

 private:
  std::mt19937 random_;
};

std::string shown(std::string_view value) {
  std::string text;
  for (const char c : value) {
    if (c >= ' ' && c <= '~' && c != '\\') {
      text += c;
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
      text += escape;
    }
  }
  return text;
}

/// Passes over values that grow beyond what can be decoded literally, and counts them.
int given_up = 0;

bool is_same(const std::string& value) {
  const tests::LiteralResult expected = tests::decode_literally(value);
  if (!expected.is_whole) {
    ++given_up;
    return true;
  }
  for (const auto decode : {mime::decode_encoded_words, mime::decode_pass_by_pass}) {
    const mime::DecodedValue got = decode(value);
    if (got.bytes == expected.bytes && got.code_page == expected.code_page) continue;
    ADD_FAILURE() << shown(value) << "\n  gives    " << shown(got.bytes) << " in " << got.code_page << "\n  expected "
                  << shown(expected.bytes) << " in " << expected.code_page;
    return false;
  }
  return true;
}

int rounds(int usual) {
  const char* factor = std::getenv("VELLOBAR_TEST_ROUNDS");
  return factor == nullptr ? usual : usual * std::max(1, std::atoi(factor));
}

class DecodingEquivalence : public testing::Test {
 protected:
  DecodingEquivalence() { given_up = 0; }
  ~DecodingEquivalence() override { platform::set_process_code_page(0); }
};

TEST_F(DecodingEquivalence, short_values_of_random_tokens_decode_as_the_rule_does_pass_by_pass) {
  RandomValue random(1);
  for (int i = 0; i < rounds(150'000); ++i) {
    if (!is_same(random.tokens(12))) return;
  }
}

TEST_F(DecodingEquivalence, long_values_of_random_tokens_decode_as_the_rule_does_pass_by_pass) {
  RandomValue random(2);
  for (int i = 0; i < rounds(5'000); ++i) {
    if (!is_same(random.tokens(120))) return;
  }
}

TEST_F(DecodingEquivalence, words_within_words_decode_as_the_rule_does_pass_by_pass) {
  RandomValue random(3);
  for (int i = 0; i < rounds(40'000); ++i) {
    if (!is_same(random.nest(8))) return;
  }
}

TEST_F(DecodingEquivalence, words_within_words_with_escapes_and_line_ends_behind_decode_as_the_rule_does_pass_by_pass) {
  constexpr std::array kHeads = {"=?utf-8?q?."sv, "=?x?Q?"sv, "=?windows-1251?q?\r"sv, "=?x?q?a\n"sv, "=?x?q?=3D"sv};
  constexpr std::array kTails = {
      "x=41"sv, "=\r\n"sv, "x\r\n"sv, "\r"sv,  "\n"sv,      "\t"sv,    "=0D=0A"sv, "=09"sv, "=3F"sv,    "=3D"sv,
      "=5F"sv,  "=4"sv,    "="sv,     "=gx"sv, "?"sv,       "=3D41"sv, "=3Dgx"sv,  "_"sv,   "=00"sv,    ""sv,
      "tf-8"sv, "=?"sv,    "=3D?u"sv, "u"sv,   "=75tf-8"sv, "-7"sv,    "\xE9"sv,   "=e9"sv, "=3D=3F"sv, "=?utf-8"sv};
  RandomValue random(5);
  for (int i = 0; i < rounds(50'000); ++i) {
    const std::size_t levels = random.below(6) + 1;
    std::string value;
    for (std::size_t level = 0; level < levels; ++level) value += kHeads[random.below(kHeads.size())];
    value += random.below(3) == 0 ? "=?u" : "core";
    for (std::size_t level = 0; level < levels; ++level) {
      for (std::size_t tails = random.below(3); tails > 0; --tails) value += kTails[random.below(kTails.size())];
      value += "?=";
    }
    if (!is_same(value)) return;
  }
}

TEST_F(DecodingEquivalence, every_text_of_five_restless_characters_in_three_words_decodes_as_the_rule_does) {
  constexpr std::string_view kCharacters = "=3Da_?\r\n\0\t"sv;
  std::string text(5, ' ');
  const auto all = static_cast<std::size_t>(std::pow(kCharacters.size(), text.size()));
  for (std::size_t number = 0; number < all; ++number) {
    std::size_t left = number;
    for (char& c : text) {
      c = kCharacters[left % kCharacters.size()];
      left /= kCharacters.size();
    }
    if (!is_same("=??q?x=??q?=??q?" + text + "?=?=Z?=")) return;
  }
}

TEST_F(DecodingEquivalence, words_within_words_of_restless_characters_decode_as_the_rule_does_pass_by_pass) {
  constexpr std::string_view kCharacters = "===3456DFaxX__?? \r\n\t\0q+-"sv;
  constexpr std::array kHeads = {"=??q?"sv, "=?utf-8?Q?"sv, "=?windows-12?q?"sv, "=?x?b?"sv};
  RandomValue random(6);
  const auto characters = [&](std::size_t most) {
    std::string text;
    for (std::size_t i = random.below(most + 1); i > 0; --i) text += kCharacters[random.below(kCharacters.size())];
    return text;
  };
  for (int i = 0; i < rounds(50'000); ++i) {
    const std::size_t levels = random.below(7) + 1;
    std::string value;
    for (std::size_t level = 0; level < levels; ++level) {
      value += kHeads[random.below(random.below(8) == 0 ? kHeads.size() : 3)];
      if (random.below(3) == 0) value += characters(2);
    }
    value += characters(12);
    for (std::size_t level = 0; level < levels; ++level) value += characters(random.below(2) * 6) + "?=";
    if (!is_same(value)) return;
  }
}

TEST_F(DecodingEquivalence, hundreds_of_words_within_words_decode_as_the_rule_does_pass_by_pass) {
  constexpr std::array kHeads = {"=?utf-8?q?."sv, "=??Q?x"sv, "=?windows-1251?q?=gx"sv, "=?x?q?=3Fa"sv,
                                 "=?utf-7?q?_"sv};
  constexpr std::array kTails = {"x"sv,     "=?"sv,    "=3D=3Fx"sv, "_"sv,      "=gx"sv,          "=GX"sv, "==31"sv,
                                 "=5F_"sv,  "=3D?"sv,  "=\r\n"sv,   "=?x?b?"sv, "=?windows-12"sv, "51"sv,  "=?utf-8?"sv,
                                 "=3D3D"sv, "+AGE-"sv, "\r\n"sv,    "=09"sv,    "=3D3D3D"sv,      "a=6"sv, "?q?"sv};
  RandomValue random(7);
  for (int i = 0; i < rounds(60); ++i) {
    const std::size_t levels = random.below(150) + 50;
    const bool has_one_tail = random.below(2) == 0;
    const std::string_view tail = kTails[random.below(kTails.size())];
    std::string value;
    for (std::size_t level = 0; level < levels; ++level) value += kHeads[random.below(kHeads.size())];
    value += "core";
    for (std::size_t level = 0; level < levels; ++level) {
      value += has_one_tail ? tail : kTails[random.below(kTails.size())];
      value += ".?=";
    }
    if (!is_same(value)) return;
  }
  EXPECT_LT(given_up, rounds(60) / 2);
}

TEST_F(DecodingEquivalence, folds_and_utf7_runs_far_apart_decode_as_the_rule_does_pass_by_pass) {
  constexpr std::array kPieces = {"\r\n\t"sv, "+AGE-"sv,  "+"sv,       "+AD0APw-"sv,  "+DQoJ"sv, "+AA0ACgAJ-"sv,
                                  "text "sv,  "=?x?q?"sv, "?="sv,      "+K0FEMC1B"sv, "-"sv,     "=3D?x"sv,
                                  "=?q"sv,    "+2Abc"sv,  "=2BAGI-"sv, "=?x?b?K0FH"sv};
  constexpr std::array kCodePages = {0, 1251, 65000, 65001};
  RandomValue random(8);
  for (int i = 0; i < rounds(20'000); ++i) {
    platform::set_process_code_page(kCodePages[random.below(kCodePages.size())]);
    std::string value;
    for (std::size_t piece = random.below(40); piece > 0; --piece) value += kPieces[random.below(kPieces.size())];
    if (!is_same(value + "=?unicode-1-1-utf-7?q?a?=")) return;
  }
}

TEST_F(DecodingEquivalence, utf7_values_decode_as_the_rule_does_pass_by_pass_whatever_the_process_code_page) {
  constexpr std::array kCodePages = {0, 1251, 65000, 65001, 12345};
  RandomValue random(4);
  for (int i = 0; i < rounds(50'000); ++i) {
    platform::set_process_code_page(kCodePages[random.below(kCodePages.size())]);
    if (!is_same(random.tokens(10) + "=?unicode-1-1-utf-7?" + random.tokens(10))) return;
  }
}

}  // namespace
}  // namespace vellobar
