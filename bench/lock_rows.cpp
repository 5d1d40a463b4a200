#include "lock_rows.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "mailbox/messages.h"
#include "mailbox/scanner.h"
#include "mailbox/vellobar.h"
#include "platform/file.h"

namespace vellobar::bench {

namespace {

constexpr std::size_t kFirstChunk = 16384;
constexpr std::size_t kChunkDoublesBelow = 12'800'000;
constexpr std::size_t kSmallBlock = 256 * 1024;

std::shared_ptr<platform::File> open(const std::string& mailbox) {
  auto file = platform::File::open(mailbox);
  if (!file) throw std::runtime_error("cannot open " + mailbox);
  return file;
}

using Buffer = std::unique_ptr<char, decltype(&std::free)>;

/// Aligned: the system copies to an aligned address several times as fast, and the row to beat should be a good one.
Buffer make_buffer(std::size_t size) { return {static_cast<char*>(std::aligned_alloc(64, size)), std::free}; }

/// Reads the file in chunks of `first` bytes that double while below `doubles_below`, and does nothing with them.
std::int64_t read_only(const std::string& mailbox, std::size_t first, std::size_t doubles_below) {
  const auto file = open(mailbox);
  std::size_t chunk = first;
  Buffer buffer = make_buffer(chunk);
  std::int64_t position = 0;
  while (const std::size_t got = file->read(position, buffer.get(), chunk)) {
    position += static_cast<std::int64_t>(got);
    if (chunk >= doubles_below) continue;
    chunk *= 2;
    buffer.reset();
    buffer = make_buffer(chunk);
  }
  if (position != file->size()) throw std::runtime_error("cannot read " + mailbox);
  return -1;
}

std::int64_t scan_at(const std::string& mailbox, mailbox::SearchLevel level) {
  const auto file = open(mailbox);
  mailbox::ExtentTable table;
  const auto result = mailbox::scan(*file, 0, file->size(), "From ", table, {.search = level});
  if (!result.whole) throw std::runtime_error("cannot scan " + mailbox);
  return static_cast<std::int64_t>(table.size());
}

std::int64_t lock(const std::string& mailbox) {
  CVellobar control;
  control.SetFilename(std::filesystem::path(mailbox).u16string());
  control.Lock();
  return control.Messages()->Count();
}

std::vector<Row> make_rows() {
  std::vector<Row> made = {
      {"read", "plain read, chunks 16 KB to 16 MB",
       [](const std::string& path) { return read_only(path, kFirstChunk, kChunkDoublesBelow); }},
      {"read-256k", "plain read, blocks of 256 KB",
       [](const std::string& path) { return read_only(path, kSmallBlock, kSmallBlock); }},
      {"lock", "Lock", lock},
      {"scan", "scan, best masks", [](const std::string& path) { return scan_at(path, mailbox::best_search_level()); }},
      {"scan-sse2", "scan, SSE2 masks",
       [](const std::string& path) {
         return scan_at(path, std::min(mailbox::SearchLevel::sse2, mailbox::best_search_level()));
       }},
      {"scan-scalar", "scan, no masks",
       [](const std::string& path) { return scan_at(path, mailbox::SearchLevel::scalar); }},
  };
#ifdef VELLOBAR_BENCH_GMIME
  made.push_back({"gmime", "GMime", index_with_gmime});
#endif
  return made;
}

double processor_seconds() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

/// The most memory this process ever held. Unlike the figures of a finished process it leaves out what the process that
/// started it held.
double peak_megabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) * 1024 / 1e6;
  }
  return 0;
}

}  // namespace

const std::vector<Row>& rows() {
  static const std::vector<Row> all = make_rows();
  return all;
}

Measured measure_here(const Row& row, const std::string& mailbox) {
  const double before = processor_seconds();
  const std::int64_t messages = row.run(mailbox);
  return {processor_seconds() - before, peak_megabytes(), messages};
}

}  // namespace vellobar::bench
