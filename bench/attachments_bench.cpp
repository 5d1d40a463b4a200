// What saving a large attachment costs beside copying a file of its coded size with cp. Makes a mailbox with one Base64
// attachment of 100 MB in the temporary folder, warms it, runs both rows in turn, prints the medians of processor time
// and says whether the target is met. The processor time of cp is that of the whole program.
//
//   attachments_bench [ROUNDS]
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "codecs/base64.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRawSize = 100'000'000;
constexpr double kTarget = 3.0;

std::string random_bytes(std::size_t size) {
  std::mt19937_64 random(20240101);
  std::string bytes;
  bytes.reserve(size + 8);
  while (bytes.size() < size) {
    const std::uint64_t word = random();
    bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
  }
  bytes.resize(size);
  return bytes;
}

/// The coded lines of some bytes, 76 letters and CR LF each.
std::string coded_lines(const std::string& raw) {
  constexpr std::size_t kLine = 57;
  std::string coded;
  coded.reserve(raw.size() / kLine * 78 + 80);
  for (std::size_t at = 0; at < raw.size(); at += kLine) {
    coded += vellobar::codecs::encode_base64(std::string_view(raw).substr(at, kLine)) + "\r\n";
  }
  return coded;
}

void write_file(const fs::path& path, std::string_view content) {
  std::ofstream file(path, std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

double processor_seconds(int who) {
  rusage used{};
  getrusage(who, &used);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// Processor seconds of some work, in this process or in the ones it starts.
template <typename Work>
double measured(int who, Work work) {
  const double before = processor_seconds(who);
  work();
  return processor_seconds(who) - before;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::u16string wide(const fs::path& path) {
  const std::string text = path.string();
  return {text.begin(), text.end()};
}

void run(int rounds) {
  const fs::path folder = fs::temp_directory_path() / "vellobar-attachments-bench";
  fs::create_directories(folder);
  const std::string raw = random_bytes(kRawSize);
  const std::string coded = coded_lines(raw);
  write_file(folder / "coded", coded);
  write_file(
      folder / "box",
      "From a\nContent-Type: application/octet-stream; name=\"big\"\nContent-Transfer-Encoding: base64\n\n" + coded);
  vellobar::CVellobar control;
  control.SetFilename(wide(folder / "box"));
  control.Lock();
  const auto attachment = control.Messages()->Item(0)->Attachments()->Item(0);
  const std::string copy = "cp '" + (folder / "coded").string() + "' '" + (folder / "copy").string() + "'";
  std::vector<double> copies, saves;
  for (int round = -1; round < rounds; ++round) {
    fs::remove(folder / "copy");
    fs::remove(folder / "saved");
    const double copied = measured(RUSAGE_CHILDREN, [&] {
      if (std::system(copy.c_str()) != 0) throw std::runtime_error("cp failed");
    });
    const double saved = measured(RUSAGE_SELF, [&] { attachment->Save(wide(folder / "saved")); });
    if (round < 0) continue;  // the first one warms
    copies.push_back(copied);
    saves.push_back(saved);
  }
  std::ifstream file(folder / "saved", std::ios::binary);
  const std::string result{std::istreambuf_iterator<char>(file), {}};
  if (result != raw) throw std::runtime_error("what was saved differs from what was attached");
  const double ratio = median(saves) / median(copies);
  std::printf("cp of %.0f MB coded     %.3f s\nSave to %.0f MB decoded  %.3f s\n%.2f x cp, target at most %.1f: %s\n",
              static_cast<double>(coded.size()) / 1e6, median(copies), static_cast<double>(raw.size()) / 1e6,
              median(saves), ratio, kTarget, ratio <= kTarget ? "met" : "NOT MET");
  fs::remove_all(folder);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    run(count > 1 ? std::max(1, std::atoi(arguments[1])) : 7);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "attachments_bench: %s\n", error.what());
    return 1;
  }
}
