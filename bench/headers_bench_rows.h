// The rows of the headers benchmark: each goes once through a mailbox and reads From, To, Subject and Date of every
// message, decoded.
#pragma once

#include <cstdint>
#include <string>

namespace vellobar::bench {

struct HeadersMeasured {
  /// Processor time of everything, and of the reading of the four headers alone, once the message is parsed.
  double whole_seconds = 0;
  double getters_seconds = 0;
  std::int64_t messages = 0;
  /// Characters that the headers gave: so that nothing is left out, and to compare.
  std::int64_t size = 0;
};

double processor_seconds();

HeadersMeasured read_headers(const std::string& mailbox);
#ifdef VELLOBAR_BENCH_GMIME
void initialise_gmime();
/// GMime must have been initialised.
HeadersMeasured read_headers_with_gmime(const std::string& mailbox);
#endif

}  // namespace vellobar::bench
