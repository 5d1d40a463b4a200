// The memory that automation itself hands out: strings, arrays, copies of VARIANTs. While this lives, the calls that
// the program's own code makes for it are counted among its allocations, and refused like them.
#pragma once

#include <vector>

namespace vellobar::tests {

class RefusableAutomationMemory {
 public:
  RefusableAutomationMemory();
  ~RefusableAutomationMemory();
  RefusableAutomationMemory(const RefusableAutomationMemory&) = delete;
  RefusableAutomationMemory& operator=(const RefusableAutomationMemory&) = delete;

 private:
  struct Patch {
    void** import;
    void* original;
  };
  std::vector<Patch> patches_;
};

}  // namespace vellobar::tests
