// The option table of the program read back, for what is made of it: the man page and the completion of shells.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellobar::command {

struct OptionRow {
  std::string name;   ///< "--json", or what an argument is called: "FILE"
  std::string value;  ///< what the option takes, "TEXT"; empty for a flag and for an argument
  std::string description;
  bool is_argument = false;
  bool is_required = false;
  bool may_repeat = false;
};

/// Verbs that are shown to people, in the order in which they were added.
std::vector<const CLI::App*> verbs_of(const CLI::App& program);

/// The arguments and options of a verb, or the options of the program itself; those of groups come with the others.
std::vector<OptionRow> rows_of(const CLI::App& app);

}  // namespace vellobar::command
