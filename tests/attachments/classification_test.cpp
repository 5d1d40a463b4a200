#include "attachments/classification.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string_view>

namespace vellobar::attachments {
namespace {

using codecs::AttachmentEncoding;

struct Line {
  std::string_view name, value;
};

Classification classified(std::initializer_list<Line> headers) {
  Classification classification;
  for (const Line& header : headers) classification.take(header.name, header.value);
  return classification;
}

bool is_attachment(std::initializer_list<Line> headers) { return classified(headers).is_attachment(); }

constexpr Line kBase64 = {"content-transfer-encoding", "base64"};

TEST(Classification, a_named_application_part_without_a_transfer_encoding_is_no_attachment) {
  EXPECT_FALSE(is_attachment({{"content-type", "application/pdf; name=a.pdf"}}));
  EXPECT_TRUE(is_attachment({{"content-type", "application/pdf; name=a.pdf"}, kBase64}));
}

TEST(Classification, a_disposition_before_the_encoding_makes_no_attachment) {
  EXPECT_FALSE(is_attachment({{"content-disposition", "attachment"}, kBase64}));
  EXPECT_TRUE(is_attachment({kBase64, {"content-disposition", "attachment"}}));
  EXPECT_FALSE(is_attachment({{"content-disposition", "inline"}, kBase64}));
  EXPECT_TRUE(is_attachment({kBase64, {"content-disposition", "Inline"}}));
}

TEST(Classification, a_disposition_with_a_file_name_makes_an_attachment_regardless_of_order) {
  EXPECT_TRUE(is_attachment({{"content-disposition", "attachment; filename=x"}, kBase64}));
  EXPECT_TRUE(is_attachment({kBase64, {"content-disposition", "attachment; FILENAME=x"}}));
  EXPECT_TRUE(
      is_attachment({{"content-disposition", "x; filename="}, {"content-transfer-encoding", "quoted-printable"}}));
  EXPECT_FALSE(is_attachment({{"content-disposition", "attachment; filename=x"}}));
}

TEST(Classification, only_base64_and_7bit_before_the_disposition_let_it_count_without_a_file_name) {
  const std::pair<std::string_view, bool> cases[] = {{"base64", true},    {"7bit", true},
                                                     {"uuencode", false}, {"x-uuencode", false},
                                                     {"binhex", false},   {"quoted-printable", false},
                                                     {"something", false}};
  for (const auto& [encoding, expected] : cases) {
    EXPECT_EQ(is_attachment({{"content-transfer-encoding", encoding}, {"content-disposition", "attachment"}}), expected)
        << encoding;
  }
}

TEST(Classification, transfer_encodings_are_told_by_their_whole_lower_cased_value) {
  const std::pair<std::string_view, AttachmentEncoding> cases[] = {
      {"BASE64", AttachmentEncoding::base64},
      {"UUencode", AttachmentEncoding::uuencode},
      {"X-UUencode", AttachmentEncoding::uuencode},
      {"7Bit", AttachmentEncoding::seven_bit},
      {"Quoted-Printable", AttachmentEncoding::quoted_printable},
      {"binhex", AttachmentEncoding::binhex4},
      {"base64 ", AttachmentEncoding::unknown},
      {"8bit", AttachmentEncoding::unknown},
      {"binhex40", AttachmentEncoding::unknown},
      {"", AttachmentEncoding::unknown},
  };
  for (const auto& [value, expected] : cases) {
    EXPECT_EQ(classified({{"content-transfer-encoding", value}}).encoding(), expected) << value;
  }
}

TEST(Classification, another_transfer_encoding_leaves_the_one_before_it_in_force) {
  EXPECT_EQ(classified({kBase64, {"content-transfer-encoding", "8bit"}}).encoding(), AttachmentEncoding::base64);
  EXPECT_EQ(classified({kBase64, {"content-transfer-encoding", "7bit"}}).encoding(), AttachmentEncoding::seven_bit);
}

TEST(Classification, a_message_part_without_an_encoding_becomes_an_attachment_with_7bit) {
  const Classification plain = classified({{"content-type", "Message/RFC822; name=x"}});
  EXPECT_TRUE(plain.is_attachment());
  EXPECT_EQ(plain.encoding(), AttachmentEncoding::seven_bit);
  const Classification coded = classified({kBase64, {"content-type", "message/rfc822"}});
  EXPECT_TRUE(coded.is_attachment());
  EXPECT_EQ(coded.encoding(), AttachmentEncoding::base64);
  EXPECT_FALSE(is_attachment({{"content-type", " message/rfc822"}}));
}

TEST(Classification, an_encoding_behind_a_message_type_takes_the_place_of_its_7bit) {
  EXPECT_EQ(classified({{"content-type", "message/rfc822"}, kBase64}).encoding(), AttachmentEncoding::base64);
}

TEST(Classification, a_named_image_or_application_type_makes_an_attachment_and_others_do_not) {
  EXPECT_TRUE(is_attachment({kBase64, {"content-type", "IMAGE/gif; NAME=a.gif"}}));
  EXPECT_TRUE(is_attachment({kBase64, {"content-type", "application/zip; name=a.zip"}}));
  EXPECT_TRUE(is_attachment({kBase64, {"content-type", "text/plain; was=application/x; name=a"}}));
  EXPECT_FALSE(is_attachment({kBase64, {"content-type", "image/gif"}}));
  EXPECT_FALSE(is_attachment({kBase64, {"content-type", "text/plain; name=a.txt"}}));
  EXPECT_FALSE(is_attachment({kBase64, {"content-type", "audio/midi; name=a.mid"}}));
}

TEST(Classification, only_a_multipart_type_with_a_boundary_has_its_parts_classified) {
  Classification classification;
  EXPECT_TRUE(classification.take("content-type", "Multipart/Mixed; BOUNDARY=x"));
  EXPECT_TRUE(classification.take("content-type", "boundary=x multipart"));
  EXPECT_FALSE(classification.take("content-type", "multipart/mixed"));
  EXPECT_FALSE(classification.take("content-type", "text/plain; boundary=x"));
  EXPECT_FALSE(classification.take("content-disposition", "multipart/mixed; boundary=x"));
}

TEST(Classification, a_multipart_with_a_file_name_and_an_encoding_is_an_attachment_itself) {
  EXPECT_TRUE(is_attachment({{"content-transfer-encoding", "7bit"},
                             {"content-type", "multipart/mixed; boundary=x"},
                             {"content-disposition", "attachment; filename=\"m\""}}));
}

TEST(Classification, other_headers_are_ignored) {
  EXPECT_FALSE(is_attachment({kBase64, {"subject", "attachment; filename=x"}, {"x-content-type", "message/rfc822"}}));
}

TEST(Classification, no_headers_make_no_attachment) { EXPECT_FALSE(is_attachment({})); }

}  // namespace
}  // namespace vellobar::attachments
