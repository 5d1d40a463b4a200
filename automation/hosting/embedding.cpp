#include "automation/hosting/embedding.h"

#include <olectl.h>

#include <cstring>
#include <cwchar>
#include <new>
#include <utility>
#include <vector>

#include "automation/about_box.h"
#include "automation/class_table.h"
#include "automation/guard.h"
#include "automation/list_enumerator.h"
#include "vellobar_automation.h"

namespace vellobar::automation {

namespace {

/// The site comes first, no face at run time, active when visible, inside out, no links to its inside, composed anew
/// when resized.
constexpr DWORD kStatus = OLEMISC_SETCLIENTSITEFIRST | OLEMISC_INVISIBLEATRUNTIME | OLEMISC_ACTIVATEWHENVISIBLE |
                          OLEMISC_INSIDEOUT | OLEMISC_CANTLINKINSIDE | OLEMISC_RECOMPOSEONRESIZE;
static_assert(kStatus == kControlStatus);

constexpr LONG kAboutVerb = 1;
wchar_t about_verb_name[] = L"&About...";

wchar_t* new_text(const wchar_t* text) {
  const std::size_t size = (std::wcslen(text) + 1) * sizeof(wchar_t);
  auto* copy = static_cast<wchar_t*>(CoTaskMemAlloc(size));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text, size);
  return copy;
}

struct Verbs {
  using Interface = IEnumOLEVERB;
  using Item = OLEVERB;
  using Given = OLEVERB;
  static void give(const OLEVERB& verb, OLEVERB& to) {
    to = verb;
    to.lpszVerbName = new_text(verb.lpszVerbName);
  }
  static void take_back(const OLEVERB& given) { CoTaskMemFree(given.lpszVerbName); }
};

bool is_size(const SIZEL& extent) { return extent.cx >= 0 && extent.cy >= 0; }

}  // namespace

STDMETHODIMP Embedding::SetClientSite(IOleClientSite* site) {
  const ComPtr<IUnknown> kept(&control());
  if (site == nullptr) parts_.in_place.InPlaceDeactivate();
  site_ = ComPtr<IOleClientSite>(site);
  return S_OK;
}

STDMETHODIMP Embedding::GetClientSite(IOleClientSite** site) {
  if (site == nullptr) return E_POINTER;
  *site = ComPtr<IOleClientSite>(site_).detach();
  return S_OK;
}

/// The control has no window of its own in whose title the names could stand.
STDMETHODIMP Embedding::SetHostNames(LPCOLESTR, LPCOLESTR) { return S_OK; }

HRESULT Embedding::save_on_close(DWORD save) {
  if (save == OLECLOSE_NOSAVE || !parts_.persistence.is_dirty()) return S_OK;
  const ComPtr<IOleClientSite> site = site_;
  return site ? site->SaveObject() : S_OK;
}

/// Nobody is asked whether to save: a control without a window leaves the question to its container.
STDMETHODIMP Embedding::Close(DWORD save) {
  if (save > OLECLOSE_PROMPTSAVE) return E_INVALIDARG;
  const ComPtr<IUnknown> kept(&control());
  return guarded([&] {
    const HRESULT result = save_on_close(save);
    if (FAILED(result)) return result;
    parts_.in_place.InPlaceDeactivate();
    parts_.advice.tell_closed();
    return S_OK;
  });
}

/// Nothing links to the control, so it need not know where it stands.
STDMETHODIMP Embedding::SetMoniker(DWORD, IMoniker*) { return S_OK; }

STDMETHODIMP Embedding::GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) {
  if (moniker == nullptr) return E_POINTER;
  *moniker = nullptr;
  const ComPtr<IOleClientSite> site = site_;
  return site ? site->GetMoniker(assign, which, moniker) : E_FAIL;
}

STDMETHODIMP Embedding::InitFromData(IDataObject*, BOOL, DWORD) { return S_FALSE; }

/// The picture is the same at all times, so the control itself is the copy.
STDMETHODIMP Embedding::GetClipboardData(DWORD, IDataObject** data) {
  if (data == nullptr) return E_POINTER;
  *data = ComPtr<IDataObject>(&parts_.view).detach();
  return S_OK;
}

HRESULT Embedding::show(bool with_tools) {
  const HRESULT result = parts_.in_place.activate(site_.get(), with_tools);
  if (FAILED(result)) return result;
  if (const ComPtr<IOleClientSite> site = site_) site->ShowObject();
  return S_OK;
}

/// Only a container may have a page to show; the control has none.
HRESULT Embedding::show_properties(LPCRECT) {
  const auto site = query<IOleControlSite>(site_.get());
  const bool shown = site && site->ShowPropertyFrame() == S_OK;
  return shown ? S_OK : OLEOBJ_S_CANNOT_DOVERB_NOW;
}

STDMETHODIMP Embedding::DoVerb(LONG verb, MSG*, IOleClientSite*, LONG index, HWND, LPCRECT position) {
  if (index != 0 && index != -1) return DV_E_LINDEX;
  const ComPtr<IUnknown> kept(&control());
  switch (verb) {
    case OLEIVERB_INPLACEACTIVATE:
      return parts_.in_place.activate(site_.get(), false);
    case OLEIVERB_UIACTIVATE:
      return parts_.in_place.activate(site_.get(), true);
    case OLEIVERB_PRIMARY:
    case OLEIVERB_SHOW:
    case OLEIVERB_OPEN:
      return show(true);
    case OLEIVERB_HIDE:
      return parts_.in_place.InPlaceDeactivate();
    case OLEIVERB_DISCARDUNDOSTATE:
      return S_OK;
    case OLEIVERB_PROPERTIES:
      return show_properties(position);
    case kAboutVerb:
      return guarded([] { show_about_box(); });
    default:
      break;
  }
  // The contract of this call: a negative verb that is not known is not implemented, another one is the primary verb.
  if (verb < 0) return E_NOTIMPL;
  const HRESULT result = show(true);
  return FAILED(result) ? result : OLEOBJ_S_INVALIDVERB;
}

STDMETHODIMP Embedding::EnumVerbs(IEnumOLEVERB** verbs) {
  const OLEVERB about{kAboutVerb, about_verb_name, MF_ENABLED,
                      OLEVERBATTRIB_ONCONTAINERMENU | OLEVERBATTRIB_NEVERDIRTIES};
  return enumerate<Verbs>(verbs, [&] { return std::vector<OLEVERB>{about}; });
}

STDMETHODIMP Embedding::GetUserClassID(CLSID* class_id) { return parts_.persistence.GetClassID(class_id); }

STDMETHODIMP Embedding::GetUserType(DWORD form, LPOLESTR* text) {
  if (text == nullptr) return E_POINTER;
  *text = nullptr;
  if (form < USERCLASSTYPE_FULL || form > USERCLASSTYPE_APPNAME) return E_INVALIDARG;
  const bool full = form == USERCLASSTYPE_FULL;
  return guarded([&] { *text = new_text(full ? class_entry(CLSID_Vellobar)->description : L"Vellobar"); });
}

STDMETHODIMP Embedding::SetExtent(DWORD aspect, SIZEL* extent) {
  if (extent == nullptr) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  if (!is_size(*extent)) return E_INVALIDARG;
  return guarded([&] { parts_.view.set_extent(*extent); });
}

STDMETHODIMP Embedding::GetExtent(DWORD aspect, SIZEL* extent) {
  if (extent == nullptr) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *extent = parts_.view.extent();
  return S_OK;
}

STDMETHODIMP Embedding::Advise(IAdviseSink* sink, DWORD* cookie) { return parts_.advice.advise(sink, cookie); }

STDMETHODIMP Embedding::Unadvise(DWORD cookie) { return parts_.advice.unadvise(cookie); }

STDMETHODIMP Embedding::EnumAdvise(IEnumSTATDATA** to) { return parts_.advice.enumerate(to); }

STDMETHODIMP Embedding::GetMiscStatus(DWORD aspect, DWORD* status) {
  if (status == nullptr) return E_POINTER;
  *status = aspect == DVASPECT_CONTENT ? kStatus : 0;
  return S_OK;
}

/// The face has its own few colours.
STDMETHODIMP Embedding::SetColorScheme(LOGPALETTE*) { return S_OK; }

STDMETHODIMP Embedding::GetControlInfo(CONTROLINFO* information) {
  if (information == nullptr) return E_POINTER;
  *information = {sizeof *information, nullptr, 0, 0};
  return S_OK;
}

STDMETHODIMP Embedding::FreezeEvents(BOOL freeze) {
  return guarded([&] { parts_.notifications.freeze(freeze != FALSE); });
}

STDMETHODIMP Embedding::QuickActivate(QACONTAINER* container, QACONTROL* control) {
  if (container == nullptr || control == nullptr) return E_POINTER;
  if (container->cbSize < sizeof *container || control->cbSize < sizeof *control) return E_INVALIDARG;
  *control = QACONTROL{};
  control->cbSize = sizeof *control;
  SetClientSite(container->pClientSite);
  if (container->pAdviseSink != nullptr) {
    parts_.view.SetAdvise(DVASPECT_CONTENT, 0, container->pAdviseSink);
  }
  if (container->pPropertyNotifySink != nullptr) {
    const HRESULT result = parts_.notifications.advise(container->pPropertyNotifySink, &control->dwPropNotifyCookie);
    if (FAILED(result)) return result;
  }
  control->dwMiscStatus = kStatus;
  control->dwViewStatus = kViewStatus;
  return S_OK;
}

STDMETHODIMP Embedding::GetPages(CAUUID* pages) {
  if (pages == nullptr) return E_POINTER;
  *pages = {0, nullptr};
  return S_OK;
}

}  // namespace vellobar::automation
