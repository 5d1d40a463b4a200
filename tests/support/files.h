// Files for tests: a folder that is removed with everything in it, and whole files as strings.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vellobar::tests {

/// Where a folder is: in memory many small changes take a tenth of the time. Where the system has no such place it is
/// on the disk as well.
enum class Medium { disk, memory };

/// A new folder, removed with its content at the end. Paths are ASCII.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(Medium medium = Medium::disk);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// Path of a file in the folder.
  std::string path(std::string_view name) const;
  /// Writes a file into the folder and returns its path.
  std::string file(std::string_view name, std::string_view content) const;
  /// Names of what is in the folder, sorted.
  std::vector<std::string> names() const;

 private:
  std::string folder_;
};

std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view content);
void append_to_file(const std::string& path, std::string_view content);

/// ASCII text as a client gives it.
std::u16string wide(std::string_view ascii);
/// Client text of ASCII characters as bytes; anything else shows as "?".
std::string plain(std::u16string_view text);

/// Path of a file of the project, such as a program in another language that a test runs.
std::string source_file(std::string_view name);

/// All files of the real mail below a folder of it ("mbox", "joined"), sorted; empty where it is absent.
std::vector<std::string> corpus_files(std::string_view folder);
/// What a file of the real mail is called below the folder that holds it all, with slashes on every system.
std::string corpus_name(const std::string& path);

}  // namespace vellobar::tests
