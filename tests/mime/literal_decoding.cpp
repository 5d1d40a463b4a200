#include "tests/mime/literal_decoding.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "platform/code_page.h"

namespace vellobar::tests {
namespace {

constexpr std::size_t npos = std::string::npos;
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return text;
}

std::size_t find_lower(const std::string& text, const std::string& wanted, std::size_t from = 0) {
  return lower(text).find(wanted, from);
}

std::string base64(std::string_view text) {
  std::string out;
  std::string group;
  const auto flush = [&] {
    unsigned bits = 0;
    std::size_t found = 0;
    for (; found < group.size(); ++found) {
      const std::size_t value = kLetters.find(group[found]);
      if (group[found] != '\0' && value == npos) break;
      bits |= (group[found] == '\0' ? 0u : static_cast<unsigned>(value)) << (18 - 6 * found);
    }
    const int yield = found == group.size() ? 3 : static_cast<int>(found) - 1;
    for (int i = 0; i < yield; ++i) out += static_cast<char>(bits >> (16 - 8 * i) & 255);
    group.clear();
    return yield == 3;
  };
  for (const char c : text) {
    if (c == '\r' || c == '\n') continue;
    group += c;
    if (group.size() == 4 && !flush()) return out;
  }
  if (!group.empty()) flush();
  return out;
}

std::string quoted_printable(std::string_view text) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  const auto upper = [](int c) { return c >= 'a' && c <= 'z' ? c - 32 : c; };
  std::string out;
  int previous = -1;
  int before_previous = -1;
  for (const char byte : text) {
    int c = static_cast<unsigned char>(byte);
    if (before_previous == '=') {
      if (!(previous == '\r' && c == '\n')) {
        previous = upper(previous);
        c = upper(c);
        const std::size_t high = kHex.find(static_cast<char>(previous));
        const std::size_t low = kHex.find(static_cast<char>(c));
        if (high != npos && low != npos) {
          out += static_cast<char>(16 * high + low);
        } else {
          out += {'=', static_cast<char>(previous), static_cast<char>(c)};
        }
      }
    } else if (previous != '=' && c != '=') {
      out += c == '_' ? ' ' : static_cast<char>(c);
    }
    before_previous = previous;
    previous = c;
  }
  return out;
}

std::optional<std::string> step(const std::string& text) {
  if (const std::size_t fold = text.find("\r\n\t"); fold != npos) return std::string(text).erase(fold, 3);
  const std::size_t start = text.find("=?");
  if (start == npos) return std::nullopt;
  const std::size_t b = find_lower(text, "?b?", start + 2);
  const std::size_t q = find_lower(text, "?q?", start + 2);
  const std::size_t marker = std::min(b, q);
  if (marker == npos) return std::nullopt;
  const std::size_t end = text.find("?=", marker + 3);
  if (end == npos) return std::nullopt;
  const std::string encoded = text.substr(marker + 3, end - marker - 3);
  std::string decoded = b < q ? base64(encoded) : quoted_printable(encoded);
  decoded = decoded.substr(0, decoded.find('\0'));
  return text.substr(0, start) + decoded + text.substr(end + 2);
}

std::string fix_up(const std::string& text) {
  const std::size_t plus = text.find('+');
  std::size_t end = plus + 1;
  while (end < text.size() && kLetters.find(text[end]) != npos) ++end;
  std::string out = text.substr(0, plus);
  if (end > plus + 1) {
    std::string decoded = base64(std::string_view(text).substr(plus + 1, end - plus - 1));
    if (!decoded.empty() && decoded[0] == '\0') decoded.erase(0, 1);
    decoded = decoded.substr(0, decoded.find('\0'));
    out += platform::narrow(platform::process_code_page(), platform::widen(65000, decoded));
  }
  if (end < text.size() && text[end] == '-') ++end;
  return out + text.substr(end);
}

int windows_number(const std::string& text, std::size_t at) {
  long long number = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    number = std::min(number * 10 + (text[at] - '0'), 2147483647LL);
  }
  return static_cast<int>(number);
}

}  // namespace

LiteralResult decode_literally(std::string_view value) {
  std::string text(value);
  int code_page = 0;
  for (;;) {
    const bool is_utf7 = find_lower(text, "=?unicode-1-1-utf-7?") != npos;
    if (is_utf7) code_page = 65000;
    if (find_lower(text, "=?utf-7?") != npos) {
      code_page = 65000;
    } else if (find_lower(text, "=?utf-8?") != npos) {
      code_page = 65001;
    } else if (const std::size_t at = find_lower(text, "=?windows-"); at != npos) {
      code_page = windows_number(text, at + 10);
    }
    std::optional<std::string> next = step(text);
    if (!next) return {text, code_page, true};
    if (is_utf7 && next->find('+') != npos) next = fix_up(*next);
    text = *next;
    if (text.size() > kMostLiteralBytes) return {text, code_page, false};
  }
}

}  // namespace vellobar::tests
