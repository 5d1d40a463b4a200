// The values of the control that a container can bind to: all that a client may put, and `Changed`. `Language` and
// `CharSet` are those of the process and so change for every control at once.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vellobar {
class CVellobar;
}

namespace vellobar::automation {

struct BindableValues {
  std::u16string filename;
  bool auto_update = false;
  bool changed = false;
  std::int32_t language = 0;
  std::int32_t char_set = 0;
};

BindableValues bindable_values(const CVellobar& control);

/// Identifiers of the properties in which the two differ.
std::vector<DISPID> differences(const BindableValues& before, const BindableValues& after);

inline constexpr DISPID kFilename = 0;
inline constexpr DISPID kAutoUpdate = 1;
inline constexpr DISPID kChanged = 7;
inline constexpr DISPID kLanguage = 13;
inline constexpr DISPID kCharSet = 14;

}  // namespace vellobar::automation
