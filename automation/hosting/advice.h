// Those who want to hear what becomes of the embedded control: that it was saved, closed or renamed. The list itself is
// the system's; it is made when somebody first asks for it.
#pragma once

#include <ole2.h>

#include "automation/com_ptr.h"

namespace vellobar::automation {

class Advice {
 public:
  HRESULT advise(IAdviseSink* sink, DWORD* cookie);
  HRESULT unadvise(DWORD cookie);
  HRESULT enumerate(IEnumSTATDATA** to);

  void tell_saved();
  void tell_closed();

 private:
  HRESULT make_holder();

  ComPtr<IOleAdviseHolder> holder_;
};

}  // namespace vellobar::automation
