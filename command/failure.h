// A failure that ends the program: one line that says what went wrong, for the person at the terminal.
#pragma once

#include <stdexcept>

namespace vellobar::command {

class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace vellobar::command
