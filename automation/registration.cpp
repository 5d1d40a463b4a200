#include "automation/registration.h"

#include <olectl.h>

#include <string>

#include "automation/class_table.h"
#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/registry_key.h"
#include "automation/type_library.h"
#include "vellobar_automation.h"

namespace vellobar::automation {

namespace {

std::wstring text_of_guid(REFGUID guid) {
  wchar_t text[39];
  StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
  return text;
}

std::wstring class_key(const ClassEntry& entry) { return L"CLSID\\" + text_of_guid(entry.class_id); }

void write_prog_ids(const ClassEntry& entry) {
  RegistryKey versioned(HKEY_CLASSES_ROOT, entry.versioned_prog_id);
  versioned.set_value(L"", entry.description);
  versioned.set_subkey(L"CLSID", text_of_guid(entry.class_id));

  RegistryKey independent(HKEY_CLASSES_ROOT, entry.prog_id);
  independent.set_value(L"", entry.description);
  independent.set_subkey(L"CLSID", text_of_guid(entry.class_id));
  if (entry.is_control) independent.set_subkey(L"CurVer", entry.versioned_prog_id);
}

/// What containers look for. The status says: no face at run time, active when visible, inside out, no links to its
/// inside, composed anew when resized, and the container's site comes first.
void write_control_keys(RegistryKey& key, const std::wstring& module) {
  for (const wchar_t* empty : {L"Programmable", L"Control", L"Insertable"}) RegistryKey(key.get(), empty);
  key.set_subkey(L"ToolboxBitmap32", module + L", 101");
  key.set_subkey(L"MiscStatus", L"0");
  key.set_subkey(L"MiscStatus\\1", L"132497");
  key.set_subkey(L"TypeLib", text_of_guid(LIBID_VELLOBARLib));
  key.set_subkey(L"Version", L"1.0");
}

void write_class(const ClassEntry& entry, const std::wstring& module) {
  delete_tree(HKEY_CLASSES_ROOT, class_key(entry));
  RegistryKey key(HKEY_CLASSES_ROOT, class_key(entry));
  key.set_value(L"", entry.description);
  key.set_subkey(L"ProgID", entry.versioned_prog_id);
  key.set_subkey(L"VersionIndependentProgID", entry.prog_id);
  RegistryKey server(key.get(), L"InprocServer32");
  server.set_value(L"", module);
  server.set_value(L"ThreadingModel", entry.threading_model);
  if (entry.is_control) write_control_keys(key, module);
}

void delete_class(const ClassEntry& entry) {
  delete_tree(HKEY_CLASSES_ROOT, class_key(entry));
  for (const std::wstring prog_id : {entry.versioned_prog_id, entry.prog_id}) {
    delete_tree(HKEY_CLASSES_ROOT, prog_id + L"\\CLSID");
    delete_tree(HKEY_CLASSES_ROOT, prog_id + L"\\CurVer");
    delete_childless(HKEY_CLASSES_ROOT, prog_id);
  }
}

HRESULT register_type_library(const std::wstring& module) {
  ComPtr<ITypeLib> library;
  if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
  std::wstring path = module;
  std::wstring folder = module.substr(0, module.find_last_of(L"\\/"));
  return RegisterTypeLib(library.get(), path.data(), folder.data());
}

HRESULT unregister_type_library() {
  ComPtr<ITypeLib> library;
  if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
  TLIBATTR* attributes = nullptr;
  if (const HRESULT result = library->GetLibAttr(&attributes); FAILED(result)) return result;
  const TLIBATTR id = *attributes;
  library->ReleaseTLibAttr(attributes);
  const HRESULT result = UnRegisterTypeLib(id.guid, id.wMajorVerNum, id.wMinorVerNum, id.lcid, id.syskind);
  // Systems differ in how they say that there was nothing to unregister; the arguments are the library's own.
  const bool was_not_there =
      result == TYPE_E_LIBNOTREGISTERED || result == TYPE_E_REGISTRYACCESS || result == E_INVALIDARG;
  return was_not_there ? S_OK : result;
}

}  // namespace

HRESULT register_server() noexcept {
  HRESULT library = S_OK;
  const HRESULT classes = guarded([&] {
    const std::wstring module = module_path();
    library = register_type_library(module);
    for (const ClassEntry& entry : class_table()) {
      write_prog_ids(entry);
      write_class(entry, module);
    }
  });
  if (FAILED(library)) return SELFREG_E_TYPELIB;
  return FAILED(classes) ? SELFREG_E_CLASS : S_OK;
}

HRESULT unregister_server() noexcept {
  HRESULT library = S_OK;
  const HRESULT classes = guarded([&] {
    for (const ClassEntry& entry : class_table()) delete_class(entry);
    library = unregister_type_library();
  });
  if (FAILED(classes)) return SELFREG_E_CLASS;
  return FAILED(library) ? SELFREG_E_TYPELIB : S_OK;
}

}  // namespace vellobar::automation
