// VARIANT arguments as clients send them. A reference is followed to its value before anything looks at the type; a
// reference that leads nowhere is an invalid argument. Nothing here asks an object for its default value.
#pragma once

#include <ole2.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vellobar::automation {

/// The owner of a VARIANT and of what it holds.
class Variant {
 public:
  Variant() noexcept { VariantInit(&value_); }
  /// A copy of the value, references followed. Throws vellobar::Error.
  explicit Variant(const VARIANT& value);
  Variant(const Variant& other) : Variant(other.value_) {}
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value_); }

  const VARIANT& value() const { return value_; }
  /// Gives the content away.
  VARIANT detach() noexcept;

 private:
  VARIANT value_;
};

/// True when a VARIANT is a reference, or a reference to a reference, that leads nowhere.
bool leads_nowhere(const VARIANT& value);

/// The text a VARIANT holds, directly or by reference; none when it holds something else.
/// Status::invalid_argument for a reference that leads nowhere.
std::optional<std::u16string_view> string_in(const VARIANT& value);

/// Whether a VARIANT holds an object (VT_DISPATCH), directly or by reference; `object` is then that object, borrowed,
/// possibly null. Status::invalid_argument for a reference that leads nowhere.
bool holds_object(const VARIANT& value, IDispatch*& object);

/// What an `Index` argument says: the name of an item, or its position.
struct Index {
  std::optional<std::u16string> name;
  std::int64_t position = 0;
};
/// A string is a name; anything else that converts to a 16-bit integer is a position. None for what does not convert
/// (null, missing, too large, an object, an array, a reference that leads nowhere).
std::optional<Index> index_in(const VARIANT& value);

/// A VARIANT as a 32-bit integer; none when it is missing, is an object, or does not convert. An empty one is 0.
std::optional<int> number_in(const VARIANT& value);

}  // namespace vellobar::automation
