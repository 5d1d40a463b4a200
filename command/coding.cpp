// `vellobar encode` and `vellobar decode`: a file in one of the four transfer encodings.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <system_error>

#include "codecs/decoder.h"
#include "codecs/encoder.h"
#include "command/failure.h"
#include "command/path.h"
#include "command/progress_bar.h"
#include "command/verbs.h"
#include "errors/error.h"

namespace vellobar::command {

namespace {

using codecs::CDecoder;
using codecs::CEncoder;

template <typename Coder>
using FileCall = void (Coder::*)(std::u16string_view, std::u16string_view) const;

/// One encoding: its option, and how files are encoded and decoded with it.
struct Encoding {
  const char* option;
  const char* name;
  FileCall<CEncoder> encode;
  FileCall<CDecoder> decode;
};

constexpr Encoding kEncodings[] = {
    {"--base64", "Base64", &CEncoder::Base64, &CDecoder::Base64},
    {"--qp", "Quoted-printable", &CEncoder::QuotedPrintable, &CDecoder::QuotedPrintable},
    {"--uu", "UUencode", &CEncoder::Uuencode, &CDecoder::Uudecode},
    {"--binhex", "BinHex 4.0", &CEncoder::BinHex4, &CDecoder::BinHex4},
};

struct CodingOptions {
  const Encoding* encoding = nullptr;
  std::string in, out;
};

std::string why_it_failed(const CodingOptions& options) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const fs::path in = library_path(options.in);
  if (!fs::exists(in, ignored)) return "cannot read " + options.in + ": there is no such file";
  if (fs::is_directory(in, ignored)) return "cannot read " + options.in + ": it is a folder";
  if (fs::equivalent(in, library_path(options.out), ignored)) return options.in + " is both the input and the output";
  return "cannot read " + options.in + " or write " + options.out;
}

template <typename Coder>
void code(const CodingOptions& options, const std::string& title, FileCall<Coder> call) {
  ProgressBar bar(title);
  const Coder coder([&bar](std::int64_t done, std::int64_t total) { bar.show(done, total); });
  try {
    (coder.*call)(core_path(options.in), core_path(options.out));
  } catch (const Error& error) {
    if (error.status() != Status::fail) throw;
    throw Failure(why_it_failed(options));
  }
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
  verb->add_option("IN", options->in, "The file to read")->required();
  verb->add_option("OUT", options->out, "The file to write; it is created or replaced")->required();
  return verb;
}

}  // namespace

void add_coding(CLI::App& program) {
  const auto options = std::make_shared<CodingOptions>();
  add_coding_verb(program, "encode", "Encode a file for mail", options)->callback([options] {
    code<CEncoder>(*options, "encoding", options->encoding->encode);
  });
  add_coding_verb(program, "decode", "Decode a file from mail", options)->callback([options] {
    code<CDecoder>(*options, "decoding", options->encoding->decode);
  });
}

}  // namespace vellobar::command
