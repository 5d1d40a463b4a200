// The one boundary between the component and its clients: nothing is thrown across it. A numbered error becomes
// 0x800A0000 plus its number, with error information; a bare status becomes the HRESULT of its name, without. Every
// call starts by clearing the thread's error information, so that none is left behind by a call that succeeds.
#pragma once

#include <windows.h>

#include "automation/error_info.h"

namespace vellobar::automation {

/// The HRESULT of the exception being handled; call it in a catch clause.
HRESULT result_of_current_exception() noexcept;

/// Runs the work of one call.
template <class Work>
HRESULT guarded(Work&& work) noexcept {
  clear_error_information();
  try {
    work();
    return S_OK;
  } catch (...) {
    return result_of_current_exception();
  }
}

}  // namespace vellobar::automation
