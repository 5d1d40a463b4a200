// What all fuzz targets share. A target takes any bytes and holds the component to its laws: it returns when all of
// them hold and throws when one is broken. libFuzzer's programs end on what is thrown, the tests report it.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vellobar::fuzz {

struct Target {
  const char* name;
  void (*run)(std::string_view input);
};

/// All targets, in the order of their names.
std::span<const Target> targets();

class BrokenLaw : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Throws BrokenLaw unless the law holds.
void require(bool holds, const char* law);
/// The same for two byte strings that must be equal; the message shows where they part.
void require_same(std::string_view got, std::string_view expected, const char* law);

/// Runs `call` and lets pass what the component may throw by its rules: its own numbered errors and bare results.
template <typename Call>
bool succeeds(Call call);

}  // namespace vellobar::fuzz

#include "errors/error.h"

template <typename Call>
bool vellobar::fuzz::succeeds(Call call) {
  try {
    call();
    return true;
  } catch (const Error&) {
    return false;
  }
}
