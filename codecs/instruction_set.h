// Which form of the codec loops runs: the plain one, or one of those written for wider registers. Chosen once, by what
// the processor and the operating system offer; a test can force any form that they offer.
#pragma once

#include "codecs/kernels.h"

namespace vellobar::codecs {

enum class InstructionSet { scalar, avx2, avx512_vbmi };

/// The best form that this build has and this machine can run.
InstructionSet best_instruction_set() noexcept;

/// True when this build has the form and this machine can run it.
bool is_supported(InstructionSet set) noexcept;

/// Puts a form in force until the object dies; the one before stays when it is not supported.
class ForcedInstructionSet {
 public:
  explicit ForcedInstructionSet(InstructionSet set) noexcept;

 private:
  ForcedKernels forced_;
};

}  // namespace vellobar::codecs
