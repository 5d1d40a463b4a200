#include "codecs/decoder.h"

#include <gtest/gtest.h>

#include "codecs/encoder.h"
#include "errors/error.h"
#include "tests/codecs/coded_files.h"
#include "tests/codecs/process_code_page.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

template <typename Call>
bool fails(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error.status() == Status::fail;
  }
  return false;
}

using FileMethod = void (CDecoder::*)(std::u16string_view, std::u16string_view) const;
constexpr FileMethod kFileMethods[] = {&CDecoder::Base64, &CDecoder::Uudecode, &CDecoder::QuotedPrintable,
                                       &CDecoder::BinHex4};

/// What a file method makes of a source with these bytes.
std::string decoded(FileMethod method, std::string_view bytes) {
  const ScratchPath source("source"), target("target");
  source.write(bytes);
  target.write("what stood here before, longer than what comes");
  (CDecoder().*method)(source.name(), target.name());
  return target.read();
}

std::vector<unsigned char> bytes(std::string_view text) { return {text.begin(), text.end()}; }

TEST(Decoder, the_file_methods_decode_the_whole_source) {
  EXPECT_EQ(decoded(&CDecoder::Base64, "QUJD\r\nREVG\r\n"), "ABCDEF");
  EXPECT_EQ(decoded(&CDecoder::Uudecode, "begin 666 x\r\n#0V%T\r\nend\r\n"), "Cat");
  EXPECT_EQ(decoded(&CDecoder::QuotedPrintable, "a=3Db=\r\nc"), "a=bc");
  EXPECT_EQ(decoded(&CDecoder::BinHex4, "(This file must be converted with BinHex 4.0)\r\n:3f&d:\r\n"), "Cat");
}

TEST(Decoder, an_empty_source_gives_an_empty_target) {
  for (const FileMethod method : kFileMethods) EXPECT_EQ(decoded(method, ""), "");
}

TEST(Decoder, an_empty_name_fails) {
  const ScratchPath source("source"), target("target");
  source.write("QUJD");
  for (const FileMethod method : kFileMethods) {
    EXPECT_TRUE(fails([&] { (CDecoder().*method)(u"", target.name()); }));
    EXPECT_TRUE(fails([&] { (CDecoder().*method)(source.name(), u""); }));
  }
  EXPECT_FALSE(target.exists());
}

TEST(Decoder, a_missing_source_or_a_target_that_cannot_be_opened_fails) {
  const ScratchPath missing("missing"), source("source"), target("target");
  source.write("QUJD");
  for (const FileMethod method : kFileMethods) {
    EXPECT_TRUE(fails([&] { (CDecoder().*method)(missing.name(), target.name()); }));
    EXPECT_TRUE(fails([&] { (CDecoder().*method)(source.name(), missing.name() + u"/target"); }));
  }
  EXPECT_FALSE(target.exists());
}

TEST(Decoder, the_same_file_as_source_and_target_is_refused_and_nothing_is_lost) {
  const ScratchPath source("source");
  source.write("QUJD");
  for (const FileMethod method : kFileMethods) {
    EXPECT_TRUE(fails([&] { (CDecoder().*method)(source.name(), source.name()); }));
    EXPECT_EQ(source.read(), "QUJD");
  }
}

TEST(Decoder, bytes_are_decoded_by_the_rules_of_memory) {
  auto quoted = bytes("a=3Db =g1");
  EXPECT_EQ(CDecoder().Base64Data(bytes("QUI")), bytes("AB\0"s));
  EXPECT_EQ(CDecoder().UudecodeData(bytes("0V%T0")), bytes("Cat@\0\0"s));
  EXPECT_EQ(CDecoder().QuotedPrintableData(quoted), bytes("a=b =G1"));
}

TEST(Decoder, no_bytes_give_none) {
  EXPECT_TRUE(CDecoder().Base64Data({}).empty());
  EXPECT_TRUE(CDecoder().UudecodeData({}).empty());
  EXPECT_TRUE(CDecoder().QuotedPrintableData({}).empty());
}

TEST(Decoder, QuotedPrintableData_raises_the_second_character_of_an_escape_in_the_callers_array) {
  auto quoted = bytes("=ea");
  EXPECT_EQ(CDecoder().QuotedPrintableData(quoted), bytes("\xEA"));
  EXPECT_EQ(quoted, bytes("=eA"));
}

TEST(Decoder, an_empty_text_fails) {
  EXPECT_TRUE(fails([] { CDecoder().Base64Text(u""); }));
  EXPECT_TRUE(fails([] { CDecoder().UudecodeText(u""); }));
  EXPECT_TRUE(fails([] { CDecoder().QuotedPrintableText(u""); }));
}

TEST(Decoder, Base64Text_ends_at_a_space) {
  EXPECT_EQ(CDecoder().Base64Text(u"QUJD"), u"ABC");
  EXPECT_EQ(CDecoder().Base64Text(u"QUJD RA=="), u"ABC");
}

TEST(Decoder, a_text_that_decodes_to_nothing_gives_no_text) {
  EXPECT_EQ(CDecoder().Base64Text(u"===="), u"");
  EXPECT_EQ(CDecoder().QuotedPrintableText(u"=\r\n"), u"");
}

TEST(Decoder, UudecodeText_gives_back_what_UuencodeText_made_of_a_length_divisible_by_three) {
  EXPECT_EQ(CEncoder().UuencodeText(u"Cats and dogs, 24 bytes."), u"0V%T<R!A;F0@9&]G<RP@,C0@8GET97,N");
  EXPECT_EQ(CDecoder().UudecodeText(u"0V%T<R!A;F0@9&]G<RP@,C0@8GET97,N"), u"Cats and dogs, 24 bytes.");
}

TEST(Decoder, a_NUL_in_a_decoded_text_is_kept) {
  EXPECT_EQ(CDecoder().Base64Text(u"QQBC"), std::u16string(u"A\0B", 3));
  EXPECT_EQ(CDecoder().QuotedPrintableText(u"A=00B"), std::u16string(u"A\0B", 3));
}

TEST(Decoder, a_decoded_text_is_read_in_the_process_code_page) {
  {
    const ProcessCodePage cyrillic(1251);  // U+0436 is E6
    EXPECT_EQ(CDecoder().Base64Text(u"QeZC"), u"A\u0436B");
    EXPECT_EQ(CDecoder().UudecodeText(u"YD%\""), u"\u0436AB");
    EXPECT_EQ(CDecoder().QuotedPrintableText(u"=E6"), u"\u0436");
  }
  const ProcessCodePage utf8(platform::kUtf8CodePage);  // and D0 B6
  EXPECT_EQ(CDecoder().Base64Text(u"QdC2"), u"A\u0436");
  EXPECT_EQ(CDecoder().UudecodeText(u"T+9!"), u"\u0436A");
  EXPECT_EQ(CDecoder().QuotedPrintableText(u"=D0=B6"), u"\u0436");
}

TEST(Decoder, a_text_to_decode_becomes_bytes_by_the_process_code_page) {
  {
    const ProcessCodePage cyrillic(1251);
    EXPECT_EQ(CDecoder().QuotedPrintableText(u"\u0436=E6"), u"\u0436\u0436");
  }
  const ProcessCodePage utf8(platform::kUtf8CodePage);
  EXPECT_EQ(CDecoder().QuotedPrintableText(u"\u0436=D0=B6"), u"\u0436\u0436");
}

TEST(Decoder, a_lone_surrogate_in_a_text_is_decoded_as_the_code_page_narrows_it) {
  {
    // "?" ends Base64, is 31 in uuencode, and breaks an escape.
    const ProcessCodePage western(1252);
    EXPECT_EQ(CDecoder().Base64Text(u"QUJD\xD800QUJD"), u"ABC");
    EXPECT_EQ(CDecoder().UudecodeText(u"83]Z\xDC00"), std::u16string(u"a?z|\0\0", 6));
    EXPECT_EQ(CDecoder().QuotedPrintableText(u"a\xD800z=\xDC00z"), u"a?z=?Z");
  }
  const ProcessCodePage utf8(platform::kUtf8CodePage);
  EXPECT_EQ(CDecoder().Base64Text(u"QUJD\xD800QUJD"), u"ABC");
  EXPECT_EQ(CDecoder().QuotedPrintableText(u"a\xD800z"), u"a\uFFFDz");
}

TEST(Decoder, a_NUL_in_a_text_to_decode_is_a_character_like_others) {
  const ProcessCodePage western(1252);
  // Zero bits in Base64; 32 in uuencode, so that four of them are 82 08 20.
  EXPECT_EQ(CDecoder().Base64Text(std::u16string_view(u"QUJD\0\0\0\0QUJD", 12)), std::u16string(u"ABC\0\0\0ABC", 9));
  EXPECT_EQ(CDecoder().UudecodeText(std::u16string_view(u"\0\0\0\0", 4)), u"\u201A\b ");
  EXPECT_EQ(CDecoder().QuotedPrintableText(std::u16string_view(u"a\0=41", 5)), std::u16string(u"a\0A", 3));
}

}  // namespace
}  // namespace vellobar::codecs
