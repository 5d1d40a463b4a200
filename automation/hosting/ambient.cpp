#include "automation/hosting/ambient.h"

#include <olectl.h>

#include "automation/com_ptr.h"

namespace vellobar::automation {

bool is_run_time(IOleClientSite* client) {
  const auto ambient = query<IDispatch>(client);
  if (!ambient) return false;
  VARIANT value;
  VariantInit(&value);
  DISPPARAMS none{};
  const HRESULT result = ambient->Invoke(DISPID_AMBIENT_USERMODE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                                         &none, &value, nullptr, nullptr);
  const bool run_time = SUCCEEDED(result) && V_VT(&value) == VT_BOOL && V_BOOL(&value) != VARIANT_FALSE;
  VariantClear(&value);
  return run_time;
}

}  // namespace vellobar::automation
