#include "mailbox/scanner.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "errors/error.h"
#include "scanner_fixture.h"

namespace vellobar::mailbox {
namespace {

using scanner_tests::scan_file;
using scanner_tests::scan_mailbox;
using scanner_tests::Scanned;
using scanner_tests::StreamOnDisk;
using scanner_tests::WatchedMemory;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;

/// Chunks of 16, 32 and then always 64 bytes.
ScanOptions small_chunks() { return {.first_chunk = 16, .chunk_doubles_below = 50}; }

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

Scanned scan_text(std::string_view content, std::string_view separator, const ScanOptions& options = {}) {
  const StreamOnDisk stream(content);
  const auto file = stream.open();
  return scan_file(*file, 0, file->size(), separator, options);
}

TEST(Scanner, an_empty_file_yields_no_messages) {
  const Scanned scanned = scan_mailbox("");
  EXPECT_THAT(scanned.extents, IsEmpty());
  EXPECT_EQ(scanned.result.position, 0);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(Scanner, a_message_runs_from_its_separator_line_up_to_the_next_one) {
  const Scanned scanned = scan_mailbox("From a\nS: 1\n\nbody\n\nFrom b\nS: 2\n\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 19, 5, true}, Extent{19, 32, 3, true}));
  EXPECT_EQ(scanned.result.position, 32);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(Scanner, a_file_that_does_not_begin_with_a_separator_yields_a_first_message_without_one) {
  const Scanned scanned = scan_mailbox("Hello\nFrom a\nx\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 6, 1, false}, Extent{6, 15, 2, true}));
}

TEST(Scanner, from_in_the_middle_of_a_line_or_quoted_or_indented_or_without_its_blank_starts_no_message) {
  const Scanned scanned =
      scan_mailbox("From a\nx From b\n>From c\n From d\nFrom\nFromage e\nFrom\tf\nfrom g\nFROM h\nFrom\r\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 74, 10, true}));
}

TEST(Scanner, separator_lines_may_follow_one_another) {
  const Scanned scanned = scan_mailbox("From a\nFrom b\nFrom \n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 7, 1, true}, Extent{7, 14, 1, true}, Extent{14, 20, 1, true}));
}

TEST(Scanner, a_final_line_without_a_line_feed_is_counted_as_a_line_of_its_full_length) {
  EXPECT_THAT(scan_mailbox("abc").extents, ElementsAre(Extent{0, 3, 1, false}));
  EXPECT_THAT(scan_mailbox("From a\nFrom b").extents, ElementsAre(Extent{0, 7, 1, true}, Extent{7, 13, 1, true}));
  EXPECT_THAT(scan_mailbox("From a\nlast\r").extents, ElementsAre(Extent{0, 12, 2, true}));
}

TEST(Scanner, a_final_line_without_a_line_feed_is_counted_once_when_the_read_that_would_complete_it_returns_nothing) {
  // The first chunk of 16 bytes is the whole file and ends with the five bytes "last.".
  const Scanned scanned = scan_mailbox("From ab\nxy\nlast.", small_chunks());
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 16, 3, true}));
  EXPECT_EQ(scanned.result.position, 16);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(Scanner, a_final_line_without_a_line_feed_is_counted_once_when_the_last_read_brings_it_alone) {
  const Scanned scanned = scan_mailbox("From ab\nxyz 456\nlast", small_chunks());
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 20, 3, true}));
}

TEST(Scanner, the_scan_stops_where_the_stream_ends_whatever_the_limit_says) {
  const StreamOnDisk stream("From a\nlast");
  const Scanned scanned = scan_file(*stream.open(), 0, 1000, "From ");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 11, 2, true}));
  EXPECT_EQ(scanned.result.position, 11);
  EXPECT_FALSE(scanned.result.whole);

  const StreamOnDisk one_line("abc");
  const Scanned once = scan_file(*one_line.open(), 0, 1000, "From ");
  EXPECT_THAT(once.extents, ElementsAre(Extent{0, 3, 1, false}));
  EXPECT_FALSE(once.result.whole);
}

TEST(Scanner, a_file_that_shrank_after_it_was_measured_ends_the_scan) {
  const StreamOnDisk stream(repeated("From a\nbody\n", 10000));
  const auto file = stream.open();
  std::filesystem::resize_file(stream.path(), 31);
  const Scanned scanned = scan_file(*file, 0, file->size(), "From ");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 12, 2, true}, Extent{12, 24, 2, true}, Extent{24, 31, 1, true}));
  EXPECT_EQ(scanned.result.position, 31);
  EXPECT_FALSE(scanned.result.whole);
}

TEST(Scanner, a_line_longer_than_a_chunk_is_counted_as_held_and_again_as_a_whole) {
  // The long line is 60001 bytes from position 7. The chunk of 32768 bytes that ends at 49152 has no line feed, so the
  // 49145 bytes held are counted, then all 60001 once more. Everything behind lies 49145 bytes further than in the
  // file, and the scan meets the limit that much earlier.
  const std::string content = "From a\n" + std::string(60000, 'x') + "\nFrom b\n" +
                              repeated(std::string(99, 'y') + "\n", 1000) + "From c\nend\n";
  ASSERT_EQ(content.size(), 160026u);
  const Scanned scanned = scan_mailbox(content);
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 109153, 3, true}, Extent{109153, 160060, 510, true}));
  EXPECT_EQ(scanned.result.position, 160060);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(Scanner, a_line_that_the_next_chunk_ends_is_counted_once_however_long_it_is) {
  const std::string content = "From a\n" + std::string(49143, 'x') + "\n\nFrom b\n";
  const Scanned scanned = scan_mailbox(content);
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 49152, 3, true}, Extent{49152, 49159, 1, true}));
}

TEST(Scanner, bytes_held_without_a_line_feed_may_match_the_separator_themselves) {
  // The chunks end at 16384 and 49152, both inside the first line of 60001 bytes.
  const std::string content = "From " + std::string(59995, 'x') + "\n" + repeated(std::string(99, 'y') + "\n", 2000);
  ASSERT_EQ(content.size(), 260001u);
  const Scanned scanned = scan_mailbox(content);
  EXPECT_THAT(scanned.extents,
              ElementsAre(Extent{0, 16384, 1, true}, Extent{16384, 65536, 1, true}, Extent{65536, 260037, 1346, true}));
}

TEST(Scanner, a_line_longer_than_a_chunk_that_ends_the_file_leaves_the_position_behind_the_end) {
  const Scanned scanned = scan_mailbox(std::string(20000, 'x'));
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 36384, 2, false}));
  EXPECT_EQ(scanned.result.position, 36384);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(Scanner, chunks_double_while_they_are_below_12800000_bytes_and_then_stay) {
  // Chunks of 16384 to 8388608 bytes end at 16760832 and are followed by chunks of 16777216 bytes. The first two of
  // these bring no line feed: 16777216 bytes are counted, then 33554432, then the whole line of 33554436.
  std::string content = repeated(std::string(15, 'x') + "\n", 1047552);
  ASSERT_EQ(content.size(), 16760832u);
  content += std::string(33554435, 'y') + "\n" + repeated(std::string(15, 'z') + "\n", 3200000);
  ASSERT_EQ(content.size(), 101515268u);
  const Scanned scanned = scan_mailbox(content);
  // 16760832 + 16777216 + 33554432 + 33554436 = 100646916, from where 54272 lines of 16 bytes reach the limit.
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 101515268, 1047552 + 3 + 54272, false}));
}

TEST(Scanner, a_first_chunk_without_a_line_feed_ends_at_16384_bytes) {
  const std::string line_of_16384 = std::string(16383, 'x') + "\n";
  EXPECT_THAT(scan_mailbox(line_of_16384 + "y\n").extents, ElementsAre(Extent{0, 16386, 2, false}));
  // One byte more: 16384 bytes are counted first, and then the whole 16385.
  const std::string line_of_16385 = std::string(16384, 'x') + "\n";
  EXPECT_THAT(scan_mailbox(line_of_16385 + "y\n").extents, ElementsAre(Extent{0, 32769, 2, false}));
}

TEST(Scanner, with_cr_lf_line_ends_each_line_counts_both_bytes) {
  const Scanned scanned = scan_mailbox("From a\r\nx\r\n\r\nFrom b\r\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 13, 3, true}, Extent{13, 21, 1, true}));
}

TEST(Scanner, line_ends_may_be_mixed) {
  const Scanned scanned = scan_mailbox("From a\nx\r\n\nFrom b\r\ny\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 11, 3, true}, Extent{11, 21, 2, true}));
}

TEST(Scanner, a_lone_carriage_return_is_data) {
  const Scanned scanned = scan_mailbox("From a\rFrom b\nx\rFrom c\n\r\rFrom d\n");
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 32, 3, true}));
}

TEST(Scanner, zero_bytes_are_counted_and_compared_like_any_other) {
  const Scanned scanned = scan_mailbox("From \0a\n\0From b\nx\0y\nFrom c\n"s);
  EXPECT_THAT(scanned.extents, ElementsAre(Extent{0, 20, 3, true}, Extent{20, 27, 1, true}));
  EXPECT_THAT(scan_text("A\0B\nA\0C\nA\0BB\n"s, "A\0B"s).extents,
              ElementsAre(Extent{0, 8, 2, true}, Extent{8, 13, 1, true}));
}

TEST(Scanner, the_separator_is_compared_with_the_text_in_front_of_the_line_end) {
  EXPECT_THAT(scan_text("ab\r\nab\r\r\nab\rc\n", "ab\r").extents,
              ElementsAre(Extent{0, 4, 1, false}, Extent{4, 9, 1, true}, Extent{9, 14, 1, true}));
  EXPECT_THAT(scan_text("ab\nab\n\n", "ab\n").extents, ElementsAre(Extent{0, 7, 3, false}));
}

TEST(Scanner, the_separator_is_compared_alike_when_reads_end_inside_the_line) {
  const std::string lines = "ab\rc\nab\r\r\nab\r\nab\rcde\n";
  for (std::int64_t read_at_once = 1; read_at_once <= 12; ++read_at_once) {
    EXPECT_THAT(scan_text(lines, "ab\r", {.read_at_once = read_at_once}).extents,
                ElementsAre(Extent{0, 5, 1, true}, Extent{5, 14, 2, true}, Extent{14, 21, 1, true}))
        << read_at_once;
  }
}

TEST(Scanner, an_empty_separator_matches_every_line) {
  EXPECT_THAT(scan_text("a\n\nb", "").extents,
              ElementsAre(Extent{0, 2, 1, true}, Extent{2, 3, 1, true}, Extent{3, 4, 1, true}));
}

TEST(Scanner, a_part_starts_at_every_line_that_begins_with_the_delimiter) {
  const std::string body = "one\n--XyZ\n\ntwo\n --XyZ\n--xyz\n--XyZ-extra\n\n--XyZ--\nepilogue\n";
  EXPECT_THAT(scan_text(body, "--XyZ").extents, ElementsAre(Extent{0, 4, 1, false}, Extent{4, 28, 5, true},
                                                            Extent{28, 41, 2, true}, Extent{41, 58, 2, true}));
}

TEST(Scanner, a_scan_begins_at_its_position_and_ends_with_the_line_that_reaches_the_limit) {
  const StreamOnDisk stream("preamble\nFrom a\nbody\nFrom b\nmore\n");
  const auto file = stream.open();
  const Scanned at_a_line_end = scan_file(*file, 9, 21, "From ");
  EXPECT_THAT(at_a_line_end.extents, ElementsAre(Extent{9, 21, 2, true}));
  EXPECT_EQ(at_a_line_end.result.position, 21);
  EXPECT_TRUE(at_a_line_end.result.whole);

  const Scanned inside_a_line = scan_file(*file, 9, 17, "From ");
  EXPECT_THAT(inside_a_line.extents, ElementsAre(Extent{9, 21, 2, true}));
  EXPECT_EQ(inside_a_line.result.position, 21);

  const Scanned inside_a_separator = scan_file(*file, 9, 22, "From ");
  EXPECT_THAT(inside_a_separator.extents, ElementsAre(Extent{9, 21, 2, true}, Extent{21, 28, 1, true}));
  EXPECT_EQ(inside_a_separator.result.position, 28);
  EXPECT_TRUE(inside_a_separator.result.whole);
}

TEST(Scanner, a_scan_that_begins_at_or_behind_its_limit_finds_nothing_and_stays) {
  const StreamOnDisk stream("From a\nbody\n");
  const auto file = stream.open();
  for (const std::int64_t limit : {7, 3, 0, -1}) {
    const Scanned scanned = scan_file(*file, 7, limit, "From ");
    EXPECT_THAT(scanned.extents, IsEmpty());
    EXPECT_EQ(scanned.result.position, 7);
    EXPECT_TRUE(scanned.result.whole);
  }
}

TEST(Scanner, a_closed_file_reads_as_empty) {
  const StreamOnDisk stream("From a\nbody\n");
  const auto file = stream.open();
  file->close();
  const Scanned scanned = scan_file(*file, 0, 12, "From ");
  EXPECT_THAT(scanned.extents, IsEmpty());
  EXPECT_FALSE(scanned.result.whole);
}

TEST(Scanner, a_read_that_fails_ends_the_scan_and_the_stream_is_not_wholly_scanned) {
  const StreamOnDisk stream("From a\nbody\n");
  const auto file = stream.open();
  // No system reads in front of the first byte.
  const Scanned scanned = scan_file(*file, -5, 12, "From ");
  EXPECT_TRUE(file->failed());
  EXPECT_THAT(scanned.extents, IsEmpty());
  EXPECT_EQ(scanned.result.position, -5);
  EXPECT_FALSE(scanned.result.whole);
}

TEST(Scanner, a_read_buffer_that_cannot_be_had_is_error_8_and_the_messages_found_so_far_stay) {
  // The first chunk of 16 bytes ends inside the second separator line; the buffer for the next one cannot be had.
  const StreamOnDisk stream("From a\nabc\nFrom b\nbody\n");
  const auto file = stream.open();
  WatchedMemory memory(1);
  ScanOptions options = small_chunks();
  options.memory = &memory;
  ExtentTable table;
  try {
    scan(*file, 0, file->size(), "From ", table, options);
    FAIL() << "the scan succeeded";
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), Status::numbered);
    EXPECT_EQ(static_cast<int>(error.number()), 8);
    EXPECT_EQ(error.reporter(), Reporter::messages);
  }
  ASSERT_EQ(table.size(), 1u);
  EXPECT_EQ(table[0], (Extent{0, 11, 2, true}));
  EXPECT_EQ(memory.held(), 0u);
  EXPECT_TRUE(memory.all_came_back_wiped());
}

TEST(Scanner, without_any_read_buffer_nothing_is_found) {
  const StreamOnDisk stream("From a\nabc\n");
  const auto file = stream.open();
  WatchedMemory memory(0);
  ExtentTable table;
  EXPECT_THROW(scan(*file, 0, file->size(), "From ", table, {.memory = &memory}), Error);
  EXPECT_EQ(table.size(), 0u);
}

TEST(Scanner, the_read_buffer_is_wiped_and_its_size_depends_neither_on_the_file_nor_on_a_line) {
  WatchedMemory memory;
  const Scanned scanned = scan_mailbox("From a\n" + std::string(40'000'000, 'x') + "\n", {.memory = &memory});
  EXPECT_EQ(scanned.extents.size(), 1u);
  EXPECT_EQ(memory.sizes().size(), 5u);
  EXPECT_LT(memory.peak(), 400'000u);
  EXPECT_EQ(memory.held(), 0u);
  EXPECT_TRUE(memory.all_came_back_wiped());
}

TEST(Scanner, what_the_receiver_throws_ends_the_scan) {
  class FullSink final : public ExtentSink {
    void found(const Extent&) override { throw std::length_error("full"); }
  } sink;
  const StreamOnDisk stream("From a\nFrom b\n");
  WatchedMemory memory;
  EXPECT_THROW(scan(*stream.open(), 0, 14, "From ", sink, {.memory = &memory}), std::length_error);
  EXPECT_TRUE(memory.all_came_back_wiped());
}

}  // namespace
}  // namespace vellobar::mailbox
