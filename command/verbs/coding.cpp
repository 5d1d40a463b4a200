// `vellobar encode` and `vellobar decode`: a file in one of the four transfer encodings.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <system_error>

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"
#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "command/output/output.h"
#include "command/output/path.h"
#include "command/output/progress_bar.h"
#include "command/output/standard_streams.h"
#include "command/verbs/verbs.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

using platform::ByteSink;
using platform::File;

/// One encoding: its option, how a file is encoded with it, what stands around that, and how it is decoded.
struct Encoding {
  const char* option;
  const char* name;
  void (*encode)(File& from, ByteSink& to);
  void (*decode)(File& from, std::int64_t start, std::int64_t end, ByteSink& to);
  /// Written before the encoded file; the base name of the file stands for "%".
  const char* before = "";
  const char* behind = "";
};

constexpr Encoding kEncodings[] = {
    {"--base64", "Base64", codecs::encode_base64_stream, codecs::decode_base64_stream},
    {"--qp", "Quoted-printable", codecs::encode_quoted_printable_stream, codecs::decode_quoted_printable_stream},
    {"--uu", "UUencode", codecs::encode_uu_stream, codecs::decode_uu_stream, "begin 666 %\r\n", "end\r\n"},
    {"--binhex", "BinHex 4.0", codecs::encode_binhex_stream, codecs::decode_binhex_stream,
     "(This file must be converted with BinHex 4.0)\r\n:", ":\r\n"},
};

struct CodingOptions {
  const Encoding* encoding = nullptr;
  std::string in, out;
};

/// Passes everything on, and shows how far the source was read.
class ShownSink final : public ByteSink {
 public:
  ShownSink(File& from, ByteSink& to, const char* title) : from_(from), to_(to), bar_(title) {}

  void write(std::string_view bytes) override {
    to_.write(bytes);
    bar_.show(from_.read_up_to(), from_.size());
  }

 private:
  File& from_;
  ByteSink& to_;
  ProgressBar bar_;
};

std::shared_ptr<File> source(const CodingOptions& options) {
  if (is_standard_stream(options.in)) return standard_input();
  std::shared_ptr<File> file = File::open(system_path(options.in));
  if (!file) throw Failure("cannot read " + options.in + ": " + why_unreadable(options.in));
  if (!is_standard_stream(options.out) && file->is_same_file(system_path(options.out))) {
    throw Failure(options.in + " is both the input and the output");
  }
  return file;
}

std::string base_name(const std::string& path) {
  return is_standard_stream(path) ? "standard-input" : from_library_path(library_path(path).filename());
}

void encode(const CodingOptions& options, File& from, ByteSink& to) {
  std::string before = options.encoding->before;
  const std::size_t name = before.find('%');
  if (name != before.npos) before.replace(name, 1, base_name(options.in));
  to.write(before);
  options.encoding->encode(from, to);
  to.write(options.encoding->behind);
}

void decode(const CodingOptions& options, File& from, ByteSink& to) {
  options.encoding->decode(from, 0, from.size(), to);
}

void code(const CodingOptions& options, const char* title, void (*work)(const CodingOptions&, File&, ByteSink&)) {
  const std::shared_ptr<File> from = source(options);
  Output output(options.out, Output::Existing::is_replaced);
  {
    ShownSink sink(*from, output, title);
    work(options, *from, sink);
  }
  if (from->failed()) throw Failure("cannot read " + options.in + " to its end");
  output.finish();
}

/// Adds a verb with one flag for each encoding, of which exactly one is given.
CLI::App* add_coding_verb(CLI::App& program, const char* name, const char* description,
                          const std::shared_ptr<CodingOptions>& options) {
  CLI::App* verb = program.add_subcommand(name, description);
  CLI::Option_group* group = verb->add_option_group("encoding");
  group->require_option(1);
  for (const Encoding& encoding : kEncodings) {
    group->add_flag_callback(
        encoding.option, [options, &encoding] { options->encoding = &encoding; }, encoding.name);
  }
  verb->add_option("IN", options->in, "The file to read; - is standard input")->required();
  verb->add_option("OUT", options->out, "The file to write, which is created or replaced; - is standard output")
      ->required();
  return verb;
}

}  // namespace

void add_coding(CLI::App& program) {
  const auto options = std::make_shared<CodingOptions>();
  add_coding_verb(program, "encode", "Encode a file for mail", options)->callback([options] {
    code(*options, "encoding", encode);
  });
  add_coding_verb(program, "decode", "Decode a file from mail", options)->callback([options] {
    code(*options, "decoding", decode);
  });
}

}  // namespace vellobar::command
