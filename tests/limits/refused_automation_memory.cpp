#include "tests/limits/refused_automation_memory.h"

#include <ole2.h>

#include <iterator>

#include "tests/limits/counted_memory.h"

namespace vellobar::tests {

namespace {

decltype(&SysAllocStringLen) real_string_of_length;
decltype(&SysAllocString) real_string;
decltype(&SafeArrayCreateVector) real_vector;
decltype(&VariantCopyInd) real_copy_through;
decltype(&VariantCopy) real_copy;
decltype(&VariantChangeType) real_change;
decltype(&CoTaskMemAlloc) real_task_memory;
decltype(&CreateErrorInfo) real_error_information;

BSTR WINAPI string_of_length(const OLECHAR* text, UINT length) {
  return is_next_allocation_refused() ? nullptr : real_string_of_length(text, length);
}
BSTR WINAPI string(const OLECHAR* text) { return is_next_allocation_refused() ? nullptr : real_string(text); }
SAFEARRAY* WINAPI vector(VARTYPE type, LONG first, ULONG count) {
  return is_next_allocation_refused() ? nullptr : real_vector(type, first, count);
}
HRESULT WINAPI copy_through(VARIANT* to, const VARIANT* from) {
  return is_next_allocation_refused() ? E_OUTOFMEMORY : real_copy_through(to, const_cast<VARIANT*>(from));
}
HRESULT WINAPI copy(VARIANT* to, const VARIANT* from) {
  return is_next_allocation_refused() ? E_OUTOFMEMORY : real_copy(to, const_cast<VARIANT*>(from));
}
HRESULT WINAPI change(VARIANT* to, const VARIANT* from, USHORT flags, VARTYPE type) {
  return is_next_allocation_refused() ? E_OUTOFMEMORY : real_change(to, const_cast<VARIANT*>(from), flags, type);
}
void* WINAPI task_memory(SIZE_T size) { return is_next_allocation_refused() ? nullptr : real_task_memory(size); }
HRESULT WINAPI error_information(ICreateErrorInfo** to) {
  return is_next_allocation_refused() ? E_OUTOFMEMORY : real_error_information(to);
}

struct Call {
  const char* module;
  const char* name;
  void* refusable;
  void** real;
};

template <typename Refusable, typename Real>
Call call(const char* module, const char* name, Refusable* refusable, Real* real) {
  return {module, name, reinterpret_cast<void*>(refusable), reinterpret_cast<void**>(real)};
}

const Call kCalls[] = {
    call("oleaut32.dll", "SysAllocStringLen", string_of_length, &real_string_of_length),
    call("oleaut32.dll", "SysAllocString", string, &real_string),
    call("oleaut32.dll", "SafeArrayCreateVector", vector, &real_vector),
    call("oleaut32.dll", "VariantCopyInd", copy_through, &real_copy_through),
    call("oleaut32.dll", "VariantCopy", copy, &real_copy),
    call("oleaut32.dll", "VariantChangeType", change, &real_change),
    call("ole32.dll", "CoTaskMemAlloc", task_memory, &real_task_memory),
    call("oleaut32.dll", "CreateErrorInfo", error_information, &real_error_information),
};

/// Where the program keeps the addresses of the functions that it imports.
std::vector<void**> imports() {
  char* const base = reinterpret_cast<char*>(GetModuleHandleW(nullptr));
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  std::vector<void**> found;
  auto* module = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  for (; module->FirstThunk != 0; ++module) {
    for (void** import = reinterpret_cast<void**>(base + module->FirstThunk); *import != nullptr; ++import) {
      found.push_back(import);
    }
  }
  return found;
}

void put(void** import, void* function) {
  DWORD before = 0;
  VirtualProtect(import, sizeof *import, PAGE_READWRITE, &before);
  *import = function;
  VirtualProtect(import, sizeof *import, before, &before);
}

}  // namespace

RefusableAutomationMemory::RefusableAutomationMemory() {
  for (const Call& refusable : kCalls) {
    void* const real = reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(refusable.module), refusable.name));
    *refusable.real = real;
    for (void** import : imports()) {
      if (*import != real || real == nullptr) continue;
      patches_.push_back({import, real});
      put(import, refusable.refusable);
    }
  }
}

RefusableAutomationMemory::~RefusableAutomationMemory() {
  for (const Patch& patch : patches_) put(patch.import, patch.original);
}

}  // namespace vellobar::tests
