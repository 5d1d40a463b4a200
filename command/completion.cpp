// `vellobar completion bash`: prints the completion script of a shell.
#include "command/completion.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "command/option_table.h"
#include "command/program.h"
#include "command/verbs/verbs.h"

namespace vellobar::command {

namespace {

std::string options_of(const CLI::App& app) {
  std::string words;
  for (const OptionRow& row : rows_of(app)) {
    if (!row.is_argument) words += (words.empty() ? "" : " ") + row.name;
  }
  return words;
}

constexpr char kBefore[] =
    R"(# Completion of vellobar for bash, made by `vellobar completion bash`. File names complete as everywhere.
_vellobar() {
  local word=${COMP_WORDS[COMP_CWORD]} verb= words i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      -*) ;;
      *) verb=${COMP_WORDS[i]}; break ;;
    esac
  done
  case $verb in
)";
constexpr char kBehind[] = R"(    *) return ;;
  esac
  COMPREPLY=()
  [[ -n $verb && $word != -* ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -o bashdefault -F _vellobar vellobar
)";

}  // namespace

std::string bash_completion(const CLI::App& program) {
  std::string script = kBefore;
  std::string verbs;
  for (const CLI::App* verb : verbs_of(program)) {
    verbs += verb->get_name() + " ";
    script += "    " + verb->get_name() + ") words='" + options_of(*verb) + "' ;;\n";
  }
  return script + "    '') words='" + verbs + options_of(program) + "' ;;\n" + kBehind;
}

void add_completion(CLI::App& program) {
  const auto shell = std::make_shared<std::string>();
  CLI::App* verb =
      program.add_subcommand("completion", "Print the script that completes this program's options in a shell");
  verb->add_option("SHELL", *shell, "The shell: bash")->required()->check(CLI::IsMember({"bash"}))->type_name("");
  verb->callback([shell] {
    int ignored = kDone;
    std::fputs(bash_completion(*make_program(ignored)).c_str(), stdout);
  });
}

}  // namespace vellobar::command
