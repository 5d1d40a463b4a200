#include "automation/text.h"

#include <new>
#include <utility>

namespace vellobar::automation {

std::u16string_view text_of(BSTR string) {
  return {reinterpret_cast<const char16_t*>(string), static_cast<std::size_t>(SysStringLen(string))};
}

BSTR new_string(std::u16string_view text) {
  if (text.empty()) return nullptr;
  if (!std::in_range<UINT>(text.size())) throw std::bad_alloc();
  BSTR string = SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()), static_cast<UINT>(text.size()));
  if (string == nullptr) throw std::bad_alloc();
  return string;
}

}  // namespace vellobar::automation
