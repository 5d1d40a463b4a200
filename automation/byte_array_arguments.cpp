#include "automation/byte_array_arguments.h"

#include <cstddef>
#include <utility>

namespace vellobar::automation {

namespace {

constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1, kVariants = VT_ARRAY | VT_VARIANT;
constexpr UINT kSource = 0;

bool is_variable(const VARIANT& argument) { return V_VT(&argument) == (VT_BYREF | VT_VARIANT); }

void refer_to(SAFEARRAY** array, VARIANT& argument) {
  V_VT(&argument) = VT_BYREF | kBytes;
  V_ARRAYREF(&argument) = array;
}

bool is_in_use(const VARIANT& variable) {
  const bool has_array = (V_VT(&variable) & VT_ARRAY) != 0 && V_ARRAY(&variable) != nullptr;
  return has_array && V_ARRAY(&variable)->cLocks > 0;
}

/// Which parameter an argument is for. Named ones come first, the others in reverse order.
UINT parameter_of(const DISPPARAMS& arguments, UINT index) {
  const bool is_named = index < arguments.cNamedArgs;
  return is_named ? static_cast<UINT>(arguments.rgdispidNamedArgs[index]) : arguments.cArgs - 1 - index;
}

bool is_whole_number(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
      return true;
    default:
      return false;
  }
}

HRESULT byte_in(const VARIANT& element, unsigned char& byte) {
  if (!is_whole_number(V_VT(&element))) return DISP_E_TYPEMISMATCH;
  VARIANT number{};
  const HRESULT result = VariantChangeType(&number, const_cast<VARIANT*>(&element), 0, VT_UI1);
  byte = V_UI1(&number);
  return result;
}

HRESULT copy_elements(const VARIANT* elements, SAFEARRAY* to) {
  auto* bytes = static_cast<unsigned char*>(to->pvData);
  for (std::size_t i = 0; i < to->rgsabound[0].cElements; ++i) {
    if (const HRESULT result = byte_in(elements[i], bytes[i]); FAILED(result)) return result;
  }
  return S_OK;
}

/// An array of the bytes that these VARIANTs are.
HRESULT copy_bytes(SAFEARRAY* variants, SAFEARRAY*& copy) {
  VARTYPE type = VT_EMPTY;
  const bool is_list = variants != nullptr && SafeArrayGetDim(variants) == 1 &&
                       SUCCEEDED(SafeArrayGetVartype(variants, &type)) && type == VT_VARIANT;
  if (!is_list) return DISP_E_TYPEMISMATCH;
  copy = SafeArrayCreateVector(VT_UI1, 0, variants->rgsabound[0].cElements);
  if (copy == nullptr) return E_OUTOFMEMORY;
  void* elements = nullptr;
  if (const HRESULT result = SafeArrayAccessData(variants, &elements); FAILED(result)) return result;
  const HRESULT result = copy_elements(static_cast<const VARIANT*>(elements), copy);
  SafeArrayUnaccessData(variants);
  return result;
}

}  // namespace

ByteArrayArguments::~ByteArrayArguments() {
  for (SAFEARRAY* own : {copy_, result_}) {
    if (own != nullptr) SafeArrayDestroy(own);
  }
}

HRESULT ByteArrayArguments::take(const DISPPARAMS& arguments) noexcept {
  arguments_ = arguments;
  if (arguments.cArgs != values_.size()) return S_OK;
  arguments_.rgvarg = values_.data();
  for (UINT i = 0; i < arguments.cArgs; ++i) {
    values_[i] = arguments.rgvarg[i];
    const bool is_source = parameter_of(arguments, i) == kSource;
    const HRESULT taken = is_source ? take_source(values_[i]) : take_result(values_[i]);
    if (FAILED(taken)) return taken;
  }
  return S_OK;
}

HRESULT ByteArrayArguments::take_source(VARIANT& argument) noexcept {
  const VARIANT held = is_variable(argument) ? *V_VARIANTREF(&argument) : argument;
  const bool by_reference = (V_VT(&held) & VT_BYREF) != 0;
  const VARTYPE type = static_cast<VARTYPE>(V_VT(&held) & ~VT_BYREF);
  const bool is_array = type == kBytes || type == kVariants;
  // A client that names both arguments the source gets the answer of the type library.
  if (!is_array || copy_ != nullptr) return S_OK;
  source_ = by_reference ? *V_ARRAYREF(&held) : V_ARRAY(&held);
  if (type == kVariants) {
    if (const HRESULT result = copy_bytes(source_, copy_); FAILED(result)) return result;
    source_ = copy_;
  }
  refer_to(&source_, argument);
  return S_OK;
}

HRESULT ByteArrayArguments::take_result(VARIANT& argument) noexcept {
  if ((V_VT(&argument) & VT_BYREF) == 0) return DISP_E_TYPEMISMATCH;
  if (!is_variable(argument)) return S_OK;
  VARIANT* variable = V_VARIANTREF(&argument);
  if ((V_VT(variable) & VT_BYREF) != 0) {
    argument = *variable;
    return S_OK;
  }
  if (is_in_use(*variable)) return DISP_E_ARRAYISLOCKED;
  variable_ = variable;
  refer_to(&result_, argument);
  return S_OK;
}

HRESULT ByteArrayArguments::give_back() noexcept {
  if (variable_ == nullptr) return S_OK;
  if (const HRESULT result = VariantClear(variable_); FAILED(result)) return result;
  if (result_ == nullptr) return S_OK;
  V_VT(variable_) = kBytes;
  V_ARRAY(variable_) = std::exchange(result_, nullptr);
  return S_OK;
}

}  // namespace vellobar::automation
