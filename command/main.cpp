// The command line. Exit codes: 0 done, 1 it could not be done (one line on standard error says why), 2 wrong use.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "command/failure.h"
#include "command/terminal.h"
#include "command/verbs.h"
#include "platform/code_page.h"

namespace vellobar::command {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

/// Runs the verb that the arguments, the program's name first, ask for.
int run(const std::vector<std::string>& arguments) {
  CLI::App program("Reads, edits and writes Unix mbox mailboxes.", "vellobar");
  program.set_version_flag("--version", "vellobar " VELLOBAR_VERSION);
  program.require_subcommand(1);
  // What begins with a slash is a path on every system.
  program.allow_windows_style_options(false);
  add_list(program);
  add_show(program);
  add_attachments(program);
  add_new(program);
  add_coding(program);
  try {
    // The parser takes them from the back.
    program.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
  } catch (const CLI::ParseError& error) {
    const int code = program.exit(error);
    return code == 0 ? 0 : kWrongUse;
  }
  if (std::fflush(stdout) != 0) throw Failure("cannot write the output");
  return 0;
}

int run_and_tell(const std::vector<std::string>& arguments) {
  try {
    return run(arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vellobar: %s\n", error.what());
    return kFailed;
  }
}

}  // namespace

}  // namespace vellobar::command

#ifdef _WIN32

int wmain(int count, wchar_t** arguments) {
  using namespace vellobar;
  const command::Utf8Console console;
  std::vector<std::string> given;
  for (int i = 0; i < count; ++i) {
    const std::wstring_view argument = arguments[i];
    given.push_back(platform::narrow(platform::kUtf8CodePage, std::u16string(argument.begin(), argument.end())));
  }
  return command::run_and_tell(given);
}

#else

int main(int count, char** arguments) { return vellobar::command::run_and_tell({arguments, arguments + count}); }

#endif
