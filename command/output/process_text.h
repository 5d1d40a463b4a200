// Texts are composed in the code page of the locale. File names keep the default one, through which every name comes.
#pragma once

#include "command/output/terminal.h"
#include "platform/code_page.h"

namespace vellobar::command {

/// While it lives, text that becomes mail is in the code page of the locale.
class ProcessText {
 public:
  ProcessText() { platform::set_process_code_page(terminal_code_page()); }
  ~ProcessText() { platform::set_process_code_page(platform::kAnsiCodePage); }
  ProcessText(const ProcessText&) = delete;
  ProcessText& operator=(const ProcessText&) = delete;
};

}  // namespace vellobar::command
