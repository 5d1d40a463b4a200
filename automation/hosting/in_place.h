// The control active in its container's window: windowless where the container can do that, else in a small window that
// shows the face. At run time the control has no face, so its window then stays hidden. Every call into the container
// may come back, deactivate the control or let it go.
#pragma once

#include <ocidl.h>

#include "automation/com_ptr.h"
#include "automation/hosting/control_part.h"

namespace vellobar::automation {

class InPlace final : public ControlPart<IOleInPlaceObjectWindowless, IOleInPlaceActiveObject> {
 public:
  using ControlPart::ControlPart;
  ~InPlace();

  bool is_active() const { return static_cast<bool>(site_); }
  /// Where the control stands in its container's window when it is active without one of its own; else null.
  const RECT* place_without_window() const { return is_active() && windowless_ ? &position_ : nullptr; }
  /// Makes the control active, and the one that has the container's tools when `with_tools`. OLE_E_NOT_INPLACEACTIVE
  /// when there is no container that lets it be.
  HRESULT activate(IOleClientSite* client, bool with_tools);

  STDMETHODIMP GetWindow(HWND* window) override;
  STDMETHODIMP ContextSensitiveHelp(BOOL) override { return S_OK; }

  STDMETHODIMP InPlaceDeactivate() override;
  STDMETHODIMP UIDeactivate() override;
  STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
  STDMETHODIMP ReactivateAndUndo() override { return INPLACE_E_NOTUNDOABLE; }
  /// No message means anything to a control without input: S_FALSE.
  STDMETHODIMP OnWindowMessage(UINT, WPARAM, LPARAM, LRESULT*) override { return S_FALSE; }
  /// Nothing can be dropped on the control. E_NOTIMPL is what the contract of this call says then.
  STDMETHODIMP GetDropTarget(IDropTarget** target) override;

  STDMETHODIMP TranslateAccelerator(MSG*) override { return S_FALSE; }
  STDMETHODIMP OnFrameWindowActivate(BOOL) override { return S_OK; }
  STDMETHODIMP OnDocWindowActivate(BOOL) override { return S_OK; }
  STDMETHODIMP ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
  STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

 private:
  HRESULT enter(IOleClientSite* client);
  HRESULT tell_site_activated();
  HRESULT take_place(bool at_run_time);
  HRESULT make_window(bool visible);
  HRESULT take_tools();
  void give_up_window() noexcept;
  void paint(HWND window);
  LRESULT handle(HWND window, UINT message, WPARAM first, LPARAM second);
  static LRESULT CALLBACK window_procedure(HWND window, UINT message, WPARAM first, LPARAM second);

  ComPtr<IOleInPlaceSite> site_;
  ComPtr<IOleInPlaceFrame> frame_;
  ComPtr<IOleInPlaceUIWindow> document_;
  RECT position_{};
  RECT clip_{};
  HWND window_ = nullptr;
  bool windowless_ = false;
  bool has_tools_ = false;
};

}  // namespace vellobar::automation
