// A container without windows: it gives the control a client site that can activate it windowless or not at all, and
// writes down what the control asks of it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/automation/hosting/client_side.h"

namespace vellobar::tests {

/// The frame of the container, which shows whose tools it offers.
class Frame final : public ClientSide<IOleInPlaceFrame> {
 public:
  STDMETHODIMP GetWindow(HWND* window) override { return *window = nullptr, S_OK; }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
  STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return S_OK; }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override {
    active = ComPtr<IOleInPlaceActiveObject>(object);
    return S_OK;
  }
  STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return S_OK; }
  STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
  STDMETHODIMP RemoveMenus(HMENU) override { return S_OK; }
  STDMETHODIMP SetStatusText(LPCOLESTR) override { return S_OK; }
  STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }
  STDMETHODIMP TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

  ComPtr<IOleInPlaceActiveObject> active;
};

/// The site in the container. `calls` names what the control did to it, in order.
class Site final : public ClientSide<IOleClientSite, IOleInPlaceSiteWindowless> {
 public:
  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    const bool extended = interface_id == IID_IOleInPlaceSite || interface_id == IID_IOleInPlaceSiteEx;
    return ClientSide::QueryInterface(extended ? IID_IOleInPlaceSiteWindowless : interface_id, to);
  }

  STDMETHODIMP SaveObject() override { return note("SaveObject"); }
  STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** to) override { return CreateItemMoniker(L"!", L"control", to); }
  STDMETHODIMP GetContainer(IOleContainer** to) override { return *to = nullptr, E_NOINTERFACE; }
  STDMETHODIMP ShowObject() override { return note("ShowObject"); }
  STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
  STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

  STDMETHODIMP GetWindow(HWND* window) override { return *window = nullptr, E_FAIL; }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
  STDMETHODIMP CanInPlaceActivate() override { return can_activate ? S_OK : S_FALSE; }
  STDMETHODIMP OnInPlaceActivate() override { return note("OnInPlaceActivate"); }
  STDMETHODIMP OnUIActivate() override { return note("OnUIActivate"); }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** to_frame, IOleInPlaceUIWindow** document, LPRECT position,
                                LPRECT clip, LPOLEINPLACEFRAMEINFO) override {
    *to_frame = &frame;
    frame.AddRef();
    *document = nullptr;
    *position = *clip = {10, 10, 42, 42};
    if (when_called) when_called("GetWindowContext");
    return context_result;
  }
  STDMETHODIMP Scroll(SIZE) override { return S_OK; }
  STDMETHODIMP OnUIDeactivate(BOOL) override { return note("OnUIDeactivate"); }
  STDMETHODIMP OnInPlaceDeactivate() override { return note("OnInPlaceDeactivate"); }
  STDMETHODIMP DiscardUndoState() override { return S_OK; }
  STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
  STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; }

  STDMETHODIMP OnInPlaceActivateEx(BOOL* no_redraw, DWORD flags) override {
    *no_redraw = FALSE;
    return note(flags == ACTIVATE_WINDOWLESS ? "OnInPlaceActivateEx windowless" : "OnInPlaceActivateEx");
  }
  STDMETHODIMP OnInPlaceDeactivateEx(BOOL) override { return note("OnInPlaceDeactivateEx"); }
  STDMETHODIMP RequestUIActivate() override { return S_OK; }

  STDMETHODIMP CanWindowlessActivate() override { return S_OK; }
  STDMETHODIMP GetCapture() override { return S_FALSE; }
  STDMETHODIMP SetCapture(BOOL) override { return S_FALSE; }
  STDMETHODIMP GetFocus() override { return S_FALSE; }
  STDMETHODIMP SetFocus(BOOL) override { return S_FALSE; }
  STDMETHODIMP GetDC(LPCRECT, DWORD, HDC* dc) override { return *dc = nullptr, E_FAIL; }
  STDMETHODIMP ReleaseDC(HDC) override { return E_FAIL; }
  STDMETHODIMP InvalidateRect(LPCRECT, BOOL) override { return note("InvalidateRect"); }
  STDMETHODIMP InvalidateRgn(HRGN, BOOL) override { return S_OK; }
  STDMETHODIMP ScrollRect(INT, INT, LPCRECT, LPCRECT) override { return S_OK; }
  STDMETHODIMP AdjustRect(LPRECT) override { return S_OK; }
  STDMETHODIMP OnDefWindowMessage(UINT, WPARAM, LPARAM, LRESULT*) override { return S_FALSE; }

  /// What was noted since the last time.
  std::vector<std::string> take_calls() { return std::exchange(calls, {}); }

  Frame frame;
  bool can_activate = true;
  HRESULT context_result = S_OK;
  std::vector<std::string> calls;
  /// What the container does when it is called by this name.
  std::function<void(const std::string&)> when_called;

 private:
  HRESULT note(const char* call) {
    calls.emplace_back(call);
    if (when_called) when_called(call);
    return S_OK;
  }
};

}  // namespace vellobar::tests
