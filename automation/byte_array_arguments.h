// The arguments of a late-bound call that takes bytes (`InData`) and gives bytes (`OutData`), as script hosts send
// them: in variables, which are references to VARIANTs. Here they become references to byte arrays, which is what the
// type library describes and all that the system's own dispatch takes. Bytes may also come as an array of VARIANTs that
// are whole numbers, the only kind of array that a script makes by itself; such an array is copied. What is of neither
// kind stays as it is, for the type library to refuse.
#pragma once

#include <ole2.h>

#include <array>

namespace vellobar::automation {

class ByteArrayArguments {
 public:
  ByteArrayArguments() = default;
  ~ByteArrayArguments();
  ByteArrayArguments(const ByteArrayArguments&) = delete;
  ByteArrayArguments& operator=(const ByteArrayArguments&) = delete;

  /// Takes arguments that lead somewhere. DISP_E_TYPEMISMATCH for an array of VARIANTs in which something is no whole
  /// number or for a result that would be lost, DISP_E_OVERFLOW for a number that is no byte, DISP_E_ARRAYISLOCKED for
  /// a variable whose array is in use.
  HRESULT take(const DISPPARAMS& arguments) noexcept;

  /// The arguments for the call.
  DISPPARAMS* get() { return &arguments_; }

  /// Puts the result into the caller's variable, in place of what that held; no bytes leave it empty. For after a call
  /// that succeeded.
  HRESULT give_back() noexcept;

 private:
  HRESULT take_source(VARIANT& argument) noexcept;
  HRESULT take_result(VARIANT& argument) noexcept;

  DISPPARAMS arguments_{};
  std::array<VARIANT, 2> values_{};
  /// The bytes to read: the caller's array, or a copy of our own.
  SAFEARRAY* source_ = nullptr;
  SAFEARRAY* copy_ = nullptr;
  /// What the call gives, and the variable that it is for.
  SAFEARRAY* result_ = nullptr;
  VARIANT* variable_ = nullptr;
};

}  // namespace vellobar::automation
