#include "codecs/instruction_set.h"

#include <atomic>

#include "codecs/kernels.h"

namespace vellobar::codecs {

namespace {

const Kernels* kernels_of(InstructionSet set) noexcept {
  if (set == InstructionSet::avx512_vbmi) return avx512_kernels();
  if (set == InstructionSet::avx2) return avx2_kernels();
  return &kScalarKernels;
}

InstructionSet best_set() noexcept {
  if (is_supported(InstructionSet::avx512_vbmi)) return InstructionSet::avx512_vbmi;
  if (is_supported(InstructionSet::avx2)) return InstructionSet::avx2;
  return InstructionSet::scalar;
}

struct Choice {
  std::atomic<InstructionSet> set;
  std::atomic<const Kernels*> kernels;

  explicit Choice(InstructionSet first) noexcept : set(first), kernels(kernels_of(first)) {}
  void choose(InstructionSet next) noexcept {
    set.store(next, std::memory_order_relaxed);
    kernels.store(kernels_of(next), std::memory_order_relaxed);
  }
};

Choice& choice() noexcept {
  static Choice chosen(best_set());
  return chosen;
}

}  // namespace

InstructionSet instruction_set() noexcept { return choice().set.load(std::memory_order_relaxed); }

bool is_supported(InstructionSet set) noexcept { return kernels_of(set) != nullptr; }

const Kernels& kernels() noexcept { return *choice().kernels.load(std::memory_order_relaxed); }

ForcedInstructionSet::ForcedInstructionSet(InstructionSet set) noexcept : previous_(instruction_set()) {
  if (is_supported(set)) choice().choose(set);
}

ForcedInstructionSet::~ForcedInstructionSet() { choice().choose(previous_); }

}  // namespace vellobar::codecs
