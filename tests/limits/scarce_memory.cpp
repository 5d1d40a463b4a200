#include "tests/limits/scarce_memory.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "errors/error.h"
#include "platform/file.h"
#include "tests/limits/counted_memory.h"

namespace vellobar::tests {

namespace {

#if defined(_WIN32) || defined(__SANITIZE_ADDRESS__)
constexpr std::size_t kStride = 7;
#else
constexpr std::size_t kStride = 1;
#endif

enum class Outcome { done, no_memory, other };

/// The error that a client gets is the only thing that counts, so nothing is remembered that would need memory.
struct Attempt {
  Outcome outcome = Outcome::done;
  int number = 0;
};

bool says_no_memory(const Error& error) {
  return error.status() == Status::out_of_memory ||
         (error.status() == Status::numbered &&
          (error.number() == ErrorNumber::scan_out_of_memory || error.number() == ErrorNumber::out_of_memory));
}

Attempt attempt(const Step& act, Bench& bench) {
  try {
    act(bench);
    return {};
  } catch (const std::bad_alloc&) {
    return {Outcome::no_memory};
  } catch (const Error& error) {
    return {says_no_memory(error) ? Outcome::no_memory : Outcome::other, static_cast<int>(error.number())};
  } catch (...) {
    return {Outcome::other, -1};
  }
}

/// False when it did not come to the refused allocation.
bool refuse(const Scenario& scenario, const TemporaryFolder& folder, const TemporaryFolder& temporary,
            std::size_t number, Refusal refusal) {
  bool came = false;
  Bench bench(folder, temporary, scenario.mail);
  if (scenario.prepare) scenario.prepare(bench);
  Attempt made;
  {
    const RefusedAllocation refused(number, refusal);
    made = attempt(scenario.act, bench);
    came = refused.came();
  }
  EXPECT_NE(made.outcome, Outcome::other) << "error " << made.number;
  EXPECT_TRUE(came || made.outcome == Outcome::done);
  if (scenario.check) scenario.check(bench, made.outcome == Outcome::done);
  return came;
}

void refuse_each(const Scenario& scenario, Refusal refusal) {
  TemporaryFolder folder;
  TemporaryFolder temporary;
  const platform::FixedTemporaryFolder fixed(temporary.path(""));
  // What is made once in a process is made now.
  for (int i = 0; i < 2; ++i) refuse(scenario, folder, temporary, static_cast<std::size_t>(-2), refusal);
  const std::size_t pieces = allocated_pieces();
  for (std::size_t number = 1; refuse(scenario, folder, temporary, number, refusal); number += kStride) {
    EXPECT_EQ(allocated_pieces(), pieces);
    EXPECT_EQ(temporary.names(), std::vector<std::string>());
    if (!::testing::Test::HasFailure()) continue;
    ADD_FAILURE() << "allocation " << number << (refusal == Refusal::once ? "" : " and all that follow");
    return;
  }
}

struct StringSink final : platform::ByteSink {
  void write(std::string_view more) override { bytes += more; }
  std::string bytes;
};

}  // namespace

Bench::Bench(const TemporaryFolder& files, const TemporaryFolder& temporary_files, std::string_view mail)
    : folder(files), temporary(temporary_files) {
  write_file(path, mail);
  control->SetFilename(wide(path));
}

std::string Bench::written() {
  StringSink sink;
  control->Messages()->write_mailbox(sink);
  return std::move(sink.bytes);
}

void refuse_each_allocation(const Scenario& scenario) {
  refuse_each(scenario, Refusal::once);
  refuse_each(scenario, Refusal::from_then_on);
}

}  // namespace vellobar::tests
