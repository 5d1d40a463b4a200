// Every routine of the codecs, in memory, in pieces, line by line and from file to sink, on the same input in every
// form of the loops that this machine can run. Tolerates no difference between the forms, nor from the second telling
// of the rules that the tests keep. Memory is exactly as large as a routine is promised, so that the sanitizer sees the
// first byte beyond. The first bytes of an input choose the routine and what is done to the rest before it gets there.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/kernels.h"
#include "codecs/quoted_printable.h"
#include "codecs/quoted_printable_decoder.h"
#include "codecs/quoted_printable_encoder.h"
#include "codecs/sextet_decoder.h"
#include "codecs/strings.h"
#include "codecs/uuencode.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "platform/file.h"
#include "tests/codecs/codec_routines.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::fuzz {

namespace {

using namespace codecs;
using platform::ByteSink;
using platform::File;

/// One input to a routine.
struct Task {
  std::string text;
  std::size_t piece;  ///< length of the pieces in which it comes, where it comes in pieces
  std::size_t start;  ///< range, where a range is decoded
  std::size_t end;
};

/// What a routine made of it, and the source as it was left.
struct Outcome {
  std::string result;
  std::string source;
  bool operator==(const Outcome&) const = default;
};

/// `code` gets the source, its size, and memory for `room` bytes; it returns how many of them it used.
template <typename Code>
Outcome in_memory(std::string_view text, std::size_t room, Code code) {
  const std::unique_ptr<unsigned char[]> from(new unsigned char[text.size()]);
  const std::unique_ptr<unsigned char[]> to(new unsigned char[room]);
  std::copy(text.begin(), text.end(), from.get());
  const std::size_t size = code(from.get(), text.size(), to.get());
  return {std::string(view_of(to.get(), size)), std::string(view_of(from.get(), text.size()))};
}

/// The same for each piece of the input in turn; `room` tells the memory for a piece.
template <typename Room, typename Code>
std::string in_pieces(const Task& task, Room room, Code code) {
  std::string result;
  for (std::size_t start = 0; start < task.text.size(); start += task.piece) {
    const auto piece = std::string_view(task.text).substr(start, task.piece);
    result += in_memory(piece, room(piece.size()), code).result;
  }
  return result;
}

Outcome decode_sextets_in_pieces(const Task& task, const SextetCode& code, const SextetKernels& loops) {
  SextetDecoder decoder(code, loops);
  std::string result = in_pieces(
      task, [](std::size_t size) { return started_groups_decoded(size) + 3; },
      [&](auto* from, auto size, auto* to) { return decoder.decode(from, size, to); });
  unsigned char last[3];
  result += view_of(last, decoder.finish(last));
  return {result, ""};
}

Outcome decode_quoted_in_pieces(const Task& task, BrokenEscape broken, std::size_t room_for_a_byte) {
  QuotedPrintableDecoder decoder(broken);
  return {in_pieces(
              task, [&](std::size_t size) { return room_for_a_byte * size; },
              [&](auto* from, auto size, auto* to) { return decoder.decode(from, size, to); }),
          ""};
}

Outcome encode_whole_lines(const Task& task, const SextetKernels& loops, std::size_t bytes, std::size_t characters) {
  const std::size_t lines = task.text.size() / bytes;
  return in_memory(std::string_view(task.text).substr(0, lines * bytes), lines * characters,
                   [&](auto* from, auto, auto* to) {
                     loops.encode_lines(from, lines, to);
                     return lines * characters;
                   });
}

std::string whole_lines(const Task& task, std::size_t bytes) {
  return task.text.substr(0, task.text.size() / bytes * bytes);
}

std::string without_end(std::string text, std::size_t size) { return text.substr(0, text.size() - size); }

/// What full lines of uuencode at the front of a text give.
std::string decoded_uu_lines(std::string_view text) {
  std::string bytes;
  while (text.size() > 62 && text[0] == 'M') {
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 32; };
    const std::string_view letters = text.substr(1, 60), behind = text.substr(61);
    const std::size_t line_end = behind.starts_with("\n") ? 1 : behind.starts_with("\r\n") ? 2 : 0;
    if (line_end == 0 || std::any_of(letters.begin(), letters.end(), is_control)) break;
    bytes += reference::decode_uu(letters);
    text.remove_prefix(61 + line_end);
  }
  return bytes;
}

class StringSink : public ByteSink {
 public:
  void write(std::string_view bytes) override { text.append(bytes); }
  std::string text;
};

template <typename Code>
Outcome through_file(const Task& task, Code code) {
  const auto file = file_of(task.text);
  StringSink sink;
  code(*file, sink);
  return {sink.text, ""};
}

using StreamDecoder = void (*)(File&, std::int64_t, std::int64_t, ByteSink&);

template <StreamDecoder kDecode>
Outcome decode_range(const Task& task) {
  return through_file(task, [&](File& file, ByteSink& sink) {
    kDecode(file, static_cast<std::int64_t>(task.start), static_cast<std::int64_t>(task.end), sink);
  });
}

template <void (*kEncode)(File&, ByteSink&)>
Outcome encode_file(const Task& task) {
  return through_file(task, kEncode);
}

std::string range(const Task& task) { return task.text.substr(task.start, task.end - task.start); }

/// The range up to the end of the last block of 1024 bytes that begins in it.
std::string range_of_blocks(const Task& task) {
  return task.text.substr(task.start, (task.end - task.start + 1023) / 1024 * 1024);
}

struct Shape {
  Outcome (*run)(const Task& task);
  std::string (*expected)(const Task& task);
};

template <const auto& kRoutines, std::size_t kIndex>
constexpr Shape kInMemory = {
    [](const Task& task) { return in_memory(task.text, kRoutines[kIndex].room(task.text), kRoutines[kIndex].run); },
    [](const Task& task) { return kRoutines[kIndex].expected(task.text); }};

constexpr Shape kShapes[] = {
    kInMemory<kEncoders, 0>,
    kInMemory<kEncoders, 1>,
    kInMemory<kEncoders, 2>,
    kInMemory<kEncoders, 3>,
    kInMemory<kDecoders, 0>,
    kInMemory<kDecoders, 1>,
    kInMemory<kDecoders, 2>,
    kInMemory<kDecoders, 3>,
    kInMemory<kDecoders, 4>,
    // Pieces.
    {[](const Task& task) { return decode_sextets_in_pieces(task, kBase64Code, kernels().base64); },
     [](const Task& task) { return reference::decode_base64(task.text); }},
    {[](const Task& task) { return decode_sextets_in_pieces(task, kBinHexCode, kernels().binhex); },
     [](const Task& task) { return reference::decode_binhex_file(":" + task.text); }},
    {[](const Task& task) { return decode_sextets_in_pieces(task, kUuCode, kernels().uuencode); },
     [](const Task& task) { return reference::decode_uu(task.text); }},
    {[](const Task& task) {
       QuotedPrintableEncoder encoder(73);
       return Outcome{in_pieces(
                          task, [](std::size_t size) { return 3 * size + 3 * (size / 25 + 1); },
                          [&](auto* from, auto size, auto* to) { return encoder.encode(from, size, to); }),
                      ""};
     },
     [](const Task& task) { return reference::encode_quoted_printable(task.text, 73); }},
    {[](const Task& task) { return decode_quoted_in_pieces(task, BrokenEscape::is_kept, 3); },
     [](const Task& task) { return reference::decode_quoted_printable(task.text, false); }},
    {[](const Task& task) { return decode_quoted_in_pieces(task, BrokenEscape::gives_one_byte, 1); },
     [](const Task& task) { return reference::decode_quoted_printable_file(task.text); }},
    // Lines.
    {[](const Task& task) { return encode_whole_lines(task, kernels().base64, 57, 78); },
     [](const Task& task) { return without_end(reference::encode_base64_file(whole_lines(task, 57)), 2); }},
    {[](const Task& task) { return encode_whole_lines(task, kernels().uuencode, 45, 63); },
     [](const Task& task) { return without_end(reference::encode_uu_file(whole_lines(task, 45)), 1); }},
    {[](const Task& task) { return encode_whole_lines(task, kernels().binhex, 48, 66); },
     [](const Task& task) { return reference::encode_binhex_file(whole_lines(task, 48)); }},
    {[](const Task& task) {
       return in_memory(task.text, started_groups_decoded(task.text.size()), [](auto* from, auto size, auto* to) {
         return kernels().decode_uu_lines(from, size, to).written;
       });
     },
     [](const Task& task) { return decoded_uu_lines(task.text); }},
    // Files.
    {encode_file<encode_base64_stream>, [](const Task& task) { return reference::encode_base64_file(task.text); }},
    {encode_file<encode_uu_stream>, [](const Task& task) { return reference::encode_uu_file(task.text); }},
    {encode_file<encode_binhex_stream>, [](const Task& task) { return reference::encode_binhex_file(task.text); }},
    {encode_file<encode_quoted_printable_stream>,
     [](const Task& task) { return reference::encode_quoted_printable(task.text, 76); }},
    {decode_range<decode_base64_stream>,
     [](const Task& task) { return reference::decode_base64(range_of_blocks(task)); }},
    {decode_range<decode_uu_stream>,
     [](const Task& task) { return reference::decode_uu_file(task.text, task.start, task.end); }},
    {decode_range<decode_binhex_stream>,
     [](const Task& task) { return reference::decode_binhex_file(range_of_blocks(task)); }},
    {decode_range<decode_quoted_printable_stream>,
     [](const Task& task) { return reference::decode_quoted_printable_file(range(task)); }},
};

/// What becomes of the input before it is given to a routine: as it is, or coded, so that decoders see long regular
/// stretches.
using Preparation = std::string (*)(std::string_view input);

std::string with_line_feeds(std::string text) {
  std::erase(text, '\r');
  return text;
}

constexpr Preparation kPreparations[] = {
    [](std::string_view input) { return std::string(input); },
    [](std::string_view input) { return reference::encode_base64(input); },
    [](std::string_view input) { return reference::encode_base64_file(input); },
    [](std::string_view input) { return with_line_feeds(reference::encode_base64_file(input)); },
    [](std::string_view input) { return "begin\r\n" + reference::encode_uu_file(input); },
    [](std::string_view input) { return reference::encode_uu_file(input); },
    [](std::string_view input) { return with_line_feeds(reference::encode_uu_file(input)); },
    [](std::string_view input) { return ":" + reference::encode_binhex_file(input) + ":"; },
    [](std::string_view input) { return reference::encode_binhex_file(input); },
    [](std::string_view input) { return with_line_feeds(reference::encode_binhex_file(input)); },
    [](std::string_view input) { return reference::encode_quoted_printable(input, 76); },
    [](std::string_view input) {
      // Longer than any block.
      std::string text;
      while (!input.empty() && text.size() < 40000) text += reference::encode_base64_file(input);
      return text;
    },
    [](std::string_view input) {
      std::string text;
      while (!input.empty() && text.size() < 40000) text += input;
      return text;
    },
};

constexpr std::size_t kChoices = 8;

Outcome run(const Shape& shape, const Kernels& form, const Task& task) {
  const ForcedKernels forced(form);
  return shape.run(task);
}

}  // namespace

void fuzz_codec_forms(std::string_view input) {
  if (input.size() < kChoices) return;
  const auto choice = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(input[i])); };
  const Shape& shape = kShapes[choice(0) % std::size(kShapes)];
  const Preparation prepare = kPreparations[choice(1) % std::size(kPreparations)];
  Task task{prepare(input.substr(kChoices)), choice(2) + 1, 0, 0};
  // One byte is spoilt, and the range is cut at both ends.
  const std::size_t place = choice(3) * 256 + choice(4);
  if (place < task.text.size()) task.text[place] = input[5];
  task.start = std::min(choice(6), task.text.size());
  task.end = std::max(task.text.size() - std::min(choice(7), task.text.size()), task.start);
  const Outcome plain = run(shape, kScalarKernels, task);
  require_same(plain.result, shape.expected(task), "the plain form of a codec gives what its rule gives");
  for (const Kernels* form : {avx2_kernels(), avx512_kernels()}) {
    if (form == nullptr) continue;
    const Outcome fast = run(shape, *form, task);
    require_same(fast.result, plain.result, "every form of a codec gives the same");
    require_same(fast.source, plain.source, "every form of a codec leaves its source the same");
  }
}

}  // namespace vellobar::fuzz
