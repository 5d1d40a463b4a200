#include "tests/automation/registry_snapshot.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/automation/client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

std::wstring value_text(DWORD type, const std::vector<BYTE>& data) {
  if (type != REG_SZ && type != REG_EXPAND_SZ) return L"type " + std::to_wstring(type);
  std::wstring text(reinterpret_cast<const wchar_t*>(data.data()), data.size() / sizeof(wchar_t));
  return text.substr(0, text.find(L'\0'));
}

void add_values(HKEY key, const std::wstring& path, Snapshot& snapshot) {
  wchar_t name[512];
  std::vector<BYTE> data(65536);
  for (DWORD i = 0;; ++i) {
    DWORD name_size = 512, type = 0, size = static_cast<DWORD>(data.size());
    if (RegEnumValueW(key, i, name, &name_size, nullptr, &type, data.data(), &size) != ERROR_SUCCESS) return;
    snapshot[path + L"\\@" + name] = value_text(type, {data.begin(), data.begin() + size});
  }
}

// The whole of a shallow tree; recursion follows the registry's own depth.
void add_key(HKEY parent, const std::wstring& name, const std::wstring& path, Snapshot& snapshot) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  snapshot[path + L"\\"];
  add_values(key, path, snapshot);
  wchar_t child[512];
  for (DWORD i = 0;; ++i) {
    DWORD size = 512;
    if (RegEnumKeyExW(key, i, child, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    add_key(key, child, path + L"\\" + child, snapshot);
  }
  RegCloseKey(key);
}

bool is_shared_parent(const std::wstring& path) {
  return path == L"\\" || path == L"\\CLSID\\" || path == L"\\TypeLib\\" || path == L"\\Interface\\";
}

Snapshot difference(const Snapshot& after, const Snapshot& before) {
  Snapshot result;
  for (const auto& entry : after) {
    const auto found = before.find(entry.first);
    const bool is_new = found == before.end() || found->second != entry.second;
    if (is_new && !is_shared_parent(entry.first)) result.insert(entry);
  }
  return result;
}

void expect_key(Snapshot& expected, const std::wstring& path, const wchar_t* text) {
  expected[path + L"\\"];
  if (text != nullptr) expected[path + L"\\@"] = text;
}

void expect_class(Snapshot& expected, const Class& entry, const std::wstring& module) {
  const std::wstring guid = guid_of(entry.name);
  for (const wchar_t* prog_id : {entry.versioned_prog_id, entry.prog_id}) {
    expect_key(expected, std::wstring(L"\\") + prog_id, entry.registry_description);
    expect_key(expected, std::wstring(L"\\") + prog_id + L"\\CLSID", guid.c_str());
  }
  const std::wstring key = L"\\CLSID\\" + guid;
  expect_key(expected, key, entry.registry_description);
  expect_key(expected, key + L"\\ProgID", entry.versioned_prog_id);
  expect_key(expected, key + L"\\VersionIndependentProgID", entry.prog_id);
  expect_key(expected, key + L"\\InprocServer32", module.c_str());
  expected[key + L"\\InprocServer32\\@ThreadingModel"] = entry.threading_model;
}

void expect_control(Snapshot& expected, const std::wstring& module, const std::wstring& library) {
  const std::wstring key = L"\\CLSID\\" + guid_of(L"Vellobar");
  expect_key(expected, L"\\Quorvane.Vellobar\\CurVer", L"Quorvane.Vellobar.1");
  expect_key(expected, key + L"\\Programmable", nullptr);
  expect_key(expected, key + L"\\Control", nullptr);
  expect_key(expected, key + L"\\Insertable", nullptr);
  expect_key(expected, key + L"\\ToolboxBitmap32", (module + L", 101").c_str());
  expect_key(expected, key + L"\\MiscStatus", L"0");
  expect_key(expected, key + L"\\MiscStatus\\1", L"132497");
  expect_key(expected, key + L"\\TypeLib", library.c_str());
  expect_key(expected, key + L"\\Version", L"1.0");
}

std::string narrow(const std::wstring& text) {
  std::string result;
  for (wchar_t c : text) result += c < 128 ? static_cast<char>(c) : '?';
  return result;
}

Snapshot below(HKEY root, const wchar_t* name) {
  Snapshot snapshot;
  add_key(root, name, L"", snapshot);
  return snapshot;
}

std::wstring library_guid() {
  wchar_t text[39];
  StringFromGUID2(LIBID_VELLOBARLib, text, 39);
  return text;
}

}  // namespace

Snapshot classes_root() { return below(HKEY_CLASSES_ROOT, L""); }

Snapshot classes_of_user() { return below(HKEY_CURRENT_USER, L"Software\\Classes"); }

Snapshot written(const Snapshot& after, const Snapshot& before) {
  Snapshot result = difference(after, before);
  std::erase_if(result, [](const auto& entry) {
    return entry.first.starts_with(L"\\Wow6432Node\\") || entry.first.ends_with(L"\\1.0\\FLAGS\\@");
  });
  return result;
}

Snapshot expected_classes(const std::wstring& module) {
  Snapshot expected;
  for (const Class& entry : classes()) expect_class(expected, entry, module);
  expect_control(expected, module, library_guid());
  return expected;
}

Snapshot expected_type_library(const std::wstring& module) {
  Snapshot expected;
  const std::wstring library = library_guid();
  const std::wstring key = L"\\TypeLib\\" + library;
  expect_key(expected, key, nullptr);
  expect_key(expected, key + L"\\1.0", L"Quorvane! COM Mailbox ActiveX Control");
  expect_key(expected, key + L"\\1.0\\FLAGS", nullptr);
  expect_key(expected, key + L"\\1.0\\HELPDIR", module.substr(0, module.find_last_of(L'\\')).c_str());
  expect_key(expected, key + L"\\1.0\\409", nullptr);
  expect_key(expected, key + (sizeof(void*) == 8 ? L"\\1.0\\409\\win64" : L"\\1.0\\409\\win32"), module.c_str());
  // The system writes these for each dual interface, so that it can be marshaled by the library.
  for (const Interface& entry : interfaces()) {
    const std::wstring interface_key = L"\\Interface\\" + guid_of(entry.name);
    expect_key(expected, interface_key, entry.name);
    expect_key(expected, interface_key + L"\\ProxyStubClsid", L"{00020424-0000-0000-C000-000000000046}");
    expect_key(expected, interface_key + L"\\ProxyStubClsid32", L"{00020424-0000-0000-C000-000000000046}");
    expect_key(expected, interface_key + L"\\TypeLib", library.c_str());
    expected[interface_key + L"\\TypeLib\\@Version"] = L"1.0";
  }
  return expected;
}

Snapshot expected_for_marshaler(const std::wstring& module) {
  Snapshot expected;
  if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr) return expected;
  const std::wstring key = L"\\TypeLib\\" + library_guid() + L"\\1.0\\0";
  expect_key(expected, key, nullptr);
  expect_key(expected, key + (sizeof(void*) == 8 ? L"\\win64" : L"\\win32"), module.c_str());
  return expected;
}

std::wstring guid_of(const wchar_t* type_name) {
  ComPtr<ITypeLib> library;
  EXPECT_EQ(LoadTypeLibEx(Module::path_under_test().c_str(), REGKIND_NONE, library.receive()), S_OK);
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> type;
    Text name;
    library->GetTypeInfo(i, type.receive());
    type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr);
    if (name.value() != type_name) continue;
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(type->GetTypeAttr(&attributes), S_OK);
    wchar_t text[39];
    StringFromGUID2(attributes->guid, text, 39);
    type->ReleaseTypeAttr(attributes);
    return text;
  }
  ADD_FAILURE() << "no such type";
  return {};
}

void expect_same(const Snapshot& found, const Snapshot& expected) {
  for (const auto& [path, text] : difference(found, expected)) {
    ADD_FAILURE() << "unexpected: " << narrow(path) << " = " << narrow(text);
  }
  for (const auto& [path, text] : difference(expected, found)) {
    ADD_FAILURE() << "not there: " << narrow(path) << " = " << narrow(text);
  }
}

}  // namespace vellobar::tests
