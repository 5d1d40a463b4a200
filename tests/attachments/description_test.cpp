#include "attachments/description.h"

#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"

namespace vellobar::attachments {
namespace {

Description described(std::string content_type) { return describe(std::move(content_type), std::nullopt); }

TEST(AttachmentName, in_quotes_runs_to_the_matching_closing_quote) {
  EXPECT_EQ(described("image/gif; name='a b.gif'").name, u"a b.gif");
  EXPECT_EQ(described("image/gif; name=\"a;b.gif\"; x=1").name, u"a;b.gif");
  EXPECT_EQ(described("image/gif; name=\"it's.gif\"").name, u"it's.gif");
}

TEST(AttachmentName, without_quotes_runs_to_the_next_semicolon_or_else_to_the_next_space_or_to_the_end) {
  EXPECT_EQ(described("image/gif; name=a.gif; x=1").name, u"a.gif");
  EXPECT_EQ(described("image/gif; name=a b.gif").name, u"a");
  EXPECT_EQ(described("image/gif; name=a b.gif; x=1").name, u"a b.gif");
  EXPECT_EQ(described("image/gif; name=a.gif").name, u"a.gif");
}

TEST(AttachmentName, with_an_opening_quote_and_no_closing_one_keeps_the_quote) {
  EXPECT_EQ(described("image/gif; name=\"a.gif").name, u"\"a.gif");
  EXPECT_EQ(described("image/gif; name='a b.gif; x=1").name, u"'a b.gif");
  EXPECT_EQ(described("image/gif; name=\"a.gif'").name, u"\"a.gif'");
  EXPECT_EQ(described("image/gif; name=\"").name, u"\"");
}

TEST(AttachmentName, is_searched_behind_the_first_semicolon_without_regard_to_case) {
  EXPECT_EQ(described("image/gif; NAME=a.gif").name, u"a.gif");
  EXPECT_EQ(described("name=a.gif").name, u"");
  EXPECT_EQ(described("image/gif; filename=a.gif").name, u"a.gif");
}

TEST(AttachmentName, of_a_folded_header_is_found_behind_the_fold) {
  EXPECT_EQ(described("application/octet-stream;\r\n\t name=\"a.bin\"").name, u"a.bin");
}

TEST(AttachmentName, is_decoded_as_encoded_words) {
  EXPECT_EQ(described("image/gif; name=\"=?utf-8?Q?gr=C3=BC=C3=9F.gif?=\"").name, u"gr\u00FC\u00DF.gif");
  EXPECT_EQ(described("image/gif; name=\"=?utf-8?B?w7wudHh0?=\"").name, u"\u00FC.txt");
}

TEST(AttachmentName, without_encoded_words_reads_in_the_process_code_page_whichever_header_gives_it) {
  const tests::CodePageGuard guard(65001);
  EXPECT_EQ(describe("image/gif; name=gr\xC3\xBC.gif", {}).name, u"gr\u00FC.gif");
  EXPECT_EQ(describe("image/gif; name=\"=?utf-8?x gr\xC3\xBC.gif\"", {}).name, u"=?utf-8?x gr\u00FC.gif");
  EXPECT_EQ(describe({}, "attachment; filename=\"gr\xC3\xBC.gif\"").name, u"gr\u00FC.gif");
}

TEST(AttachmentName, that_decodes_to_nothing_stays_as_it_stands) {
  // The platform has no code page 50; the name would be lost.
  EXPECT_EQ(described("image/gif; name=\"=?windows-50?Q?a?=\"").name, u"=?windows-50?Q?a?=");
}

TEST(AttachmentType, is_the_text_before_the_first_semicolon_or_the_whole_value_case_unchanged) {
  EXPECT_EQ(described("Application/Octet-Stream; name=a").type, u"Application/Octet-Stream");
  EXPECT_EQ(described("Image/GIF").type, u"Image/GIF");
  EXPECT_EQ(described("a/b ;c").type, u"a/b ");
}

TEST(AttachmentType, a_name_from_the_disposition_makes_the_disposition_the_type) {
  const Description description = describe("application/pdf", "attachment; filename=\"a.pdf\"");
  EXPECT_EQ(description.name, u"a.pdf");
  EXPECT_EQ(description.type, u"attachment");
}

TEST(AttachmentType, a_disposition_without_a_name_still_becomes_the_type) {
  EXPECT_EQ(describe("application/pdf", "inline; x=1").type, u"inline");
  EXPECT_EQ(describe("application/pdf", "inline").type, u"inline");
}

TEST(AttachmentType, a_name_in_the_content_type_leaves_the_disposition_unread) {
  const Description description = describe("application/pdf; name=b.pdf", "attachment; filename=\"a.pdf\"");
  EXPECT_EQ(description.name, u"b.pdf");
  EXPECT_EQ(description.type, u"application/pdf");
}

TEST(AttachmentName, an_empty_name_in_the_content_type_sends_the_search_to_the_disposition) {
  EXPECT_EQ(describe("application/pdf; name=\"\"", "attachment; filename=\"a.pdf\"").name, u"a.pdf");
}

TEST(AttachmentName, in_the_disposition_counts_only_in_double_quotes) {
  EXPECT_EQ(describe(std::nullopt, "attachment; filename=a.pdf").name, u"");
  EXPECT_EQ(describe(std::nullopt, "attachment; filename='a.pdf'").name, u"");
  EXPECT_EQ(describe(std::nullopt, "attachment; FileName=\"a b.pdf\"; x=\"1\"").name, u"a b.pdf");
  EXPECT_EQ(describe(std::nullopt, "filename=\"a.pdf\"").name, u"");
}

TEST(AttachmentName, in_the_disposition_without_a_closing_quote_runs_to_the_end_of_the_value) {
  EXPECT_EQ(describe(std::nullopt, "attachment; filename=\"a.pdf; x=1").name, u"a.pdf; x=1");
}

TEST(AttachmentName, in_the_disposition_is_not_decoded_as_encoded_words) {
  EXPECT_EQ(describe(std::nullopt, "attachment; filename=\"=?utf-8?Q?a?=\"").name, u"=?utf-8?Q?a?=");
}

TEST(AttachmentType, is_empty_without_headers) {
  const Description description = describe(std::nullopt, std::nullopt);
  EXPECT_EQ(description.name, u"");
  EXPECT_EQ(description.type, u"");
}

}  // namespace
}  // namespace vellobar::attachments
