// What registering the DLL writes into the registry, and that unregistering takes back exactly that.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/automation/client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

/// Names of keys are the same whatever the case of their letters.
struct ByName {
  bool operator()(const std::wstring& left, const std::wstring& right) const {
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_LESS_THAN;
  }
};

/// Every value below a key by its path; a key itself stands with "\" behind its path.
using Snapshot = std::map<std::wstring, std::wstring, ByName>;

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

Snapshot classes_root() {
  Snapshot snapshot;
  add_key(HKEY_CLASSES_ROOT, L"", L"", snapshot);
  return snapshot;
}

Snapshot difference(const Snapshot& after, const Snapshot& before) {
  Snapshot result;
  for (const auto& entry : after) {
    const auto found = before.find(entry.first);
    if (found == before.end() || found->second != entry.second) result.insert(entry);
  }
  return result;
}

/// The identifier that the type library gives one of its types.
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

void expect_type_library(Snapshot& expected, const std::wstring& module, const std::wstring& library) {
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
}

Snapshot expected_registration(const std::wstring& module) {
  wchar_t library[39];
  StringFromGUID2(LIBID_VELLOBARLib, library, 39);
  Snapshot expected;
  for (const Class& entry : classes()) expect_class(expected, entry, module);
  expect_control(expected, module, library);
  expect_type_library(expected, module, library);
  return expected;
}

/// Systems differ in whether the flags say that the library stands in a file.
void ignore_library_flags(Snapshot& difference) {
  std::erase_if(difference, [](const auto& entry) { return entry.first.ends_with(L"\\1.0\\FLAGS\\@"); });
}

/// Keys above ours that the system makes with the first library or interface and that stay.
void ignore_shared_parents(Snapshot& difference) {
  for (const wchar_t* shared : {L"\\CLSID\\", L"\\TypeLib\\", L"\\Interface\\"}) difference.erase(shared);
}

/// A 64-bit system shows the 32-bit half of the registry inside the 64-bit one.
void ignore_other_bitness(Snapshot& difference) {
  std::erase_if(difference, [](const auto& entry) { return entry.first.starts_with(L"\\Wow6432Node\\"); });
}

std::string narrow(const std::wstring& text) {
  std::string result;
  for (wchar_t c : text) result += c < 128 ? static_cast<char>(c) : '?';
  return result;
}

void expect_same(const Snapshot& found, const Snapshot& expected) {
  for (const auto& [path, text] : difference(found, expected)) {
    ADD_FAILURE() << "unexpected: " << narrow(path) << " = " << narrow(text);
  }
  for (const auto& [path, text] : difference(expected, found)) {
    ADD_FAILURE() << "not there: " << narrow(path) << " = " << narrow(text);
  }
}

void expect_round_trip(const std::wstring& path) {
  const Module module(path);
  ASSERT_EQ(module.unregister_server(), S_OK);
  const Snapshot before = classes_root();

  ASSERT_EQ(module.register_server(), S_OK);
  Snapshot written = difference(classes_root(), before);
  ignore_shared_parents(written);
  ignore_other_bitness(written);
  ignore_library_flags(written);
  expect_same(written, expected_registration(path));

  ASSERT_EQ(module.unregister_server(), S_OK);
  Snapshot left = difference(classes_root(), before);
  ignore_shared_parents(left);
  expect_same(left, {});
}

class Registration : public AutomationTest {
 protected:
  ~Registration() override { Module::under_test().unregister_server(); }
};

}  // namespace

TEST_F(Registration, writes_exactly_the_expected_keys_and_unregistering_leaves_none) {
  expect_round_trip(Module::path_under_test());
}

TEST_F(Registration, works_from_a_folder_with_blanks_and_letters_beyond_ascii) {
  wchar_t temporary[MAX_PATH];
  GetTempPathW(MAX_PATH, temporary);
  const std::wstring folder = std::wstring(temporary) + L"a mailbox \u010d\u00e4\u0416";
  const std::wstring copy = folder + L"\\vellobar.dll";
  CreateDirectoryW(folder.c_str(), nullptr);
  ASSERT_TRUE(CopyFileW(Module::path_under_test().c_str(), copy.c_str(), FALSE));
  expect_round_trip(copy);
  EXPECT_TRUE(DeleteFileW(copy.c_str()));
  EXPECT_TRUE(RemoveDirectoryW(folder.c_str()));
}

TEST_F(Registration, registering_twice_changes_nothing) {
  const Module& module = Module::under_test();
  ASSERT_EQ(module.register_server(), S_OK);
  const Snapshot once = classes_root();
  ASSERT_EQ(module.register_server(), S_OK);
  expect_same(classes_root(), once);
}

TEST_F(Registration, a_class_key_is_written_afresh_without_what_somebody_else_left_in_it) {
  const Module& module = Module::under_test();
  ASSERT_EQ(module.register_server(), S_OK);
  const std::wstring stale = L"CLSID\\" + guid_of(L"Message") + L"\\TreatAs";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyW(HKEY_CLASSES_ROOT, stale.c_str(), &key), ERROR_SUCCESS);
  RegCloseKey(key);
  ASSERT_EQ(module.register_server(), S_OK);
  EXPECT_EQ(RegOpenKeyW(HKEY_CLASSES_ROOT, stale.c_str(), &key), ERROR_FILE_NOT_FOUND);
}

TEST_F(Registration, unregistering_what_is_not_registered_succeeds) {
  ASSERT_EQ(Module::under_test().unregister_server(), S_OK);
  EXPECT_EQ(Module::under_test().unregister_server(), S_OK);
}

TEST_F(Registration, makes_every_class_creatable_by_both_of_its_program_identifiers) {
  ASSERT_EQ(Module::under_test().register_server(), S_OK);
  for (const Class& entry : classes()) {
    for (const wchar_t* prog_id : {entry.versioned_prog_id, entry.prog_id}) {
      CLSID class_id{};
      ASSERT_EQ(CLSIDFromProgID(prog_id, &class_id), S_OK);
      void* object = nullptr;
      ASSERT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &object), S_OK);
      const auto owner = ComPtr<IDispatch>::attach(static_cast<IDispatch*>(object));
      ComPtr<ITypeInfo> type;
      ASSERT_EQ(owner->GetTypeInfo(0, 0, type.receive()), S_OK);
      Text name;
      ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr), S_OK);
      EXPECT_EQ(name.value(), entry.default_interface);
    }
  }
}

}  // namespace vellobar::tests
