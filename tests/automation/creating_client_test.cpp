// A program of its own that creates every class: after registration, and without one, by manifests beside it.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/client.h"
#include "tests/automation/copy_elsewhere.h"
#include "tests/automation/mailbox_client.h"
#include "tests/automation/surface_table.h"

namespace vellobar::tests {

namespace {

constexpr DWORD kAsExpected = 0, kNotKnown = 2;

/// Starts with nothing registered.
class CreatingClient : public AutomationTest {
 protected:
  CreatingClient() {
    Module::under_test().unregister_server();
    Module::under_test().install(false, L"user");
  }
  ~CreatingClient() override { Module::under_test().unregister_server(); }

  DWORD run(const std::wstring& program) {
    const std::wstring mailbox = widened(folder_.file("box.mbox", kTwoMessages));
    std::wstring command_line = L"\"" + program + L"\" \"" + mailbox + L"\" First";
    for (const Class& entry : classes()) {
      command_line += std::wstring(L" ") + entry.prog_id + L" " + entry.versioned_prog_id;
    }
    return run_program(command_line);
  }

  static std::wstring beside_this_program(const std::wstring& name) {
    const std::wstring module = Module::path_under_test();
    return module.substr(0, module.find_last_of(L'\\') + 1) + name;
  }
  static std::wstring example() { return widened(source_file("examples/registration_free.exe.manifest")); }

 private:
  TemporaryFolder folder_;
};

}  // namespace

TEST_F(CreatingClient, knows_no_class_before_registration) {
  EXPECT_EQ(run(beside_this_program(L"creating_client.exe")), kNotKnown);
}

TEST_F(CreatingClient, creates_every_class_and_reads_a_mailbox_from_either_kind_of_apartment_after_registration) {
  ASSERT_EQ(Module::under_test().register_server(), S_OK);
  EXPECT_EQ(run(beside_this_program(L"creating_client.exe")), kAsExpected);
}

TEST_F(CreatingClient, creates_every_class_and_reads_a_mailbox_without_registration_by_manifests_beside_it) {
  CopyElsewhere copy;
  copy.add(beside_this_program(L"Quorvane.Vellobar.manifest"), L"Quorvane.Vellobar.manifest");
  copy.add(example(), L"program.exe.manifest");
  EXPECT_EQ(run(copy.add(beside_this_program(L"creating_client.exe"), L"program.exe")), kAsExpected);
}

TEST_F(CreatingClient, knows_no_class_beside_an_assembly_that_its_own_manifest_does_not_name) {
  CopyElsewhere copy;
  copy.add(beside_this_program(L"Quorvane.Vellobar.manifest"), L"Quorvane.Vellobar.manifest");
  EXPECT_EQ(run(copy.add(beside_this_program(L"creating_client.exe"), L"program.exe")), kNotKnown);
}

}  // namespace vellobar::tests
