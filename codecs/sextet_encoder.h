// Encoding to a code of six-bit letters: whole groups by the loops of kernels.h, the last one, of 1 or 2 bytes, here.
#pragma once

#include <cstddef>

#include "codecs/kernels.h"
#include "codecs/sextets.h"

namespace vellobar::codecs {

/// Stands for the letters that no byte reaches: none are written.
inline constexpr unsigned char kNoPadding = 0;

/// Encodes all of `size` bytes without line ends. Letters that no byte reaches are written as `padding`. `to` has room
/// for whole_groups_encoded(size) characters. Returns the number of characters written.
std::size_t encode_sextets(const SextetCode& code, const SextetKernels& kernels, unsigned char padding,
                           const unsigned char* from, std::size_t size, unsigned char* to);

}  // namespace vellobar::codecs
