// What a shell needs to complete the program's verbs and options.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace vellobar::command {

/// A script for bash.
std::string bash_completion(const CLI::App& program);

}  // namespace vellobar::command
