// The man page, vellobar(1): the option table between the sections that it cannot tell.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace vellobar::command {

std::string man_page(const CLI::App& program);

}  // namespace vellobar::command
