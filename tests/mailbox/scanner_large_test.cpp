#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "mailbox/scanner.h"
#include "scanner_fixture.h"

#ifdef _WIN32
#include <windows.h>
#include <winioctl.h>
#else
#include <sys/stat.h>
#endif

namespace vellobar::mailbox {
namespace {

using scanner_tests::scan_file;
using scanner_tests::scan_mailbox;
using scanner_tests::Scanned;
using scanner_tests::StreamOnDisk;
using ::testing::ElementsAre;

/// Makes the file long without its content taking room on the disk. False where the file system cannot do that.
bool make_sparse(const std::filesystem::path& path, std::int64_t size) {
#ifdef _WIN32
  const HANDLE handle = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  DWORD returned = 0;
  const bool sparse = ::DeviceIoControl(handle, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr) != 0;
  ::CloseHandle(handle);
  if (!sparse) return false;
#endif
  std::error_code failed;
  std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size), failed);
  if (failed) return false;
#ifndef _WIN32
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || info.st_blocks > 2048) return false;
#endif
  return true;
}

void write_at(std::fstream& stream, std::int64_t position, std::string_view bytes) {
  stream.seekp(position);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(ScannerLarge, a_mailbox_of_5_gigabytes_is_scanned_whole_with_64_bit_positions) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "VELLOBAR: the 5 GB mailbox is scanned by the builds without sanitizers only";
#endif
  const StreamOnDisk stream;
  if (!make_sparse(stream.path(), 5'000'000'000)) {
    GTEST_SKIP() << "VELLOBAR: the temporary folder's file system keeps no sparse files";
  }
  // 2000 lines of 16,000 bytes, then 621 lines of 8,000,000: none is longer than the chunk it lies in.
  {
    std::fstream content(stream.path(), std::ios::binary | std::ios::in | std::ios::out);
    for (std::int64_t line = 1; line <= 2000; ++line) write_at(content, line * 16'000 - 1, "\n");
    for (std::int64_t line = 1; line <= 621; ++line) write_at(content, 32'000'000 + line * 8'000'000 - 1, "\n");
    for (const std::int64_t start : {0LL, 2'152'000'000LL, 4'296'000'000LL, 4'992'000'000LL}) {
      write_at(content, start, "From a\r");
    }
    ASSERT_TRUE(content.good());
  }
  const auto file = stream.open();
  ASSERT_EQ(file->size(), 5'000'000'000);
  const Scanned scanned = scan_file(*file, 0, file->size(), "From ");
  EXPECT_THAT(
      scanned.extents,
      ElementsAre(Extent{0, 2'152'000'000, 2265, true}, Extent{2'152'000'000, 4'296'000'000, 268, true},
                  Extent{4'296'000'000, 4'992'000'000, 87, true}, Extent{4'992'000'000, 5'000'000'000, 1, true}));
  EXPECT_EQ(scanned.result.position, 5'000'000'000);
  EXPECT_TRUE(scanned.result.whole);
}

TEST(ScannerLarge, a_million_messages_are_found_each_with_its_place) {
  std::string content;
  content.reserve(10'000'000);
  for (int message = 0; message < 1'000'000; ++message) content += "From a\nx\n\n";
  const Scanned scanned = scan_mailbox(content);
  ASSERT_EQ(scanned.extents.size(), 1'000'000u);
  std::int64_t start = 0;
  for (const Extent& extent : scanned.extents) {
    ASSERT_EQ(extent, (Extent{start, start + 10, 3, true}));
    start += 10;
  }
  EXPECT_EQ(scanned.result.position, 10'000'000);
}

}  // namespace
}  // namespace vellobar::mailbox
