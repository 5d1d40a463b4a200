// Objects of a container's own, to be handed to the control: they live on the stack of a test, count the references
// that are held to them, and outlive all of these.
#pragma once

#include <ocidl.h>
#include <ole2.h>

#include <functional>
#include <utility>
#include <vector>

#include "tests/automation/client.h"

namespace vellobar::tests {

template <class First, class... Others>
class ClientSide : public First, public Others... {
 public:
  ClientSide() = default;
  ClientSide(const ClientSide&) = delete;
  ClientSide& operator=(const ClientSide&) = delete;
  ~ClientSide() { EXPECT_EQ(references, 1u) << "the control still holds its container's object"; }

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    *to = nullptr;
    if (interface_id == IID_IUnknown) *to = static_cast<First*>(this);
    if (interface_id == __uuidof(First)) *to = static_cast<First*>(this);
    ((interface_id == __uuidof(Others) ? void(*to = static_cast<Others*>(this)) : void()), ...);
    if (*to == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references;
    if (when_released) when_released();
    return left;
  }

  ULONG references = 1;
  std::function<void()> when_released;
};

/// Writes down what it is told, and does what a test wants it to do meanwhile.
class PropertyListener final : public ClientSide<IPropertyNotifySink> {
 public:
  STDMETHODIMP OnChanged(DISPID identifier) override {
    changed.push_back(identifier);
    if (when_changed) when_changed(identifier);
    return S_OK;
  }
  STDMETHODIMP OnRequestEdit(DISPID identifier) override {
    requested.push_back(identifier);
    return when_requested ? when_requested(identifier) : S_OK;
  }

  std::vector<DISPID> changed;
  std::vector<DISPID> requested;
  std::function<void(DISPID)> when_changed;
  std::function<HRESULT(DISPID)> when_requested;
};

/// Counts what it is told of a view and of an object.
class AdviseListener final : public ClientSide<IAdviseSink> {
 public:
  STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override { ++data_changes; }
  STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override { ++view_changes; }
  STDMETHODIMP_(void) OnRename(IMoniker*) override {}
  STDMETHODIMP_(void) OnSave() override { ++saves; }
  STDMETHODIMP_(void) OnClose() override { ++closes; }

  int data_changes = 0;
  int view_changes = 0;
  int saves = 0;
  int closes = 0;
};

}  // namespace vellobar::tests
