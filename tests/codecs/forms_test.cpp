// Every form of the codecs' loops that this machine can run, held against the second telling of the rules. Sources and
// targets are blocks of memory of exactly the promised size, so that a sanitizer sees the first byte beyond.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/instruction_set.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"
#include "tests/codecs/codec_forms.h"
#include "tests/codecs/codec_routines.h"
#include "tests/codecs/coded_files.h"
#include "tests/codecs/reference_codecs.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

std::unique_ptr<unsigned char[]> exactly(std::size_t size) {
  return std::unique_ptr<unsigned char[]>(new unsigned char[size]);
}

std::string run(const Routine& routine, std::string_view text) {
  const auto from = exactly(text.size());
  std::copy(text.begin(), text.end(), from.get());
  const auto to = exactly(routine.room(text));
  const std::size_t size = routine.run(from.get(), text.size(), to.get());
  return {reinterpret_cast<const char*>(to.get()), size};
}

class Forms : public testing::TestWithParam<Form> {
 protected:
  void SetUp() override {
    const Kernels* form = GetParam().kernels();
    if (form == nullptr) GTEST_SKIP() << "this machine or this build does not have it";
    forced_.emplace(*form);
  }

  /// Quick when all is well: compares without building a message.
  static void expect_equal(const std::string& actual, const std::string& expected, const char* name,
                           std::string_view text) {
    if (actual != expected) ADD_FAILURE() << name << " of " << testing::PrintToString(std::string(text));
  }

  static void check(const Routine& routine, std::string_view text) {
    expect_equal(run(routine, text), routine.expected(text), routine.name, text);
  }

  static void check_all(std::string_view text) {
    for (const Routine& routine : kEncoders) check(routine, text);
    for (const Routine& routine : kDecoders) check(routine, text);
  }

  std::optional<ForcedKernels> forced_;
  std::mt19937 random_{20240607};
};

TEST_P(Forms, agree_on_all_inputs_of_up_to_two_bytes) {
  check_all("");
  for (int first = 0; first < 256; ++first) {
    check_all(std::string(1, static_cast<char>(first)));
    for (int second = 0; second < 256; ++second)
      check_all(std::string{static_cast<char>(first), static_cast<char>(second)});
  }
}

/// A random text of one kind: any bytes, mostly plain text with some escapes and line ends, or bytes where rules turn.
std::string random_text(std::mt19937& random, std::size_t size, int kind) {
  std::string text(size, '\0');
  for (char& byte : text) {
    const auto drawn = static_cast<std::uint32_t>(random());
    const unsigned char turning = kTurningBytes[drawn / 256 % std::size(kTurningBytes)];
    if (kind == 0) byte = static_cast<char>(drawn);
    if (kind == 1) byte = drawn % 16 == 0 ? static_cast<char>(turning) : static_cast<char>('a' + drawn / 65536 % 26);
    if (kind == 2) byte = static_cast<char>(turning);
  }
  return text;
}

TEST_P(Forms, agree_on_random_bytes_of_every_length_up_to_4096) {
  for (std::size_t size = 0; size <= 4096; ++size) {
    check_all(random_text(random_, size, static_cast<int>(size % 3)));
  }
}

std::string with_lines(std::string_view text, std::size_t width, std::string_view line_end) {
  std::string lines;
  for (; text.size() > width; text.remove_prefix(width))
    lines += std::string(text.substr(0, width)) + std::string(line_end);
  return lines + std::string(text);
}

TEST_P(Forms, agree_on_what_the_encoders_make_of_every_length_up_to_4096) {
  const std::size_t widths[] = {76, 64, 72, 60, 75, 77, 10, 4096};
  for (std::size_t size = 0; size <= 4096; ++size) {
    const std::string bytes = random_text(random_, size, 0);
    const std::string letters = reference::encode_base64(bytes);
    const std::size_t width = widths[size % std::size(widths)];
    check(kDecoders[0], letters);
    check(kDecoders[0], with_lines(letters, width, size % 2 == 0 ? "\r\n" : "\n"));
    check(kDecoders[1], reference::encode_uu(bytes));
    check(kDecoders[2], reference::encode_quoted_printable(random_text(random_, size, 1), 73));
    check(kDecoders[2], reference::encode_quoted_printable(bytes, 73));
  }
}

/// A block that begins `misalignment` bytes behind the start of a cache line and ends exactly where `size` says.
class MisalignedBlock {
 public:
  MisalignedBlock(std::size_t size, std::size_t misalignment)
      : storage_(static_cast<unsigned char*>(::operator new(misalignment + size, kCacheLine))),
        begin_(storage_.get() + misalignment) {}

  unsigned char* begin() const { return begin_; }

 private:
  static constexpr std::align_val_t kCacheLine{64};
  struct Free {
    void operator()(unsigned char* storage) const { ::operator delete(storage, kCacheLine); }
  };
  std::unique_ptr<unsigned char, Free> storage_;
  unsigned char* begin_;
};

TEST_P(Forms, agree_on_outputs_larger_than_the_caches_wherever_they_begin) {
  constexpr std::size_t kLines = 60'003, kGroups = kLines * kBase64LineBytes / 3;
  constexpr std::size_t kLineSize = kBase64LineBytes / 3 * 4 + 2;
  const std::string bytes = random_text(random_, kGroups * 3, 0);
  const auto* from = reinterpret_cast<const unsigned char*>(bytes.data());
  std::string flat(kGroups * 4, '\0'), lines(kLines * kLineSize, '\0');
  kScalarKernels.base64.encode(from, kGroups, reinterpret_cast<unsigned char*>(flat.data()));
  kScalarKernels.base64.encode_lines(from, kLines, reinterpret_cast<unsigned char*>(lines.data()));
  for (const std::size_t misalignment : {0, 1, 2, 52}) {
    const MisalignedBlock flat_target(flat.size(), misalignment), lines_target(lines.size(), misalignment);
    kernels().base64.encode(from, kGroups, flat_target.begin());
    kernels().base64.encode_lines(from, kLines, lines_target.begin());
    EXPECT_TRUE(std::memcmp(flat.data(), flat_target.begin(), flat.size()) == 0) << misalignment;
    EXPECT_TRUE(std::memcmp(lines.data(), lines_target.begin(), lines.size()) == 0) << misalignment;
  }
}

TEST_P(Forms, agree_wherever_a_hostile_byte_stands) {
  const std::string bytes = random_text(random_, 171, 0);
  const std::string flat = reference::encode_base64(bytes);
  const std::string lines = reference::encode_base64_file(bytes);
  const std::string quoted = reference::encode_quoted_printable(random_text(random_, 200, 1), 73);
  for (std::size_t place = 0; place < flat.size() + 6; ++place) {
    for (int hostile = 0; hostile < 256; ++hostile) {
      const auto spoilt = [&](std::string text) {
        text[place % text.size()] = static_cast<char>(hostile);
        return text;
      };
      check(kDecoders[0], spoilt(flat));
      check(kDecoders[0], spoilt(lines));
      check(kDecoders[1], spoilt(flat));
      check(kDecoders[2], spoilt(quoted));
      check(kEncoders[2], spoilt(quoted));
    }
  }
}

TEST_P(Forms, agree_on_texts_that_are_cut_anywhere) {
  const std::string lines = reference::encode_base64_file(random_text(random_, 400, 0));
  const std::string quoted = reference::encode_quoted_printable(random_text(random_, 400, 1), 73);
  for (std::size_t size = 0; size <= 400; ++size) {
    check(kDecoders[0], std::string_view(lines).substr(0, size));
    check(kDecoders[0], std::string_view(lines).substr(size));
    check(kDecoders[2], std::string_view(quoted).substr(0, size));
    check(kDecoders[2], std::string_view(quoted).substr(size));
  }
}

TEST_P(Forms, agree_on_the_stores_into_the_text_of_the_caller) {
  const std::string text = repeated("plain =e9=E9=\r\n=gx ==a=b=3d", 40);
  for (std::size_t size = 0; size <= text.size(); ++size) {
    std::string expected = text.substr(0, size), actual = expected;
    char before_last = 0, last = 0;
    for (char& c : expected) {
      const bool ends_escape = before_last == '=' && !(last == '\r' && c == '\n');
      if (ends_escape && c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
      before_last = last;
      last = c;
    }
    const auto to = exactly(quoted_printable_decoded_room(actual));
    decode_quoted_printable(reinterpret_cast<unsigned char*>(actual.data()), size, to.get());
    expect_equal(actual, expected, "stores", text.substr(0, size));
  }
}

/// Files cost so much under Wine that one length or place in seven has to do there; natively it is each.
#if defined(_WIN32)
constexpr std::size_t kStep = 7;
#else
constexpr std::size_t kStep = 1;
#endif

/// A file of UU lines or of BinHex letters, encoded and decoded by the routines that know lines.
class FramedFiles : public Forms {
 protected:
  static void check_uu(const std::string& text) {
    expect_equal(decoded_file(decode_uu_stream, text), reference::decode_uu_file(text, 0, text.size()), "UU lines",
                 text);
  }
  static void check_binhex(const std::string& text) {
    expect_equal(decoded_file(decode_binhex_stream, text), reference::decode_binhex_file(text), "BinHex", text);
  }

  /// What the encoders make of the bytes, and what the decoders make of that.
  static void check_coded(std::string_view bytes) {
    const std::string uu = reference::encode_uu_file(bytes), binhex = reference::encode_binhex_file(bytes);
    expect_equal(encoded_file(encode_uu_stream, bytes), uu, "UU lines", bytes);
    expect_equal(encoded_file(encode_binhex_stream, bytes), binhex, "BinHex", bytes);
    check_uu("begin\n" + uu + "\r\nend\r\n");
    check_binhex(":" + binhex + ":");
  }
};

TEST_P(FramedFiles, agree_on_files_of_up_to_three_bytes) {
  check_coded("");
  for (int first = 0; first < 256; ++first) {
    check_coded(std::string(1, static_cast<char>(first)));
    const std::string two{static_cast<char>(first), static_cast<char>(random_())};
    check_coded(two);
    check_coded(two + static_cast<char>(random_()));
  }
}

TEST_P(FramedFiles, agree_on_texts_of_up_to_three_characters_from_where_rules_turn) {
  const std::string turning = "\0\r\n !:`M#\x80"s;
  for (const char first : turning) {
    for (const char second : turning) {
      for (const char third : turning) {
        const std::string text{first, second, third};
        for (std::size_t size = 1; size <= 3; ++size) {
          check_uu("begin\n" + text.substr(0, size));
          check_binhex(":" + text.substr(0, size));
        }
      }
    }
  }
}

TEST_P(FramedFiles, agree_on_every_length_up_to_4096) {
  for (std::size_t size = 0; size <= 4096; size += kStep) {
    check_coded(random_text(random_, size, static_cast<int>(size % 3)));
  }
}

TEST_P(FramedFiles, agree_wherever_a_hostile_byte_stands) {
  const std::string bytes = random_text(random_, 171, 0);
  const std::string uu = "begin\n" + reference::encode_uu_file(bytes) + "\r\nend\r\n";
  const std::string binhex = ":" + reference::encode_binhex_file(bytes) + ":";
  for (std::size_t place = 0; place < uu.size(); place += kStep) {
    for (const unsigned char hostile : kTurningBytes) {
      const auto spoilt = [&](std::string text) {
        text[place % text.size()] = static_cast<char>(hostile);
        return text;
      };
      check_uu(spoilt(uu));
      check_binhex(spoilt(binhex));
    }
  }
}

/// Sizes around every block and line that the stream routines know.
std::vector<std::size_t> sizes_around_edges() {
  std::vector<std::size_t> sizes;
  for (const std::size_t edge : {45u, 48u, 57u, 254u, 512u, 1024u, 2048u, 12u * 1024u, 32u * 1024u, 64u * 1024u}) {
    for (std::size_t size = edge - 3; size <= edge + 3; ++size) sizes.push_back(size);
  }
  // Full lines up to the edge of what is read at once.
  for (const std::size_t line : {45u, 48u, 57u}) {
    const std::size_t edge = 32 * 1024 / line * line;
    for (std::size_t size = edge - 1; size <= edge + 1; ++size) sizes.push_back(size);
  }
  return sizes;
}

TEST_P(Forms, agree_on_files_of_sizes_around_every_edge) {
  for (const std::size_t size : sizes_around_edges()) {
    for (int kind = 0; kind < 3; ++kind) {
      const std::string bytes = random_text(random_, size, kind);
      expect_equal(encoded_file(encode_base64_stream, bytes), reference::encode_base64_file(bytes), "Base64", bytes);
      expect_equal(encoded_file(encode_uu_stream, bytes), reference::encode_uu_file(bytes), "uuencode", bytes);
      expect_equal(encoded_file(encode_binhex_stream, bytes), reference::encode_binhex_file(bytes), "BinHex", bytes);
      expect_equal(encoded_file(encode_quoted_printable_stream, bytes), reference::encode_quoted_printable(bytes, 76),
                   "quoted-printable", bytes);
      expect_equal(decoded_file(decode_quoted_printable_stream, bytes), reference::decode_quoted_printable_file(bytes),
                   "quoted-printable", bytes);
      expect_equal(decoded_file(decode_uu_stream, bytes), reference::decode_uu_file(bytes, 0, size), "uuencode", bytes);
      expect_equal(decoded_file(decode_binhex_stream, bytes), reference::decode_binhex_file(bytes), "BinHex", bytes);
      expect_equal(decoded_file(decode_base64_stream, bytes), reference::decode_base64(bytes), "Base64", bytes);
    }
  }
}

TEST_P(Forms, agree_on_coded_files_with_a_hostile_byte_around_every_edge) {
  const std::string bytes = random_text(random_, 50000, 0);
  const std::string base64 = reference::encode_base64_file(bytes);
  const std::string binhex = ":" + reference::encode_binhex_file(bytes) + ":";
  const std::string uu = "begin 644 x\r\n" + reference::encode_uu_file(bytes) + "\r\nend\r\n";
  for (const std::size_t edge : {76u, 254u, 512u, 1024u, 32u * 1024u, 64u * 1024u}) {
    for (std::size_t place = edge - 3; place < edge + 3; ++place) {
      for (const char hostile : {'\0', '\n', '=', '\xE9'}) {
        std::string text = base64;
        text[place] = hostile;
        expect_equal(decoded_file(decode_base64_stream, text), reference::decode_base64(text), "Base64", text);
        text = binhex;
        text[place] = hostile;
        expect_equal(decoded_file(decode_binhex_stream, text), reference::decode_binhex_file(text), "BinHex", text);
        text = uu;
        text[place] = hostile;
        expect_equal(decoded_file(decode_uu_stream, text), reference::decode_uu_file(text, 0, text.size()), "uu", text);
      }
    }
  }
}

TEST_P(Forms, agree_on_ranges_of_uuencoded_files) {
  const std::string uu = "begin\r\n" + reference::encode_uu_file(random_text(random_, 400, 0)) + "\r\nend\r\n";
  for (std::size_t end = 0; end <= uu.size() + 1; ++end) {
    expect_equal(decoded_file(decode_uu_stream, uu, 0, static_cast<std::int64_t>(end)),
                 reference::decode_uu_file(uu, 0, end), "uu to", std::to_string(end));
    expect_equal(decoded_file(decode_uu_stream, uu, static_cast<std::int64_t>(end)),
                 reference::decode_uu_file(uu, end, uu.size()), "uu from", std::to_string(end));
  }
}

std::string name_of(const testing::TestParamInfo<Form>& form) { return form.param.name; }

INSTANTIATE_TEST_SUITE_P(Codecs, Forms, testing::ValuesIn(kForms), name_of);
INSTANTIATE_TEST_SUITE_P(Codecs, FramedFiles, testing::ValuesIn(kForms), name_of);

TEST(InstructionSets, the_best_form_that_the_machine_offers_is_in_force) {
  const Kernels* best = avx512_kernels() != nullptr ? avx512_kernels()
                        : avx2_kernels() != nullptr ? avx2_kernels()
                                                    : &kScalarKernels;
  EXPECT_EQ(&kernels(), best);
}

TEST(InstructionSets, a_forced_form_is_in_force_until_its_object_dies) {
  const Kernels* before = &kernels();
  {
    const ForcedInstructionSet forced(InstructionSet::scalar);
    EXPECT_EQ(&kernels(), &kScalarKernels);
  }
  EXPECT_EQ(&kernels(), before);
}

}  // namespace
}  // namespace vellobar::codecs
