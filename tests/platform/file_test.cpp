#include "platform/file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

#include "platform/temporary_file.h"
#include "tests/support/faulty_file_system.h"
#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace vellobar::platform {
namespace {

constexpr std::size_t kOutputBuffer = 256 * 1024;

/// A file in the temporary folder that goes away with the test.
class Scratch {
 public:
  Scratch() : path_(temporary_file_name()) {}
  explicit Scratch(std::string path) : path_(std::move(path)) {}
  ~Scratch() { remove_file(path_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  const std::string& path() const { return path_; }
  void fill(std::string_view bytes) const {
    const auto file = OutputFile::create(path_);
    ASSERT_NE(file, nullptr);
    file->write(bytes);
    file->close();
  }
  std::string content() const {
    const auto file = File::open(path_);
    if (!file) return "(missing)";
    std::string bytes(static_cast<std::size_t>(file->size()), '\0');
    bytes.resize(file->read(0, bytes.data(), bytes.size()));
    return bytes;
  }

 private:
  std::string path_;
};

TEST(File, a_missing_file_does_not_open) {
  EXPECT_EQ(File::open(temporary_folder() + "no-such-file"), nullptr);
  EXPECT_EQ(File::open(""), nullptr);
}

TEST(File, a_folder_does_not_open) {
  EXPECT_EQ(File::open(temporary_folder()), nullptr);
  EXPECT_EQ(File::open("."), nullptr);
}

#ifndef _WIN32
TEST(File, a_pipe_does_not_open_and_is_not_waited_for) {
  const Scratch pipe;
  remove_file(pipe.path());
  ASSERT_EQ(::mkfifo(pipe.path().c_str(), 0600), 0);
  EXPECT_EQ(File::open(pipe.path()), nullptr);
}
#endif

TEST(File, reads_name_their_position_and_stop_at_the_end) {
  const Scratch scratch;
  scratch.fill("0123456789");
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->size(), 10);
  char to[8] = "-------";
  EXPECT_EQ(file->read(2, to, 3), 3u);
  EXPECT_EQ(std::string_view(to, 7), "234----");
  EXPECT_EQ(file->read(8, to, 7), 2u);
  EXPECT_EQ(std::string_view(to, 7), "894----");
  EXPECT_EQ(file->read(10, to, 7), 0u);
  EXPECT_EQ(file->read(1'000'000, to, 7), 0u);
  EXPECT_FALSE(file->failed()) << "the end of the file is no failure";
}

TEST(File, a_closed_file_reads_as_empty) {
  const Scratch scratch;
  scratch.fill("0123456789");
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->is_open());
  file->close();
  file->close();
  char to[4] = {};
  EXPECT_FALSE(file->is_open());
  EXPECT_EQ(file->size(), 0);
  EXPECT_EQ(file->current_size(), -1);
  EXPECT_EQ(file->read(0, to, 4), 0u);
  EXPECT_FALSE(file->failed());
  EXPECT_FALSE(file->is_same_file(scratch.path()));
}

TEST(File, the_size_is_that_of_the_opening_and_the_current_size_follows_the_file) {
  const Scratch scratch;
  scratch.fill("0123456789");
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  std::filesystem::resize_file(scratch.path(), 25);
  EXPECT_EQ(file->size(), 10);
  EXPECT_EQ(file->current_size(), 25);
}

TEST(File, an_empty_file_opens) {
  const Scratch scratch;
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->size(), 0);
  char to = 'x';
  EXPECT_EQ(file->read(0, &to, 1), 0u);
}

TEST(File, positions_beyond_4_gigabytes_are_read) {
  const Scratch scratch;
  constexpr std::int64_t kLarge = 5'000'000'000;
  std::error_code error;
  std::filesystem::resize_file(scratch.path(), kLarge, error);
  if (error) GTEST_SKIP() << "no room for a sparse file: " << error.message();
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->size(), kLarge);
  char to[4] = {'a', 'b', 'c', 'd'};
  EXPECT_EQ(file->read(kLarge - 2, to, 4), 2u);
  EXPECT_EQ(std::string_view(to, 4), std::string_view("\0\0cd", 4));
}

TEST(File, a_file_is_the_same_through_its_links) {
  const Scratch scratch;
  const Scratch hard(scratch.path() + ".hard"), soft(scratch.path() + ".soft"), other;
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  EXPECT_TRUE(file->is_same_file(scratch.path()));
  EXPECT_FALSE(file->is_same_file(other.path()));
  EXPECT_FALSE(file->is_same_file(scratch.path() + ".missing"));
  EXPECT_TRUE(same_file(scratch.path(), scratch.path()));
  EXPECT_FALSE(same_file(scratch.path(), other.path()));
  EXPECT_FALSE(same_file(scratch.path() + ".missing", scratch.path() + ".missing"));
  std::error_code error;
  std::filesystem::create_hard_link(scratch.path(), hard.path(), error);
  if (!error) {
    EXPECT_TRUE(file->is_same_file(hard.path()));
    EXPECT_TRUE(same_file(scratch.path(), hard.path()));
  }
  std::filesystem::create_symlink(scratch.path(), soft.path(), error);
  if (!error) {
    EXPECT_TRUE(file->is_same_file(soft.path()));
  }
}

TEST(File, an_open_file_stays_readable_after_it_was_removed) {
  const Scratch scratch;
  scratch.fill("old");
  const auto file = File::open(scratch.path());
  ASSERT_NE(file, nullptr);
  ASSERT_TRUE(remove_file(scratch.path()));
#ifndef _WIN32
  // Windows keeps the name until the last handle closes.
  EXPECT_FALSE(file->is_same_file(scratch.path()));
#endif
  char to[3] = {};
  EXPECT_EQ(file->read(0, to, 3), 3u);
  EXPECT_EQ(std::string_view(to, 3), "old");
}

TEST(File, a_file_that_is_not_there_cannot_be_removed) {
  EXPECT_FALSE(remove_file(temporary_folder() + "no-such-file"));
}

TEST(OutputFile, an_existing_file_is_emptied) {
  const Scratch scratch;
  scratch.fill("something long");
  scratch.fill("new");
  EXPECT_EQ(scratch.content(), "new");
  scratch.fill("");
  EXPECT_EQ(scratch.content(), "");
}

TEST(OutputFile, a_file_in_a_missing_folder_cannot_be_created) {
  EXPECT_EQ(OutputFile::create(temporary_folder() + "no-such-folder/file"), nullptr);
  EXPECT_EQ(OutputFile::create(temporary_folder()), nullptr);
}

TEST(OutputFile, bytes_arrive_whole_and_in_order_around_the_edges_of_the_buffer) {
  for (std::size_t first : {std::size_t{0}, std::size_t{1}, kOutputBuffer - 1, kOutputBuffer, kOutputBuffer + 1}) {
    for (std::size_t second : {std::size_t{0}, std::size_t{1}, kOutputBuffer - 1, kOutputBuffer, kOutputBuffer + 1}) {
      const Scratch scratch;
      const auto file = OutputFile::create(scratch.path());
      ASSERT_NE(file, nullptr);
      file->write(std::string(first, 'a'));
      file->write(std::string(second, 'b'));
      file->write("end");
      file->close();
      const std::string content = scratch.content();
      EXPECT_TRUE(content == std::string(first, 'a') + std::string(second, 'b') + "end") << first << " " << second;
    }
  }
}

TEST(OutputFile, repeats_calls_that_were_interrupted_and_goes_on_after_short_ones) {
  const std::string bytes = "0123456789";
  for (const tests::Fault fault : {tests::Fault::fails, tests::Fault::writes_half}) {
    for (std::int64_t at = 0; at < 3; ++at) {
      const Scratch scratch;
      tests::FaultyFileSystem faulty(fault, at, std::make_error_code(std::errc::interrupted));
      const FixedFileSystem fixed(faulty);
      const auto file = OutputFile::create(scratch.path());
      ASSERT_NE(file, nullptr);
      file->write(bytes);
      file->sync();
      file->close();
      EXPECT_EQ(scratch.content(), bytes) << at;
      const std::int64_t undisturbed = 4;  // create, write, sync, close
      const bool was_short_elsewhere = fault == tests::Fault::writes_half && at != 1;
      EXPECT_EQ(faulty.changes(), was_short_elsewhere ? undisturbed : undisturbed + 1) << at;
    }
  }
}

TEST(OutputFile, ends_with_what_is_always_interrupted_or_takes_nothing) {
  const Scratch scratch;
  tests::FaultyFileSystem interrupting(tests::Fault::fails_from, 1, std::make_error_code(std::errc::interrupted));
  {
    const FixedFileSystem fixed(interrupting);
    const auto file = OutputFile::create(scratch.path());
    ASSERT_NE(file, nullptr);
    EXPECT_THROW(file->sync(), std::system_error);
    EXPECT_GT(interrupting.changes(), 100) << "a signal or two are waited for";
    EXPECT_FALSE(remove_file(scratch.path()));
  }
  tests::FaultyFileSystem taking_nothing(tests::Fault::writes_nothing, 1);
  const FixedFileSystem fixed(taking_nothing);
  const auto file = OutputFile::create(scratch.path());
  ASSERT_NE(file, nullptr);
  file->write("text");
  EXPECT_THROW(file->flush(), std::system_error);
}

TEST(OutputFile, that_was_not_closed_as_it_should_says_so) {
  const Scratch scratch;
  tests::FaultyFileSystem faulty(tests::Fault::fails, 2);
  const FixedFileSystem fixed(faulty);
  const auto file = OutputFile::create(scratch.path());
  file->write("text");
  EXPECT_THROW(file->close(), std::system_error);
}

TEST(File, that_cannot_be_read_to_its_end_is_not_copied) {
  struct Nowhere final : ByteSink {
    void write(std::string_view more) override { size += more.size(); }
    std::size_t size = 0;
  } sink;
  const Scratch scratch;
  scratch.fill("0123456789");
  tests::FaultyFileSystem faulty;
  const FixedFileSystem fixed(faulty);
  const auto file = File::open(scratch.path());
  copy_bytes(*file, 3, 10, sink);
  EXPECT_EQ(sink.size, 7u);
  copy_bytes(*file, 10, 10, sink);
  EXPECT_EQ(sink.size, 7u);
  EXPECT_THROW(copy_bytes(*file, 3, 11, sink), std::system_error);
  faulty.fail_reads_from(5);
  EXPECT_THROW(copy_bytes(*file, 0, 10, sink), std::system_error);
  EXPECT_TRUE(file->failed());
}

TEST(OutputFile, a_byte_at_a_time_arrives_whole) {
  const Scratch scratch;
  const auto file = OutputFile::create(scratch.path());
  ASSERT_NE(file, nullptr);
  for (std::size_t i = 0; i < kOutputBuffer + 10; ++i) file->write(std::string_view("0123456789").substr(i % 10, 1));
  file->close();
  const std::string content = scratch.content();
  ASSERT_EQ(content.size(), kOutputBuffer + 10);
  for (std::size_t i = 0; i < content.size(); ++i) ASSERT_EQ(content[i], static_cast<char>('0' + i % 10)) << i;
}

#ifdef __linux__
TEST(OutputFile, a_full_device_is_reported) {
  const auto file = OutputFile::create("/dev/full");
  if (!file) GTEST_SKIP() << "no such device here";
  file->write("text");
  EXPECT_THROW(file->close(), std::system_error);
  const auto direct = OutputFile::create("/dev/full");
  EXPECT_THROW(direct->write(std::string(kOutputBuffer, 'x')), std::system_error);
}
#endif

}  // namespace
}  // namespace vellobar::platform
