#include "codecs/instruction_set.h"

#include <atomic>

namespace vellobar::codecs {

namespace {

const Kernels* kernels_of(InstructionSet set) noexcept {
  if (set == InstructionSet::avx512_vbmi) return avx512_kernels();
  if (set == InstructionSet::avx2) return avx2_kernels();
  return &kScalarKernels;
}

std::atomic<const Kernels*>& chosen() noexcept {
  static std::atomic<const Kernels*> kernels(kernels_of(best_instruction_set()));
  return kernels;
}

}  // namespace

InstructionSet best_instruction_set() noexcept {
  if (is_supported(InstructionSet::avx512_vbmi)) return InstructionSet::avx512_vbmi;
  if (is_supported(InstructionSet::avx2)) return InstructionSet::avx2;
  return InstructionSet::scalar;
}

bool is_supported(InstructionSet set) noexcept { return kernels_of(set) != nullptr; }

const Kernels& kernels() noexcept { return *chosen().load(std::memory_order_relaxed); }

ForcedKernels::ForcedKernels(const Kernels& forced) noexcept : previous_(kernels()) { chosen() = &forced; }

ForcedKernels::~ForcedKernels() { chosen() = &previous_; }

ForcedInstructionSet::ForcedInstructionSet(InstructionSet set) noexcept
    : forced_(is_supported(set) ? *kernels_of(set) : kernels()) {}

}  // namespace vellobar::codecs
