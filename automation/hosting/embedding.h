// The control as an object embedded in a container: its site, its size, its verbs, its status, and the short way in
// which a container may set all that up at once.
#pragma once

#include <ocidl.h>

#include "automation/com_ptr.h"
#include "automation/hosting/advice.h"
#include "automation/hosting/control_part.h"
#include "automation/hosting/in_place.h"
#include "automation/hosting/persistence.h"
#include "automation/hosting/property_notifications.h"
#include "automation/hosting/view.h"

namespace vellobar::automation {

/// The parts that an embedded control speaks for.
struct EmbeddedParts {
  Advice& advice;
  Persistence& persistence;
  PropertyNotifications& notifications;
  View& view;
  InPlace& in_place;
};

class Embedding final : public ControlPart<IOleObject, IOleControl, IQuickActivate, ISpecifyPropertyPages> {
 public:
  Embedding(IUnknown& control, const EmbeddedParts& parts) : ControlPart(control), parts_(parts) {}

  STDMETHODIMP SetClientSite(IOleClientSite* site) override;
  STDMETHODIMP GetClientSite(IOleClientSite** site) override;
  STDMETHODIMP SetHostNames(LPCOLESTR application, LPCOLESTR object) override;
  STDMETHODIMP Close(DWORD save) override;
  STDMETHODIMP SetMoniker(DWORD which, IMoniker* moniker) override;
  STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
  /// S_FALSE: nothing can be pasted into the control.
  STDMETHODIMP InitFromData(IDataObject* data, BOOL creation, DWORD reserved) override;
  STDMETHODIMP GetClipboardData(DWORD reserved, IDataObject** data) override;
  STDMETHODIMP DoVerb(LONG verb, MSG* message, IOleClientSite* active, LONG index, HWND parent,
                      LPCRECT position) override;
  STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
  STDMETHODIMP Update() override { return S_OK; }
  STDMETHODIMP IsUpToDate() override { return S_OK; }
  STDMETHODIMP GetUserClassID(CLSID* class_id) override;
  STDMETHODIMP GetUserType(DWORD form, LPOLESTR* text) override;
  STDMETHODIMP SetExtent(DWORD aspect, SIZEL* extent) override;
  STDMETHODIMP GetExtent(DWORD aspect, SIZEL* extent) override;
  STDMETHODIMP Advise(IAdviseSink* sink, DWORD* cookie) override;
  STDMETHODIMP Unadvise(DWORD cookie) override;
  STDMETHODIMP EnumAdvise(IEnumSTATDATA** to) override;
  STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
  STDMETHODIMP SetColorScheme(LOGPALETTE* palette) override;

  STDMETHODIMP GetControlInfo(CONTROLINFO* information) override;
  STDMETHODIMP OnMnemonic(MSG*) override { return S_OK; }
  STDMETHODIMP OnAmbientPropertyChange(DISPID) override { return S_OK; }
  STDMETHODIMP FreezeEvents(BOOL freeze) override;

  STDMETHODIMP QuickActivate(QACONTAINER* container, QACONTROL* control) override;
  STDMETHODIMP SetContentExtent(LPSIZEL extent) override { return SetExtent(DVASPECT_CONTENT, extent); }
  STDMETHODIMP GetContentExtent(LPSIZEL extent) override { return GetExtent(DVASPECT_CONTENT, extent); }

  /// The control has no property pages: an empty list.
  STDMETHODIMP GetPages(CAUUID* pages) override;

 private:
  HRESULT show(bool with_tools);
  HRESULT show_properties(LPCRECT position);
  HRESULT save_on_close(DWORD save);

  EmbeddedParts parts_;
  ComPtr<IOleClientSite> site_;
};

}  // namespace vellobar::automation
