// The verbs of the command line. Each adds itself with its options to the program and runs when it was chosen.
#pragma once

namespace CLI {
class App;
}

namespace vellobar::command {

void add_list(CLI::App& program);
void add_show(CLI::App& program);
void add_headers(CLI::App& program);
void add_attachments(CLI::App& program);
void add_extract(CLI::App& program);
void add_export(CLI::App& program);
void add_add(CLI::App& program);
void add_remove(CLI::App& program);
void add_set(CLI::App& program);
/// Sets the exit code when something was found.
void add_check(CLI::App& program, int& exit_code);
void add_stats(CLI::App& program);
void add_new(CLI::App& program);
void add_coding(CLI::App& program);
void add_completion(CLI::App& program);
void add_man_page(CLI::App& program);

}  // namespace vellobar::command
