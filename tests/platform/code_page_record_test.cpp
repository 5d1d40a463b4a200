// Every build gives what the Windows build gave: code pages, UTF-8, UTF-7 and dates, compared line by line with
// `platform_record.inc`. What that file leaves out is listed, with the reasons, in `code_page_exceptions_test.cpp`.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "platform_record.h"

namespace vellobar::platform {
namespace {

constexpr const char* kRecord[] = {
#include "platform_record.inc"
};

/// The recorded lines that begin with one of the prefixes.
std::vector<std::string> recorded(const std::vector<std::string>& prefixes) {
  std::vector<std::string> lines;
  for (const char* text : kRecord) {
    const std::string line = text;
    const auto begins = [&](const std::string& prefix) { return line.starts_with(prefix); };
    if (std::any_of(prefixes.begin(), prefixes.end(), begins)) lines.push_back(line);
  }
  return lines;
}

void expect_same_lines(const std::vector<std::string>& actual, const std::vector<std::string>& expected) {
  ASSERT_FALSE(expected.empty());
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_EQ(actual[i], expected[i]);
}

/// The pages that the recording system had; `code_page_exceptions_test.cpp` tests the others.
std::vector<int> pages_with_a_record() {
  std::vector<int> pages = recorded_pages();
  std::erase_if(pages, [](int page) { return recorded({std::to_string(page) + " is not there"}).size() == 1; });
  return pages;
}

class CodePageRecord : public testing::TestWithParam<int> {};

TEST_P(CodePageRecord, every_byte_every_pair_and_every_unit_converts_as_on_windows) {
  expect_same_lines(record_of_page(GetParam()), recorded({std::to_string(GetParam()) + " "}));
}

INSTANTIATE_TEST_SUITE_P(AllPages, CodePageRecord, testing::ValuesIn(pages_with_a_record()),
                         [](const auto& page) { return "page_" + std::to_string(page.param); });

TEST(UnicodeRecord, utf_8_and_utf_7_well_formed_and_malformed_convert_as_on_windows) {
  expect_same_lines(record_of_unicode_transformations(), recorded({"utf-8 ", "utf-7 "}));
}

TEST(DateRecord, dates_and_ticks_convert_to_the_last_bit_as_on_windows) {
  expect_same_lines(record_of_dates(), recorded({"to-ticks ", "to-date ", "from-date ", "from-ticks "}));
}

#ifndef _WIN32
TEST(CodePageTables, away_from_windows_nothing_has_a_best_fit) {
  for (int page : recorded_pages()) {
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      const std::u16string text(1, static_cast<char16_t>(unit));
      const std::string bytes = narrow(page, text);
      ASSERT_TRUE(bytes == "?" || widen(page, bytes) == text) << page << " " << unit;
    }
  }
}
#endif

}  // namespace
}  // namespace vellobar::platform
