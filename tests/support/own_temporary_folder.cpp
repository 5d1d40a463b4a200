// A folder for temporary files that belongs to one run of the program and goes at its end: the component leaves some
// files there on purpose, and hundreds of them would pile up in the user's own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>

#include "tests/support/files.h"

namespace vellobar::tests {
namespace {

void set_environment(const char* name, const std::string& value) {
#ifdef _WIN32
  ::_putenv_s(name, value.c_str());
#else
  ::setenv(name, value.c_str(), 1);
#endif
}

class OwnTemporaryFolder final : public testing::Environment {
 public:
  void SetUp() override {
    const std::string path = folder_.emplace().path("");
    // Some tests go on as another user.
    std::filesystem::permissions(path, std::filesystem::perms::all | std::filesystem::perms::sticky_bit);
    for (const char* name : {"TMPDIR", "TMP", "TEMP"}) set_environment(name, path);
  }
  void TearDown() override { folder_.reset(); }

 private:
  std::optional<TemporaryFolder> folder_;
};

// Owned by the test framework from then on.
[[maybe_unused]] const testing::Environment* const own_folder =
    testing::AddGlobalTestEnvironment(new OwnTemporaryFolder);

}  // namespace
}  // namespace vellobar::tests
