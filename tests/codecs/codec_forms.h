// What the tests of the forms of the codec loops run through: the forms, the routines in their shape for memory, and
// the bytes at which a rule turns.
#pragma once

#include "codecs/kernels.h"
#include "tests/codecs/imitated_kernels.h"

namespace vellobar::codecs {

/// A form of the loops; null where this machine or this build does not have it.
struct Form {
  const char* name;
  const Kernels* (*kernels)() noexcept;
};

inline const Kernels* scalar_kernels() noexcept { return &kScalarKernels; }

inline constexpr Form kForms[] = {{"scalar", scalar_kernels},
                                  {"avx2", avx2_kernels},
                                  {"avx512_vbmi", avx512_kernels},
                                  {"imitated_avx512_vbmi", imitated_avx512_kernels}};

/// Bytes at which a rule turns, and some at which none does.
inline constexpr unsigned char kTurningBytes[] = {0,   1,   '\t', '\n', '\r', ' ',  '!',  '+', '-', '/',
                                                  '0', '9', ':',  '=',  'A',  'F',  'G',  'M', 'Z', '_',
                                                  '`', 'a', 'f',  'z',  'r',  0x7F, 0x80, 0xFF};

}  // namespace vellobar::codecs
