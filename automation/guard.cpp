#include "automation/guard.h"

#include <new>

#include "errors/error.h"

namespace vellobar::automation {

namespace {

HRESULT result_of(const Error& error) noexcept {
  switch (error.status()) {
    case Status::numbered:
      set_error_information(error.number(), error.reporter());
      return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, static_cast<int>(error.number()));
    case Status::invalid_argument:
      return E_INVALIDARG;
    case Status::pointer:
      return E_POINTER;
    case Status::out_of_memory:
      return E_OUTOFMEMORY;
    case Status::overflow:
      return DISP_E_OVERFLOW;
    case Status::fail:
      break;
  }
  return E_FAIL;
}

}  // namespace

HRESULT result_of_current_exception() noexcept {
  try {
    throw;
  } catch (const Error& error) {
    return result_of(error);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace vellobar::automation
