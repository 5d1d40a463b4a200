// Where the command line begins.
#include <string>
#include <string_view>
#include <vector>

#include "command/output/terminal.h"
#include "command/program.h"
#include "platform/code_page.h"

#ifdef _WIN32

int wmain(int count, wchar_t** arguments) {
  using namespace vellobar;
  const command::Utf8Console console;
  std::vector<std::string> given;
  for (int i = 0; i < count; ++i) {
    const std::wstring_view argument = arguments[i];
    given.push_back(platform::narrow(platform::kUtf8CodePage, std::u16string(argument.begin(), argument.end())));
  }
  return command::run_program(given);
}

#else

int main(int count, char** arguments) { return vellobar::command::run_program({arguments, arguments + count}); }

#endif
