// What the calls of `CEncoder` and `CDecoder` share: how a source and a target file are opened and closed around the
// work, how a byte array is filled, how a text becomes bytes and a result text again.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/progress.h"

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::codecs {

/// Opens both files, works, and closes the target. Throws Error(Status::fail) when a name is empty, a file cannot be
/// opened, read or written, or both names mean the same file; in the last case nothing is touched. `progress`, unless
/// it is empty, hears of every piece that was written.
void code_file(std::u16string_view in_file, std::u16string_view out_file, const ProgressListener& progress,
               const std::function<void(platform::File&, platform::ByteSink&)>& work);

/// The bytes of a text in the process code page. An empty text is Error(Status::fail). A code page that the platform
/// lacks gives no bytes.
std::string bytes_of_text(std::u16string_view text);

/// Bytes as a text by the process code page, and those that are ASCII by their nature.
std::u16string text_of_bytes(std::string_view bytes);
std::u16string text_of_letters(std::string_view letters);

/// Bytes that `write` fills: it gets memory for `room` bytes and returns how many of them it used.
template <typename Write>
std::vector<unsigned char> bytes_of_size(std::size_t room, Write write) {
  std::vector<unsigned char> bytes(room);
  bytes.resize(write(bytes.data()));
  return bytes;
}

}  // namespace vellobar::codecs
