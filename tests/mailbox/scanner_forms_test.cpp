#include <gmock/gmock.h>

#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "mailbox/scanner.h"
#include "mailbox/scanner_search.h"
#include "scanner_fixture.h"

namespace vellobar::mailbox {
namespace {

using scanner_tests::available_levels;
using scanner_tests::LiteralScan;
using scanner_tests::scan_file;
using scanner_tests::Scanned;
using scanner_tests::StreamOnDisk;

/// Compares every form of the scan with the literal one.
void expect_every_form_agrees(platform::File& file, std::string_view content, std::int64_t from, std::int64_t limit,
                              std::string_view separator, ScanOptions options) {
  const Scanned expected = LiteralScan(content, from, options).run(limit, separator);
  for (const SearchLevel level : available_levels()) {
    options.search = level;
    const Scanned scanned = scan_file(file, from, limit, separator, options);
    ASSERT_EQ(scanned.extents, expected.extents) << "level " << static_cast<int>(level);
    ASSERT_EQ(scanned.result.position, expected.result.position);
    ASSERT_EQ(scanned.result.whole, expected.result.whole);
  }
}

class RandomMail {
 public:
  explicit RandomMail(unsigned seed) : random_(seed) {}

  int below(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  std::string text(int size) {
    std::string all;
    while (static_cast<int>(all.size()) < size) all += line();
    return all.substr(0, static_cast<std::size_t>(size));
  }

 private:
  std::string line() {
    static constexpr std::string_view kStarts[] = {"From ", "From", ">From ", "--XyZ", "--XyZ--",
                                                   "-",     "F",    "\r",     "",      ""};
    static constexpr std::string_view kEnds[] = {"\n", "\n", "\r\n", "\r\r\n", "\n\n\n", "\r"};
    std::string line(kStarts[below(std::size(kStarts))]);
    const int longest = below(8) == 0 ? 300 : 20;
    for (int left = below(longest); left > 0; --left) line += "From -XyZ\r\0\xFF"[below(12)];
    return line + std::string(kEnds[below(std::size(kEnds))]);
  }

  std::mt19937 random_;
};

TEST(ScannerForms, every_form_gives_the_same_messages_for_random_mail_chunks_and_limits) {
  static const std::string kSeparators[] = {"From ", "--XyZ", "", "F", "\r", "From\r", std::string("\0", 1), "X\nZ"};
  RandomMail mail(20261121);
  for (int round = 0; round < 400; ++round) {
    const std::string content = mail.text(mail.below(4000));
    const int size = static_cast<int>(content.size());
    const StreamOnDisk stream(content);
    const auto file = stream.open();
    const int from = mail.below(4) == 0 ? mail.below(size + 1) : 0;
    const int limit = mail.below(3) == 0 ? mail.below(size + 200) : size;
    const ScanOptions options{.first_chunk = 1 + mail.below(200),
                              .chunk_doubles_below = mail.below(1000),
                              .read_at_once = 1 + mail.below(300)};
    SCOPED_TRACE("round " + std::to_string(round));
    const auto& separator = kSeparators[mail.below(3) == 0 ? mail.below(std::size(kSeparators)) : mail.below(2)];
    ASSERT_NO_FATAL_FAILURE(expect_every_form_agrees(*file, content, from, limit, separator, options));
  }
}

TEST(ScannerForms, lines_that_end_around_every_chunk_edge_are_counted_alike) {
  // With a first chunk of 64 bytes the edges lie at 64, 192, 448, 960 and, chunks of 512 bytes being kept, every 512.
  for (const std::size_t edge : {64u, 192u, 448u, 960u, 1472u}) {
    for (int shift = -8; shift <= 8; ++shift) {
      for (const std::string_view line_end : {"\n", "\r\n"}) {
        std::string content;
        while (content.size() + 20 < edge) content += "filler\n";
        content.resize(static_cast<std::size_t>(static_cast<int>(edge) + shift) - line_end.size(), 'x');
        content += std::string(line_end) + "From edge\nbody\n";
        content += std::string(700, 'y') + "\nFrom last\nz";
        const StreamOnDisk stream(content);
        const ScanOptions options{.first_chunk = 64, .chunk_doubles_below = 300, .read_at_once = 100};
        SCOPED_TRACE(std::to_string(edge) + " " + std::to_string(shift));
        ASSERT_NO_FATAL_FAILURE(expect_every_form_agrees(*stream.open(), content, 0,
                                                         static_cast<std::int64_t>(content.size()), "From ", options));
      }
    }
  }
}

TEST(ScannerForms, lines_around_the_real_chunk_edges_are_counted_alike) {
  // Real chunks end at 16384 times 1, 3, 7 and so on up to 1023, and then every 16777216 bytes.
  std::vector<std::size_t> edges;
  for (std::size_t chunks = 1; chunks <= 1023; chunks = chunks * 2 + 1) edges.push_back(chunks * 16384);
  edges.push_back(edges.back() + 16777216);
  for (const std::size_t shift : {0u, 1u, 2u, 5u, 6u}) {
    std::string content(edges.back() + 100000, 'x');
    for (std::size_t at = 70; at < content.size(); at += 71) content[at] = '\n';
    for (const std::size_t edge : edges) content.replace(edge - shift, 9, "\nFrom a\r\n");
    const StreamOnDisk stream(content);
    const auto file = stream.open();
    ASSERT_NO_FATAL_FAILURE(expect_every_form_agrees(*file, content, 0, file->size(), "From ", {}));
    EXPECT_EQ(scan_file(*file, 0, file->size(), "From ").extents.size(), edges.size() + 1);
  }
}

TEST(ScannerForms, lines_longer_than_real_chunks_are_counted_alike) {
  for (const int length : {16384, 49152, 49153, 120000, 1'000'000, 20'000'000}) {
    const std::string content = "From a\nx\n" + std::string(static_cast<std::size_t>(length), 'l') + "\nFrom b\n" +
                                std::string(static_cast<std::size_t>(length), 'm') + "\r\nFrom c\n--\n";
    const StreamOnDisk stream(content);
    const auto file = stream.open();
    for (const std::int64_t limit : {file->size(), file->size() * 4}) {
      SCOPED_TRACE(length);
      ASSERT_NO_FATAL_FAILURE(expect_every_form_agrees(*file, content, 0, limit, "From ", {}));
    }
  }
}

/// The whole of exactly the bytes given, so that a sanitizer sees a read in front of them or behind.
FoundLine search_from_anywhere(SearchLevel level, const std::vector<char>& lines, LinePrefix prefix) {
  return line_search(level)(lines.data(), lines.data() + lines.size(), prefix);
}

std::vector<char> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

TEST(ScannerForms, the_search_finds_the_next_line_with_the_prefix_at_every_place_of_a_block) {
  for (const SearchLevel level : available_levels()) {
    for (int before = 0; before <= 200; ++before) {
      const auto lines = bytes_of("From not compared" + std::string(static_cast<std::size_t>(before), 'F') +
                                  "\n\nFrom\n From \nFrom found\nFrom later\n");
      const FoundLine found = search_from_anywhere(level, lines, {"From ", 5});
      EXPECT_EQ(found.line - lines.data(), before + 31) << before;
      EXPECT_EQ(found.lines_before, 4) << before;
    }
  }
}

TEST(ScannerForms, the_search_gives_the_end_and_all_lines_when_no_line_begins_with_the_prefix) {
  for (const SearchLevel level : available_levels()) {
    for (int count = 1; count <= 200; ++count) {
      const auto lines = bytes_of(std::string(static_cast<std::size_t>(count), '\n'));
      const FoundLine found = search_from_anywhere(level, lines, {"From ", 5});
      EXPECT_EQ(found.line - lines.data(), count);
      EXPECT_EQ(found.lines_before, count);
    }
    const auto too_short = bytes_of("x\nFrom\n");
    EXPECT_EQ(search_from_anywhere(level, too_short, {"From ", 5}).lines_before, 2);
  }
}

TEST(ScannerForms, a_prefix_may_begin_with_a_zero_byte_that_also_pads_the_last_block) {
  for (const SearchLevel level : available_levels()) {
    const auto lines = bytes_of(std::string_view("a\n\0b\n\0\n", 7));
    EXPECT_EQ(search_from_anywhere(level, lines, {"\0\0", 1}).line - lines.data(), 2);
    EXPECT_EQ(search_from_anywhere(level, lines, {"\0c", 2}).line - lines.data(), 7);
    EXPECT_EQ(search_from_anywhere(level, lines, {"\0c", 2}).lines_before, 3);
  }
}

}  // namespace
}  // namespace vellobar::mailbox
