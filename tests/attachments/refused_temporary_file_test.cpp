// Temporary files that cannot be made or opened again, one at a time: the number for each, and what stays on the disk.
#include <gtest/gtest.h>

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "codecs/attachment_encoding.h"
#include "tests/support/mailboxes.h"
#include "tests/support/refused_openings.h"

namespace vellobar {
namespace {

using codecs::AttachmentEncoding;
using platform::FixedFileSystem;
using platform::Opening;
using tests::expect_error;
using tests::expect_status;
using tests::RefusedOpening;
using tests::wide;

constexpr std::string_view kThreeBlocks =
    "From a\nSubject: x\n\n"
    "begin 644 one\n#04)#\nend\n\nbegin 644 two\n#04)#\nend\n\nbegin 644 three\n#04)#\nend\n";

/// A locked mailbox of this content, and a temporary folder of its own.
class RefusedTemporaryFile : public testing::Test {
 protected:
  tests::Mailbox& locked(std::string_view content) {
    box_.emplace(content);
    box_->control().Lock();
    return *box_;
  }
  std::size_t left() const { return temporary_.names().size(); }

  tests::TemporaryFolder temporary_;
  platform::FixedTemporaryFolder fixed_{temporary_.path("")};
  std::optional<tests::Mailbox> box_;
};

TEST_F(RefusedTemporaryFile, of_decoded_text_that_cannot_be_read_again_is_30004_and_stays) {
  CMessage& message = *locked("From a\n\nQUJD\n").message(0);
  RefusedOpening refused(Opening::read, 0);
  const FixedFileSystem fixed(refused);
  expect_error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message,
               [&] { message.DecodedText(AttachmentEncoding::base64); });
  ASSERT_EQ(left(), 1u);
  EXPECT_EQ(tests::read_file(temporary_.path(temporary_.names()[0])), "QUJD\n");
}

TEST_F(RefusedTemporaryFile, of_decoded_text_that_cannot_be_made_is_30012_and_leaves_nothing) {
  CMessage& message = *locked("From a\n\nQUJD\n").message(0);
  for (const int number : {0, 1}) {
    RefusedOpening refused(Opening::create, number);
    const FixedFileSystem fixed(refused);
    expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::message,
                 [&] { message.DecodedText(AttachmentEncoding::base64); });
    EXPECT_EQ(left(), 0u) << number;
  }
}

TEST_F(RefusedTemporaryFile, of_decoded_text_is_reported_before_an_encoding_without_a_decoder) {
  CMessage& message = *locked("From a\n\nQUJD\n").message(0);
  RefusedOpening refused(Opening::create, 1);
  const FixedFileSystem fixed(refused);
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::message,
               [&] { message.DecodedText(AttachmentEncoding::seven_bit); });
  EXPECT_EQ(left(), 0u);
}

TEST_F(RefusedTemporaryFile, of_decoded_text_whose_result_cannot_be_read_again_is_30004_and_leaves_nothing) {
  CMessage& message = *locked("From a\n\nQUJD\n").message(0);
  RefusedOpening refused(Opening::read, 1);
  const FixedFileSystem fixed(refused);
  expect_error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message,
               [&] { message.DecodedText(AttachmentEncoding::base64); });
  EXPECT_EQ(left(), 0u);
}

TEST_F(RefusedTemporaryFile, of_an_added_file_that_cannot_be_read_again_is_30004_and_adds_nothing) {
  tests::TemporaryFolder files;
  const std::u16string path = wide(files.file("a.bin", "ABC"));
  CMessage& message = *locked("From a\nContent-Type: text/plain\n\nbody\n").message(0);
  RefusedOpening refused(Opening::read, 0);
  const FixedFileSystem fixed(refused);
  expect_error(ErrorNumber::cannot_reopen_temporary_file, Reporter::vellobar,
               [&] { message.Attachments()->Add(path); });
  EXPECT_EQ(message.Parts()->Count(), 0);
  EXPECT_EQ(message.ContentType(), u"text/plain");
  EXPECT_FALSE(box_->control().Changed());
  EXPECT_EQ(left(), 1u);
}

TEST_F(RefusedTemporaryFile, of_a_block_in_text_that_cannot_be_read_again_is_30012_and_what_was_found_stays) {
  CMessage& message = *locked(kThreeBlocks).message(0);
  const auto attachments = message.Attachments();
  attachments->SetScanText(true);
  {
    RefusedOpening refused(Opening::read, 1);
    const FixedFileSystem fixed(refused);
    expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar, [&] { attachments->Count(); });
  }
  EXPECT_EQ(attachments->Count(), 1) << "no second attempt is made";
  EXPECT_EQ(attachments->Item(0)->Name(), u"one");
}

TEST_F(RefusedTemporaryFile, of_a_block_in_text_without_a_control_is_a_plain_failure) {
  CMessage message;
  message.SetText(u"begin 644 f\r\n#04)#\r\nend\r\n");
  const auto attachments = message.Attachments();
  attachments->SetScanText(true);
  RefusedOpening refused(Opening::read, 0);
  const FixedFileSystem fixed(refused);
  expect_status(Status::fail, [&] { attachments->Count(); });
  EXPECT_EQ(attachments->Count(), 0);
}

TEST_F(RefusedTemporaryFile, of_a_block_in_text_that_cannot_be_made_ends_the_search_quietly) {
  CMessage& message = *locked(kThreeBlocks).message(0);
  const auto attachments = message.Attachments();
  attachments->SetScanText(true);
  RefusedOpening refused(Opening::create, 1);
  const FixedFileSystem fixed(refused);
  EXPECT_EQ(attachments->Count(), 1);
  EXPECT_EQ(left(), 1u) << "the file of the second block goes";
}

}  // namespace
}  // namespace vellobar
