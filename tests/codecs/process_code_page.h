// The process code page of a test: in force until the object dies.
#pragma once

#include "platform/code_page.h"

namespace vellobar::codecs {

class ProcessCodePage {
 public:
  explicit ProcessCodePage(int code_page) : previous_(platform::process_code_page()) {
    platform::set_process_code_page(code_page);
  }
  ~ProcessCodePage() { platform::set_process_code_page(previous_); }
  ProcessCodePage(const ProcessCodePage&) = delete;
  ProcessCodePage& operator=(const ProcessCodePage&) = delete;

 private:
  int previous_;
};

}  // namespace vellobar::codecs
