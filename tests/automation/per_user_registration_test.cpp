// Registering the DLL for the current user alone: the same keys, in the user's own part of the registry.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/client.h"
#include "tests/automation/copy_elsewhere.h"
#include "tests/automation/registry_snapshot.h"

namespace vellobar::tests {

namespace {

class PerUserRegistration : public AutomationTest {
 protected:
  PerUserRegistration() {
    Module::under_test().unregister_server();
    Module::under_test().install(false, L"user");
  }
  ~PerUserRegistration() override {
    Module::under_test().unregister_server();
    Module::under_test().install(false, L"user");
  }
};

/// What both parts of the registry hold.
struct Classes {
  Snapshot everybody = classes_root(), user = classes_of_user();
};

/// The classes must stand in the user's part. The type library is the system's to write: there, or, where the system
/// knows no libraries for one user (Wine), among everybody's.
void expect_registered_for_user(const Classes& before, const std::wstring& module) {
  const Snapshot users = written(classes_of_user(), before.user);
  Snapshot all = users;
  all.merge(written(classes_root(), before.everybody));
  Snapshot expected = expected_classes(module);
  Snapshot classes_there;
  for (const auto& entry : users) {
    if (expected.contains(entry.first)) classes_there.insert(entry);
  }
  expect_same(classes_there, expected);
  expected.merge(expected_type_library(module));
  expect_same(all, expected);
}

void expect_nothing_left(const Classes& before) {
  expect_same(classes_of_user(), before.user);
  expect_same(classes_root(), before.everybody);
}

constexpr const wchar_t* kClasses = L"Software\\Classes\\";

bool is_registered(HKEY root, const std::wstring& classes) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, (classes + L"Quorvane.Vellobar").c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

}  // namespace

TEST_F(PerUserRegistration, writes_exactly_the_expected_keys_for_the_user_and_unregistering_leaves_none) {
  const Classes before;
  ASSERT_EQ(Module::under_test().install(true, L"user"), S_OK);
  expect_registered_for_user(before, Module::path_under_test());
  ASSERT_EQ(Module::under_test().install(false, L"user"), S_OK);
  expect_nothing_left(before);
}

TEST_F(PerUserRegistration, works_from_a_folder_with_blanks_and_letters_beyond_ascii) {
  const Classes before;
  const CopyElsewhere copy;
  const Module module(copy.path());
  ASSERT_EQ(module.install(true, L"user"), S_OK);
  expect_registered_for_user(before, copy.path());
  ASSERT_EQ(module.install(false, L"user"), S_OK);
  expect_nothing_left(before);
}

TEST_F(PerUserRegistration, is_what_regsvr32_does_when_it_is_told_the_user) {
  const Classes before;
  const std::wstring module = L"\"" + Module::path_under_test() + L"\"";
  ASSERT_EQ(run_program(L"regsvr32 /s /n /i:user " + module), 0u);
  expect_registered_for_user(before, Module::path_under_test());
  ASSERT_EQ(run_program(L"regsvr32 /s /u /n /i:user " + module), 0u);
  expect_nothing_left(before);
}

TEST_F(PerUserRegistration, leaves_the_registration_for_everybody_alone) {
  const Module& module = Module::under_test();
  ASSERT_EQ(module.install(true, L"user"), S_OK);
  const Snapshot users = classes_of_user();
  ASSERT_EQ(module.register_server(), S_OK);
  expect_same(classes_of_user(), users);
  ASSERT_EQ(module.install(false, L"user"), S_OK);
  const Snapshot left = classes_root();
  for (const auto& [path, text] : expected_classes(Module::path_under_test())) {
    EXPECT_TRUE(left.contains(path) && left.at(path) == text);
  }
  // Where the system knows no libraries for one user, that took everybody's library away: it is put back to be taken
  // away whole.
  ASSERT_EQ(module.register_server(), S_OK);
}

TEST_F(PerUserRegistration, takes_the_word_in_letters_of_any_case) {
  ASSERT_EQ(Module::under_test().install(true, L"USER"), S_OK);
  EXPECT_TRUE(is_registered(HKEY_CURRENT_USER, kClasses));
  EXPECT_FALSE(is_registered(HKEY_LOCAL_MACHINE, kClasses));
  ASSERT_EQ(Module::under_test().install(false, L"User"), S_OK);
  EXPECT_FALSE(is_registered(HKEY_CURRENT_USER, kClasses));
}

TEST_F(PerUserRegistration, without_a_word_everybody_is_meant) {
  for (const wchar_t* nothing : {static_cast<const wchar_t*>(nullptr), L""}) {
    ASSERT_EQ(Module::under_test().install(true, nothing), S_OK);
    EXPECT_TRUE(is_registered(HKEY_LOCAL_MACHINE, kClasses));
    EXPECT_FALSE(is_registered(HKEY_CURRENT_USER, kClasses));
    ASSERT_EQ(Module::under_test().install(false, nothing), S_OK);
    EXPECT_FALSE(is_registered(HKEY_LOCAL_MACHINE, kClasses));
  }
}

TEST_F(PerUserRegistration, any_other_word_is_refused_and_nothing_is_done) {
  const Snapshot users = classes_of_user();
  for (const wchar_t* other : {L"users", L"machine", L" user", L"user "}) {
    EXPECT_EQ(Module::under_test().install(true, other), E_INVALIDARG);
    EXPECT_EQ(Module::under_test().install(false, other), E_INVALIDARG);
  }
  expect_same(classes_of_user(), users);
  EXPECT_FALSE(is_registered(HKEY_LOCAL_MACHINE, kClasses));
}

}  // namespace vellobar::tests
