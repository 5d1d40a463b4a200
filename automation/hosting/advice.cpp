#include "automation/hosting/advice.h"

namespace vellobar::automation {

HRESULT Advice::make_holder() { return holder_ ? S_OK : CreateOleAdviseHolder(holder_.receive()); }

HRESULT Advice::advise(IAdviseSink* sink, DWORD* cookie) {
  if (cookie != nullptr) *cookie = 0;
  if (sink == nullptr || cookie == nullptr) return E_POINTER;
  const HRESULT made = make_holder();
  return FAILED(made) ? made : holder_->Advise(sink, cookie);
}

HRESULT Advice::unadvise(DWORD cookie) { return holder_ ? holder_->Unadvise(cookie) : OLE_E_NOCONNECTION; }

HRESULT Advice::enumerate(IEnumSTATDATA** to) {
  if (to == nullptr) return E_POINTER;
  *to = nullptr;
  const HRESULT made = make_holder();
  return FAILED(made) ? made : holder_->EnumAdvise(to);
}

void Advice::tell_saved() {
  if (const ComPtr<IOleAdviseHolder> kept = holder_) kept->SendOnSave();
}

void Advice::tell_closed() {
  if (const ComPtr<IOleAdviseHolder> kept = holder_) kept->SendOnClose();
}

}  // namespace vellobar::automation
