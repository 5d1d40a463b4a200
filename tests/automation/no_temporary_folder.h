// A process whose temporary folder is one that is not there.
#pragma once

#include <windows.h>

#include <string>

#include "tests/automation/client.h"
#include "tests/support/files.h"

namespace vellobar::tests {

/// While this lives the temporary folder of the process is one that is not there.
class NoTemporaryFolder {
 public:
  NoTemporaryFolder() {
    for (Variable& variable : variables_) {
      wchar_t value[MAX_PATH];
      variable.value.assign(value, GetEnvironmentVariableW(variable.name, value, MAX_PATH));
      SetEnvironmentVariableW(variable.name, widened(folder_.path("missing")).c_str());
    }
  }
  ~NoTemporaryFolder() {
    for (const Variable& variable : variables_) {
      SetEnvironmentVariableW(variable.name, variable.value.empty() ? nullptr : variable.value.c_str());
    }
  }
  NoTemporaryFolder(const NoTemporaryFolder&) = delete;
  NoTemporaryFolder& operator=(const NoTemporaryFolder&) = delete;

 private:
  struct Variable {
    const wchar_t* name;
    std::wstring value;
  };
  TemporaryFolder folder_;
  Variable variables_[2] = {{L"TMP", {}}, {L"TEMP", {}}};
};

}  // namespace vellobar::tests
