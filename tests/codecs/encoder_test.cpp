#include "codecs/encoder.h"

#include <gtest/gtest.h>

#include "errors/error.h"
#include "platform/code_page.h"
#include "tests/codecs/coded_files.h"
#include "tests/codecs/process_code_page.h"

namespace vellobar::codecs {
namespace {

using namespace std::string_literals;

/// The status that a call ends with; `numbered` when it succeeds, which no call here reports.
template <typename Call>
Status status_of(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error.status();
  }
  return Status::numbered;
}

using FileMethod = void (CEncoder::*)(std::u16string_view, std::u16string_view) const;
constexpr FileMethod kFileMethods[] = {&CEncoder::Base64, &CEncoder::Uuencode, &CEncoder::QuotedPrintable,
                                       &CEncoder::BinHex4};

/// What a file method makes of a source with these bytes.
std::string encoded(FileMethod method, std::string_view bytes, std::string_view source_name = "x.bin") {
  const ScratchPath source(source_name), target("target");
  source.write(bytes);
  (CEncoder().*method)(source.name(), target.name());
  return target.read();
}

std::vector<unsigned char> bytes(std::string_view text) { return {text.begin(), text.end()}; }

TEST(Encoder, Base64_writes_lines_alone) {
  EXPECT_EQ(encoded(&CEncoder::Base64, repeated("Man", 19) + "M"), repeated("TWFu", 19) + "\r\nTQ==\r\n");
  EXPECT_EQ(encoded(&CEncoder::Base64, ""), "\r\n");
}

TEST(Encoder, QuotedPrintable_writes_its_lines_of_76_alone) {
  EXPECT_EQ(encoded(&CEncoder::QuotedPrintable, std::string(80, 'x') + "="),
            std::string(76, 'x') + "=\r\n" + std::string(4, 'x') + "=3D");
  EXPECT_EQ(encoded(&CEncoder::QuotedPrintable, ""), "");
}

TEST(Encoder, Uuencode_frames_the_data_with_the_base_name_of_the_source) {
  EXPECT_EQ(encoded(&CEncoder::Uuencode, "CatCa"), "begin 666 x.bin\r\n%0V%T0V$\r\nend\r\n");
  EXPECT_EQ(encoded(&CEncoder::Uuencode, ""), "begin 666 x.bin\r\n`end\r\n");
}

#ifndef _WIN32
TEST(Encoder, Uuencode_takes_the_name_behind_the_last_backslash) {
  // Away from Windows a backslash is an ordinary character of a file name.
  const ScratchPath source("C:\\dir\\x.bin"), target("target");
  source.write("C");
  CEncoder().Uuencode(source.name(), target.name());
  EXPECT_EQ(target.read(), "begin 666 x.bin\r\n!0P\r\nend\r\n");
}

TEST(Encoder, a_target_that_is_another_link_to_the_source_is_refused_and_nothing_is_lost) {
  const ScratchPath source("source"), link("link");
  source.write("precious");
  ASSERT_EQ(std::system(("ln '" + source.path() + "' '" + link.path() + "'").c_str()), 0);
  EXPECT_EQ(status_of([&] { CEncoder().Base64(source.name(), link.name()); }), Status::fail);
  EXPECT_EQ(source.read(), "precious");
}

TEST(Encoder, a_target_that_is_full_fails) {
  if (!std::ofstream("/dev/full")) GTEST_SKIP() << "this system has no device that is always full";
  const ScratchPath source("source");
  source.write("bytes");
  for (const FileMethod method : kFileMethods) {
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(source.name(), u"/dev/full"); }), Status::fail);
  }
}
#endif

TEST(Encoder, BinHex4_of_an_empty_file_writes_the_closing_colon_right_behind_the_opening_one) {
  EXPECT_EQ(encoded(&CEncoder::BinHex4, ""), "(This file must be converted with BinHex 4.0)\r\n::\r\n");
}

TEST(Encoder, BinHex4_writes_the_banner_and_both_colons) {
  EXPECT_EQ(encoded(&CEncoder::BinHex4, "Cat"), "(This file must be converted with BinHex 4.0)\r\n:3f&d:\r\n");
  EXPECT_EQ(encoded(&CEncoder::BinHex4, repeated("Cat", 16)),
            "(This file must be converted with BinHex 4.0)\r\n:" + repeated("3f&d", 16) + "\r\n:\r\n");
}

TEST(Encoder, an_empty_name_fails) {
  const ScratchPath source("source"), target("target");
  source.write("Cat");
  for (const FileMethod method : kFileMethods) {
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(u"", target.name()); }), Status::fail);
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(source.name(), u""); }), Status::fail);
  }
  EXPECT_FALSE(target.exists());
}

TEST(Encoder, a_missing_source_fails_and_makes_no_target) {
  const ScratchPath source("missing"), target("target");
  for (const FileMethod method : kFileMethods) {
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(source.name(), target.name()); }), Status::fail);
  }
  EXPECT_FALSE(target.exists());
}

TEST(Encoder, a_target_that_cannot_be_opened_fails) {
  const ScratchPath source("source");
  source.write("Cat");
  for (const FileMethod method : kFileMethods) {
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(source.name(), source.name() + u".missing/target"); }),
              Status::fail);
  }
}

TEST(Encoder, the_same_file_as_source_and_target_is_refused_and_nothing_is_lost) {
  const ScratchPath source("source");
  source.write("precious");
  for (const FileMethod method : kFileMethods) {
    EXPECT_EQ(status_of([&] { (CEncoder().*method)(source.name(), source.name()); }), Status::fail);
    EXPECT_EQ(source.read(), "precious");
  }
}

TEST(Encoder, a_name_with_a_NUL_inside_fails) {
  const ScratchPath source("source"), target("target");
  source.write("Cat");
  EXPECT_EQ(status_of([&] { CEncoder().Base64(source.name() + u'\0' + u"x", target.name()); }), Status::fail);
  EXPECT_EQ(status_of([&] { CEncoder().Base64(source.name(), target.name() + u'\0' + u"x"); }), Status::fail);
  EXPECT_FALSE(target.exists());
}

TEST(Encoder, bytes_are_encoded_without_lines) {
  EXPECT_EQ(CEncoder().Base64Data(bytes("M")), bytes("TQ=="));
  EXPECT_EQ(CEncoder().UuencodeData(bytes("CatC")), bytes("0V%T0P"));
  EXPECT_EQ(CEncoder().QuotedPrintableData(bytes("a=b")), bytes("a=3Db"));
}

TEST(Encoder, no_bytes_give_none) {
  EXPECT_TRUE(CEncoder().Base64Data({}).empty());
  EXPECT_TRUE(CEncoder().UuencodeData({}).empty());
  EXPECT_TRUE(CEncoder().QuotedPrintableData({}).empty());
}

TEST(Encoder, an_array_of_escapes_alone_has_room_for_its_soft_breaks) {
  // 25 escapes reach 75 characters; the one behind the break does not count, so the next break comes 26 later.
  const std::string expected = repeated("=FF", 25) + "=\r\n" + repeated("=FF", 26) + "=\r\n" + repeated("=FF", 9);
  EXPECT_EQ(CEncoder().QuotedPrintableData(bytes(std::string(60, '\xFF'))), bytes(expected));
}

TEST(Encoder, an_empty_text_fails) {
  EXPECT_EQ(status_of([] { CEncoder().Base64Text(u""); }), Status::fail);
  EXPECT_EQ(status_of([] { CEncoder().UuencodeText(u""); }), Status::fail);
  EXPECT_EQ(status_of([] { CEncoder().QuotedPrintableText(u""); }), Status::fail);
}

TEST(Encoder, a_text_is_encoded_as_its_bytes_in_the_process_code_page) {
  {
    const ProcessCodePage western(1252);
    EXPECT_EQ(CEncoder().Base64Text(u"\u00E9"), u"6Q==");
    EXPECT_EQ(CEncoder().QuotedPrintableText(u"\u00E9"), u"=E9");
    EXPECT_EQ(CEncoder().UuencodeText(u"Cat"), u"0V%T");
  }
  const ProcessCodePage utf8(platform::kUtf8CodePage);
  EXPECT_EQ(CEncoder().Base64Text(u"\u00E9"), u"w6k=");
  EXPECT_EQ(CEncoder().QuotedPrintableText(u"\u00E9"), u"=C3=A9");
}

TEST(Encoder, a_NUL_in_a_text_is_kept) {
  EXPECT_EQ(CEncoder().Base64Text(std::u16string_view(u"A\0B", 3)), u"QQBC");
  EXPECT_EQ(CEncoder().UuencodeText(std::u16string_view(u"A\0B", 3)), u"00!\"");
  EXPECT_EQ(CEncoder().QuotedPrintableText(std::u16string_view(u"A\0B", 3)), std::u16string(u"A\0B", 3));
}

TEST(Encoder, a_lone_surrogate_in_a_text_is_encoded_as_the_code_page_narrows_it) {
  {
    const ProcessCodePage western(1252);
    EXPECT_EQ(CEncoder().Base64Text(u"a\xD800z"), u"YT96");
    EXPECT_EQ(CEncoder().UuencodeText(u"a\xDC00z"), u"83]Z");
    EXPECT_EQ(CEncoder().QuotedPrintableText(u"a\xD800z"), u"a?z");
  }
  // UTF-8 puts EF BF BD in its place.
  const ProcessCodePage utf8(platform::kUtf8CodePage);
  EXPECT_EQ(CEncoder().Base64Text(u"a\xD800z"), u"Ye+/vXo=");
  EXPECT_EQ(CEncoder().UuencodeText(u"a\xDC00z"), u"8>^_O7H");
  EXPECT_EQ(CEncoder().QuotedPrintableText(u"a\xD800z"), u"a=EF=BF=BDz");
}

TEST(Encoder, the_letters_of_a_text_are_ASCII_whatever_the_process_code_page) {
  // As UTF-7 the "+" of the result would begin a shifted run.
  const ProcessCodePage utf7(platform::kUtf7CodePage);
  EXPECT_EQ(CEncoder().UuencodeText(u",,,"), u"+\"PL");
  // The bytes of the text are those of "+AD4APgA+-".
  EXPECT_EQ(CEncoder().Base64Text(u">>>"), u"K0FENEFQZ0ErLQ==");
}

TEST(Encoder, a_code_page_that_the_platform_lacks_gives_no_text_and_succeeds) {
  const ProcessCodePage missing(64999);
  EXPECT_EQ(CEncoder().Base64Text(u"A"), u"");
  EXPECT_EQ(CEncoder().QuotedPrintableText(u"A"), u"");
}

}  // namespace
}  // namespace vellobar::codecs
