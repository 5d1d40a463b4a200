// The tokens of an encoded word, "=?charset?encoding?text?=" (RFC 2047, section 2), as this component recognises them.
// The charset is not read on the way to the encoding: only four prefixes count, wherever in a value they stand.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace vellobar::mime {

inline constexpr std::string_view kWordStart = "=?";
inline constexpr std::string_view kWordEnd = "?=";
inline constexpr std::string_view kTabFold = "\r\n\t";

inline constexpr std::string_view kUnicodeUtf7Prefix = "=?unicode-1-1-utf-7?";
inline constexpr std::string_view kUtf7Prefix = "=?utf-7?";
inline constexpr std::string_view kUtf8Prefix = "=?utf-8?";
inline constexpr std::string_view kWindowsPrefix = "=?windows-";
/// The prefixes that choose the code page of a value; matched in any case.
inline constexpr std::array kCodePagePrefixes = {kUtf7Prefix, kUtf8Prefix, kWindowsPrefix};

enum class WordEncoding { base64, quoted_printable };

/// The beginning of a word: where "=?" stands, where the encoded text begins, and how it is encoded.
struct WordHead {
  std::size_t start = 0;
  std::size_t text = 0;
  WordEncoding encoding = WordEncoding::base64;
};

/// The encoding that a text names at its beginning, as "?b?" or "?q?" in any case; nothing when it begins otherwise.
std::optional<WordEncoding> word_encoding_at(std::string_view text);

/// The first beginning of a word in a text: the first "=?" and the nearest "?b?" or "?q?" behind it, in any case.
/// Nothing when either is missing.
std::optional<WordHead> find_word_head(std::string_view text);

/// Where the last of the prefixes that choose a code page begins; npos when there is none.
std::size_t last_code_page_prefix(std::string_view text);

/// The code page chosen by the prefixes in a text: UTF-7 before UTF-8 before the number of the first "windows-" prefix.
/// Nothing when it holds none.
std::optional<int> code_page_named_in(std::string_view text);

}  // namespace vellobar::mime
