// The statuses that a member of the component may answer with.
#pragma once

#include <windows.h>

#include <set>

namespace vellobar::tests {

/// Statuses without a text.
inline bool is_bare_status(HRESULT status) {
  static const std::set<HRESULT> kBare = {S_OK, E_INVALIDARG, E_FAIL, E_POINTER, E_OUTOFMEMORY, DISP_E_OVERFLOW};
  return kBare.contains(status);
}

/// 0x800A0000 and one of the component's numbers.
inline bool is_numbered(HRESULT status) {
  const auto number = static_cast<unsigned long>(status) - 0x800A0000u;
  return number == 8 || (number >= 30000 && number <= 30014 && number != 30003);
}

}  // namespace vellobar::tests
