// Lives of mailboxes played with nearly all messages kept and with a few: decisions at random, the same ones every
// time. What a fuzzer has to find its way to is reached here by many steps with deep mail.
#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>

#include "fuzz/target.h"
#include "fuzz/targets.h"

namespace vellobar {
namespace {

#if defined(_WIN32) || defined(__SANITIZE_ADDRESS__)
constexpr unsigned kLives = 15;
#else
constexpr unsigned kLives = 100;
#endif

/// An input reads its decisions from its end: how many are kept, how many messages are made and how, how much is left
/// for the steps, and the steps.
std::string random_life(unsigned seed) {
  constexpr std::size_t kMostMade = 3, kBytesForEach = 4, kDeepest = 40;
  std::mt19937 random(seed);
  const auto below = [&](std::size_t limit) { return static_cast<char>(random() % limit); };
  std::string decisions;
  decisions += below(4);
  const std::size_t made = 1 + random() % kMostMade;
  decisions += static_cast<char>(made);
  for (std::size_t i = 0; i < made; ++i) {
    decisions += random() % 2 == 0 ? below(kDeepest + 1) : below(5);
    while (decisions.size() < 2 + (i + 1) * kBytesForEach) decisions += below(256);
  }
  decisions += '\xFF';
  for (std::size_t bytes = 100 + random() % 900; bytes > 0; --bytes) decisions += below(256);
  return "From a\nSubject: first\n\ntext\nFrom b\nSubject: second\n\nmore\n" +
         std::string(decisions.rbegin(), decisions.rend());
}

TEST(LettingGoLives, a_client_does_not_see_that_messages_are_let_go) {
  for (unsigned seed = 0; seed < kLives; ++seed) {
    try {
      fuzz::fuzz_letting_go(random_life(seed));
    } catch (const fuzz::BrokenLaw& broken) {
      FAIL() << "life " << seed << ": " << broken.what();
    }
  }
}

}  // namespace
}  // namespace vellobar
