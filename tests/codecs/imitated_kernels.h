// The widest form of the codec loops for every machine that has AVX2.
#pragma once

#include "codecs/kernels.h"

namespace vellobar::codecs {

/// Null where AVX2 is missing as well.
const Kernels* imitated_avx512_kernels() noexcept;

}  // namespace vellobar::codecs
