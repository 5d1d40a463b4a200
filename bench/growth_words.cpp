// Encoded words in header values: many, broken, within each other, grown, and UTF-7 to be repaired.
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "codecs/base64.h"
#include "growth.h"
#include "mime/encoded_word.h"

namespace vellobar::bench {
namespace {

GrowthWork decode(std::string value) {
  return [value = std::move(value)] { return mime::decode_header_value(value).size(); };
}

template <const char* piece>
GrowthWork many(std::size_t size) {
  return decode(repeated(piece, size));
}

/// As many beginnings of words as ends, a tail before each end.
std::string nested(std::string_view head, std::string_view tail, std::size_t size) {
  const std::size_t levels = size / (head.size() + tail.size() + 2);
  std::string value;
  for (std::size_t i = 0; i < levels; ++i) value += head;
  value += "core";
  for (std::size_t i = 0; i < levels; ++i) value.append(tail).append("?=");
  return value;
}

template <const char* tail>
GrowthWork nested_with(std::size_t size) {
  return decode(nested("=?utf-8?q?.", tail, size));
}

template <const char* head>
GrowthWork nested_in(std::size_t size) {
  return decode(nested(head, ".", size));
}

template <const char* core>
GrowthWork nested_around(std::size_t size) {
  const std::string words = nested("=?utf-8?q?.", "", size / 2);
  const std::size_t middle = words.find("core");
  return decode(words.substr(0, middle) + repeated(core, size / 2) + words.substr(middle + 4));
}

/// Words whose Base64 text is a word again, as deep as the size allows.
GrowthWork base64_in_base64(std::size_t size) {
  std::string value = "core";
  while (value.size() < size / 2) value = "=?utf-8?b?" + codecs::encode_base64("x" + value + "y") + "?=";
  return decode(value + repeated("=?utf-8?b?PT94P3E/YT89?=", size - value.size()));
}

GrowthWork number_of_zeros(std::size_t size) {
  return decode(repeated("=?x?q?a_b?=", size / 2) + "=?windows-" + std::string(size / 2, '0') + "1251");
}

GrowthWork number_grown_by_words(std::size_t size) { return decode("=?windows-" + repeated("=?x?q?00?=", size)); }

/// Passes that remove a fold at one end of the value and repair a run at the other.
GrowthWork utf7_runs_far_from_folds(std::size_t size) {
  return decode(repeated("+AGE- ", size / 3) + "=?unicode-1-1-utf-7?x" + std::string(size / 3, 'x') +
                repeated("\r\n\t", size / 3));
}

GrowthWork folds_far_from_utf7_runs(std::size_t size) {
  return decode(repeated("a\r\n\t", size / 3) + "=?unicode-1-1-utf-7?x" + std::string(size / 3, 'x') +
                repeated("+AGE- ", size / 3));
}

GrowthWork utf7_runs_far_from_words(std::size_t size) {
  return decode(repeated("=?x?q?a_b?=", size / 3) + std::string(size / 3, 'x') +
                "=?unicode-1-1-utf-7?q?x?= " + repeated("+AGE- ", size / 3));
}

GrowthWork utf7_run_as_long_as_the_value(std::size_t size) {
  return decode("+" + std::string(size, 'Q') + "- =?unicode-1-1-utf-7?q?x?=");
}

GrowthWork utf7_nested(std::size_t size) { return decode(nested("=?unicode-1-1-utf-7?q?+AGE-.", "+AGI-", size)); }

/// Equals signs side by side, which grow at each of a few levels.
GrowthWork grown_a_little(std::size_t size) {
  return decode(repeated("=?x?q?.=?x?q?,=?x?q?;=?x?q?!==ZY?=?=?=?= ", size));
}

/// Words that would grow without end, were they not ended.
GrowthWork burst(std::size_t size) {
  return decode(nested("=?a?q?.", "", size / 2) + nested("=?a?q?.==ZY", "", size / 2));
}

/// Words that grow for some levels and are then cut off by a NUL, again and again.
GrowthWork grown_and_cut(std::size_t size) {
  return decode(repeated("=?x?q?.=3D00=?x?q?,=?x?q?;=?x?q?!=?x?q?.=?x?q?,=?x?q?;==ZY?=?=?=?=?=?=?=", size));
}

constexpr char kWords[] = "=?utf-8?Q?=C3=A9_a?= ";
constexpr char kBase64Words[] = "=?utf-8?B?w6nDqcOp?= ";
constexpr char kWordsAndFolds[] = "=?utf-8?Q?=C3=A9_a?=\r\n\t";
constexpr char kFolds[] = "a word\r\n\t";
constexpr char kFoldsInFolds[] = "\r\n";
constexpr char kStarts[] = "=?";
constexpr char kOpenWords[] = "=?utf-8?q?x ";
constexpr char kEnds[] = "?=";
constexpr char kPrefixes[] = "=?windows-1251 ";
constexpr char kWordsToWords[] = "=?x?q?=3D=3Fx=3Fq=3Fa=3F=3D?= ";
constexpr char kWordsToFolds[] = "=?x?q?=0D=0A=09?= ";
constexpr char kUtf7Words[] = "=?unicode-1-1-utf-7?q?+AGE-?= ";
constexpr char kNothing[] = "";
constexpr char kStart[] = "=?";
constexpr char kStartAndLetter[] = "=?x";
constexpr char kEscapedStart[] = "=3D=3Fx";
constexpr char kHalfStart[] = "=3D";
constexpr char kUnderscore[] = "a_b";
constexpr char kEscapedUnderscore[] = "=5F.";
constexpr char kNul[] = "=00.";
constexpr char kEscape[] = "=41";
constexpr char kBrokenEscape[] = "=gx.";
constexpr char kSoftBreak[] = "x=\r\ny";
constexpr char kEscapedFold[] = "=0D=0A=09";
constexpr char kPrefixTail[] = "=?utf-8?x";
constexpr char kCutEscape[] = "=4";
constexpr char kSharedEquals[] = "==31";
constexpr char kSettled[] = "=GX ";
constexpr char kEscapes[] = "=3D3D3D";
constexpr char kWindowsHead[] = "=?windows-1251?q?.";
constexpr char kNullHead[] = "=??q?\001";
constexpr char kStrangeHead[] = "=?=?utf-8?x?q?_=gx";

constexpr std::array kFamilies = {
    GrowthFamily{"words", many<kWords>},
    GrowthFamily{"base64_words", many<kBase64Words>},
    GrowthFamily{"words_and_folds", many<kWordsAndFolds>},
    GrowthFamily{"folds", many<kFolds>},
    GrowthFamily{"line_ends", many<kFoldsInFolds>},
    GrowthFamily{"starts", many<kStarts>},
    GrowthFamily{"open_words", many<kOpenWords>},
    GrowthFamily{"ends", many<kEnds>},
    GrowthFamily{"prefixes", many<kPrefixes>},
    GrowthFamily{"words_to_words", many<kWordsToWords>},
    GrowthFamily{"words_to_folds", many<kWordsToFolds>},
    GrowthFamily{"utf7_words", many<kUtf7Words>},
    GrowthFamily{"nested", nested_with<kNothing>},
    GrowthFamily{"nested_start", nested_with<kStart>},
    GrowthFamily{"nested_start_and_letter", nested_with<kStartAndLetter>},
    GrowthFamily{"nested_escaped_start", nested_with<kEscapedStart>},
    GrowthFamily{"nested_half_start", nested_with<kHalfStart>},
    GrowthFamily{"nested_underscore", nested_with<kUnderscore>},
    GrowthFamily{"nested_escaped_underscore", nested_with<kEscapedUnderscore>},
    GrowthFamily{"nested_nul", nested_with<kNul>},
    GrowthFamily{"nested_escape", nested_with<kEscape>},
    GrowthFamily{"nested_broken_escape", nested_with<kBrokenEscape>},
    GrowthFamily{"nested_soft_break", nested_with<kSoftBreak>},
    GrowthFamily{"nested_escaped_fold", nested_with<kEscapedFold>},
    GrowthFamily{"nested_prefix", nested_with<kPrefixTail>},
    GrowthFamily{"nested_cut_escape", nested_with<kCutEscape>},
    GrowthFamily{"nested_shared_equals", nested_with<kSharedEquals>},
    GrowthFamily{"nested_windows", nested_in<kWindowsHead>},
    GrowthFamily{"nested_without_name", nested_in<kNullHead>},
    GrowthFamily{"nested_strange", nested_in<kStrangeHead>},
    GrowthFamily{"nested_around_settled", nested_around<kSettled>},
    GrowthFamily{"nested_around_shared_equals", nested_around<kSharedEquals>},
    GrowthFamily{"nested_around_escapes", nested_around<kEscapes>},
    GrowthFamily{"nested_around_starts", nested_around<kStartAndLetter>},
    GrowthFamily{"base64_in_base64", base64_in_base64},
    GrowthFamily{"number_of_zeros", number_of_zeros},
    GrowthFamily{"number_grown_by_words", number_grown_by_words},
    GrowthFamily{"utf7_runs_far_from_folds", utf7_runs_far_from_folds},
    GrowthFamily{"folds_far_from_utf7_runs", folds_far_from_utf7_runs},
    GrowthFamily{"utf7_runs_far_from_words", utf7_runs_far_from_words},
    GrowthFamily{"utf7_run_as_long_as_the_value", utf7_run_as_long_as_the_value},
    GrowthFamily{"utf7_nested", utf7_nested},
    GrowthFamily{"grown_a_little", grown_a_little},
    GrowthFamily{"grown_and_cut", grown_and_cut},
    GrowthFamily{"burst", burst},
};

}  // namespace

std::span<const GrowthFamily> word_growth_families() { return kFamilies; }

}  // namespace vellobar::bench
