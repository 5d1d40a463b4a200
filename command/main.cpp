// The command line. Exit codes: 0 done, 1 it could not be done (one line on standard error says why), 2 wrong use.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "command/failure.h"
#include "command/verbs.h"
#include "errors/error.h"

namespace vellobar::command {

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

int run(int count, char** arguments) {
  CLI::App program("Reads, edits and writes Unix mbox mailboxes.", "vellobar");
  program.set_version_flag("--version", "vellobar " VELLOBAR_VERSION);
  program.require_subcommand(1);
  add_list(program);
  add_show(program);
  add_attachments(program);
  add_new(program);
  add_coding(program);
  try {
    program.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    const int code = program.exit(error);
    return code == 0 ? 0 : kWrongUse;
  }
  if (std::fflush(stdout) != 0) throw Failure("cannot write the output");
  return 0;
}

}  // namespace

}  // namespace vellobar::command

int main(int count, char** arguments) {
  using namespace vellobar;
  try {
    return command::run(count, arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vellobar: %s\n", error.what());
    return command::kFailed;
  }
}
