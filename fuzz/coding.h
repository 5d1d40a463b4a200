// What the targets of the codecs share: coding bytes through files, as a client does.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "codecs/attachment_encoding.h"
#include "codecs/decoder.h"
#include "codecs/encoder.h"
#include "fuzz/scratch.h"
#include "platform/file.h"

namespace vellobar::fuzz {

using EncodeFile = void (codecs::CEncoder::*)(std::u16string_view in_file, std::u16string_view out_file) const;
using DecodeFile = void (codecs::CDecoder::*)(std::u16string_view in_file, std::u16string_view out_file) const;

/// Bytes through an encoder of files and the result through its decoder.
inline std::string through_files(EncodeFile encode, DecodeFile decode, std::string_view bytes) {
  const tests::TemporaryFolder& folder = scratch_folder();
  const std::u16string plain = tests::wide(folder.file("plain", bytes));
  const std::u16string coded = tests::wide(folder.path("coded"));
  const std::u16string again = tests::wide(folder.path("again"));
  (codecs::CEncoder().*encode)(plain, coded);
  (codecs::CDecoder().*decode)(coded, again);
  return tests::read_file(folder.path("again"));
}

/// What an attachment of this encoding gives that lies in a range of a file.
inline std::string decoded_range(codecs::AttachmentEncoding encoding, std::string_view file, std::size_t start,
                                 std::size_t end) {
  struct Sink final : platform::ByteSink {
    void write(std::string_view more) override { bytes += more; }
    std::string bytes;
  } sink;
  codecs::decode_stream(encoding, *file_of(file), static_cast<std::int64_t>(start), static_cast<std::int64_t>(end),
                        sink);
  return sink.bytes;
}

}  // namespace vellobar::fuzz
