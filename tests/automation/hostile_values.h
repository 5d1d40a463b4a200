// VARIANTs as no friendly client sends them: every type by value, by reference and as an array, references that lead
// nowhere or to themselves, arrays of wrong rank and type, texts that are no proper UTF-16.
#pragma once

#include <ole2.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/automation/client.h"

namespace vellobar::tests {

/// One VARIANT for one call, and everything that it refers to.
class HostileValue {
 public:
  HostileValue() = default;
  HostileValue(const HostileValue&) = delete;
  HostileValue& operator=(const HostileValue&) = delete;
  ~HostileValue();

  VARIANT value{};
  VARIANT inner{};
  /// A piece of memory for a reference to a plain value.
  alignas(16) unsigned char cell[32] = {};
  SAFEARRAY* array = nullptr;
  BSTR string = nullptr;
};

/// How to make one kind of VARIANT. It may keep the object that is called.
struct HostileShape {
  std::string name;
  std::function<void(HostileValue& made, IDispatch* called)> make;
};

const std::vector<HostileShape>& hostile_shapes();
/// A few of them, one of each sort; no objects that end, since Wine never lets go of those among surplus arguments.
std::vector<HostileShape> chief_hostile_shapes();

}  // namespace vellobar::tests
