#include "api/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "api/vellobar.h"
#include "tests/support/files.h"

namespace vellobar::tests {

namespace {

/// The headers of the part that carries the first attachment.
std::u16string headers_of_attachment(CMessage& message) {
  const auto parts = message.Parts();
  return parts->Item(parts->Count() - 1)->Headers()->ToString();
}

}  // namespace

TEST(Paths, a_file_in_a_folder_is_attached_under_its_own_name) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.file("programme.txt", "1. Lullaby\n");
  CMessage message;
  attach(message, file);
  EXPECT_EQ(headers_of_attachment(message),
            u"Content-Type: application/octet-stream;\r\n\t name=\"programme.txt\"\r\n"
            u"Content-Transfer-Encoding: base64\r\n"
            u"Content-Disposition: attachment; filename=\"programme.txt\"\r\n");
}

TEST(Paths, a_file_that_is_not_there_or_has_no_name_is_not_attached) {
  const TemporaryFolder folder;
  CMessage message;
  const auto number_of_failure = [&](const std::filesystem::path& file) {
    try {
      attach(message, file);
    } catch (const Error& error) {
      return static_cast<int>(error.number());
    }
    return 0;
  };
  EXPECT_EQ(number_of_failure(folder.path("missing.txt")), 30011);
  EXPECT_EQ(number_of_failure({}), 30007);
}

#ifndef _WIN32

// Files that a code page of the system's could not name.
TEST(Paths, a_mailbox_with_a_name_in_any_characters_is_opened) {
  const TemporaryFolder folder;
  for (const char* name :
       {"\xD0\xBF\xD0\xBE\xD1\x87\xD1\x82\xD0\xB0.mbox", "caf\xC3\xA9.mbox", "not UTF-8 \xFF\x81.mbox"}) {
    const std::filesystem::path file = folder.file(name, "From a\nSubject: one\n\nbody\n");
    CVellobar box;
    box.SetFilename(filename(file));
    box.Lock();
    ASSERT_EQ(box.Messages()->Count(), 1);
    EXPECT_EQ(box.Messages()->Item(0)->Subject(), u"one");
  }
}

TEST(Paths, a_name_beyond_ascii_is_attached_as_an_encoded_word) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.file("\xD0\xBF.txt", "1. Lullaby\n");
  CMessage message;
  attach(message, file);
  EXPECT_EQ(headers_of_attachment(message),
            u"Content-Type: application/octet-stream;\r\n\t name=\"=?UTF-8?B?0L8udHh0?=\"\r\n"
            u"Content-Transfer-Encoding: base64\r\n"
            u"Content-Disposition: attachment; filename=\"=?UTF-8?B?0L8udHh0?=\"\r\n");
}

#endif

}  // namespace vellobar::tests
