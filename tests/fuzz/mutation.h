// Inputs for the fuzz targets without a fuzzer: those of a corpus, changed at random, the same ones every time.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::tests {

class Mutation {
 public:
  /// Of these inputs, of which there must be one. `seed` chooses the row of results.
  Mutation(const std::vector<std::string>& inputs, unsigned seed) : inputs_(inputs), random_(seed) {}

  /// The next input: one of the corpus after a few changes, at most 4096 bytes of it.
  std::string next();

 private:
  std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }
  std::string_view piece(const std::string& of);
  void change(std::string& input);

  const std::vector<std::string>& inputs_;
  std::mt19937 random_;
};

}  // namespace vellobar::tests
