#include "platform/code_page.h"

#include <new>

#include "platform/ascii.h"
#include "platform/posix/code_page_tables.h"
#include "platform/posix/unicode_transformations.h"

namespace vellobar::platform {

namespace {

/// The one default that the numbers for "the system's" and "the thread's" page mean away from Windows.
constexpr int kDefaultCodePage = 1252;

int resolve(int code_page) noexcept {
  return code_page == kAnsiCodePage || code_page == kThreadCodePage ? kDefaultCodePage : code_page;
}

// The loops write into room for the worst case: text grows by appending unit by unit at half the speed.

void append_from_page(const CodePageTables& page, std::string_view bytes, std::u16string& text) {
  std::size_t length = text.size();
  text.resize(length + bytes.size());
  std::size_t at = 0;
  while (at < bytes.size()) {
    const auto byte = static_cast<unsigned char>(bytes[at++]);
    // A lead byte before NUL or at the end stands alone, so that no NUL is swallowed.
    if (page.leads[byte] && at < bytes.size() && bytes[at] != '\0') {
      text[length++] = page.pairs[static_cast<std::size_t>(byte) << 8 | static_cast<unsigned char>(bytes[at++])];
    } else {
      text[length++] = page.units[byte];
    }
  }
  text.resize(length);
}

void append_to_page(const CodePageTables& page, std::u16string_view text, std::string& bytes) {
  constexpr std::size_t kMostBytes = 2;
  std::size_t length = bytes.size();
  bytes.resize(length + text.size() * kMostBytes);
  for (const char16_t unit : text) {
    const unsigned code = page.codes[unit];
    if (code > 0xFF) bytes[length++] = static_cast<char>(code >> 8);
    bytes[length++] = code == 0 && unit != 0 ? '?' : static_cast<char>(code);
  }
  bytes.resize(length);
}

}  // namespace

bool keeps_ascii(int code_page) noexcept {
  try {
    return code_page == kUtf8CodePage || code_page_tables(resolve(code_page)) != nullptr;
  } catch (const std::bad_alloc&) {
    return false;  // the careful answer: a caller then converts, and learns of it there
  }
}

std::u16string widen(int code_page, std::string_view bytes) {
  if (code_page == kUtf7CodePage) return from_utf7(bytes);
  const CodePageTables* page = code_page == kUtf8CodePage ? nullptr : code_page_tables(resolve(code_page));
  if (page == nullptr && code_page != kUtf8CodePage) return {};
  const std::size_t plain = ascii_length(bytes);
  std::u16string text = widen_ascii(bytes.substr(0, plain));
  if (plain == bytes.size()) return text;
  const std::string_view rest = bytes.substr(plain);
  if (page == nullptr) {
    append_from_utf8(rest, text);
  } else {
    append_from_page(*page, rest, text);
  }
  return text;
}

std::string narrow(int code_page, std::u16string_view text) {
  if (code_page == kUtf7CodePage) return to_utf7(text);
  const CodePageTables* page = code_page == kUtf8CodePage ? nullptr : code_page_tables(resolve(code_page));
  if (page == nullptr && code_page != kUtf8CodePage) return {};
  const std::size_t plain = ascii_length(text);
  std::string bytes = narrow_ascii(text.substr(0, plain));
  if (plain == text.size()) return bytes;
  const std::u16string_view rest = text.substr(plain);
  if (page == nullptr) {
    append_to_utf8(rest, bytes);
  } else {
    append_to_page(*page, rest, bytes);
  }
  return bytes;
}

}  // namespace vellobar::platform
