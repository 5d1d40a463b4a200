// A bar on standard error that shows how far long work has come. It appears only on a terminal, only for work that
// takes a while, and goes away when the work is done.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace vellobar::command {

class ProgressBar {
 public:
  explicit ProgressBar(std::string title);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Shows `done` of `total`, in whatever unit.
  void show(std::int64_t done, std::int64_t total);

  /// Takes the bar away until it is shown again, so that something else can be printed.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  std::string title_;
  bool on_terminal_;
  bool drawn_ = false;
  Clock::time_point next_draw_;
};

}  // namespace vellobar::command
