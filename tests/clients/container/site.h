// What a container gives a control: a window as the frame, a place in it, a site, and ears for what changes. The site
// cannot host without a window, so the control makes one.
#pragma once

#include <ocidl.h>
#include <ole2.h>

#include <string>
#include <vector>

#include "automation/com_ptr.h"

namespace vellobar::clients {

/// A top window that is shown.
class FrameWindow {
 public:
  FrameWindow();
  ~FrameWindow() { DestroyWindow(window_); }
  FrameWindow(const FrameWindow&) = delete;
  FrameWindow& operator=(const FrameWindow&) = delete;
  HWND handle() const { return window_; }

 private:
  HWND window_;
};

/// Counts references; lives on the stack of its user, who gives it up last.
template <class... Interfaces>
class Counted : public Interfaces... {
 public:
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override { return --references_; }
  bool is_held() const { return references_ != 1; }

 private:
  ULONG references_ = 1;
};

class Frame final : public Counted<IOleInPlaceFrame> {
 public:
  explicit Frame(HWND window) : window_(window) {}

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override;
  STDMETHODIMP GetWindow(HWND* window) override { return *window = window_, S_OK; }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
  STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return S_OK; }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR name) override;
  STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return S_OK; }
  STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
  STDMETHODIMP RemoveMenus(HMENU) override { return S_OK; }
  STDMETHODIMP SetStatusText(LPCOLESTR) override { return S_OK; }
  STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }
  STDMETHODIMP TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

  automation::ComPtr<IOleInPlaceActiveObject> active;
  std::wstring active_name;

 private:
  HWND window_;
};

class Site final : public Counted<IOleClientSite, IOleInPlaceSite, IDispatch> {
 public:
  Site(HWND window, RECT place) : frame(window), window_(window), place_(place) {}

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override;

  STDMETHODIMP SaveObject() override;
  STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker** to) override { return *to = nullptr, E_NOTIMPL; }
  STDMETHODIMP GetContainer(IOleContainer** to) override { return *to = nullptr, E_NOINTERFACE; }
  STDMETHODIMP ShowObject() override { return ++shown, S_OK; }
  STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
  STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

  STDMETHODIMP GetWindow(HWND* window) override { return *window = window_, S_OK; }
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }
  STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
  STDMETHODIMP OnInPlaceActivate() override { return ++in_place, S_OK; }
  STDMETHODIMP OnUIActivate() override { return ++with_tools, S_OK; }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** to_frame, IOleInPlaceUIWindow** document, LPRECT position,
                                LPRECT clip, LPOLEINPLACEFRAMEINFO information) override;
  STDMETHODIMP Scroll(SIZE) override { return S_OK; }
  STDMETHODIMP OnUIDeactivate(BOOL) override { return --with_tools, S_OK; }
  STDMETHODIMP OnInPlaceDeactivate() override { return --in_place, S_OK; }
  STDMETHODIMP DiscardUndoState() override { return S_OK; }
  STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
  STDMETHODIMP OnPosRectChange(LPCRECT) override { return S_OK; }

  // The ambient properties: whether the user of the container designs or runs.
  STDMETHODIMP GetTypeInfoCount(UINT* count) override { return *count = 0, S_OK; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }
  STDMETHODIMP Invoke(DISPID identifier, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* to, EXCEPINFO*, UINT*) override;

  Frame frame;
  bool at_run_time = false;
  int shown = 0;
  int in_place = 0;
  int with_tools = 0;
  /// What the control is saved to when it asks for it.
  automation::ComPtr<IPersistStorage> to_save;
  automation::ComPtr<IStorage> storage;
  int saved = 0;

 private:
  HWND window_;
  RECT place_;
};

/// Hears what changes; refuses what it is told to refuse.
class PropertyEar final : public Counted<IPropertyNotifySink> {
 public:
  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override;
  STDMETHODIMP OnChanged(DISPID identifier) override { return changed.push_back(identifier), S_OK; }
  STDMETHODIMP OnRequestEdit(DISPID identifier) override { return identifier == refused ? S_FALSE : S_OK; }

  std::vector<DISPID> changed;
  DISPID refused = DISPID_UNKNOWN;
};

}  // namespace vellobar::clients
