// Objects as a late-bound C++ host holds them: members are found by name at each call (IDispatch::GetIDsOfNames),
// arguments and results are VARIANTs, and a call that fails is a C++ exception with what the host would show.
#pragma once

#include <ole2.h>

#include <string>
#include <string_view>
#include <vector>

#include "automation/com_ptr.h"

namespace vellobar::tests {

/// A VARIANT that owns what it holds.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(std::wstring_view text);
  explicit Value(long number);
  explicit Value(IDispatch* object);
  /// An array of bytes (VT_ARRAY | VT_UI1), lower bound 0.
  static Value bytes(std::string_view content);
  Value(const Value& other) : Value() { VariantCopy(&value_, const_cast<VARIANT*>(&other.value_)); }
  Value& operator=(const Value& other) {
    VariantCopy(&value_, const_cast<VARIANT*>(&other.value_));
    return *this;
  }
  ~Value() { VariantClear(&value_); }

  VARIANT& get() { return value_; }
  const VARIANT& get() const { return value_; }
  VARTYPE type() const { return V_VT(&value_); }
  /// The value as text, a number or a flag, converted as a script host would. Throws std::runtime_error.
  std::wstring text() const;
  long number() const;
  bool flag() const;
  /// The content of an array of bytes. Throws std::runtime_error.
  std::string content() const;

 private:
  VARIANT converted(VARTYPE type) const;

  VARIANT value_;
};

/// A call that failed: the status, and the texts of the exception where the object gave any.
struct CallFailed {
  HRESULT status;
  std::wstring description;
  std::wstring source;
};

/// An argument that is given by name.
struct Named {
  const wchar_t* name;
  Value value;
};

/// An automation object of which only IDispatch is known. Every call throws CallFailed.
class Object {
 public:
  /// A new object of a class. Throws CallFailed, also when the class is not registered.
  static Object create(const wchar_t* program_id);
  /// The object that a result holds. Throws std::runtime_error when it holds none.
  explicit Object(const Value& value);

  Value get(const wchar_t* name, std::vector<Value> arguments = {}) const;
  void put(const wchar_t* name, const Value& value) const;
  Value call(const wchar_t* name, std::vector<Value> arguments = {}) const;
  /// A call with all its arguments by name, in any order.
  Value call_named(const wchar_t* name, std::vector<Named> arguments) const;
  /// A call whose arguments are references to the variables of the host, so that it can change them.
  void call_by_reference(const wchar_t* name, std::vector<Value*> arguments) const;
  /// The default member, as `object(arguments)` in a script reads it.
  Value value(std::vector<Value> arguments) const;
  /// Everything that For Each would see.
  std::vector<Value> items() const;

  IDispatch* dispatch() const { return dispatch_.get(); }

 private:
  explicit Object(automation::ComPtr<IDispatch> dispatch) : dispatch_(std::move(dispatch)) {}
  /// The identifier of a member, followed by those of its parameters.
  std::vector<DISPID> identifiers_of(const wchar_t* name, const std::vector<Named>& arguments) const;
  Value invoke(DISPID member, WORD kind, DISPPARAMS& parameters) const;
  Value invoke(DISPID member, WORD kind, std::vector<Value> arguments) const;

  automation::ComPtr<IDispatch> dispatch_;
};

}  // namespace vellobar::tests
