// Files that come whole or not at all, also when the user interrupts the program.
#include "command/output/output.h"

#include <gtest/gtest.h>

#include <csignal>
#include <system_error>

#include "command/output/failure.h"
#include "tests/support/files.h"

namespace vellobar::command {
namespace {

using Names = std::vector<std::string>;
using Existing = Output::Existing;

class OutputFiles : public testing::Test {
 protected:
  OutputFiles() : in_force_(files_) {}
  ~OutputFiles() override { forget_interruption(); }

  InterruptibleFileSystem files_;
  platform::FixedFileSystem in_force_;
  tests::TemporaryFolder folder_;
  const std::string path_ = folder_.path("out");
};

TEST_F(OutputFiles, a_finished_one_stands_under_its_name_alone) {
  Output output(path_, Existing::is_refused);
  output.write("abc");
  output.finish();
  EXPECT_EQ(folder_.names(), Names{"out"});
  EXPECT_EQ(tests::read_file(path_), "abc");
}

TEST_F(OutputFiles, before_that_nothing_stands_under_its_name) {
  {
    Output output(path_, Existing::is_refused);
    output.write("abc");
    EXPECT_EQ(folder_.names(), Names{".out.vellobar-new"});
  }
  EXPECT_EQ(folder_.names(), Names{});
}

TEST_F(OutputFiles, one_that_is_there_stays_until_the_new_one_is_finished) {
  tests::write_file(path_, "old");
  {
    Output output(path_, Existing::is_replaced);
    output.write("new");
  }
  EXPECT_EQ(tests::read_file(path_), "old");
  Output output(path_, Existing::is_replaced);
  output.write("new");
  output.finish();
  EXPECT_EQ(tests::read_file(path_), "new");
  EXPECT_EQ(folder_.names(), Names{"out"});
}

TEST_F(OutputFiles, one_that_is_there_may_be_refused) {
  tests::write_file(path_, "old");
  EXPECT_THROW(Output(path_, Existing::is_refused), Failure);
  EXPECT_EQ(tests::read_file(path_), "old");
}

TEST_F(OutputFiles, what_a_died_process_left_is_in_nobodys_way) {
  tests::write_file(folder_.path(".out.vellobar-new"), "half");
  Output output(path_, Existing::is_refused);
  output.write("whole");
  output.finish();
  EXPECT_EQ(tests::read_file(path_), "whole");
  EXPECT_EQ(folder_.names(), Names{"out"});
}

TEST_F(OutputFiles, after_an_interruption_nothing_more_is_written_and_nothing_is_left) {
  {
    Output output(path_, Existing::is_refused);
    output.write("abc");
    interrupt(SIGINT);
    EXPECT_THROW(output.write(std::string(std::size_t{1} << 20, 'x')), Interrupted);
  }
  EXPECT_EQ(folder_.names(), Names{});
}

TEST_F(OutputFiles, an_interruption_before_the_end_leaves_the_old_file) {
  tests::write_file(path_, "old");
  {
    Output output(path_, Existing::is_replaced);
    output.write("new");
    interrupt(SIGTERM);
    EXPECT_THROW(output.finish(), Interrupted);
  }
  EXPECT_EQ(folder_.names(), Names{"out"});
  EXPECT_EQ(tests::read_file(path_), "old");
}

TEST_F(OutputFiles, what_takes_the_place_of_another_is_completed_after_an_interruption) {
  platform::FileHandle file = platform::FileHandle::open(path_, platform::Opening::create_new);
  interrupt(SIGINT);
  EXPECT_THROW(file.write("a"), std::system_error);
  const CompletingWork from_here;
  file.write("b");
  file.close();
  EXPECT_EQ(tests::read_file(path_), "b");
}

TEST_F(OutputFiles, after_an_interruption_none_is_begun) {
  interrupt(SIGINT);
  EXPECT_THROW(Output(path_, Existing::is_refused), Interrupted);
  EXPECT_EQ(folder_.names(), Names{});
}

TEST_F(OutputFiles, a_folder_that_is_not_there_is_a_clear_failure) {
  try {
    Output output(folder_.path("none") + "/out", Existing::is_refused);
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(std::string(failure.what()), "cannot write " + folder_.path("none") + "/out: there is no such folder");
  }
}

}  // namespace
}  // namespace vellobar::command
