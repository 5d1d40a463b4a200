#include "automation/variant.h"

#include <new>

#include "automation/text.h"
#include "errors/error.h"

namespace vellobar::automation {

namespace {

/// A VARIANT that may be a reference to another one, which may itself refer to a plain value: two steps at most.
const VARIANT& follow(const VARIANT& value) {
  if (V_VT(&value) != (VT_BYREF | VT_VARIANT)) return value;
  if (V_VARIANTREF(&value) == nullptr) throw Error(Status::invalid_argument);
  return *V_VARIANTREF(&value);
}

const VARIANT& checked(const VARIANT& value) {
  if (leads_nowhere(value)) throw Error(Status::invalid_argument);
  return follow(value);
}

}  // namespace

Variant::Variant(const VARIANT& value) {
  VariantInit(&value_);
  if (leads_nowhere(value)) throw Error(Status::invalid_argument);
  const HRESULT result = VariantCopyInd(&value_, const_cast<VARIANT*>(&value));
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  if (FAILED(result)) throw Error(Status::invalid_argument);
}

VARIANT Variant::detach() noexcept {
  const VARIANT content = value_;
  VariantInit(&value_);
  return content;
}

bool leads_nowhere(const VARIANT& value) {
  if ((V_VT(&value) & VT_BYREF) == 0) return false;
  if (V_BYREF(&value) == nullptr) return true;
  if (V_VT(&value) != (VT_BYREF | VT_VARIANT)) return false;
  const VARIANT& inner = *V_VARIANTREF(&value);
  return (V_VT(&inner) & VT_BYREF) != 0 && (V_VT(&inner) == (VT_BYREF | VT_VARIANT) || V_BYREF(&inner) == nullptr);
}

std::optional<std::u16string_view> string_in(const VARIANT& value) {
  const VARIANT& plain = checked(value);
  if (V_VT(&plain) == VT_BSTR) return text_of(V_BSTR(&plain));
  if (V_VT(&plain) == (VT_BYREF | VT_BSTR)) return text_of(*V_BSTRREF(&plain));
  return std::nullopt;
}

bool holds_object(const VARIANT& value, IDispatch*& object) {
  const VARIANT& plain = checked(value);
  if (V_VT(&plain) == VT_DISPATCH) {
    object = V_DISPATCH(&plain);
    return true;
  }
  if (V_VT(&plain) == (VT_BYREF | VT_DISPATCH)) {
    object = *V_DISPATCHREF(&plain);
    return true;
  }
  return false;
}

namespace {

/// A VARIANT as a number of this type; false when it does not convert.
bool convert(const VARIANT& value, VARTYPE type, VARIANT& number) {
  const Variant plain(value);
  const VARTYPE held = V_VT(&plain.value());
  // An object would be asked for its default value, which is the client's code.
  if (held == VT_DISPATCH || held == VT_UNKNOWN) return false;
  VariantInit(&number);
  const HRESULT result = VariantChangeType(&number, const_cast<VARIANT*>(&plain.value()), 0, type);
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  return SUCCEEDED(result);
}

}  // namespace

std::optional<Index> index_in(const VARIANT& value) {
  if (leads_nowhere(value)) return std::nullopt;
  if (const auto name = string_in(value)) return Index{std::u16string(*name), 0};
  VARIANT position;
  if (!convert(value, VT_I2, position)) return std::nullopt;
  return Index{std::nullopt, V_I2(&position)};
}

std::optional<int> number_in(const VARIANT& value) {
  VARIANT number;
  if (leads_nowhere(value) || !convert(value, VT_I4, number)) return std::nullopt;
  return V_I4(&number);
}

}  // namespace vellobar::automation
