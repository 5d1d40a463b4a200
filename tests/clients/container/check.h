// The checks of the container program: the first one that fails says what it was and ends the program with 1.
#pragma once

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace vellobar::clients {

[[noreturn]] inline void fail(const char* what) {
  std::printf("not as expected: %s\n", what);
  std::fflush(stdout);
  std::_Exit(1);
}

inline void expect(bool condition, const char* what) {
  if (!condition) fail(what);
}

inline void succeed(HRESULT result, const char* what) {
  if (result != S_OK) std::printf("status %08lx\n", static_cast<unsigned long>(result));
  expect(result == S_OK, what);
}

}  // namespace vellobar::clients
