// Which form of the codec loops runs: the plain one, or one of those written for wider registers. Chosen once, by what
// the processor and the operating system offer; a test can force any form that they offer.
#pragma once

namespace vellobar::codecs {

enum class InstructionSet { scalar, avx2, avx512_vbmi };

/// The form in force.
InstructionSet instruction_set() noexcept;

/// True when this build has the form and this machine can run it.
bool is_supported(InstructionSet set) noexcept;

/// Puts a supported form in force until the object dies. For tests and measurements; not for two threads at once.
class ForcedInstructionSet {
 public:
  explicit ForcedInstructionSet(InstructionSet set) noexcept;
  ~ForcedInstructionSet();
  ForcedInstructionSet(const ForcedInstructionSet&) = delete;
  ForcedInstructionSet& operator=(const ForcedInstructionSet&) = delete;

 private:
  InstructionSet previous_;
};

}  // namespace vellobar::codecs
