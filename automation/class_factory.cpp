#include "automation/class_factory.h"

#include <atomic>

#include "automation/class_table.h"
#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/module.h"

namespace vellobar::automation {

namespace {

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const ClassEntry& entry) : entry_(entry) {}
  virtual ~ClassFactory() = default;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    if (interface_id != IID_IUnknown && interface_id != IID_IClassFactory) return E_NOINTERFACE;
    *to = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

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
  std::atomic<ULONG> references_{1};
  ModuleReference module_;
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
