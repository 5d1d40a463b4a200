// How the work of the component grows with what hostile mail hands it. A family is one kind of input and one thing done
// with it; its input can be made in any size. `growth` counts the instructions of a family at half its largest size and
// at the largest.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace vellobar::bench {

/// What is counted: done once, returns something of the result, so that nothing is left out.
using GrowthWork = std::function<std::size_t()>;

struct GrowthFamily {
  /// Unique among all areas, without spaces.
  std::string_view name;
  /// Makes an input of about this many bytes, which is not counted, and returns what is done with it.
  GrowthWork (*prepare)(std::size_t size);
  std::size_t largest = std::size_t{1} << 20;
};

/// The families of one area, one file each: growth_AREA.cpp.
std::span<const GrowthFamily> word_growth_families();
std::span<const GrowthFamily> header_growth_families();
std::span<const GrowthFamily> part_growth_families();
std::span<const GrowthFamily> client_growth_families();

/// A piece again and again, up to a size.
std::string repeated(std::string_view piece, std::size_t size);

}  // namespace vellobar::bench
