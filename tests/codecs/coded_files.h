// Files for the tests of the codecs: made with given bytes, deleted with their object, and sinks that keep what they
// get.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file.h"
#include "tests/support/files.h"

namespace vellobar::codecs {

/// A path in a folder that only this process uses; what stands there is deleted first and last.
class ScratchPath {
 public:
  explicit ScratchPath(std::string_view name) : path_(folder().path(name)) { std::remove(path_.c_str()); }
  ~ScratchPath() { std::remove(path_.c_str()); }
  ScratchPath(const ScratchPath&) = delete;
  ScratchPath& operator=(const ScratchPath&) = delete;

  const std::string& path() const { return path_; }
  std::u16string name() const { return {path_.begin(), path_.end()}; }

  void write(std::string_view bytes) const {
    std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::string read() const {
    std::ifstream file(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  bool exists() const { return std::ifstream(path_).good(); }

 private:
  static const tests::TemporaryFolder& folder() {
    static const tests::TemporaryFolder made;
    return made;
  }

  std::string path_;
};

class StringSink : public platform::ByteSink {
 public:
  void write(std::string_view bytes) override { text.append(bytes); }
  std::string text;
};

/// What a stream encoder makes of a file with these bytes.
template <typename Encode>
std::string encoded_file(Encode encode, std::string_view bytes) {
  const ScratchPath scratch("encoded");
  scratch.write(bytes);
  const auto file = platform::File::open(scratch.path());
  if (!file) return "no file";
  StringSink sink;
  encode(*file, sink);
  return std::move(sink.text);
}

/// What a stream decoder makes of a range of a file with these bytes; all of it unless told otherwise.
template <typename Decode>
std::string decoded_file(Decode decode, std::string_view bytes, std::int64_t start = 0, std::int64_t end = INT64_MAX) {
  const ScratchPath scratch("decoded");
  scratch.write(bytes);
  const auto file = platform::File::open(scratch.path());
  if (!file) return "no file";
  StringSink sink;
  decode(*file, start, end, sink);
  return std::move(sink.text);
}

inline std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

}  // namespace vellobar::codecs
