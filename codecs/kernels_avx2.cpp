#include "codecs/kernels.h"

namespace vellobar::codecs {

const Kernels* avx2_kernels() noexcept { return nullptr; }

}  // namespace vellobar::codecs
