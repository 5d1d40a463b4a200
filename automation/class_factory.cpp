#include "automation/class_factory.h"

#include "automation/class_table.h"
#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/module.h"
#include "automation/unknown.h"

namespace vellobar::automation {

namespace {

class ClassFactory final : public Unknown<IClassFactory> {
 public:
  explicit ClassFactory(const ClassEntry& entry) : entry_(entry) {}

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID interface_id, void** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    HRESULT found = S_OK;
    const HRESULT made = guarded([&] { found = entry_.create()->QueryInterface(interface_id, to); });
    return FAILED(made) ? made : found;
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    lock_server(lock != FALSE);
    return S_OK;
  }

 private:
  const ClassEntry& entry_;
};

}  // namespace

HRESULT get_class_object(REFCLSID class_id, REFIID interface_id, void** to) noexcept {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  const ClassEntry* entry = class_entry(class_id);
  if (entry == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  HRESULT found = S_OK;
  const HRESULT made = guarded([&] {
    const auto factory = ComPtr<IClassFactory>::attach(new ClassFactory(*entry));
    found = factory->QueryInterface(interface_id, to);
  });
  return FAILED(made) ? made : found;
}

}  // namespace vellobar::automation
