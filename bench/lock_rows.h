// The rows of the Lock benchmark: each one goes once through a mailbox in its own way. A row runs in a process of its
// own, so that its processor time and its peak memory are its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vellobar::bench {

struct Row {
  const char* name;
  /// What the table calls it.
  const char* title;
  /// Goes through the mailbox and returns how many messages it saw, -1 when it looks for none. Throws
  /// std::runtime_error when the mailbox cannot be read.
  std::int64_t (*run)(const std::string& mailbox);
};

/// The rows that this build can run inside the program.
const std::vector<Row>& rows();

struct Measured {
  double processor_seconds = 0;
  double peak_megabytes = 0;
  std::int64_t messages = 0;
};

/// Runs a row here and measures it.
Measured measure_here(const Row& row, const std::string& mailbox);

#ifdef VELLOBAR_BENCH_GMIME
/// Parses every message with GMime (lock_bench_gmime.cpp).
std::int64_t index_with_gmime(const std::string& mailbox);
#endif

}  // namespace vellobar::bench
