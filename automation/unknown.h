// IUnknown for the objects of the module: counted references, and the interfaces of a class by their identifiers. An
// object ends itself with its last reference and counts for the module as long as it lives.
#pragma once

#include <ole2.h>

#include <atomic>

#include "automation/module.h"

namespace vellobar::automation {

/// An object with these interfaces; the first one is its identity.
template <class First, class... Others>
class Unknown : public First, public Others... {
 public:
  Unknown() = default;
  Unknown(const Unknown&) = delete;
  Unknown& operator=(const Unknown&) = delete;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    if (interface_id == IID_IUnknown) *to = static_cast<First*>(this);
    offer<First>(interface_id, to);
    (offer<Others>(interface_id, to), ...);
    if (*to == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      // What the object lets go of at its end may still take and give back a reference to it.
      references_ = kEnding;
      delete this;
    }
    return left;
  }

 protected:
  virtual ~Unknown() = default;

  /// Adds a reference unless the last one is gone already.
  bool add_reference_while_alive() {
    ULONG held = references_;
    while (held != 0 && held < kEnding) {
      if (references_.compare_exchange_weak(held, held + 1)) return true;
    }
    return false;
  }

 private:
  template <class Interface>
  void offer(REFIID interface_id, void** to) {
    if (interface_id == __uuidof(Interface)) *to = static_cast<Interface*>(this);
  }

  static constexpr ULONG kEnding = 0x40000000;

  std::atomic<ULONG> references_{1};
  ModuleReference module_;
};

}  // namespace vellobar::automation
