#include "codecs/sextet_encoder.h"

namespace vellobar::codecs {

std::size_t encode_sextets(const SextetCode& code, const SextetKernels& kernels, unsigned char padding,
                           const unsigned char* from, std::size_t size, unsigned char* to) {
  const std::size_t groups = size / 3;
  const std::size_t left = size % 3;
  kernels.encode(from, groups, to);
  std::size_t written = groups * 4;
  if (left == 0) return written;
  for (const unsigned char value : split(from + groups * 3, left)) {
    if (value != kAbsent) {
      to[written++] = code.letters[value];
    } else if (padding != kNoPadding) {
      to[written++] = padding;
    }
  }
  return written;
}

}  // namespace vellobar::codecs
