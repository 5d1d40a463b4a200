// How a container sees the control without activating it: the face, drawn where the container wants it or handed out as
// a metafile. There is one aspect, the content, and its picture depends on nothing but the extent.
#pragma once

#include <ocidl.h>

#include <set>

#include "automation/com_ptr.h"
#include "automation/hosting/control_part.h"

namespace vellobar::automation {

class InPlace;

class View final : public ControlPart<IViewObjectEx, IDataObject> {
 public:
  View(IUnknown& control, const InPlace& in_place);

  SIZEL extent() const { return extent_; }
  /// Takes another size and tells those who look at the control.
  void set_extent(SIZEL extent);

  /// Without bounds a control that is active without a window is drawn where it stands.
  STDMETHODIMP Draw(DWORD aspect, LONG index, void* aspect_info, DVTARGETDEVICE* device, HDC information, HDC to,
                    LPCRECTL bounds, LPCRECTL window, BOOL(STDMETHODCALLTYPE* go_on)(ULONG_PTR),
                    ULONG_PTR go_on_with) override;
  /// S_FALSE: no palette is wanted, the face is drawn in the system's own colours.
  STDMETHODIMP GetColorSet(DWORD aspect, LONG index, void* aspect_info, DVTARGETDEVICE* device, HDC information,
                           LOGPALETTE** colors) override;
  STDMETHODIMP Freeze(DWORD aspect, LONG index, void* aspect_info, DWORD* cookie) override;
  STDMETHODIMP Unfreeze(DWORD cookie) override;
  STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
  STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
  STDMETHODIMP GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE* device, SIZEL* extent) override;
  STDMETHODIMP GetRect(DWORD aspect, RECTL* rectangle) override;
  STDMETHODIMP GetViewStatus(DWORD* status) override;
  STDMETHODIMP QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG close, DWORD* hit) override;
  STDMETHODIMP QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT rectangle, LONG close, DWORD* hit) override;
  STDMETHODIMP GetNaturalExtent(DWORD aspect, LONG index, DVTARGETDEVICE* device, HDC information, DVEXTENTINFO* wanted,
                                SIZEL* extent) override;

  /// CF_METAFILEPICT in a metafile picture of its own, which the caller releases.
  STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override;
  /// A metafile picture cannot be put into somebody else's medium: DV_E_FORMATETC.
  STDMETHODIMP GetDataHere(FORMATETC* format, STGMEDIUM* medium) override;
  STDMETHODIMP QueryGetData(FORMATETC* format) override;
  STDMETHODIMP GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* canonical) override;
  /// No format is taken: DV_E_FORMATETC.
  STDMETHODIMP SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override;
  STDMETHODIMP EnumFormatEtc(DWORD direction, IEnumFORMATETC** to) override;
  STDMETHODIMP DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink, DWORD* cookie) override;
  STDMETHODIMP DUnadvise(DWORD cookie) override;
  STDMETHODIMP EnumDAdvise(IEnumSTATDATA** to) override;

 private:
  HRESULT make_data_advice();
  void tell_view_changed();

  const InPlace& in_place_;
  SIZEL extent_;
  ComPtr<IAdviseSink> sink_;
  DWORD sink_flags_ = 0;
  ComPtr<IDataAdviseHolder> data_advice_;
  std::set<DWORD> frozen_;
  DWORD last_frozen_ = 0;
};

inline constexpr DWORD kViewStatus = VIEWSTATUS_OPAQUE;

}  // namespace vellobar::automation
