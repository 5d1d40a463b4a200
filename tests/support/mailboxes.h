// Mailboxes for tests, and the checks that most tests of the core need.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "errors/error.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"
#include "tests/support/files.h"

namespace vellobar::tests {

/// A mailbox file in a folder of its own, and a control that names it.
class Mailbox {
 public:
  explicit Mailbox(std::string_view content) : path_(folder_.file("test.mbox", content)) {
    control_.SetFilename(wide(path_));
  }

  CVellobar& control() { return control_; }
  const std::string& path() const { return path_; }
  const TemporaryFolder& folder() const { return folder_; }
  std::string content() const { return read_file(path_); }
  std::shared_ptr<CMessage> message(std::int64_t index) { return control_.Messages()->Item(index); }
  std::int64_t count() { return control_.Messages()->Count(); }

 private:
  TemporaryFolder folder_;
  std::string path_;
  CVellobar control_;
};

/// Restores the process code page at the end.
class CodePageGuard {
 public:
  explicit CodePageGuard(int code_page) : before_(CVellobar::CharSet()) { CVellobar::SetCharSet(code_page); }
  ~CodePageGuard() { CVellobar::SetCharSet(before_); }
  CodePageGuard(const CodePageGuard&) = delete;
  CodePageGuard& operator=(const CodePageGuard&) = delete;

 private:
  int before_;
};

template <typename Action>
void expect_error(ErrorNumber number, Reporter reporter, Action action) {
  try {
    action();
    ADD_FAILURE() << "no error; expected " << static_cast<int>(number);
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), Status::numbered) << error.what();
    EXPECT_EQ(static_cast<int>(error.number()), static_cast<int>(number));
    EXPECT_EQ(error.reporter(), reporter);
  }
}

template <typename Action>
void expect_status(Status status, Action action) {
  try {
    action();
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), status) << error.what();
  }
}

}  // namespace vellobar::tests
