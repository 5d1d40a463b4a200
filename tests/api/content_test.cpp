#include "api/content.h"

#include <gtest/gtest.h>

#include "api/vellobar.h"
#include "tests/support/files.h"

namespace vellobar::tests {

namespace {

class Content : public testing::Test {
 protected:
  std::shared_ptr<CAttachment> attachment(std::string_view encoding, std::string_view coded) {
    box_.SetFilename(wide(
        folder_.file("box.mbox",
                     "From a\nContent-Type: multipart/mixed; boundary=\"b\"\n\n--b\nContent-Disposition: attachment; "
                     "filename=\"f\"\nContent-Transfer-Encoding: " +
                         std::string(encoding) + "\n\n" + std::string(coded) + "\n--b--\n")));
    box_.Lock();
    return box_.Messages()->Item(0)->Attachments()->Item(0);
  }

  TemporaryFolder folder_;
  CVellobar box_;
};

}  // namespace

TEST_F(Content, of_an_attachment_is_decoded) {
  EXPECT_EQ(decoded_bytes(*attachment("base64", "aGVsbG8AIQ==")), std::string("hello\0!", 7));
}

TEST_F(Content, of_an_attachment_that_is_not_coded_is_as_it_stands) {
  EXPECT_EQ(decoded_bytes(*attachment("7bit", "one\ntwo")), "one\ntwo\n");
}

TEST_F(Content, is_none_once_the_mailbox_was_unlocked) {
  const auto held = attachment("base64", "aGVsbG8=");
  box_.Unlock();
  EXPECT_EQ(decoded_bytes(*held), "");
}

TEST_F(Content, of_an_unknown_encoding_is_error_30009) {
  const auto held = attachment("base64", "aGVsbG8=");
  held->SetEncoding(0);
  try {
    decoded_bytes(*held);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), ErrorNumber::unknown_encoder);
  }
}

}  // namespace vellobar::tests
