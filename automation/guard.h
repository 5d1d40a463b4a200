// The one boundary between the component and its clients: nothing is thrown across it. A numbered error becomes
// 0x800A0000 plus its number, with error information; a bare status becomes the HRESULT of its name, without. Every
// call starts by clearing the thread's error information, so that none is left behind by a call that succeeds, and ends
// by telling those who listen to a control what the call changed.
#pragma once

#include <windows.h>

#include <type_traits>

#include "automation/error_info.h"
#include "automation/hosting/property_watch.h"

namespace vellobar::automation {

/// The HRESULT of the exception being handled; call it in a catch clause.
HRESULT result_of_current_exception() noexcept;

/// Runs the work of one call. Work that has a status of its own to report returns it.
template <class Work>
HRESULT guarded(Work&& work) noexcept {
  clear_error_information();
  HRESULT result = S_OK;
  try {
    if constexpr (std::is_same_v<std::invoke_result_t<Work&>, HRESULT>) {
      result = work();
    } else {
      work();
    }
  } catch (...) {
    result = result_of_current_exception();
  }
  if (watched_controls != 0) tell_listeners();
  return result;
}

}  // namespace vellobar::automation
