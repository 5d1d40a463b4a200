#include "tests/clients/container/site.h"

#include <olectl.h>

#include "tests/clients/container/check.h"

namespace vellobar::clients {

FrameWindow::FrameWindow() {
  window_ = CreateWindowExW(0, L"STATIC", L"A container", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 50, 50, 400, 300,
                            nullptr, nullptr, nullptr, nullptr);
  expect(window_ != nullptr, "a window can be made; is there a display?");
  ShowWindow(window_, SW_SHOWNORMAL);
}

STDMETHODIMP Frame::QueryInterface(REFIID interface_id, void** to) {
  const bool known = interface_id == IID_IUnknown || interface_id == IID_IOleWindow ||
                     interface_id == IID_IOleInPlaceUIWindow || interface_id == IID_IOleInPlaceFrame;
  *to = known ? this : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP Frame::SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) {
  active = automation::ComPtr<IOleInPlaceActiveObject>(object);
  active_name = name != nullptr ? name : L"";
  return S_OK;
}

STDMETHODIMP Site::QueryInterface(REFIID interface_id, void** to) {
  *to = nullptr;
  if (interface_id == IID_IUnknown || interface_id == IID_IOleClientSite) *to = static_cast<IOleClientSite*>(this);
  if (interface_id == IID_IOleWindow || interface_id == IID_IOleInPlaceSite) *to = static_cast<IOleInPlaceSite*>(this);
  if (interface_id == IID_IDispatch) *to = static_cast<IDispatch*>(this);
  if (*to == nullptr) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP Site::SaveObject() {
  ++saved;
  const HRESULT result = OleSave(to_save.get(), storage.get(), TRUE);
  return FAILED(result) ? result : to_save->SaveCompleted(nullptr);
}

STDMETHODIMP Site::GetWindowContext(IOleInPlaceFrame** to_frame, IOleInPlaceUIWindow** document, LPRECT position,
                                    LPRECT clip, LPOLEINPLACEFRAMEINFO information) {
  *to_frame = automation::ComPtr<IOleInPlaceFrame>(&frame).detach();
  *document = nullptr;
  *position = *clip = place_;
  information->fMDIApp = FALSE;
  information->hwndFrame = window_;
  information->haccel = nullptr;
  information->cAccelEntries = 0;
  return S_OK;
}

STDMETHODIMP Site::Invoke(DISPID identifier, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* to, EXCEPINFO*, UINT*) {
  if (identifier != DISPID_AMBIENT_USERMODE || to == nullptr) return DISP_E_MEMBERNOTFOUND;
  V_VT(to) = VT_BOOL;
  V_BOOL(to) = at_run_time ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

STDMETHODIMP PropertyEar::QueryInterface(REFIID interface_id, void** to) {
  const bool known = interface_id == IID_IUnknown || interface_id == IID_IPropertyNotifySink;
  *to = known ? this : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

}  // namespace vellobar::clients
