// The fuzz targets on the inputs that are kept for them, and on a few thousand that are made of those.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "fuzz/target.h"
#include "tests/fuzz/mutation.h"
#include "tests/support/files.h"

namespace vellobar {

namespace fuzz {

/// Gives a target its name in messages of failed tests.
static void PrintTo(const Target& target, std::ostream* out) { *out << target.name; }

}  // namespace fuzz

namespace {

/// Where files cost much more than elsewhere (Windows programs, sanitizers), fewer.
#if defined(_WIN32) || defined(__SANITIZE_ADDRESS__)
constexpr int kMutations = 60;
#else
constexpr int kMutations = 300;
#endif

/// VELLOBAR_TEST_ROUNDS asks for as many times more.
int mutations() {
  const char* factor = std::getenv("VELLOBAR_TEST_ROUNDS");
  return kMutations * (factor == nullptr ? 1 : std::max(1, std::atoi(factor)));
}

std::vector<std::string> corpus(const fuzz::Target& target) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator(tests::source_file("fuzz/corpus/") + target.name)) {
    paths.push_back(entry.path().string());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    text += c >= ' ' && c <= '~' && c != '\\' ? std::string(1, c) : std::string(escape);
  }
  return text;
}

/// False when a law is broken.
bool holds(const fuzz::Target& target, const std::string& input, const std::string& name) {
  try {
    target.run(input);
    return true;
  } catch (const std::exception& error) {
    ADD_FAILURE() << target.name << ": " << error.what() << "\nwith " << name << ":\n" << escaped(input);
    return false;
  }
}

class FuzzTargets : public testing::TestWithParam<fuzz::Target> {};

TEST_P(FuzzTargets, laws_hold_for_the_inputs_that_are_kept) {
  const std::vector<std::string> paths = corpus(GetParam());
  ASSERT_FALSE(paths.empty());
  for (const std::string& path : paths) holds(GetParam(), tests::read_file(path), path);
}

TEST_P(FuzzTargets, laws_hold_for_inputs_made_of_those_at_random) {
  std::vector<std::string> inputs;
  for (const std::string& path : corpus(GetParam())) inputs.push_back(tests::read_file(path));
  tests::Mutation mutation(inputs, 1);
  const int rounds = mutations();
  for (int i = 0; i < rounds; ++i) {
    if (!holds(GetParam(), mutation.next(), "input " + std::to_string(i))) return;
  }
}

INSTANTIATE_TEST_SUITE_P(, FuzzTargets, testing::ValuesIn(fuzz::targets().begin(), fuzz::targets().end()),
                         [](const auto& target) { return std::string(target.param.name); });

}  // namespace
}  // namespace vellobar
