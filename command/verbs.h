// The verbs of the command line. Each adds itself with its options to the program and runs when it was chosen.
#pragma once

namespace CLI {
class App;
}

namespace vellobar::command {

void add_coding(CLI::App& program);
void add_list(CLI::App& program);
void add_show(CLI::App& program);
void add_attachments(CLI::App& program);
void add_new(CLI::App& program);

}  // namespace vellobar::command
