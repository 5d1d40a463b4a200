// A second opinion: what Python's base64, quopri and binascii make of the same bytes, where the rules coincide.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "codecs/base64.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"
#include "tests/codecs/coded_files.h"
#include "tests/support/files.h"

namespace vellobar::codecs {
namespace {

/// A routine of the script beside this file, the input to it, and what ours makes of the same input.
struct Case {
  std::string routine;
  std::string input;
  std::string ours;
};

constexpr char kDigits[] = "0123456789abcdef";

std::string hexadecimal(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

std::string bytes_of_hexadecimal(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
  }
  return bytes;
}

/// Python's answers, one for each case: "= " and the result as hexadecimal bytes, or "# " and the rule that differs.
std::vector<std::string> answers_to(const std::vector<Case>& cases) {
  std::string lines;
  for (const Case& one : cases) lines += one.routine + ' ' + hexadecimal(one.input) + '\n';
  const tests::TemporaryFolder folder;
  const std::string input = folder.file("inputs", lines);
  const std::string output = folder.path("answers");
  const std::string command =
      "python3 \"" + tests::source_file("tests/codecs/python_codecs.py") + "\" < \"" + input + "\" > \"" + output + '"';
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::vector<std::string> answers;
  std::ifstream file(output);
  for (std::string line; std::getline(file, line);) answers.push_back(line);
  return answers;
}

/// Bytes of every length up to 200, any bytes and text by turns; text has short lines, some escapes, no odd controls.
std::vector<std::string> inputs() {
  std::mt19937 random(20240607);
  std::vector<std::string> made;
  for (std::size_t size = 0; size <= 200; ++size) {
    std::string bytes, text;
    for (std::size_t i = 0; i < size; ++i) {
      bytes += static_cast<char>(random());
      const auto drawn = static_cast<unsigned>(random());
      text +=
          i % 41 == 40 ? std::string("\r\n") : std::string(1, drawn % 8 == 0 ? "=_\xE9\xC3\t a."[drawn / 8 % 8] : 'x');
    }
    made.push_back(bytes);
    made.push_back(text);
  }
  return made;
}

/// The input, and the input with one byte changed to one that ends, escapes or breaks something.
std::vector<std::string> with_spoilt(const std::string& text) {
  std::vector<std::string> texts{text};
  constexpr std::string_view kHostile = "=\r\n _-g\xE9";
  for (std::size_t i = 0; i < kHostile.size() && !text.empty(); ++i) {
    texts.push_back(text);
    texts.back()[text.size() * (i + 1) / (kHostile.size() + 1)] = kHostile[i];
  }
  return texts;
}

std::vector<Case> encoding_cases() {
  std::vector<Case> cases;
  for (const std::string& bytes : inputs()) {
    cases.push_back({"encode_base64", bytes, encode_base64(bytes)});
    cases.push_back({"encode_base64_file", bytes, encoded_file(encode_base64_stream, bytes)});
    cases.push_back({"encode_uu", bytes, encode_uu(bytes)});
    cases.push_back({"encode_uu_file", bytes, encoded_file(encode_uu_stream, bytes)});
    cases.push_back({"encode_quoted_printable", bytes, encode_quoted_printable(bytes)});
    cases.push_back({"encode_quoted_printable", bytes, encoded_file(encode_quoted_printable_stream, bytes)});
  }
  return cases;
}

/// Texts to decode are Python's own, and those with a byte changed.
std::vector<Case> decoding_cases() {
  std::vector<Case> sources;
  for (const std::string& bytes : inputs()) {
    for (const char* routine : {"encode_base64", "encode_base64_file", "encode_quoted_printable"}) {
      sources.push_back({routine, bytes, ""});
    }
  }
  const auto texts = answers_to(sources);
  std::vector<Case> cases;
  for (std::size_t i = 0; i < std::min(texts.size(), sources.size()); ++i) {
    if (!texts[i].starts_with("= ")) continue;
    for (const std::string& text : with_spoilt(bytes_of_hexadecimal(texts[i].substr(2)))) {
      if (sources[i].routine != "encode_quoted_printable") {
        cases.push_back({"decode_base64", text, decode_base64(text)});
        cases.push_back({"decode_base64", text, decoded_file(decode_base64_stream, text)});
      } else {
        cases.push_back({"decode_quoted_printable", text, decode_quoted_printable(text)});
        cases.push_back({"decode_quoted_printable", text, decoded_file(decode_quoted_printable_stream, text)});
        cases.push_back({"decode_quoted_printable_word", text, decode_quoted_printable(text, true)});
      }
    }
  }
  return cases;
}

/// Compares every case that Python answers, and prints how many it set apart by which rule.
void compare(const std::vector<Case>& cases) {
  const auto answers = answers_to(cases);
  ASSERT_EQ(answers.size(), cases.size());
  std::map<std::string, std::size_t> compared, apart;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    compared[cases[i].routine] += 0;
    if (answers[i].starts_with("# ")) {
      ++apart[cases[i].routine + ": " + answers[i].substr(2)];
    } else {
      ++compared[cases[i].routine];
      EXPECT_EQ("= " + hexadecimal(cases[i].ours), answers[i])
          << cases[i].routine << " of " << testing::PrintToString(cases[i].input);
    }
  }
  for (const auto& [routine, count] : compared) {
    EXPECT_GT(count, 100u) << routine;
    std::printf("  %zu compared: %s\n", count, routine.c_str());
  }
  for (const auto& [rule, count] : apart) std::printf("  %zu set apart: %s\n", count, rule.c_str());
}

class PythonCodecs : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("python3 -c pass") != 0) GTEST_SKIP() << "no Python here";
  }
};

// Set apart: a Base64 file of full lines alone ends with one more line end; a last UU line of whole groups has neither
// a length nor a line end, and no letters stand for missing bytes; quoted-printable leaves control characters, white
// space before line ends and a lone full stop as they are, and breaks long lines elsewhere.
TEST_F(PythonCodecs, encoders_agree_where_the_rules_coincide) { compare(encoding_cases()); }

// Set apart: Base64 data end at the first stranger, an unpadded last group gives three bytes, and a NUL reads as zero
// bits; in quoted-printable only CR LF makes a soft line break, and broken escapes are passed on or give one byte.
TEST_F(PythonCodecs, decoders_agree_where_the_rules_coincide) { compare(decoding_cases()); }

TEST_F(PythonCodecs, the_uu_lines_of_python_decode_to_their_bytes_and_as_python_decodes_them) {
  std::vector<Case> sources;
  for (const std::string& bytes : inputs()) sources.push_back({"encode_uu_file_with_padding", bytes, ""});
  const auto texts = answers_to(sources);
  ASSERT_EQ(texts.size(), sources.size());
  std::vector<Case> cases;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const std::string text = bytes_of_hexadecimal(texts[i].substr(2));
    EXPECT_EQ(hexadecimal(decoded_file(decode_uu_stream, "begin 644 x\n" + text + "`\nend\n")),
              hexadecimal(sources[i].input));
    cases.push_back({"decode_uu_file", text, decoded_file(decode_uu_stream, text)});
  }
  compare(cases);
}

}  // namespace
}  // namespace vellobar::codecs
