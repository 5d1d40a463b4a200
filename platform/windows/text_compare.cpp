#include "platform/text_compare.h"

#include <windows.h>

#include <climits>
#include <new>

#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::platform {

namespace {

int counted(std::size_t length) {
  if (length > INT_MAX) throw std::bad_alloc();
  return static_cast<int>(length);
}

const wchar_t* wide(std::u16string_view text) noexcept { return reinterpret_cast<const wchar_t*>(text.data()); }

}  // namespace

std::u16string fold_case(std::u16string_view text) {
  // The system lower-cases ASCII letters the same way in every locale, Turkish included.
  if (ascii_length(text) == text.size()) return lower_ascii(text);
  std::string bytes = narrow(kThreadCodePage, text);
  ::CharLowerBuffA(bytes.data(), static_cast<DWORD>(counted(bytes.size())));
  return widen(kThreadCodePage, bytes);
}

bool equal_in_user_locale(std::u16string_view left, std::u16string_view right) {
  if (left == right) return true;
  if (left.empty() || right.empty()) return false;
  return ::CompareStringW(LOCALE_USER_DEFAULT, 0, wide(left), counted(left.size()), wide(right),
                          counted(right.size())) == CSTR_EQUAL;
}

}  // namespace vellobar::platform
