#include "platform/code_page.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <climits>
#include <new>

#include "platform/ascii.h"

namespace vellobar::platform {

namespace {

/// Pages that hold ASCII as it stands and have no shift states; other pages, EBCDIC ones for example, go to the system
/// whole. Sorted.
constexpr std::array kAsciiPages = {
    0,     3,     437,   720,   737,   775,   850,   852,   855,   857,   858,   862,   866,   874,          932,
    936,   949,   950,   1125,  1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,  20127,        20866,
    20932, 21866, 28591, 28592, 28593, 28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605, kUtf8CodePage};
static_assert(std::is_sorted(kAsciiPages.begin(), kAsciiPages.end()));

/// Whether each page of kAsciiPages is there; asked once, for the system's answer costs more than a short conversion.
const std::array<bool, kAsciiPages.size()>& installed_pages() {
  static const auto installed = [] {
    std::array<bool, kAsciiPages.size()> answers{};
    std::transform(kAsciiPages.begin(), kAsciiPages.end(), answers.begin(), [](int page) {
      CPINFO info;
      return ::GetCPInfo(static_cast<UINT>(page), &info) != 0;
    });
    return answers;
  }();
  return installed;
}

/// A length for the system's functions, which count with ints; a longer text cannot be held either.
int counted(std::size_t length) {
  if (length > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(length);
}

wchar_t* wide(std::u16string& text) noexcept { return reinterpret_cast<wchar_t*>(text.data()); }
const wchar_t* wide(std::u16string_view text) noexcept { return reinterpret_cast<const wchar_t*>(text.data()); }

int widen_into(int code_page, std::string_view bytes, wchar_t* to, int room) {
  return ::MultiByteToWideChar(static_cast<UINT>(code_page), 0, bytes.data(), counted(bytes.size()), to, room);
}

int narrow_into(int code_page, std::u16string_view text, char* to, int room) {
  return ::WideCharToMultiByte(static_cast<UINT>(code_page), 0, wide(text), counted(text.size()), to, room, nullptr,
                               nullptr);
}

}  // namespace

bool keeps_ascii(int code_page) noexcept {
  const auto found = std::lower_bound(kAsciiPages.begin(), kAsciiPages.end(), code_page);
  return found != kAsciiPages.end() && *found == code_page && installed_pages()[found - kAsciiPages.begin()];
}

std::u16string widen(int code_page, std::string_view bytes) {
  if (bytes.empty()) return {};
  if (keeps_ascii(code_page) && ascii_length(bytes) == bytes.size()) return widen_ascii(bytes);
  // No page makes more units than there are bytes, so the first call is nearly always enough.
  std::u16string text(bytes.size(), u'\0');
  int length = widen_into(code_page, bytes, wide(text), counted(text.size()));
  if (length == 0 && ::GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
    text.resize(static_cast<std::size_t>(widen_into(code_page, bytes, nullptr, 0)));
    length = widen_into(code_page, bytes, wide(text), counted(text.size()));
  }
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::string narrow(int code_page, std::u16string_view text) {
  if (text.empty()) return {};
  if (keeps_ascii(code_page) && ascii_length(text) == text.size()) return narrow_ascii(text);
  std::string bytes(static_cast<std::size_t>(std::max(0, narrow_into(code_page, text, nullptr, 0))), '\0');
  if (!bytes.empty()) narrow_into(code_page, text, bytes.data(), counted(bytes.size()));
  return bytes;
}

}  // namespace vellobar::platform
