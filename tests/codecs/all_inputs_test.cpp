// Every input of three bytes: alone, where every form of the loops must keep the rules of the second telling, and all
// of them side by side, where the wide forms meet every group of three bytes at their places.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "codecs/strings.h"
#include "tests/codecs/codec_forms.h"
#include "tests/codecs/codec_routines.h"

namespace vellobar::codecs {
namespace {

/// The first bytes of the inputs: all of them, but under a sanitizer, which takes ten times as long, those at which a
/// rule turns.
std::vector<unsigned char> first_bytes() {
#if defined(__SANITIZE_ADDRESS__)
  return {std::begin(kTurningBytes), std::end(kTurningBytes)};
#else
  std::vector<unsigned char> bytes;
  for (int byte = 0; byte < 256; ++byte) bytes.push_back(static_cast<unsigned char>(byte));
  return bytes;
#endif
}

constexpr std::size_t kInputs = 256 * 256;  // with the same first byte

/// All inputs of three bytes with this first byte, side by side.
std::string inputs_from(unsigned char first) {
  std::string bytes;
  for (std::size_t rest = 0; rest < kInputs; ++rest) {
    bytes += {static_cast<char>(first), static_cast<char>(rest / 256), static_cast<char>(rest % 256)};
  }
  return bytes;
}

/// Runs the check under every form that this machine has; the slow imitation only where it has to stand in.
template <typename Check>
void with_every_form(Check check) {
  for (const Form& form : kForms) {
    const Kernels* loops = form.kernels();
    if (loops == nullptr || (loops == imitated_avx512_kernels() && avx512_kernels() != nullptr)) continue;
    const ForcedKernels forced(*loops);
    check(form.name);
  }
}

void check_alone(const Routine& routine, const std::string& inputs, const std::vector<std::string>& expected) {
  with_every_form([&](const char* form) {
    for (std::size_t i = 0; i < kInputs; ++i) {
      unsigned char from[3], to[16];
      std::memcpy(from, inputs.data() + 3 * i, 3);
      const std::size_t size = routine.run(from, 3, to);
      if (view_of(to, size) == expected[i]) continue;
      ADD_FAILURE() << routine.name << " as " << form << " of " << testing::PrintToString(inputs.substr(3 * i, 3));
    }
  });
}

TEST(AllInputs, of_three_bytes_are_coded_by_the_rules_in_every_form) {
  for (const unsigned char first : first_bytes()) {
    const std::string inputs = inputs_from(first);
    const auto check = [&](const Routine& routine) {
      std::vector<std::string> expected;
      for (std::size_t i = 0; i < kInputs; ++i) {
        expected.push_back(routine.expected(std::string_view(inputs).substr(3 * i, 3)));
      }
      check_alone(routine, inputs, expected);
    };
    for (const Routine& routine : kEncoders) check(routine);
    for (const Routine& routine : kDecoders) check(routine);
    if (testing::Test::HasFailure()) return;
  }
}

/// What a routine makes of a text.
std::string made_by(const Routine& routine, std::string text) {
  const std::size_t room = routine.room(text);
  return string_of_size(room, [&](unsigned char* to) {
    return routine.run(reinterpret_cast<unsigned char*>(text.data()), text.size(), to);
  });
}

/// A code of sextets, its loops, and the lengths of its full lines.
struct Lines {
  const char* name;
  SextetKernels Kernels::*loops;
  std::size_t bytes;
  std::size_t characters;
};
constexpr Lines kLines[] = {{"Base64", &Kernels::base64, 57, 78},
                            {"uuencode", &Kernels::uuencode, 45, 63},
                            {"BinHex", &Kernels::binhex, 48, 66}};

std::string made_to_lines(const Lines& lines, const Kernels& form, const std::string& bytes) {
  const std::size_t count = bytes.size() / lines.bytes;
  return string_of_size(count * lines.characters, [&](unsigned char* to) {
    (form.*lines.loops).encode_lines(bytes_of(bytes), count, to);
    return count * lines.characters;
  });
}

std::string made_of_lines(const Lines& lines, const Kernels& form, const std::string& text) {
  const bool is_uu = lines.loops == &Kernels::uuencode;
  const auto decode = is_uu ? form.decode_uu_lines : (form.*lines.loops).decode;
  return string_of_size(started_groups_decoded(text.size()),
                        [&](unsigned char* to) { return decode(bytes_of(text), text.size(), to).written; });
}

TEST(AllInputs, of_three_bytes_side_by_side_are_coded_alike_in_every_form) {
  for (const unsigned char first : first_bytes()) {
    const std::string inputs = inputs_from(first);
    std::vector<std::string> plain;
    {
      const ForcedKernels forced(kScalarKernels);
      for (const Routine& routine : kEncoders) plain.push_back(made_by(routine, inputs));
      plain.push_back(made_by(kDecoders[2], inputs));
      for (const Lines& lines : kLines) plain.push_back(made_to_lines(lines, kScalarKernels, inputs));
    }
    with_every_form([&](const char* form) {
      auto expected = plain.begin();
      for (const Routine& routine : kEncoders) EXPECT_TRUE(made_by(routine, inputs) == *expected++) << form;
      EXPECT_TRUE(made_by(kDecoders[2], inputs) == *expected++) << form;
      // Decoding what an encoder made gives the bytes again.
      EXPECT_TRUE(made_by(kDecoders[0], plain[0]) == inputs) << form;
      EXPECT_TRUE(made_by(kDecoders[1], plain[1]) == inputs) << form;
      EXPECT_TRUE(made_by(kDecoders[2], plain[2]) == inputs) << form;
      EXPECT_TRUE(made_by(kDecoders[4], plain[3]) == inputs) << form;
      for (const Lines& lines : kLines) {
        EXPECT_TRUE(made_to_lines(lines, kernels(), inputs) == *expected) << lines.name << " as " << form;
        const std::string whole_lines = inputs.substr(0, inputs.size() / lines.bytes * lines.bytes);
        EXPECT_TRUE(made_of_lines(lines, kernels(), *expected++) == whole_lines) << lines.name << " as " << form;
      }
    });
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace
}  // namespace vellobar::codecs
