#include "command/program.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>

#include "command/nearest_word.h"
#include "command/option_table.h"
#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "command/output/standard_streams.h"
#include "command/output/terminal.h"
#include "command/verbs/verbs.h"
#include "platform/file_system.h"

namespace vellobar::command {

namespace {

int tell(int code, const std::string& what) {
  std::fflush(stdout);
  std::fprintf(stderr, "%s %s\n", emphasised_error("vellobar:").c_str(), what.c_str());
  return code;
}

std::vector<std::string> names_of_verbs(const CLI::App& program) {
  std::vector<std::string> names;
  for (const CLI::App* verb : verbs_of(program)) names.push_back(verb->get_name());
  return names;
}

std::vector<std::string> names_of_options(const CLI::App& app) {
  std::vector<std::string> names;
  for (const OptionRow& row : rows_of(app)) {
    if (!row.is_argument) names.push_back(row.name);
  }
  return names;
}

std::string meant(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string nearest = nearest_word(word, candidates);
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

/// Why the arguments make no sense, in one line.
std::string why_wrong(const CLI::App& program, const std::vector<std::string>& arguments, const std::string& parsers) {
  const auto chosen = program.get_subcommands();
  if (chosen.empty()) {
    const auto word = std::find_if(arguments.begin() + 1, arguments.end(),
                                   [](const std::string& argument) { return !argument.starts_with("-"); });
    if (word != arguments.end()) {
      return "there is no verb " + *word + meant(*word, names_of_verbs(program)) + " (vellobar --help lists them)";
    }
  }
  const CLI::App& app = chosen.empty() ? program : *chosen.front();
  const std::string help = chosen.empty() ? "vellobar --help" : "vellobar " + app.get_name() + " --help";
  for (std::string option : arguments) {
    if (option == "--") break;
    if (!option.starts_with("--")) continue;
    option.resize(std::min(option.find('='), option.size()));
    const std::vector<std::string> known = names_of_options(app);
    if (std::find(known.begin(), known.end(), option) != known.end()) continue;
    return "there is no option " + option + meant(option, known) + " (" + help + " lists them)";
  }
  std::string reason = parsers.substr(0, parsers.find('\n'));
  if (chosen.empty() && arguments.size() < 2) reason = "a verb is missing";
  return reason + " (see " + help + ")";
}

int parse_and_run(const std::vector<std::string>& arguments) {
  int exit_code = kDone;
  const std::unique_ptr<CLI::App> program = make_program(exit_code);
  try {
    // The parser takes them from the back.
    program->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
  } catch (const CLI::Success& help) {
    program->exit(help);
  } catch (const CLI::ParseError& error) {
    return tell(kWrongUse, why_wrong(*program, arguments, error.what()));
  }
  flush_standard_output();
  return exit_code;
}

}  // namespace

std::unique_ptr<CLI::App> make_program(int& exit_code) {
  auto program = std::make_unique<CLI::App>("Reads, edits and writes Unix mbox mailboxes.", "vellobar");
  program->set_version_flag("--version", "vellobar " VELLOBAR_VERSION);
  program->require_subcommand(1);
  // What begins with a slash is a path on every system.
  program->allow_windows_style_options(false);
  add_list(*program);
  add_show(*program);
  add_headers(*program);
  add_attachments(*program);
  add_extract(*program);
  add_export(*program);
  add_add(*program);
  add_remove(*program);
  add_set(*program);
  add_check(*program, exit_code);
  add_stats(*program);
  add_new(*program);
  add_coding(*program);
  add_completion(*program);
  add_man_page(*program);
  return program;
}

int run_program(const std::vector<std::string>& arguments) {
  InterruptibleFileSystem files;
  const platform::FixedFileSystem in_force(files);
  watch_for_interruptions();
  int code = kDone;
  try {
    code = parse_and_run(arguments);
  } catch (const Interrupted&) {
    return end_interrupted();
  } catch (const WrongUse& error) {
    code = tell(kWrongUse, error.what());
  } catch (const std::exception& error) {
    code = was_interrupted() ? end_interrupted() : tell(kFailed, error.what());
  }
  return code;
}

}  // namespace vellobar::command
