// The speed of the codecs beside memcpy, GMime and Python, as one table: gigabytes of input a second, and the ratios
// that they have to reach. All rows of a column are measured in turn, round by round, in processor time, so that what
// else the machine does touches them alike. The last line decodes a file to a file and copies it.
//
// codecs_bench [BYTES]: 8 MB of input unless told otherwise. Where other programs use up the memory's speed, a size
// that fits into the processor's own cache (200000) still tells the loops apart.
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "codecs/base64.h"
#include "codecs/instruction_set.h"
#include "codecs/kernels.h"
#include "codecs/quoted_printable.h"
#include "codecs/sextet_decoder.h"
#include "platform/file.h"

#ifdef VELLOBAR_BENCH_GMIME
#include <gmime/gmime.h>
#endif

namespace {

using namespace vellobar::codecs;
using vellobar::platform::File;
using vellobar::platform::OutputFile;
using Bytes = std::vector<unsigned char>;
using Run = std::function<void(const Bytes& from, Bytes& to)>;

/// Bytes of raw input.
std::size_t input_size = 8 * 1000 * 1000;
constexpr int kWarmings = 3;
constexpr int kRounds = 15;

double processor_seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

std::mt19937& random_source() {
  static std::mt19937 source(1);
  return source;
}

Bytes random_bytes() {
  Bytes bytes(input_size);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random_source()());
  return bytes;
}

/// Words and lines of up to 72 bytes; `percent` of the bytes are escaped by quoted-printable.
Bytes text_with_escapes(unsigned percent) {
  Bytes text;
  std::size_t column = 0;
  while (text.size() < input_size) {
    const auto drawn = static_cast<unsigned>(random_source()());
    if (column >= 72 || (column > 50 && drawn % 17 == 0)) {
      text.insert(text.end(), {'\r', '\n'});
      column = 0;
      continue;
    }
    ++column;
    const bool is_escaped = drawn / 32 % 100 < percent;
    const unsigned letter = drawn / 4096 % 32;
    text.push_back(static_cast<unsigned char>(is_escaped ? 0xC0 + letter : letter < 26 ? 'a' + letter : ' '));
  }
  return text;
}

/// The rows of one column: what each program does with the same input.
struct Column {
  const char* name;
  const char* input;
  std::map<std::string, Run> runs;
};

Run ours(InstructionSet set, Run run) {
  return [set, run](const Bytes& from, Bytes& to) {
    const ForcedInstructionSet forced(set);
    run(from, to);
  };
}

struct Row {
  const char* name;
  InstructionSet set;
};
constexpr Row kOurRows[] = {
    {"scalar", InstructionSet::scalar}, {"AVX2", InstructionSet::avx2}, {"AVX-512", InstructionSet::avx512_vbmi}};

#ifdef VELLOBAR_BENCH_GMIME
void run_gmime(GMimeContentEncoding encoding, bool encodes, const Bytes& from, Bytes& to) {
  GMimeEncoding state;
  if (encodes) {
    g_mime_encoding_init_encode(&state, encoding);
  } else {
    g_mime_encoding_init_decode(&state, encoding);
    if (encoding == GMIME_CONTENT_ENCODING_UUENCODE) state.state |= GMIME_UUDECODE_STATE_BEGIN;
  }
  const std::size_t room = g_mime_encoding_outlen(&state, from.size());
  if (to.size() < room) to.resize(room);
  g_mime_encoding_flush(&state, reinterpret_cast<const char*>(from.data()), from.size(),
                        reinterpret_cast<char*>(to.data()));
}
#endif

Column column(const char* name, const char* input, [[maybe_unused]] const char* gmime, bool encodes, Run run) {
  Column made{name, input, {}};
  made.runs["memcpy"] = [](const Bytes& from, Bytes& to) { std::memcpy(to.data(), from.data(), from.size()); };
  for (const Row& row : kOurRows) {
    if (is_supported(row.set)) made.runs[row.name] = ours(row.set, run);
  }
#ifdef VELLOBAR_BENCH_GMIME
  if (*gmime != '\0') {
    const GMimeContentEncoding encoding = g_mime_content_encoding_from_string(gmime);
    made.runs["GMime"] = [=](const Bytes& from, Bytes& to) { run_gmime(encoding, encodes, from, to); };
  }
#endif
  (void)encodes;
  return made;
}

void decode_binhex(const Bytes& from, Bytes& to) {
  SextetDecoder decoder(kBinHexCode, kernels().binhex);
  decoder.decode(from.data(), from.size(), to.data());
}

std::vector<Column> columns() {
  return {
      column("b64enc_lines", "raw", "base64", true,
             [](const Bytes& from, Bytes& to) {
               kernels().base64.encode_lines(from.data(), from.size() / kBase64LineBytes, to.data());
             }),
      column("b64enc_flat", "raw", "", true,
             [](const Bytes& from, Bytes& to) { encode_base64(from.data(), from.size(), to.data()); }),
      column("b64dec_lines", "b64_lines", "base64", false,
             [](const Bytes& from, Bytes& to) { decode_base64(from.data(), from.size(), to.data()); }),
      column("b64dec_flat", "b64_flat", "base64", false,
             [](const Bytes& from, Bytes& to) { decode_base64(from.data(), from.size(), to.data()); }),
      column("qpenc_text", "text", "quoted-printable", true,
             [](const Bytes& from, Bytes& to) { encode_quoted_printable(from.data(), from.size(), to.data()); }),
      column("qpdec_text", "qp_text", "quoted-printable", false,
             [](const Bytes& from, Bytes& to) {
               decode_quoted_printable(const_cast<unsigned char*>(from.data()), from.size(), to.data());
             }),
      column("qpenc_dense", "dense", "quoted-printable", true,
             [](const Bytes& from, Bytes& to) { encode_quoted_printable(from.data(), from.size(), to.data()); }),
      column("qpdec_dense", "qp_dense", "quoted-printable", false,
             [](const Bytes& from, Bytes& to) {
               decode_quoted_printable(const_cast<unsigned char*>(from.data()), from.size(), to.data());
             }),
      column("uuenc", "raw", "x-uuencode", true,
             [](const Bytes& from, Bytes& to) {
               kernels().uuencode.encode_lines(from.data(), from.size() / kUuLineBytes, to.data());
             }),
      column("uudec", "uu", "x-uuencode", false,
             [](const Bytes& from, Bytes& to) { kernels().decode_uu_lines(from.data(), from.size(), to.data()); }),
      column("hexenc", "raw", "", true,
             [](const Bytes& from, Bytes& to) {
               kernels().binhex.encode_lines(from.data(), from.size() / kBinHexLineBytes, to.data());
             }),
      column("hexdec", "binhex", "", false, decode_binhex),
  };
}

/// Full lines of the input, encoded by a loop.
Bytes lines_of(const Bytes& raw, const SextetKernels& loops, std::size_t line_bytes, std::size_t line_characters) {
  const std::size_t lines = raw.size() / line_bytes;
  Bytes coded(lines * line_characters);
  loops.encode_lines(raw.data(), lines, coded.data());
  return coded;
}

Bytes quoted(const Bytes& text) {
  Bytes coded(quoted_printable_encoded_room(text.size()));
  coded.resize(encode_quoted_printable(text.data(), text.size(), coded.data()));
  return coded;
}

std::map<std::string, Bytes> inputs() {
  std::map<std::string, Bytes> made;
  made["raw"] = random_bytes();
  made["text"] = text_with_escapes(3);
  made["dense"] = text_with_escapes(30);
  made["qp_text"] = quoted(made["text"]);
  made["qp_dense"] = quoted(made["dense"]);
  Bytes& flat = made["b64_flat"];
  flat.resize(base64_encoded_size(made["raw"].size()));
  encode_base64(made["raw"].data(), made["raw"].size(), flat.data());
  made["b64_lines"] = lines_of(made["raw"], kScalarKernels.base64, kBase64LineBytes, 78);
  made["uu"] = lines_of(made["raw"], kScalarKernels.uuencode, kUuLineBytes, 63);
  made["binhex"] = lines_of(made["raw"], kScalarKernels.binhex, kBinHexLineBytes, 66);
  return made;
}

using Speeds = std::map<std::string, std::map<std::string, double>>;  // by row and column

void measure(const Column& measured, const Bytes& from, Bytes& to, Speeds& speeds) {
  std::map<std::string, std::vector<double>> seconds;
  for (int round = 0; round < kRounds; ++round) {
    for (const auto& [row, run] : measured.runs) {
      // Each row warms the buffers for itself: behind a slow row the caches hold what others put there meanwhile, and
      // the last-level cache keeps only what was used more than once.
      for (int warming = 0; warming < kWarmings; ++warming) run(from, to);
      const double start = processor_seconds();
      run(from, to);
      seconds[row].push_back(processor_seconds() - start);
    }
  }
  for (const auto& [row, times] : seconds) {
    speeds[row][measured.name] = static_cast<double>(from.size()) / median(times) / 1e9;
  }
}

void measure_python(const std::map<std::string, Bytes>& made, Speeds& speeds) {
  const auto folder = std::filesystem::temp_directory_path() / "vellobar_codecs_bench";
  std::filesystem::create_directories(folder);
  for (const auto& [name, bytes] : made) {
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  const std::string command = "python3 " VELLOBAR_BENCH_PEERS " " + folder.string();
  if (FILE* answer = popen(command.c_str(), "r")) {
    char name[32];
    double speed = 0;
    while (std::fscanf(answer, "%31s %lf", name, &speed) == 2) speeds["Python"][name] = speed;
    pclose(answer);
  }
  std::filesystem::remove_all(folder);
}

void print_table(const Speeds& speeds, const std::vector<Column>& measured) {
  std::printf("%-10s", "GB/s");
  for (const Column& one : measured) std::printf(" %12s", one.name);
  std::printf("\n");
  for (const char* row : {"memcpy", "scalar", "AVX2", "AVX-512", "GMime", "Python"}) {
    const auto found = speeds.find(row);
    if (found == speeds.end()) continue;
    std::printf("%-10s", row);
    for (const Column& one : measured) {
      const auto speed = found->second.find(one.name);
      if (speed == found->second.end()) {
        std::printf(" %12s", "-");
      } else {
        std::printf(" %12.2f", speed->second);
      }
    }
    std::printf("\n");
  }
}

/// One ratio to reach: `row` in `column` against `peer_row` in `peer_column`.
struct Target {
  const char* row;
  const char* column;
  const char* peer_row;
  const char* peer_column;
  double at_least;
};

constexpr Target kTargets[] = {
    {"AVX2", "b64dec_lines", "GMime", "b64dec_lines", 10},
    {"AVX2", "b64dec_lines", "memcpy", "b64dec_lines", 0.30},
    {"AVX2", "b64dec_flat", "memcpy", "b64dec_flat", 0.33},
    {"AVX-512", "b64dec_flat", "memcpy", "b64dec_flat", 0.80},
    {"AVX2", "b64enc_lines", "memcpy", "b64enc_lines", 0.25},
    {"AVX2", "b64enc_flat", "memcpy", "b64enc_flat", 0.30},
    {"AVX-512", "b64enc_lines", "memcpy", "b64enc_lines", 0.60},
    {"AVX-512", "b64enc_flat", "memcpy", "b64enc_flat", 0.75},
    {"AVX2", "qpenc_text", "GMime", "qpenc_text", 4.5},
    {"AVX2", "qpdec_text", "GMime", "qpdec_text", 2.2},
    {"AVX2", "qpenc_dense", "GMime", "qpenc_dense", 2},
    {"AVX2", "qpdec_dense", "GMime", "qpdec_dense", 2},
    {"AVX2", "uuenc", "GMime", "uuenc", 15},
    {"AVX2", "uudec", "GMime", "uudec", 15},
    {"AVX-512", "uuenc", "GMime", "uuenc", 15},
    {"AVX-512", "uudec", "GMime", "uudec", 15},
    {"AVX2", "hexenc", "AVX2", "b64enc_lines", 1 / 1.5},
    {"AVX2", "hexdec", "AVX2", "b64dec_lines", 1 / 1.5},
    {"AVX-512", "hexenc", "AVX-512", "b64enc_lines", 1 / 1.5},
    {"AVX-512", "hexdec", "AVX-512", "b64dec_lines", 1 / 1.5},
    {"scalar", "hexenc", "scalar", "b64enc_lines", 1 / 1.5},
    {"scalar", "hexdec", "scalar", "b64dec_lines", 1 / 1.5},
    {"scalar", "b64enc_lines", "GMime", "b64enc_lines", 1.5},
    {"scalar", "b64dec_lines", "GMime", "b64dec_lines", 1.5},
    {"scalar", "b64dec_flat", "GMime", "b64dec_flat", 1.5},
    {"scalar", "qpenc_text", "GMime", "qpenc_text", 1},
    {"scalar", "qpdec_text", "GMime", "qpdec_text", 1},
    {"scalar", "qpenc_dense", "GMime", "qpenc_dense", 1},
    {"scalar", "qpdec_dense", "GMime", "qpdec_dense", 1},
    {"scalar", "uuenc", "GMime", "uuenc", 1},
    {"scalar", "uudec", "GMime", "uudec", 1},
};

void print_targets(Speeds& speeds) {
  std::printf("\n%-10s %-14s %-8s %-14s %8s %8s\n", "row", "column", "against", "column", "ratio", "target");
  for (const Target& target : kTargets) {
    const double speed = speeds[target.row][target.column];
    const double peer = speeds[target.peer_row][target.peer_column];
    if (speed == 0 || peer == 0) continue;
    std::printf("%-10s %-14s %-8s %-14s %8.2f %8.2f %s\n", target.row, target.column, target.peer_row,
                target.peer_column, speed / peer, target.at_least, speed / peer >= target.at_least ? "" : "MISSED");
  }
}

double used_seconds(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) * 1e-6;
}

void measure_files(const Bytes& lines) {
  constexpr std::size_t kFileSize = 300 * 1000 * 1000;
  const auto folder = std::filesystem::temp_directory_path();
  const std::string coded = (folder / "vellobar_bench_coded").string();
  const std::string target = (folder / "vellobar_bench_target").string();
  {
    std::ofstream file(coded, std::ios::binary);
    for (std::size_t written = 0; written < kFileSize; written += lines.size()) {
      file.write(reinterpret_cast<const char*>(lines.data()), static_cast<std::streamsize>(lines.size()));
    }
  }
  const std::string copy = "cp " + coded + " " + target;
  std::vector<double> copying, decoding;
  for (int round = 0; round <= 5; ++round) {
    std::filesystem::remove(target);
    double start = used_seconds(RUSAGE_CHILDREN);
    if (std::system(copy.c_str()) != 0) return;
    if (round > 0) copying.push_back(used_seconds(RUSAGE_CHILDREN) - start);
    std::filesystem::remove(target);
    start = used_seconds(RUSAGE_SELF);
    const auto from = File::open(coded);
    const auto to = OutputFile::create(target);
    if (!from || !to) return;
    decode_base64_stream(*from, 0, from->size(), *to);
    to->close();
    if (round > 0) decoding.push_back(used_seconds(RUSAGE_SELF) - start);
  }
  std::printf("\nfile to file, 300 MB: cp %.3f s, Base64 decode %.3f s, %.2f x (at most 2.5)\n", median(copying),
              median(decoding), median(decoding) / median(copying));
  std::filesystem::remove(coded);
  std::filesystem::remove(target);
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 1) input_size = std::stoul(arguments[1]);
#ifdef VELLOBAR_BENCH_GMIME
  g_mime_init();
#endif
  const auto made = inputs();
  Bytes to(3 * input_size + input_size / 2);
  Speeds speeds;
  const auto measured = columns();
  for (const Column& one : measured) measure(one, made.at(one.input), to, speeds);
  measure_python(made, speeds);
  print_table(speeds, measured);
  print_targets(speeds);
  measure_files(made.at("b64_lines"));
}
