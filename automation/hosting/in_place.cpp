#include "automation/hosting/in_place.h"

#include "automation/hosting/ambient.h"
#include "automation/hosting/face.h"
#include "automation/module.h"

namespace vellobar::automation {

namespace {

constexpr wchar_t kName[] = L"Vellobar";

void apply_rectangles(HWND window, const RECT& position, const RECT& clip) {
  const int width = position.right - position.left, height = position.bottom - position.top;
  MoveWindow(window, position.left, position.top, width, height, TRUE);
  RECT seen;
  IntersectRect(&seen, &position, &clip);
  // The window owns the region from here on.
  SetWindowRgn(window,
               EqualRect(&seen, &position) != FALSE
                   ? nullptr
                   : CreateRectRgn(seen.left - position.left, seen.top - position.top, seen.right - position.left,
                                   seen.bottom - position.top),
               TRUE);
}

}  // namespace

InPlace::~InPlace() { give_up_window(); }

HRESULT InPlace::activate(IOleClientSite* client, bool with_tools) {
  const ComPtr<IUnknown> kept(&control());
  if (!is_active()) {
    if (const HRESULT result = enter(client); FAILED(result)) return result;
  }
  if (!is_active()) return OLE_E_NOT_INPLACEACTIVE;
  return with_tools ? take_tools() : S_OK;
}

HRESULT InPlace::enter(IOleClientSite* client) {
  const auto site = query<IOleInPlaceSite>(client);
  if (!site || site->CanInPlaceActivate() != S_OK) return OLE_E_NOT_INPLACEACTIVE;
  if (is_active()) return S_OK;
  site_ = site;
  if (const HRESULT result = tell_site_activated(); FAILED(result)) {
    site_ = {};
    return result;
  }
  const HRESULT result = take_place(is_run_time(client));
  if (FAILED(result)) InPlaceDeactivate();
  return result;
}

HRESULT InPlace::tell_site_activated() {
  const auto windowless_site = query<IOleInPlaceSiteWindowless>(site_.get());
  windowless_ = windowless_site && windowless_site->CanWindowlessActivate() == S_OK;
  const auto extended = query<IOleInPlaceSiteEx>(site_.get());
  if (!extended) return ComPtr<IOleInPlaceSite>(site_)->OnInPlaceActivate();
  BOOL no_redraw = FALSE;
  return extended->OnInPlaceActivateEx(&no_redraw, windowless_ ? ACTIVATE_WINDOWLESS : 0);
}

HRESULT InPlace::take_place(bool at_run_time) {
  const ComPtr<IOleInPlaceSite> site = site_;
  if (!site) return OLE_E_NOT_INPLACEACTIVE;
  OLEINPLACEFRAMEINFO information{};
  information.cb = sizeof information;
  ComPtr<IOleInPlaceFrame> frame;
  ComPtr<IOleInPlaceUIWindow> document;
  RECT position{}, clip{};
  const HRESULT result = site->GetWindowContext(frame.receive(), document.receive(), &position, &clip, &information);
  if (FAILED(result)) return result;
  if (!is_active()) return OLE_E_NOT_INPLACEACTIVE;
  frame_ = frame;
  document_ = document;
  position_ = position;
  clip_ = clip;
  if (!windowless_) return make_window(!at_run_time);
  if (const auto windowless_site = query<IOleInPlaceSiteWindowless>(site.get())) {
    windowless_site->InvalidateRect(nullptr, TRUE);
  }
  return S_OK;
}

/// A window of a class that the system has, with a procedure of our own: a class of ours would stay behind when the
/// module is unloaded.
HRESULT InPlace::make_window(bool visible) {
  HWND parent = nullptr;
  if (const HRESULT result = ComPtr<IOleInPlaceSite>(site_)->GetWindow(&parent); FAILED(result)) return result;
  if (!is_active()) return OLE_E_NOT_INPLACEACTIVE;
  const DWORD style = WS_CHILD | WS_CLIPSIBLINGS | SS_NOTIFY;
  window_ = CreateWindowExW(0, L"STATIC", kName, style, 0, 0, 0, 0, parent, nullptr, module_instance(), nullptr);
  if (window_ == nullptr) return HRESULT_FROM_WIN32(GetLastError());
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&window_procedure));
  apply_rectangles(window_, position_, clip_);
  if (visible) ShowWindow(window_, SW_SHOWNA);
  return S_OK;
}

HRESULT InPlace::take_tools() {
  if (has_tools_) return S_OK;
  const ComPtr<IOleInPlaceSite> site = site_;
  if (const HRESULT result = site->OnUIActivate(); FAILED(result)) return result;
  if (!is_active()) return OLE_E_NOT_INPLACEACTIVE;
  has_tools_ = true;
  if (const ComPtr<IOleInPlaceUIWindow> document = document_) document->SetActiveObject(this, kName);
  if (const ComPtr<IOleInPlaceFrame> frame = frame_; frame && has_tools_) {
    frame->SetActiveObject(this, kName);
    frame->SetBorderSpace(nullptr);
  }
  return S_OK;
}

void InPlace::give_up_window() noexcept {
  if (window_ == nullptr) return;
  const HWND window = window_;
  window_ = nullptr;
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  DestroyWindow(window);
}

STDMETHODIMP InPlace::GetWindow(HWND* window) {
  if (window == nullptr) return E_POINTER;
  *window = window_;
  if (window_ != nullptr) return S_OK;
  return is_active() ? E_FAIL : E_UNEXPECTED;
}

STDMETHODIMP InPlace::InPlaceDeactivate() {
  if (!is_active()) return S_OK;
  const ComPtr<IUnknown> kept(&control());
  UIDeactivate();
  const ComPtr<IOleInPlaceSite> site = std::exchange(site_, {});
  frame_ = {};
  document_ = {};
  give_up_window();
  if (!site) return S_OK;
  if (const auto extended = query<IOleInPlaceSiteEx>(site.get())) {
    extended->OnInPlaceDeactivateEx(TRUE);
  } else {
    site->OnInPlaceDeactivate();
  }
  return S_OK;
}

STDMETHODIMP InPlace::UIDeactivate() {
  if (!has_tools_) return S_OK;
  const ComPtr<IUnknown> kept(&control());
  has_tools_ = false;
  const ComPtr<IOleInPlaceSite> site = site_;
  if (const ComPtr<IOleInPlaceUIWindow> document = document_) document->SetActiveObject(nullptr, nullptr);
  if (const ComPtr<IOleInPlaceFrame> frame = frame_) frame->SetActiveObject(nullptr, nullptr);
  if (site) site->OnUIDeactivate(FALSE);
  return S_OK;
}

STDMETHODIMP InPlace::SetObjectRects(LPCRECT position, LPCRECT clip) {
  if (position == nullptr || clip == nullptr) return E_INVALIDARG;
  if (!is_active()) return E_UNEXPECTED;
  position_ = *position;
  clip_ = *clip;
  if (window_ != nullptr) apply_rectangles(window_, position_, clip_);
  return S_OK;
}

STDMETHODIMP InPlace::GetDropTarget(IDropTarget** target) {
  if (target == nullptr) return E_POINTER;
  *target = nullptr;
  return E_NOTIMPL;
}

void InPlace::paint(HWND window) {
  PAINTSTRUCT painting;
  const HDC dc = BeginPaint(window, &painting);
  RECT bounds;
  if (dc != nullptr && GetClientRect(window, &bounds) != FALSE) draw_face(dc, bounds);
  EndPaint(window, &painting);
}

LRESULT InPlace::handle(HWND window, UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_PAINT:
      paint(window);
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_LBUTTONDOWN: {
      const ComPtr<IUnknown> kept(&control());
      if (is_active()) take_tools();
      return 0;
    }
    case WM_NCDESTROY:
      // The container's window took it along.
      window_ = nullptr;
      break;
    default:
      break;
  }
  return DefWindowProcW(window, message, first, second);
}

LRESULT CALLBACK InPlace::window_procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  auto* self = reinterpret_cast<InPlace*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self != nullptr ? self->handle(window, message, first, second)
                         : DefWindowProcW(window, message, first, second);
}

}  // namespace vellobar::automation
