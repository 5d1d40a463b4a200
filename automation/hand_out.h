// Values on their way to a client: each overload stores one kind of value where the client wants it. A number that its
// type cannot hold is Status::overflow, never a wrapped one.
#pragma once

#include <ole2.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "automation/objects.h"
#include "automation/text.h"
#include "errors/error.h"

namespace vellobar::automation {

inline void hand_out(BSTR* to, std::u16string_view text) { *to = new_string(text); }

inline void hand_out(VARIANT_BOOL* to, std::same_as<bool> auto flag) { *to = flag ? VARIANT_TRUE : VARIANT_FALSE; }

/// `short`, `long` and the enumerations.
template <class Number>
requires(std::is_integral_v<Number> || std::is_enum_v<Number>) void hand_out(Number* to, std::int64_t value) {
  if (!std::in_range<std::conditional_t<std::is_enum_v<Number>, std::int32_t, Number>>(value)) {
    throw Error(Status::overflow);
  }
  *to = static_cast<Number>(value);
}

inline void hand_out(DATE* to, double date) { *to = date; }

/// An object of the component as the automation object that stands for it, found by `wrap`.
template <class Interface, class Core>
void hand_out(Interface** to, const std::shared_ptr<Core>& core) {
  *to = core ? wrap(core).detach() : nullptr;
}

}  // namespace vellobar::automation
