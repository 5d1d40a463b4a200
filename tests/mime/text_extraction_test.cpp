#include <gtest/gtest.h>

#ifdef __linux__
#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#endif

#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "platform/clock.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using codecs::AttachmentEncoding;
using tests::CodePageGuard;
using tests::expect_error;
using tests::expect_status;
using tests::Mailbox;
using tests::plain;
using tests::wide;

/// A locked mailbox of one message: header lines and body.
class OneMessage : public Mailbox {
 public:
  OneMessage(std::string_view headers, std::string_view body)
      : Mailbox("From a\n" + std::string(headers) + "\n" + std::string(body)) {
    control().Lock();
  }

  CMessage& top() { return *message(0); }
};

constexpr std::string_view kMixed = "Content-Type: multipart/mixed; boundary=mix\n";
constexpr std::string_view kAlternative =
    "Content-Type: multipart/alternative; boundary=alt\n\n"
    "--alt\nContent-Type: text/plain\n\nplain\n"
    "--alt\nContent-Type: text/html\n\n<p>\n"
    "--alt--\n";

TEST(TextExtraction, of_a_single_text_is_the_body_decoded_without_its_final_line_feed_and_html_fails) {
  OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n", "a=3Db\nc\n");
  EXPECT_EQ(box.top().PlainText(), u"a=b\nc");
  expect_status(Status::fail, [&] { box.top().HTMLText(); });
}

TEST(TextExtraction, without_a_transfer_encoding_the_text_stays_whole) {
  OneMessage box("Content-Type: text/plain\n", "a\nb\n");
  EXPECT_EQ(box.top().PlainText(), u"a\nb\n");
}

TEST(TextExtraction, without_a_content_type_the_plain_text_is_the_undecoded_text) {
  OneMessage box("Content-Transfer-Encoding: quoted-printable\n", "a=3Db\n");
  EXPECT_EQ(box.top().PlainText(), u"a=3Db\n");
}

TEST(TextExtraction, each_text_of_an_alternative_comes_from_its_own_part) {
  OneMessage box("Content-Type: multipart/alternative; boundary=alt\n",
                 "--alt\nContent-Type: text/plain\n\nplain\n--alt\nContent-Type: text/html\n\n<p>\n--alt--\n");
  EXPECT_EQ(box.top().PlainText(), u"plain\n");
  EXPECT_EQ(box.top().HTMLText(), u"<p>\n");
}

TEST(TextExtraction, a_charset_given_only_in_the_header_of_a_part_is_not_used) {
  OneMessage box("Content-Type: multipart/alternative; boundary=alt\n",
                 "--alt\nContent-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n\n\xC3\xA4\n"
                 "--alt--\n");
  EXPECT_EQ(box.top().PlainText(), u"\u00C3\u00A4");
}

TEST(TextExtraction, a_charset_given_in_the_header_of_the_message_is_used_for_a_part) {
  OneMessage box("Content-Type: multipart/alternative; boundary=alt; charset=utf-8\n",
                 "--alt\nContent-Type: text/plain\nContent-Transfer-Encoding: base64\n\nw6QhCg==\n--alt--\n");
  EXPECT_EQ(box.top().PlainText(), u"\u00E4!");
}

TEST(TextExtraction, an_alternative_part_comes_before_a_plain_text_attachment) {
  OneMessage box(kMixed, "preamble\n--mix\nContent-Type: text/plain\n\nattached\n--mix\n" + std::string(kAlternative) +
                             "--mix--\n");
  EXPECT_EQ(box.top().PlainText(), u"plain\n");
}

TEST(TextExtraction, without_a_plain_text_in_the_alternative_part_the_one_beside_it_is_not_used) {
  OneMessage box(kMixed,
                 "preamble\n--mix\nContent-Type: multipart/alternative; boundary=alt\n\n"
                 "--alt\nContent-Type: text/html\n\n<p>\n--alt--\n"
                 "--mix\nContent-Type: text/plain\n\nattached\n--mix--\n");
  EXPECT_EQ(box.top().PlainText(), u"preamble\n");
  EXPECT_EQ(box.top().HTMLText(), u"<p>\n");
}

TEST(TextExtraction, the_name_of_the_encoding_is_compared_in_any_letter_case_and_exactly) {
  const struct {
    std::string_view encoding;
    std::u16string_view text;
  } rows[] = {{"BASE64", u"ab"}, {"base64 ", u"YWJj"}, {"Quoted-Printable", u"YWJj"}, {"7bit", u"YWJj"}};
  for (const auto& row : rows) {
    OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: " + std::string(row.encoding) + "\n",
                   "YWJj\n");
    EXPECT_EQ(box.top().PlainText(), row.text) << row.encoding;
  }
}

TEST(TextExtraction, the_last_character_of_a_decoded_text_is_dropped) {
  OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: 8bit\n", "abc");
  EXPECT_EQ(box.top().PlainText(), u"ab");
}

TEST(TextExtraction, a_decoded_text_of_one_character_is_empty) {
  OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: 8bit\n", "\n");
  EXPECT_EQ(box.top().PlainText(), u"");
}

TEST(TextExtraction, a_text_that_decodes_to_nothing_is_the_undecoded_text) {
  OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: base64\n", "!!!!\n");
  EXPECT_EQ(box.top().PlainText(), u"!!!!\n");
}

TEST(TextExtraction, a_charset_that_the_platform_lacks_gives_the_undecoded_text) {
  OneMessage box("Content-Type: text/plain; charset=windows-9\nContent-Transfer-Encoding: 8bit\n", "abc\n");
  EXPECT_EQ(box.top().PlainText(), u"abc\n");
}

TEST(TextExtraction, a_decoded_text_ends_at_its_first_nul) {
  OneMessage box("Content-Type: text/plain\nContent-Transfer-Encoding: quoted-printable\n", "ab=00cd\n");
  EXPECT_EQ(box.top().PlainText(), u"a");
}

TEST(TextExtraction, a_decoder_takes_as_many_bytes_as_the_wide_text_has_characters) {
  const CodePageGuard utf8(65001);
  OneMessage box("Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: quoted-printable\n",
                 "\xC3\xA4\xC3\xA4wxyz\n");
  // Nine bytes, nine characters wide were two less: the decoder takes seven of the bytes.
  EXPECT_EQ(box.top().PlainText(), u"\u00E4\u00E4wx");
}

TEST(TextExtraction, an_undecoded_text_longer_in_bytes_than_in_characters_is_whole) {
  const CodePageGuard utf8(65001);
  OneMessage box("Content-Type: text/plain; charset=utf-8\nContent-Transfer-Encoding: 8bit\n",
                 "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\n");
  EXPECT_EQ(box.top().PlainText(), u"\u20AC\u20AC\u20AC");
}

TEST(TextExtraction, a_type_written_in_capitals_is_found_by_the_own_check_of_the_part) {
  OneMessage box(kMixed,
                 "--mix\nContent-Type: Text/Plain\n\nfirst\n--mix\nContent-Type: text/plain\n\nsecond\n--mix--\n");
  EXPECT_EQ(box.top().PlainText(), u"second\n") << "as written comes first";
  OneMessage alone(kMixed, "--mix\nContent-Type: Text/Plain\n\nfirst\n--mix--\n");
  EXPECT_EQ(alone.top().PlainText(), u"first\n");
}

TEST(TextExtraction, a_type_parameter_can_make_the_message_itself_the_html_part) {
  OneMessage box("Content-Type: multipart/related; type=\"text/html\"; boundary=mix\n",
                 "own\n--mix\nContent-Type: text/html\n\n<p>\n--mix--\n");
  EXPECT_EQ(box.top().HTMLText(), u"own\n");
}

TEST(TextExtraction, the_search_goes_into_a_part_before_its_later_siblings) {
  OneMessage box(kMixed,
                 "--mix\nContent-Type: multipart/x; boundary=in\n\n--in\nContent-Type: TEXT/plain\n\ndeep\n--in--\n"
                 "--mix\nContent-Type: TEXT/plain\n\nlater\n--mix--\n");
  EXPECT_EQ(box.top().PlainText(), u"deep\n");
}

TEST(TextExtraction, plain_text_of_an_unreadable_message_is_30005) {
  OneMessage box("X: " + std::string(20000, 'v') + "\n", "body\n");
  expect_error(ErrorNumber::cannot_load_text, Reporter::message, [&] { box.top().PlainText(); });
  expect_status(Status::fail, [&] { box.top().HTMLText(); });
}

TEST(TextExtraction, keeps_no_headers_that_run_on_behind_the_parts_that_it_passes) {
  OneMessage box("Content-Type: multipart/mixed; boundary=X\n", "--X\nA: 1\n--X\nB: 2\n--X\n\nC\n--X--\n");
  const auto parts = box.top().Parts();
  ASSERT_EQ(parts->Count(), 3);
  EXPECT_EQ(box.top().PlainText(), box.top().Text());
  expect_status(Status::fail, [&] { box.top().HTMLText(); });
  EXPECT_EQ(box.top().Attachments()->Count(), 0);
  EXPECT_FALSE(parts->Item(0)->held().headers);
  EXPECT_FALSE(parts->Item(1)->held().headers);
  EXPECT_EQ(parts->Item(0)->Headers()->Count(), 2);
  EXPECT_EQ(box.top().PlainText(), box.top().Text());
  EXPECT_TRUE(parts->Item(0)->held().headers) << "what a client read stays";
}

TEST(TextExtraction, a_search_that_finds_nothing_leaves_the_message_unchanged_as_loading_does) {
  OneMessage box("A: b\n", "body\n");
  box.top().Headers();
  box.top().SetMailInfo(u"From z");
  EXPECT_TRUE(box.top().Changed());
  expect_status(Status::fail, [&] { box.top().HTMLText(); });
  EXPECT_FALSE(box.top().Changed());
}

// ---- DecodedText

TEST(DecodedText, of_a_base64_body_is_its_bytes_in_the_charset_of_the_message) {
  OneMessage box("Content-Type: text/plain; charset=utf-8\n", "w6Qh\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64), u"\u00E4!");
}

TEST(DecodedText, decodes_with_the_encoding_the_client_names_whatever_the_header_says) {
  OneMessage box("Content-Transfer-Encoding: base64\n", "a=41b\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::quoted_printable), u"aAb\n");
}

TEST(DecodedText, knows_uu_and_binhex) {
  OneMessage uu("A: b\n", "begin 666 f\n#86)C\nend\n");
  EXPECT_EQ(uu.top().DecodedText(AttachmentEncoding::uuencode), u"abc");
  // "abc" in six-bit letters of BinHex 4.0: 24, 22, 9, 35 -> B, @, *, M.
  OneMessage binhex("A: b\n", ":B@*M:\n");
  EXPECT_EQ(binhex.top().DecodedText(AttachmentEncoding::binhex4).substr(0, 3), u"abc");
}

TEST(DecodedText, without_a_decoder_is_30013_but_empty_for_an_empty_body) {
  for (const int encoding : {0, 5, 6, -1}) {
    OneMessage box("A: b\n", "body\n");
    expect_error(ErrorNumber::unsupported_encoding, Reporter::message,
                 [&] { box.top().DecodedText(static_cast<AttachmentEncoding>(encoding)); });
    OneMessage empty("A: b\n", "");
    EXPECT_EQ(empty.top().DecodedText(static_cast<AttachmentEncoding>(encoding)), u"");
  }
}

TEST(DecodedText, of_a_multipart_message_is_its_preamble) {
  OneMessage box(kMixed, "YWJj\n--mix\n\nZGVm\n--mix--\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64), u"abc");
}

TEST(DecodedText, keeps_zero_bytes) {
  using namespace std::string_literals;
  OneMessage box("A: b\n", "YQBi\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64), u"a\0b"s);
}

TEST(DecodedText, that_decodes_to_nothing_or_has_a_charset_that_is_lacking_is_empty) {
  OneMessage box("A: b\n", "!!!!\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64), u"");
  OneMessage lacking("Content-Type: text/plain; charset=windows-9\n", "YWJj\n");
  EXPECT_EQ(lacking.top().DecodedText(AttachmentEncoding::base64), u"");
}

TEST(DecodedText, of_an_unreadable_message_is_empty_and_makes_its_text_empty) {
  OneMessage box("X: " + std::string(20000, 'v') + "\n", "body\n");
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64), u"");
  EXPECT_EQ(box.top().Text(), u"");
}

TEST(DecodedText, without_a_temporary_folder_is_30012) {
  OneMessage box("A: b\n", "YWJj\n");
  const platform::FixedTemporaryFolder missing(box.folder().path("missing/"));
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::message,
               [&] { box.top().DecodedText(AttachmentEncoding::base64); });
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::message,
               [&] { box.top().DecodedText(AttachmentEncoding::seven_bit); });
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)

/// The process gets no more than this much memory beyond what it has, until the object dies.
class MemoryLimit {
 public:
  explicit MemoryLimit(rlim_t bytes) {
    malloc_trim(0);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    getrlimit(RLIMIT_AS, &before_);
    const rlimit limit = {pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + bytes, before_.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
  }
  ~MemoryLimit() { setrlimit(RLIMIT_AS, &before_); }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
  rlimit before_{};
};

TEST(DecodedText, that_cannot_be_held_is_30014_and_leaves_no_temporary_file) {
  constexpr rlim_t kMegabyte = 1 << 20;
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder fixed(folder.path(""));
  std::string coded;
  for (int i = 0; i < 1'000'000; ++i) coded += "QUJDREVGQUJDREVGQUJDREVGQUJDREVGQUJDREVGQUJDREVGQUJDREVG\n";
  OneMessage box("A: b\n", coded);
  box.top().Load();
  // The decoded bytes take 42 MB, as characters 84 MB.
  for (const rlim_t megabytes : {20, 80}) {
    const MemoryLimit limit(megabytes * kMegabyte);
    expect_error(ErrorNumber::out_of_memory, Reporter::message,
                 [&] { box.top().DecodedText(AttachmentEncoding::base64); });
  }
  EXPECT_TRUE(folder.names().empty());
  EXPECT_EQ(box.top().DecodedText(AttachmentEncoding::base64).size(), 42'000'000u);
}

#endif

TEST(DecodedText, leaves_no_temporary_file_behind) {
  tests::TemporaryFolder folder;
  const platform::FixedTemporaryFolder fixed(folder.path(""));
  OneMessage box("A: b\n", "YWJj\n");
  box.top().DecodedText(AttachmentEncoding::base64);
  EXPECT_TRUE(folder.names().empty());
  expect_error(ErrorNumber::unsupported_encoding, Reporter::message,
               [&] { box.top().DecodedText(AttachmentEncoding::seven_bit); });
  EXPECT_TRUE(folder.names().empty());
}

}  // namespace
}  // namespace vellobar
