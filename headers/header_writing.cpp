// The header block as text: for a client, and as the bytes that are written to a file.
#include <algorithm>
#include <string>
#include <string_view>

#include "headers/header.h"
#include "headers/headers.h"
#include "headers/made_headers.h"
#include "headers/written_line.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

/// How much is written at once.
constexpr std::size_t kBlock = std::size_t{1} << 16;

std::u16string widen(std::string_view bytes) { return platform::widen(platform::kThreadCodePage, bytes); }

/// Headers as they are written to a file, one behind the other.
class WrittenHeaders {
 public:
  explicit WrittenHeaders(std::size_t most_bytes) { bytes_.reserve(most_bytes); }

  void take(std::string_view piece) {
    // A long value does not grow by its line end to twice its size.
    const std::size_t needed = bytes_.size() + piece.size() + platform::kLineEnd.size();
    if (needed > bytes_.capacity()) bytes_.reserve(needed);
    if (platform::is_ascii(piece)) {
      bytes_ += piece;
    } else {
      bytes_ += platform::narrow(platform::kThreadCodePage, widen(piece));
    }
  }
  void end_header() {
    bytes_ += platform::kLineEnd;
    headers::keep_readable(bytes_, begin_);
    begin_ = bytes_.size();
  }

  std::string& bytes() { return bytes_; }
  void write_to(platform::ByteSink& sink) {
    sink.write(bytes_);
    bytes_.clear();
    begin_ = 0;
  }

 private:
  std::string bytes_;
  std::size_t begin_ = 0;  ///< of the header being written
};

}  // namespace

std::size_t CHeaders::most_bytes() const { return text_.size() + places_.size() * 2; }

/// The pieces of each header in the process code page, without its last line end.
template <typename Take, typename End>
void CHeaders::for_each_line(Take take, End end) const {
  const int code_page = platform::process_code_page();
  const bool keeps_ascii = platform::keeps_ascii(code_page);
  for (std::size_t position = 0; position < places_.size(); ++position, end()) {
    const Entry entry = entry_at(position);
    // A header is converted as a whole, as CHeader::ToString does: some code pages carry state from name to value.
    if (entry.object) {
      take(platform::narrow(code_page, entry.object->Name() + u": " + entry.object->Value()));
      continue;
    }
    const headers::Line line = text_.line_at(entry.place);
    if (keeps_ascii && platform::is_ascii(line.name) && platform::is_ascii(line.value)) {
      take(line.name);
      take(": ");
      take(line.value);
    } else {
      take(platform::narrow(code_page, widen(std::string(line.name).append(": ").append(line.value))));
    }
  }
}

std::u16string CHeaders::ToString() const {
  std::u16string text;
  text.reserve(most_bytes());
  append_text(text);
  return text;
}

void CHeaders::append_text(std::u16string& to) const {
  for_each_line([&](std::string_view piece) { platform::append_widened(platform::kThreadCodePage, piece, to); },
                [&] { to += u"\r\n"; });
}

std::string CHeaders::to_bytes() const {
  WrittenHeaders written(most_bytes());
  for_each_line([&](std::string_view piece) { written.take(piece); }, [&] { written.end_header(); });
  return std::move(written.bytes());
}

void CHeaders::write_to(platform::ByteSink& sink) const {
  WrittenHeaders written(std::min(most_bytes(), kBlock));
  for_each_line([&](std::string_view piece) { written.take(piece); },
                [&] {
                  written.end_header();
                  if (written.bytes().size() >= kBlock) written.write_to(sink);
                });
  written.write_to(sink);
}

}  // namespace vellobar
