// The rules by which `check` judges lines.
#include <gtest/gtest.h>

#include "command/mail/long_lines.h"
#include "command/mail/open_multiparts.h"
#include "command/mail/separator_form.h"
#include "mailbox/scanner.h"
#include "platform/file.h"
#include "tests/support/files.h"

namespace vellobar::command {
namespace {

TEST(SeparatorForm, a_separator_line_has_a_sender_and_a_time_of_day) {
  EXPECT_TRUE(looks_like_separator_line("From ann@example.org Mon Jan  5 10:00:00 2026"));
  EXPECT_TRUE(looks_like_separator_line("From - Mon Jan 05 1:00:00 2026"));
  EXPECT_TRUE(looks_like_separator_line("From <unknown> Mon, 5 Jan 2026 10:00:00 +0000"));
  EXPECT_TRUE(looks_like_separator_line("From ann Mon Jan  5 10:00 2026"));
}

TEST(SeparatorForm, text_is_none) {
  EXPECT_FALSE(looks_like_separator_line("From now on we meet on Thursdays."));
  EXPECT_FALSE(looks_like_separator_line("From ann@example.org"));
  EXPECT_FALSE(looks_like_separator_line("From 10:00 to"));
  EXPECT_FALSE(looks_like_separator_line("from ann 10:00"));
  EXPECT_FALSE(looks_like_separator_line(""));
}

TEST(SeparatorForm, a_header_line_has_a_name_and_a_colon) {
  EXPECT_TRUE(looks_like_header_line("X-Tag: a"));
  EXPECT_TRUE(looks_like_header_line("a:"));
  EXPECT_FALSE(looks_like_header_line(": a"));
  EXPECT_FALSE(looks_like_header_line("two words: a"));
  EXPECT_FALSE(looks_like_header_line("words"));
}

/// The delimiters that were not closed, in the order in which that was found; "!" behind one without parts.
std::vector<std::string> not_closed(const std::vector<std::string>& opened_and_lines) {
  std::vector<std::string> missing;
  OpenMultiparts multiparts(
      [&](const std::string& delimiter, bool has_parts) { missing.push_back(delimiter + (has_parts ? "" : "!")); });
  for (const std::string& line : opened_and_lines) {
    if (line.starts_with("open ")) {
      multiparts.open(line.substr(5));
    } else {
      multiparts.take(line);
    }
  }
  multiparts.end();
  return missing;
}

using Missing = std::vector<std::string>;

TEST(OpenMultiparts, one_with_its_closing_line_is_closed) {
  EXPECT_EQ(not_closed({"open --a", "text", "--a", "x", "--a--", "--a", "behind"}), Missing{});
}

TEST(OpenMultiparts, one_without_it_is_not) { EXPECT_EQ(not_closed({"open --a", "--a", "x"}), (Missing{"--a"})); }

TEST(OpenMultiparts, a_boundary_that_no_line_shows_has_no_parts) {
  EXPECT_EQ(not_closed({"open --a", "-a", "x --a"}), (Missing{"--a!"}));
}

TEST(OpenMultiparts, a_line_of_an_outer_one_ends_the_inner_ones) {
  EXPECT_EQ(not_closed({"open --a", "--a", "open --b", "--b", "x", "--a--"}), (Missing{"--b"}));
  EXPECT_EQ(not_closed({"open --a", "--a", "open --b", "--b", "--b--", "--a", "--a--"}), Missing{});
}

class LongLines : public testing::Test {
 protected:
  struct NoSink final : mailbox::ExtentSink {
    void found(const mailbox::Extent&) override {}
  };

  /// Where lines are counted twice, having made sure that the scan agrees on whether there is one.
  std::vector<std::int64_t> counted_twice(const std::string& content) {
    const auto file = platform::File::open(folder_.file("box", content));
    NoSink sink;
    // No limit: positions that run ahead would reach it early.
    const bool ran_ahead = mailbox::scan(*file, 0, 1 << 30, "From ", sink).ran_ahead;
    const std::vector<std::int64_t> positions = lines_counted_twice(*file);
    EXPECT_EQ(!positions.empty(), ran_ahead);
    return positions;
  }

  static std::string line(std::size_t size) { return std::string(size - 1, 'x') + "\n"; }

  tests::TemporaryFolder folder_;
};

using Positions = std::vector<std::int64_t>;

TEST_F(LongLines, a_line_that_holds_the_first_read_is_counted_twice) {
  EXPECT_EQ(counted_twice(line(16384) + "a\n"), Positions{});
  EXPECT_EQ(counted_twice(line(16385) + "a\n"), (Positions{0}));
}

TEST_F(LongLines, later_reads_are_longer) {
  // Reads: 0 to 16,384, to 49,152, to 114,688.
  EXPECT_EQ(counted_twice(line(16384) + line(32768) + "a\n"), Positions{});
  EXPECT_EQ(counted_twice(line(16384) + line(32769) + "a\n"), (Positions{16384}));
  EXPECT_EQ(counted_twice("a\n" + line(60000) + "a\n"), (Positions{2}));
  EXPECT_EQ(counted_twice("a\n" + line(40000) + "a\n"), Positions{});
}

TEST_F(LongLines, each_of_several_is_found) {
  EXPECT_EQ(counted_twice(line(20000) + line(200000) + "a\n"), (Positions{0, 20000}));
}

}  // namespace
}  // namespace vellobar::command
