// What every automation object has in common: IDispatch answered from the type library, so that a call by identifier
// and a call through the table of methods reach the same code, error information for its own interface, and the
// description of its class.
#pragma once

#include <ocidl.h>
#include <ole2.h>

#include "automation/guard.h"
#include "automation/hand_out.h"
#include "automation/type_library.h"
#include "automation/unknown.h"
#include "automation/variant.h"

namespace vellobar::automation {

/// Runs a getter's work and hands its result out. Without a place for the result nothing is done, and that succeeds.
template <class To, class Work>
HRESULT answer(To* to, Work&& work) noexcept {
  return guarded([&] {
    if (to == nullptr) return;
    *to = To{};
    hand_out(to, work());
  });
}

/// Runs work that is wanted for its effect, and hands its result out where there is a place for it.
template <class To, class Work>
HRESULT perform(To* to, Work&& work) noexcept {
  return guarded([&] {
    if (to != nullptr) *to = To{};
    auto result = work();
    if (to != nullptr) hand_out(to, result);
  });
}

/// Whether the arguments of a late-bound call can be looked at: none of them refers to nothing.
HRESULT check_arguments(const DISPPARAMS* arguments) noexcept;

template <class Interface>
class Object : public Unknown<Interface, ISupportErrorInfo, IProvideClassInfo2> {
 public:
  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    using Base = Unknown<Interface, ISupportErrorInfo, IProvideClassInfo2>;
    if (interface_id == IID_IDispatch) return Base::QueryInterface(__uuidof(Interface), to);
    if (interface_id == IID_IProvideClassInfo) return Base::QueryInterface(IID_IProvideClassInfo2, to);
    return Base::QueryInterface(interface_id, to);
  }

  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    const HRESULT result = type_information(__uuidof(Interface), *to);
    if (SUCCEEDED(result)) (*to)->AddRef();
    return result;
  }
  STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* identifiers) override {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || identifiers == nullptr || count == 0) return E_INVALIDARG;
    ITypeInfo* information = nullptr;
    const HRESULT result = type_information(__uuidof(Interface), information);
    return FAILED(result) ? result : information->GetIDsOfNames(names, count, identifiers);
  }
  STDMETHODIMP Invoke(DISPID identifier, REFIID reserved, LCID, WORD kind, DISPPARAMS* arguments, VARIANT* to,
                      EXCEPINFO* exception, UINT* bad_argument) override {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (const HRESULT result = check_arguments(arguments); FAILED(result)) return result;
    ITypeInfo* information = nullptr;
    if (const HRESULT result = type_information(__uuidof(Interface), information); FAILED(result)) return result;
    // Some script hosts ask for an enumerator as if it were a method.
    if (identifier == DISPID_NEWENUM && kind == DISPATCH_METHOD) kind = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    // A status without text must not pick up the text of somebody else's earlier error.
    clear_error_information();
    return information->Invoke(static_cast<Interface*>(this), identifier, kind, arguments, to, exception, bad_argument);
  }

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID interface_id) override {
    return interface_id == __uuidof(Interface) ? S_OK : S_FALSE;
  }

  STDMETHODIMP GetClassInfo(ITypeInfo** to) override {
    if (to == nullptr) return E_POINTER;
    *to = nullptr;
    return class_information(__uuidof(Interface), to);
  }
  /// No class has events, so there is no interface of them to name.
  STDMETHODIMP GetGUID(DWORD kind, GUID* to) override {
    if (to == nullptr) return E_POINTER;
    *to = GUID_NULL;
    return kind == GUIDKIND_DEFAULT_SOURCE_DISP_IID ? E_FAIL : E_INVALIDARG;
  }
};

}  // namespace vellobar::automation
