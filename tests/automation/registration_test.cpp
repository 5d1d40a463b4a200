// What registering the DLL writes into the registry, and that unregistering takes back exactly that.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/client.h"
#include "tests/automation/copy_elsewhere.h"
#include "tests/automation/registry_snapshot.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

constexpr REGSAM kOtherBitness = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

bool is_system_of_two_bitnesses() {
  BOOL wow64 = FALSE;
  return sizeof(void*) == 8 || (IsWow64Process(GetCurrentProcess(), &wow64) != FALSE && wow64 != FALSE);
}

/// The registration of a class by a DLL of the other bitness, for as long as it lives.
class OtherBitness {
 public:
  explicit OtherBitness(const wchar_t* class_name) : path_(L"CLSID\\" + guid_of(class_name)) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, path_.c_str(), 0, nullptr, 0, KEY_WRITE | kOtherBitness, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
  }
  ~OtherBitness() { EXPECT_EQ(RegDeleteKeyExW(HKEY_CLASSES_ROOT, path_.c_str(), kOtherBitness, 0), ERROR_SUCCESS); }
  OtherBitness(const OtherBitness&) = delete;
  OtherBitness& operator=(const OtherBitness&) = delete;

 private:
  std::wstring path_;
};

bool leads_to_class(const wchar_t* prog_id) {
  CLSID class_id{};
  return CLSIDFromProgID(prog_id, &class_id) == S_OK;
}

void expect_round_trip(const std::wstring& path) {
  const Module module(path);
  ASSERT_EQ(module.unregister_server(), S_OK);
  const Snapshot before = classes_root();

  ASSERT_EQ(module.register_server(), S_OK);
  Snapshot expected = expected_classes(path);
  expected.merge(expected_type_library(path));
  expected.merge(expected_for_marshaler(path));
  expect_same(written(classes_root(), before), expected);

  ASSERT_EQ(module.unregister_server(), S_OK);
  expect_same(classes_root(), before);
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
  expect_round_trip(CopyElsewhere().path());
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

TEST_F(Registration, the_names_stay_while_a_dll_of_the_other_bitness_is_registered_under_them) {
  if (!is_system_of_two_bitnesses()) GTEST_SKIP() << "this system has one bitness";
  const Module& module = Module::under_test();
  ASSERT_EQ(module.register_server(), S_OK);
  {
    const OtherBitness control(L"Vellobar"), message(L"Message");
    ASSERT_EQ(module.unregister_server(), S_OK);
    EXPECT_TRUE(leads_to_class(L"Quorvane.Vellobar"));
    EXPECT_TRUE(leads_to_class(L"Quorvane.Vellobar.1"));
    EXPECT_TRUE(leads_to_class(L"Quorvane.Message.2"));
    EXPECT_FALSE(leads_to_class(L"Quorvane.Header"));
  }
  ASSERT_EQ(module.unregister_server(), S_OK);
  EXPECT_FALSE(leads_to_class(L"Quorvane.Vellobar"));
  EXPECT_FALSE(leads_to_class(L"Quorvane.Message.2"));
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
