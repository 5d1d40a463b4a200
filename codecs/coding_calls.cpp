#include "codecs/coding_calls.h"

#include <system_error>

#include "errors/error.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::codecs {

namespace {

std::string path_of(std::u16string_view name) {
  const std::string path = platform::process_bytes(name);
  // A name with a NUL inside would open another file than it says.
  if (path.empty() || path.find('\0') != path.npos) throw Error(Status::fail);
  return path;
}

/// Passes everything on, and tells how far the source was read.
class WatchedSink final : public platform::ByteSink {
 public:
  WatchedSink(platform::File& from, platform::ByteSink& to, const ProgressListener& progress)
      : from_(from), to_(to), progress_(progress) {}

  void write(std::string_view bytes) override {
    to_.write(bytes);
    if (progress_) progress_(from_.read_up_to(), from_.size());
  }

 private:
  platform::File& from_;
  platform::ByteSink& to_;
  const ProgressListener& progress_;
};

}  // namespace

void code_file(std::u16string_view in_file, std::u16string_view out_file, const ProgressListener& progress,
               const std::function<void(platform::File&, platform::ByteSink&)>& work) {
  const auto from = platform::File::open(path_of(in_file));
  if (!from) throw Error(Status::fail);
  const std::string target = path_of(out_file);
  if (from->is_same_file(target)) throw Error(Status::fail);
  const auto to = platform::OutputFile::create(target);
  if (!to) throw Error(Status::fail);
  try {
    WatchedSink watched(*from, *to, progress);
    work(*from, watched);
    to->close();
  } catch (const std::system_error&) {
    throw Error(Status::fail);
  }
  if (from->failed()) throw Error(Status::fail);
}

std::string bytes_of_text(std::u16string_view text) {
  if (text.empty()) throw Error(Status::fail);
  return platform::process_bytes(text);
}

std::u16string text_of_bytes(std::string_view bytes) { return platform::process_text(bytes); }

std::u16string text_of_letters(std::string_view letters) { return platform::widen(platform::kThreadCodePage, letters); }

}  // namespace vellobar::codecs
