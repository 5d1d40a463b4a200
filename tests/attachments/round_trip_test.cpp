// What was added as BinHex or 7bit comes back: the two encodings whose parts no header makes an attachment again.
#include <gtest/gtest.h>

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "codecs/decoder.h"
#include "platform/code_page.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::Mailbox;
using tests::wide;

std::string bytes_of_size(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i * 7 + i / 256 + 3);
  return bytes;
}

std::vector<std::size_t> interesting_sizes() {
  std::vector<std::size_t> sizes;
  for (std::size_t size = 0; size <= 200; ++size) sizes.push_back(size);
  for (const std::size_t edge : {260, 512, 1000, 1024, 2048, 16384, 32768, 49152, 65536, 262144}) {
    for (std::size_t size = edge - 2; size <= edge + 2; ++size) sizes.push_back(size);
  }
  return sizes;
}

/// The texts of the parts that files of the interesting sizes make, from a mailbox that was written and read again.
/// Each part is kept alive by the mailbox.
class WrittenParts {
 public:
  explicit WrittenParts(int encoding) : box_("From a\nSubject: x\n\nbody\n") {
    std::filesystem::create_directory(files_.path("dir"));
    box_.control().Lock();
    for (const std::size_t size : interesting_sizes()) {
      box_.message(0)->Attachments()->Add(wide(files_.file("dir\\in.bin", bytes_of_size(size))), encoding);
    }
    box_.control().Update();
  }

  std::int64_t count() { return box_.message(0)->Parts()->Count(); }
  /// The part's body, as bytes.
  std::string body(std::int64_t index) { return platform::narrow(1252, box_.message(0)->Parts()->Item(index)->Text()); }
  const tests::TemporaryFolder& files() const { return files_; }

 private:
  tests::TemporaryFolder files_;
  Mailbox box_;
};

TEST(RoundTrip, a_7bit_part_gives_back_every_file_with_the_line_end_that_ends_it) {
  WrittenParts parts(5);
  const std::vector<std::size_t> sizes = interesting_sizes();
  ASSERT_EQ(parts.count(), static_cast<std::int64_t>(sizes.size()));
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    std::string expected = bytes_of_size(sizes[i]);
    if (!expected.empty() && !expected.ends_with('\n')) expected += "\r\n";
    EXPECT_TRUE(parts.body(static_cast<std::int64_t>(i)) == expected) << sizes[i];
  }
}

TEST(RoundTrip, the_data_of_a_binhex_part_give_back_every_file) {
  WrittenParts parts(2);
  constexpr std::string_view kInFront =
      "(This file must be converted with BinHex 4.0)\r\n:Content-Disposition: attachment; filename=\"in.bin\"\r\n";
  const std::vector<std::size_t> sizes = interesting_sizes();
  ASSERT_EQ(parts.count(), static_cast<std::int64_t>(sizes.size()));
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const std::string body = parts.body(static_cast<std::int64_t>(i));
    ASSERT_TRUE(body.starts_with(kInFront)) << sizes[i];
    const std::string coded = parts.files().file("coded", ":" + body.substr(kInFront.size()));
    const std::string decoded = parts.files().path("decoded");
    codecs::CDecoder().BinHex4(wide(coded), wide(decoded));
    EXPECT_TRUE(tests::read_file(decoded) == bytes_of_size(sizes[i])) << sizes[i];
  }
}

}  // namespace
}  // namespace vellobar
