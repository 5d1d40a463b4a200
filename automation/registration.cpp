#include "automation/registration.h"

#include <objidl.h>
#include <olectl.h>

#include <string>

#include "automation/class_table.h"
#include "automation/com_ptr.h"
#include "automation/guard.h"
#include "automation/objects.h"
#include "automation/registry_key.h"
#include "automation/type_library.h"
#include "vellobar_automation.h"

// The compiler's headers lack these two, which the system has.
extern "C" HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help_folder);
extern "C" HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID library, WORD major, WORD minor, LCID locale,
                                                   SYSKIND system);

namespace vellobar::automation {

namespace {

std::wstring text_of_guid(REFGUID guid) {
  wchar_t text[39];
  StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
  return text;
}

std::wstring class_key(const ClassEntry& entry) { return L"CLSID\\" + text_of_guid(entry.class_id); }

/// The part of the registry that holds the classes of an audience.
struct Branch {
  HKEY root;
  std::wstring prefix;
};

Branch branch_of(Audience audience) {
  if (audience == Audience::everybody) return {HKEY_CLASSES_ROOT, L""};
  return {HKEY_CURRENT_USER, L"Software\\Classes\\"};
}

void write_prog_ids(const Branch& branch, const ClassEntry& entry) {
  RegistryKey versioned(branch.root, branch.prefix + entry.versioned_prog_id);
  versioned.set_value(L"", entry.description);
  versioned.set_subkey(L"CLSID", text_of_guid(entry.class_id));

  RegistryKey independent(branch.root, branch.prefix + entry.prog_id);
  independent.set_value(L"", entry.description);
  independent.set_subkey(L"CLSID", text_of_guid(entry.class_id));
  if (entry.is_control) independent.set_subkey(L"CurVer", entry.versioned_prog_id);
}

/// What containers look for.
void write_control_keys(RegistryKey& key, const std::wstring& module) {
  for (const wchar_t* empty : {L"Programmable", L"Control", L"Insertable"}) RegistryKey(key.get(), empty);
  key.set_subkey(L"ToolboxBitmap32", module + L", 101");
  key.set_subkey(L"MiscStatus", L"0");
  key.set_subkey(L"MiscStatus\\1", std::to_wstring(kControlStatus));
  key.set_subkey(L"TypeLib", text_of_guid(LIBID_VELLOBARLib));
  key.set_subkey(L"Version", L"1.0");
}

void write_class(const Branch& branch, const ClassEntry& entry, const std::wstring& module) {
  delete_tree(branch.root, branch.prefix + class_key(entry));
  RegistryKey key(branch.root, branch.prefix + class_key(entry));
  key.set_value(L"", entry.description);
  key.set_subkey(L"ProgID", entry.versioned_prog_id);
  key.set_subkey(L"VersionIndependentProgID", entry.prog_id);
  RegistryKey server(key.get(), L"InprocServer32");
  server.set_value(L"", module);
  server.set_value(L"ThreadingModel", entry.threading_model);
  if (entry.is_control) write_control_keys(key, module);
}

/// The DLLs of both bitnesses have class keys of their own and share the program identifiers. Where there is one
/// bitness the key looked for is our own, which is gone by then.
bool is_registered_for_other_bitness(const Branch& branch, const ClassEntry& entry) {
  constexpr REGSAM kOther = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
  return has_key(branch.root, branch.prefix + class_key(entry), kOther);
}

void delete_class(const Branch& branch, const ClassEntry& entry) {
  delete_tree(branch.root, branch.prefix + class_key(entry));
  if (is_registered_for_other_bitness(branch, entry)) return;
  for (const wchar_t* prog_id : {entry.versioned_prog_id, entry.prog_id}) {
    const std::wstring key = branch.prefix + prog_id;
    delete_tree(branch.root, key + L"\\CLSID");
    delete_tree(branch.root, key + L"\\CurVer");
    delete_childless(branch.root, key);
  }
}

HRESULT register_type_library(Audience audience, const std::wstring& module) {
  ComPtr<ITypeLib> library;
  if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
  std::wstring path = module;
  std::wstring folder = module.substr(0, module.find_last_of(L"\\/"));
  const auto write = audience == Audience::everybody ? RegisterTypeLib : RegisterTypeLibForUser;
  return write(library.get(), path.data(), folder.data());
}

constexpr const wchar_t* kSystem = sizeof(void*) == 8 ? L"\\win64" : L"\\win32";

std::wstring neutral_library_key() { return L"TypeLib\\" + text_of_guid(LIBID_VELLOBARLib) + L"\\1.0\\0"; }

/// Whether the system's marshaler, asked to, cannot find the library that was registered.
bool is_missed_by_marshaler() {
  CLSID marshaler{};
  ComPtr<IPSFactoryBuffer> factory;
  if (FAILED(CoGetPSClsid(IID_IvHeader, &marshaler)) ||
      FAILED(CoGetClassObject(marshaler, CLSCTX_INPROC_SERVER, nullptr, IID_IPSFactoryBuffer,
                              reinterpret_cast<void**>(factory.receive())))) {
    return false;
  }
  const auto header = new_header();
  ComPtr<IRpcStubBuffer> stub;
  if (FAILED(factory->CreateStub(IID_IvHeader, header.get(), stub.receive()))) return true;
  stub->Disconnect();
  return false;
}

/// Wine's marshaler looks for libraries of the neutral language only; there the library is entered for that one too.
void help_marshaler(const std::wstring& module) {
  if (is_missed_by_marshaler()) RegistryKey(HKEY_CLASSES_ROOT, neutral_library_key() + kSystem).set_value(L"", module);
}

void forget_neutral_library() {
  delete_tree(HKEY_CLASSES_ROOT, neutral_library_key() + kSystem);
  delete_childless(HKEY_CLASSES_ROOT, neutral_library_key());
}

HRESULT unregister_type_library(Audience audience) {
  ComPtr<ITypeLib> library;
  if (const HRESULT result = load_type_library(library); FAILED(result)) return result;
  TLIBATTR* attributes = nullptr;
  if (const HRESULT result = library->GetLibAttr(&attributes); FAILED(result)) return result;
  const TLIBATTR id = *attributes;
  library->ReleaseTLibAttr(attributes);
  const auto remove = audience == Audience::everybody ? UnRegisterTypeLib : UnRegisterTypeLibForUser;
  const HRESULT result = remove(id.guid, id.wMajorVerNum, id.wMinorVerNum, id.lcid, id.syskind);
  // Systems differ in how they say that there was nothing to unregister; the arguments are the library's own.
  const bool was_not_there =
      result == TYPE_E_LIBNOTREGISTERED || result == TYPE_E_REGISTRYACCESS || result == E_INVALIDARG;
  return was_not_there ? S_OK : result;
}

}  // namespace

HRESULT register_server(Audience audience) noexcept {
  HRESULT library = S_OK;
  const HRESULT classes = guarded([&] {
    const std::wstring module = module_path();
    const Branch branch = branch_of(audience);
    library = register_type_library(audience, module);
    for (const ClassEntry& entry : class_table()) {
      write_prog_ids(branch, entry);
      write_class(branch, entry, module);
    }
    if (audience == Audience::everybody && SUCCEEDED(library)) help_marshaler(module);
  });
  if (FAILED(library)) return SELFREG_E_TYPELIB;
  return FAILED(classes) ? SELFREG_E_CLASS : S_OK;
}

HRESULT unregister_server(Audience audience) noexcept {
  HRESULT library = S_OK;
  const HRESULT classes = guarded([&] {
    const Branch branch = branch_of(audience);
    for (const ClassEntry& entry : class_table()) delete_class(branch, entry);
    if (audience == Audience::everybody) forget_neutral_library();
    library = unregister_type_library(audience);
  });
  if (FAILED(classes)) return SELFREG_E_CLASS;
  return FAILED(library) ? SELFREG_E_TYPELIB : S_OK;
}

HRESULT install_server(bool install, const wchar_t* audience) noexcept {
  const bool is_everybody = audience == nullptr || *audience == L'\0';
  if (!is_everybody && CompareStringOrdinal(audience, -1, L"user", -1, TRUE) != CSTR_EQUAL) return E_INVALIDARG;
  const Audience whom = is_everybody ? Audience::everybody : Audience::current_user;
  return install ? register_server(whom) : unregister_server(whom);
}

}  // namespace vellobar::automation
