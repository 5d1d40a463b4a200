// The widest form of the codec loops, compiled for the imitation of its instructions.
#include "tests/codecs/imitated_kernels.h"

#define VELLOBAR_IMITATED_AVX512
#include "codecs/kernels_avx512.cpp"

#if !defined(__x86_64__) && !defined(__i386__)
const vellobar::codecs::Kernels* vellobar::codecs::imitated_avx512_kernels() noexcept { return nullptr; }
#endif
