#include "command/mail/appending.h"

#include <gtest/gtest.h>

namespace vellobar::command {
namespace {

struct StringSink final : platform::ByteSink {
  void write(std::string_view more) override { bytes += more; }
  std::string bytes;
};

std::string quoted(std::string_view text, std::size_t piece) {
  StringSink sink;
  QuotingSink quoting(sink);
  for (std::size_t at = 0; at < text.size(); at += piece) quoting.write(text.substr(at, piece));
  quoting.end();
  return sink.bytes;
}

TEST(Appending, lines_that_begin_with_a_separator_are_quoted_however_the_text_comes) {
  for (const std::size_t piece : {1u, 2u, 3u, 5u, 7u, 100u}) {
    EXPECT_EQ(quoted("From a\nx From b\nFrom c\n\nFromd\nFrom ", piece), ">From a\nx From b\n>From c\n\nFromd\n>From ")
        << piece;
    EXPECT_EQ(quoted("Fro\nF\n\nFr", piece), "Fro\nF\n\nFr") << piece;
    EXPECT_EQ(quoted("a\r\nFrom x\r\n>From y", piece), "a\r\n>From x\r\n>From y") << piece;
    EXPECT_EQ(quoted("FFrom x\nFrFrom y\n", piece), "FFrom x\nFrFrom y\n") << piece;
  }
}

TEST(Appending, a_separator_line_has_the_sender_and_the_date_in_utc) {
  const platform::BrokenDownTime time{
      .year = 2026, .month = 1, .day_of_week = 1, .day = 5, .hour = 10, .minute = 3, .second = 9};
  EXPECT_EQ(separator_line("ann@example.org", time), "From ann@example.org Mon Jan  5 10:03:09 2026");
  EXPECT_EQ(separator_line("", time), "From MAILER-DAEMON Mon Jan  5 10:03:09 2026");
  EXPECT_EQ(separator_line("a b", time), "From MAILER-DAEMON Mon Jan  5 10:03:09 2026");
}

}  // namespace
}  // namespace vellobar::command
