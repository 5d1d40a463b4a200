// The program: its verbs, and what becomes of its arguments. Exit codes: 0 done, 1 it could not be done, 2 wrong use,
// 3 `check` found something; one line on standard error says why.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vellobar::command {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUse = 2;
inline constexpr int kFound = 3;

/// The option table, with nothing parsed. A verb that ran well may leave another exit code than 0.
std::unique_ptr<CLI::App> make_program(int& exit_code);

/// Runs what the arguments, the program's name first, ask for, and returns the exit code.
int run_program(const std::vector<std::string>& arguments);

}  // namespace vellobar::command
