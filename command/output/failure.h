// Failures that end the program: one line that says what went wrong, for the person at the terminal.
#pragma once

#include <stdexcept>

namespace vellobar::command {

/// It could not be done.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The command line asks for something that makes no sense.
class WrongUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The user wants the program to end; whatever was unfinished is gone when this arrives in `main`.
class Interrupted : public std::exception {
 public:
  const char* what() const noexcept override { return "interrupted"; }
};

}  // namespace vellobar::command
