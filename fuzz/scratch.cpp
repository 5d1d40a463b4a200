#include "fuzz/scratch.h"

#include <cstddef>
#include <filesystem>
#include <stdexcept>

#include "fuzz/choices.h"

namespace vellobar::fuzz {

namespace fs = std::filesystem;

const tests::TemporaryFolder& scratch_folder() {
  static const tests::TemporaryFolder folder;
  return folder;
}

std::string in_scratch(std::string_view name) { return scratch_folder().path(name); }

void make_empty_scratch_folder(std::string_view name) {
  const std::string folder = in_scratch(name);
  fs::create_directories(folder);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) fs::remove_all(entry.path());
}

std::shared_ptr<platform::File> file_of(std::string_view bytes) {
  const std::string path = scratch_folder().file("input", bytes);
  auto file = platform::File::open(path);
  if (!file) throw std::runtime_error("cannot open " + path);
  return file;
}

std::string maybe_stretched(Choices& choices) {
  constexpr std::size_t kRuns[] = {0, 0, 0, 0, 0, 4000, 16300, 33000};
  const std::size_t run = choices.among(kRuns);
  if (run == 0) return std::string(choices.text());
  const std::size_t more = choices.below(256);
  const std::size_t place = choices.below(256) * 16 + choices.below(16);
  std::string text(choices.text());
  return text.insert(place < text.size() ? place : text.size(), run + more, 'x');
}

}  // namespace vellobar::fuzz
