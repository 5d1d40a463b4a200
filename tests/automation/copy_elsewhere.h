// A copy of the DLL under test in a folder whose name has blanks and letters beyond ASCII.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/automation/client.h"

namespace vellobar::tests {

class CopyElsewhere {
 public:
  CopyElsewhere() {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    folder_ = std::wstring(temporary) + L"a mailbox \u010d\u00e4\u0416 " + std::to_wstring(GetCurrentProcessId());
    EXPECT_TRUE(CreateDirectoryW(folder_.c_str(), nullptr));
    add(Module::path_under_test(), L"vellobar.dll");
  }
  ~CopyElsewhere() {
    for (const std::wstring& file : files_) EXPECT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_TRUE(RemoveDirectoryW(folder_.c_str()));
  }
  CopyElsewhere(const CopyElsewhere&) = delete;
  CopyElsewhere& operator=(const CopyElsewhere&) = delete;

  /// The DLL's path.
  const std::wstring& path() const { return files_.front(); }
  /// Puts a copy of another file beside it; the path of the copy.
  const std::wstring& add(const std::wstring& file, const std::wstring& name) {
    files_.push_back(folder_ + L"\\" + name);
    EXPECT_TRUE(CopyFileW(file.c_str(), files_.back().c_str(), FALSE));
    return files_.back();
  }

 private:
  std::wstring folder_;
  std::vector<std::wstring> files_;
};

}  // namespace vellobar::tests
