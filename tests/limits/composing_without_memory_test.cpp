// The builders and the encoder and decoder objects, with every allocation refused in turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>

#include "codecs/decoder.h"
#include "codecs/encoder.h"
#include "platform/code_page.h"
#include "platform/file_handle.h"
#include "tests/limits/counted_memory.h"
#include "tests/limits/scarce_memory.h"

namespace vellobar::tests {
namespace {

using codecs::CDecoder;
using codecs::CEncoder;

/// Tries a builder. The file that it replaces is whole afterwards, the old one or a new one of this many lines.
void build(const Step& act, std::ptrdiff_t lines) {
  const Step prepare = [](Bench& bench) {
    write_file(bench.folder.path("built"), "what was there before");
    write_file(bench.folder.path("attached"), "the content of it");
  };
  const Check check = [&](Bench& bench, bool is_done) {
    const std::string content = read_file(bench.folder.path("built"));
    if (is_done) {
      EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), lines) << content;
    } else {
      EXPECT_EQ(content, "what was there before");
    }
    // What an attachment reads from is left behind by the builders.
    for (const std::string& name : bench.temporary.names()) {
      EXPECT_TRUE(read_file(bench.temporary.path(name)).starts_with("Content-Type: application/octet-stream"));
      platform::remove_file(bench.temporary.path(name));
    }
  };
  refuse_each_allocation({"", prepare, act, check});
}

constexpr const char16_t* kFrom = u"Ann \u00C9mile <ann@example.org>";
constexpr const char16_t* kTo = u"bob@example.org, carla@example.org";
constexpr const char16_t* kSubject = u"a subject of some length";
constexpr const char16_t* kText = u"a text of some length";
constexpr const char16_t* kHtml = u"<p>a text of some length</p>";

TEST(ComposingWithoutMemory, a_simple_message_is_written_whole_or_not_at_all) {
  build(
      [](Bench& bench) {
        bench.control->CreateSimpleMessage(wide(bench.folder.path("built")), kFrom, kTo, kSubject, kText);
      },
      10);
}

TEST(ComposingWithoutMemory, two_texts_are_written_whole_or_not_at_all) {
  build(
      [](Bench& bench) {
        bench.control->CreateTextHtmlMessage(wide(bench.folder.path("built")), kFrom, kTo, kSubject, kText, kHtml);
      },
      21);
}

TEST(ComposingWithoutMemory, texts_and_an_attachment_are_written_whole_or_not_at_all) {
  build(
      [](Bench& bench) {
        bench.control->CreateSimpleAttachmentMessage(wide(bench.folder.path("built")), kFrom, kTo, kSubject, kText,
                                                     wide(bench.folder.path("attached")));
      },
      24);
  build(
      [](Bench& bench) {
        bench.control->CreateTextHtmlAttachmentMessage(wide(bench.folder.path("built")), kFrom, kTo, kSubject, kText,
                                                       kHtml, wide(bench.folder.path("attached")));
      },
      28);
}

struct Coding {
  void (*code)(std::u16string_view in, std::u16string_view out);
  std::string_view in, out;
};

TEST(CodingWithoutMemory, files_are_coded_as_soon_as_there_is_memory) {
  constexpr Coding kCodings[] = {
      {[](std::u16string_view in, std::u16string_view out) { CEncoder().Base64(in, out); }, "from the file",
       "ZnJvbSB0aGUgZmlsZQ==\r\n"},
      {[](std::u16string_view in, std::u16string_view out) { CEncoder().Uuencode(in, out); }, "from the file",
       "begin 666 mail\r\n-9G)O;2!T:&4@9FEL90\r\nend\r\n"},
      {[](std::u16string_view in, std::u16string_view out) { CEncoder().QuotedPrintable(in, out); }, "from = file",
       "from =3D file"},
      {[](std::u16string_view in, std::u16string_view out) { CEncoder().BinHex4(in, out); }, "from the file",
       "(This file must be converted with BinHex 4.0)\r\n:CR*[E5\"dD'8JCQPXC3:\r\n"},
      {[](std::u16string_view in, std::u16string_view out) { CDecoder().Base64(in, out); },
       "ZnJvbSB0aGUgZmlsZQ==", "from the file"},
      {[](std::u16string_view in, std::u16string_view out) { CDecoder().Uudecode(in, out); },
       "begin 666 x\n#04)#\nend\n", "ABC"},
      {[](std::u16string_view in, std::u16string_view out) { CDecoder().QuotedPrintable(in, out); }, "from =3D file\n",
       "from = file\n"},
      {[](std::u16string_view in, std::u16string_view out) { CDecoder().BinHex4(in, out); },
       "(This file must be converted with BinHex 4.0)\r\n:CR*[E5\"d:\r\n", "from t"},
  };
  for (const Coding& coding : kCodings) {
    const Step code = [&](Bench& bench) { coding.code(wide(bench.path), wide(bench.folder.path("coded"))); };
    const Check check = [&](Bench& bench, bool) {
      code(bench);
      EXPECT_EQ(read_file(bench.folder.path("coded")), coding.out);
    };
    refuse_each_allocation({coding.in, nullptr, code, check});
  }
}

TEST(CodingWithoutMemory, texts_and_byte_arrays_are_coded_as_soon_as_there_is_memory) {
  const Step code = [](Bench& bench) {
    const CEncoder encoder;
    const CDecoder decoder;
    const auto see = [&](std::u16string_view text) { bench.seen += plain(text) + "|"; };
    see(encoder.Base64Text(u"some text of length"));
    see(encoder.UuencodeText(u"some text of files"));
    see(encoder.QuotedPrintableText(u"some text = length"));
    see(decoder.Base64Text(u"c29tZSB0ZXh0IG9mIGxlbmd0aA=="));
    see(decoder.QuotedPrintableText(u"some text =3D length"));
    std::vector<unsigned char> bytes{'a', '=', '3', 'D', 'b', 'c'};
    for (const auto& coded :
         {encoder.Base64Data(bytes), encoder.QuotedPrintableData(bytes), encoder.UuencodeData(bytes),
          decoder.QuotedPrintableData(bytes), decoder.Base64Data(std::vector<unsigned char>{'Q', 'U', 'J', 'D'})}) {
      bench.seen.append(coded.begin(), coded.end()).append("|");
    }
  };
  const Check check = [&](Bench& bench, bool) {
    bench.seen.clear();
    code(bench);
    EXPECT_EQ(bench.seen,
              "c29tZSB0ZXh0IG9mIGxlbmd0aA==|<V]M92!T97AT(&]F(&9I;&5S|some text =3D length|some text of length|"
              "some text = length|YT0zRGJj|a=3D3Dbc|83TS1&)C|a=bc|ABC|");
  };
  refuse_each_allocation({"", nullptr, code, check});
}

/// A code page whose tables are not made yet; each number is given once.
TEST(CodingWithoutMemory, a_code_page_that_could_not_be_had_is_had_as_soon_as_there_is_memory) {
  const char16_t euro[] = u"price: 5 \u20AC";
  int page = 1250;
  for (std::size_t refused_number = 1; refused_number <= 6 && page <= 1257; ++refused_number, ++page) {
    std::string narrow;
    try {
      const RefusedAllocation refused(refused_number, Refusal::once);
      narrow = platform::narrow(page, euro);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_TRUE(narrow.empty() || narrow.size() == 10) << page;
    EXPECT_EQ(platform::narrow(page, euro), page == 1251 ? "price: 5 \x88" : "price: 5 \x80") << page;
  }
}

}  // namespace
}  // namespace vellobar::tests
