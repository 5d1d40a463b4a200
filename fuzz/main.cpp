// libFuzzer's entry to one target, which the build names.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using vellobar::fuzz::Target;
  static const Target& target = *std::ranges::find(vellobar::fuzz::targets(), std::string_view(VELLOBAR_FUZZ_TARGET),
                                                   [](const Target& each) { return std::string_view(each.name); });
  target.run(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
