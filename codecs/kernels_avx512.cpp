#include "codecs/kernels.h"

namespace vellobar::codecs {

const Kernels* avx512_kernels() noexcept { return nullptr; }

}  // namespace vellobar::codecs
