#include "codecs/progress.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "codecs/decoder.h"
#include "codecs/encoder.h"
#include "codecs/kernels.h"  // the progress of a loop and the listener stand side by side
#include "tests/codecs/coded_files.h"

namespace vellobar::codecs {
namespace {

struct Report {
  std::int64_t done;
  std::int64_t total;
};

/// Runs a file method on a source with these bytes; what its listener heard.
template <typename Coder>
std::vector<Report> reports_of(void (Coder::*method)(std::u16string_view, std::u16string_view) const,
                               std::string_view bytes) {
  const ScratchPath source("source"), target("target");
  source.write(bytes);
  std::vector<Report> reports;
  const ProgressListener listener = [&](std::int64_t done, std::int64_t total) { reports.push_back({done, total}); };
  (Coder(listener).*method)(source.name(), target.name());
  return reports;
}

void expect_whole(const std::vector<Report>& reports, std::size_t size) {
  ASSERT_GT(reports.size(), 1U);
  std::int64_t before = 0;
  for (const Report& report : reports) {
    EXPECT_EQ(report.total, static_cast<std::int64_t>(size));
    EXPECT_LE(report.done, report.total);
    EXPECT_GE(report.done, before);
    before = report.done;
  }
  EXPECT_LT(reports.front().done, static_cast<std::int64_t>(size));
  EXPECT_EQ(reports.back().done, static_cast<std::int64_t>(size));
}

TEST(Progress, never_runs_back_nor_beyond_the_size_of_the_source_and_ends_at_it_when_files_are_encoded) {
  const std::string bytes = repeated("Cat", 100'000);
  for (const auto method : {&CEncoder::Base64, &CEncoder::Uuencode, &CEncoder::QuotedPrintable, &CEncoder::BinHex4}) {
    expect_whole(reports_of(method, bytes), bytes.size());
  }
}

TEST(Progress, never_runs_back_nor_beyond_the_size_of_the_source_and_ends_at_it_when_files_are_decoded) {
  const std::string base64 = repeated(repeated("TWFu", 19) + "\r\n", 5'000);
  const std::string uu = "begin 666 x\r\n" + repeated("M" + repeated("0V%T", 15) + "\r\n", 5'000) + "`\r\nend\r\n";
  const std::string quoted = repeated("plain =3D text=\r\n", 20'000);
  const std::string binhex = ":" + repeated(repeated("3f&d", 16) + "\r\n", 5'000) + ":";
  expect_whole(reports_of(&CDecoder::Base64, base64), base64.size());
  expect_whole(reports_of(&CDecoder::Uudecode, uu), uu.size());
  expect_whole(reports_of(&CDecoder::QuotedPrintable, quoted), quoted.size());
  expect_whole(reports_of(&CDecoder::BinHex4, binhex), binhex.size());
}

TEST(Progress, nobody_need_listen) {
  const ScratchPath source("source"), coded("coded"), target("target");
  source.write("Cat");
  CEncoder(ProgressListener()).Base64(source.name(), coded.name());
  EXPECT_EQ(coded.read(), "Q2F0\r\n");
  CDecoder(ProgressListener()).Base64(coded.name(), target.name());
  EXPECT_EQ(target.read(), "Cat");
}

}  // namespace
}  // namespace vellobar::codecs
