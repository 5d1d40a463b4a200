#include "tests/support/files.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace vellobar::tests {

namespace fs = std::filesystem;

namespace {

/// Linux's folder in memory that every user may make files in. On Windows there is none of that name.
const fs::path kMemory = "/dev/shm";

void put(const std::string& path, std::string_view content, std::ios::openmode mode) {
  std::ofstream file(path, std::ios::binary | mode);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

fs::path corpus() {
  const char* named = std::getenv("VELLOBAR_CORPUS");
  return named != nullptr ? fs::path(named) : fs::path(source_file("..")) / "shared" / "corpus";
}

}  // namespace

std::string source_file(std::string_view name) { return (fs::path(VELLOBAR_SOURCE_FOLDER) / name).string(); }

TemporaryFolder::TemporaryFolder(Medium medium) {
  std::random_device random;
  const std::string name = "vellobar-test-" + std::to_string(random()) + std::to_string(random());
  std::error_code none;
  folder_ = (kMemory / name).string();
  if (medium == Medium::memory && fs::create_directory(folder_, none)) return;
  folder_ = (fs::temp_directory_path() / name).string();
  fs::create_directory(folder_);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

std::string TemporaryFolder::path(std::string_view name) const { return (fs::path(folder_) / name).string(); }

std::string TemporaryFolder::file(std::string_view name, std::string_view content) const {
  write_file(path(name), content);
  return path(name);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) throw std::runtime_error("cannot read " + path);
  std::string content(static_cast<std::size_t>(file.tellg()), '\0');
  file.seekg(0);
  file.read(content.data(), static_cast<std::streamsize>(content.size()));
  content.resize(static_cast<std::size_t>(file.gcount()));
  return content;
}

void write_file(const std::string& path, std::string_view content) { put(path, content, std::ios::trunc); }

void append_to_file(const std::string& path, std::string_view content) { put(path, content, std::ios::app); }

std::u16string wide(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::string plain(std::u16string_view text) {
  std::string bytes;
  for (const char16_t c : text) bytes += c < 0x80 ? static_cast<char>(c) : '?';
  return bytes;
}

std::vector<std::string> corpus_files(std::string_view folder) {
  std::vector<std::string> files;
  std::error_code absent;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(corpus() / folder, absent)) {
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string corpus_name(const std::string& path) {
  return fs::path(path).lexically_relative(corpus()).generic_string();
}

}  // namespace vellobar::tests
