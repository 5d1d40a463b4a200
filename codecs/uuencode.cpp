#include "codecs/uuencode.h"

#include "codecs/sextet_encoder.h"
#include "codecs/sextet_streams.h"
#include "codecs/strings.h"
#include "codecs/uu_characters.h"
#include "codecs/uu_lines.h"

namespace vellobar::codecs {

std::size_t encode_uu(const unsigned char* from, std::size_t size, unsigned char* to) {
  return encode_sextets(kUuCode, kernels().uuencode, kNoPadding, from, size, to);
}

std::string encode_uu(std::string_view bytes) {
  return string_of_size(uu_encoded_room(bytes.size()),
                        [&](unsigned char* to) { return encode_uu(bytes_of(bytes), bytes.size(), to); });
}

std::size_t decode_uu(const unsigned char* from, std::size_t size, unsigned char* to) {
  SextetDecoder decoder(kUuCode, kernels().uuencode);
  const std::size_t written = decoder.decode(from, size, to);
  return written + decoder.finish(to + written);
}

std::string decode_uu(std::string_view text) {
  return string_of_size(uu_decoded_size(text.size()),
                        [&](unsigned char* to) { return decode_uu(bytes_of(text), text.size(), to); });
}

void encode_uu_stream(platform::File& from, platform::ByteSink& to) {
  constexpr std::size_t kLine = 1 + kUuLineBytes / 3 * 4 + 2;
  OutputPieces pieces(to);
  const LastLine last = encode_full_lines(from, pieces, kernels().uuencode, {kUuLineBytes, kLine});
  unsigned char* line = pieces.room_for(kLine);
  std::size_t characters = 1 + encode_uu(last.bytes.data(), last.size, line + 1);
  if (last.size % 3 != 0) {
    line[0] = kUuCode.letters[last.size];
    line[characters++] = '\r';
    line[characters++] = '\n';
  } else {
    // A last line of whole groups, or of none, keeps the length character of the line before and has no line end
    // (test: a_file_of_45_bytes_ends_with_a_stray_length_character).
    line[0] = last.follows_others ? kFullUuLine : kUuCode.letters[0];
  }
  pieces.add(characters);
  pieces.flush();
}

namespace {

/// What was seen of the framing lines.
enum class Framing { not_begun, begun };

/// Decodes the lines of the range that stand behind "begin". Returns whether there was one.
Framing decode_lines(UuLines lines, Framing framing, platform::ByteSink& to) {
  OutputPieces pieces(to);
  UuCharacters characters(pieces);
  while (lines.advance()) {
    if (framing == Framing::begun && characters.is_at_length()) {
      const auto ahead = lines.complete_ahead();
      const Progress full =
          kernels().decode_uu_lines(ahead.data(), ahead.size(), pieces.room_for(started_groups_decoded(ahead.size())));
      pieces.add(full.written);
      lines.skip(full.read);
      if (full.read > 0) continue;
    }
    const std::string_view line = lines.take();
    if (framing == Framing::not_begun) {
      if (line.find("begin") != line.npos) framing = Framing::begun;
    } else if (line.starts_with("end")) {
      break;
    } else {
      characters.take(line);
    }
  }
  characters.finish();
  pieces.flush();
  return framing;
}

}  // namespace

void decode_uu_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to) {
  if (decode_lines(UuLines(from, start, end), Framing::not_begun, to) == Framing::begun) return;
  decode_lines(UuLines(from, start, end), Framing::begun, to);
}

}  // namespace vellobar::codecs
