#include "automation/object.h"

namespace vellobar::automation {

HRESULT check_arguments(const DISPPARAMS* arguments) noexcept {
  if (arguments == nullptr) return E_INVALIDARG;
  if (arguments->cArgs > 0 && arguments->rgvarg == nullptr) return E_INVALIDARG;
  if (arguments->cNamedArgs > arguments->cArgs) return E_INVALIDARG;
  if (arguments->cNamedArgs > 0 && arguments->rgdispidNamedArgs == nullptr) return E_INVALIDARG;
  for (UINT i = 0; i < arguments->cArgs; ++i) {
    if (leads_nowhere(arguments->rgvarg[i])) return E_INVALIDARG;
  }
  return S_OK;
}

}  // namespace vellobar::automation
