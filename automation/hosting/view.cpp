#include "automation/hosting/view.h"

#include <vector>

#include "automation/guard.h"
#include "automation/hosting/extent.h"
#include "automation/hosting/face.h"
#include "automation/hosting/in_place.h"
#include "automation/list_enumerator.h"

namespace vellobar::automation {

namespace {

constexpr LONG kWholeControl = -1;

struct Formats {
  using Interface = IEnumFORMATETC;
  using Item = FORMATETC;
  using Given = FORMATETC;
  static void give(const FORMATETC& format, FORMATETC& to) { to = format; }
  static void take_back(const FORMATETC&) {}
};

FORMATETC face_format() { return {CF_METAFILEPICT, nullptr, DVASPECT_CONTENT, kWholeControl, TYMED_MFPICT}; }

HRESULT check_aspect(DWORD aspect, LONG index) {
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  return index == kWholeControl ? S_OK : DV_E_LINDEX;
}

HRESULT check_format(const FORMATETC* format) {
  if (format == nullptr) return E_INVALIDARG;
  if (format->cfFormat != CF_METAFILEPICT) return DV_E_FORMATETC;
  if (const HRESULT result = check_aspect(format->dwAspect, format->lindex); FAILED(result)) return result;
  return (format->tymed & TYMED_MFPICT) != 0 ? S_OK : DV_E_TYMED;
}

/// The picture with the size it is meant to have, in the memory block that clipboards pass around.
HGLOBAL new_metafile_picture(SIZE himetric) {
  const HMETAFILE metafile = face_metafile(himetric);
  const HGLOBAL block = metafile != nullptr ? GlobalAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT)) : nullptr;
  auto* picture = static_cast<METAFILEPICT*>(block != nullptr ? GlobalLock(block) : nullptr);
  if (picture == nullptr) {
    if (metafile != nullptr) DeleteMetaFile(metafile);
    if (block != nullptr) GlobalFree(block);
    return nullptr;
  }
  *picture = {MM_ANISOTROPIC, himetric.cx, himetric.cy, metafile};
  GlobalUnlock(block);
  return block;
}

}  // namespace

View::View(IUnknown& control, const InPlace& in_place)
    : ControlPart(control), in_place_(in_place), extent_(initial_extent()) {}

void View::set_extent(SIZEL extent) {
  if (extent.cx == extent_.cx && extent.cy == extent_.cy) return;
  extent_ = extent;
  tell_view_changed();
}

void View::tell_view_changed() {
  const ComPtr<IUnknown> kept(&control());
  const ComPtr<IAdviseSink> sink = sink_;
  if ((sink_flags_ & ADVF_ONLYONCE) != 0) sink_ = {};
  if (sink) sink->OnViewChange(DVASPECT_CONTENT, kWholeControl);
  if (const ComPtr<IDataAdviseHolder> holder = data_advice_) holder->SendOnDataChange(this, 0, 0);
}

STDMETHODIMP View::Draw(DWORD aspect, LONG index, void*, DVTARGETDEVICE*, HDC, HDC to, LPCRECTL bounds, LPCRECTL,
                        BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
  if (const HRESULT result = check_aspect(aspect, index); FAILED(result)) return result;
  const RECT* const place = in_place_.place_without_window();
  if (to == nullptr || (bounds == nullptr && place == nullptr)) return E_INVALIDARG;
  const RECT box = bounds != nullptr ? RECT{bounds->left, bounds->top, bounds->right, bounds->bottom} : *place;
  return guarded([&] { draw_face(to, box); });
}

STDMETHODIMP View::GetColorSet(DWORD aspect, LONG index, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) {
  if (colors == nullptr) return E_POINTER;
  *colors = nullptr;
  const HRESULT result = check_aspect(aspect, index);
  return FAILED(result) ? result : S_FALSE;
}

STDMETHODIMP View::Freeze(DWORD aspect, LONG index, void*, DWORD* cookie) {
  if (cookie == nullptr) return E_POINTER;
  *cookie = 0;
  if (const HRESULT result = check_aspect(aspect, index); FAILED(result)) return result;
  return guarded([&] {
    frozen_.insert(++last_frozen_);
    *cookie = last_frozen_;
  });
}

STDMETHODIMP View::Unfreeze(DWORD cookie) { return frozen_.erase(cookie) == 1 ? S_OK : OLE_E_NOCONNECTION; }

STDMETHODIMP View::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
  if (sink != nullptr && aspects != DVASPECT_CONTENT) return DV_E_DVASPECT;
  const ComPtr<IUnknown> kept(&control());
  sink_ = ComPtr<IAdviseSink>(sink);
  sink_flags_ = flags;
  if (sink == nullptr || (flags & ADVF_PRIMEFIRST) == 0) return S_OK;
  if ((flags & ADVF_ONLYONCE) != 0) sink_ = {};
  sink->OnViewChange(DVASPECT_CONTENT, kWholeControl);
  return S_OK;
}

STDMETHODIMP View::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
  if (aspects != nullptr) *aspects = sink_ ? DVASPECT_CONTENT : 0;
  if (flags != nullptr) *flags = sink_ ? sink_flags_ : 0;
  if (sink != nullptr) *sink = ComPtr<IAdviseSink>(sink_).detach();
  return S_OK;
}

STDMETHODIMP View::GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE*, SIZEL* extent) {
  if (extent == nullptr) return E_POINTER;
  if (const HRESULT result = check_aspect(aspect, index); FAILED(result)) return result;
  *extent = extent_;
  return S_OK;
}

STDMETHODIMP View::GetRect(DWORD aspect, RECTL* rectangle) {
  if (rectangle == nullptr) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *rectangle = {0, 0, extent_.cx, extent_.cy};
  return S_OK;
}

STDMETHODIMP View::GetViewStatus(DWORD* status) {
  if (status == nullptr) return E_POINTER;
  *status = kViewStatus;
  return S_OK;
}

STDMETHODIMP View::QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG, DWORD* hit) {
  if (bounds == nullptr || hit == nullptr) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *hit = PtInRect(bounds, point) != FALSE ? HITRESULT_HIT : HITRESULT_OUTSIDE;
  return S_OK;
}

STDMETHODIMP View::QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT rectangle, LONG, DWORD* hit) {
  if (bounds == nullptr || rectangle == nullptr || hit == nullptr) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  RECT common;
  *hit = IntersectRect(&common, bounds, rectangle) != FALSE ? HITRESULT_HIT : HITRESULT_OUTSIDE;
  return S_OK;
}

/// Every size is as good as another: a container that proposes one gets it back, else the control has its first one.
STDMETHODIMP View::GetNaturalExtent(DWORD aspect, LONG index, DVTARGETDEVICE*, HDC, DVEXTENTINFO* wanted,
                                    SIZEL* extent) {
  if (wanted == nullptr || extent == nullptr) return E_POINTER;
  if (const HRESULT result = check_aspect(aspect, index); FAILED(result)) return result;
  *extent = wanted->dwExtentMode == DVEXTENT_INTEGRAL ? wanted->sizelProposed : initial_extent();
  return S_OK;
}

STDMETHODIMP View::GetData(FORMATETC* format, STGMEDIUM* medium) {
  if (medium == nullptr) return E_INVALIDARG;
  *medium = STGMEDIUM{};
  if (const HRESULT result = check_format(format); FAILED(result)) return result;
  const HGLOBAL picture = new_metafile_picture({extent_.cx, extent_.cy});
  if (picture == nullptr) return STG_E_MEDIUMFULL;
  medium->tymed = TYMED_MFPICT;
  medium->hMetaFilePict = picture;
  return S_OK;
}

STDMETHODIMP View::GetDataHere(FORMATETC* format, STGMEDIUM* medium) {
  return format == nullptr || medium == nullptr ? E_INVALIDARG : DV_E_FORMATETC;
}

STDMETHODIMP View::QueryGetData(FORMATETC* format) { return check_format(format); }

STDMETHODIMP View::GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* canonical) {
  if (format == nullptr || canonical == nullptr) return E_INVALIDARG;
  *canonical = *format;
  canonical->ptd = nullptr;
  return DATA_S_SAMEFORMATETC;
}

STDMETHODIMP View::SetData(FORMATETC* format, STGMEDIUM* medium, BOOL) {
  return format == nullptr || medium == nullptr ? E_INVALIDARG : DV_E_FORMATETC;
}

STDMETHODIMP View::EnumFormatEtc(DWORD direction, IEnumFORMATETC** to) {
  return enumerate<Formats>(
      to, [&] { return direction == DATADIR_GET ? std::vector<FORMATETC>{face_format()} : std::vector<FORMATETC>{}; });
}

HRESULT View::make_data_advice() { return data_advice_ ? S_OK : CreateDataAdviseHolder(data_advice_.receive()); }

STDMETHODIMP View::DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink, DWORD* cookie) {
  if (cookie != nullptr) *cookie = 0;
  if (format == nullptr || sink == nullptr || cookie == nullptr) return E_INVALIDARG;
  if (const HRESULT result = check_format(format); FAILED(result)) return result;
  const HRESULT made = make_data_advice();
  return FAILED(made) ? made : data_advice_->Advise(this, format, flags, sink, cookie);
}

STDMETHODIMP View::DUnadvise(DWORD cookie) {
  return data_advice_ ? data_advice_->Unadvise(cookie) : OLE_E_NOCONNECTION;
}

STDMETHODIMP View::EnumDAdvise(IEnumSTATDATA** to) {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  const HRESULT made = make_data_advice();
  return FAILED(made) ? made : data_advice_->EnumAdvise(to);
}

}  // namespace vellobar::automation
