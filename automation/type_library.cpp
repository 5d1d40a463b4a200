#include "automation/type_library.h"

#include <atomic>
#include <system_error>

#include "automation/class_table.h"
#include "automation/guard.h"
#include "automation/module.h"

namespace vellobar::automation {

namespace {

/// One description for each row of the class table; its own reference is held.
std::atomic<ITypeInfo*> descriptions[kClassCount];

HRESULT read_description(REFIID interface_id, std::atomic<ITypeInfo*>& kept) {
  ComPtr<ITypeLib> library;
  if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
  ComPtr<ITypeInfo> information;
  if (const HRESULT result = library->GetTypeInfoOfGuid(interface_id, information.receive()); FAILED(result)) {
    return result;
  }
  ITypeInfo* none = nullptr;
  // Another thread may have been faster; then its description stays and ours goes.
  if (kept.compare_exchange_strong(none, information.get())) information.detach();
  return S_OK;
}

}  // namespace

std::wstring module_path() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module_instance(), path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

HRESULT load_type_library(ComPtr<ITypeLib>& library) {
  return LoadTypeLibEx(module_path().c_str(), REGKIND_NONE, library.receive());
}

HRESULT type_information(REFIID interface_id, ITypeInfo*& information) noexcept {
  const std::size_t row = class_row_of_interface(interface_id);
  if (row == kClassCount) return TYPE_E_ELEMENTNOTFOUND;
  information = descriptions[row];
  if (information != nullptr) return S_OK;
  try {
    const HRESULT result = read_description(interface_id, descriptions[row]);
    information = descriptions[row];
    return result;
  } catch (...) {
    return result_of_current_exception();
  }
}

HRESULT class_information(REFIID interface_id, ITypeInfo** information) noexcept {
  const std::size_t row = class_row_of_interface(interface_id);
  if (row == kClassCount) return TYPE_E_ELEMENTNOTFOUND;
  try {
    ComPtr<ITypeLib> library;
    if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
    return library->GetTypeInfoOfGuid(class_table()[row].class_id, information);
  } catch (...) {
    return result_of_current_exception();
  }
}

void release_type_information() noexcept {
  for (auto& description : descriptions) {
    if (ITypeInfo* held = description.exchange(nullptr)) held->Release();
  }
}

}  // namespace vellobar::automation
