#include "attachments/attachment.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "attachments/attachments.h"
#include "platform/file.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::Mailbox;
using tests::wide;

/// A message whose only attachment is itself: "ABC" in Base64 under this name.
std::string message_named(std::string_view name) {
  return "From a\nContent-Transfer-Encoding: base64\nContent-Type: application/x; name=\"" + std::string(name) +
         "\"\n\nQUJD\n";
}

std::shared_ptr<CAttachment> only_attachment(Mailbox& box) { return box.message(0)->Attachments()->Item(0); }

/// The working folder is another one until the object dies.
class WorkingFolder {
 public:
  explicit WorkingFolder(const std::string& path) : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~WorkingFolder() { std::filesystem::current_path(before_); }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

 private:
  std::filesystem::path before_;
};

std::shared_ptr<CAttachment> attachment_in(const std::string& path, std::int64_t start, std::int64_t end,
                                           int encoding) {
  return std::make_shared<CAttachment>(nullptr, HoldingPart(), CodedRange{platform::File::open(path), start, end},
                                       encoding);
}

TEST(Attachment, name_type_and_encoding_are_what_the_client_puts) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const auto attachment = only_attachment(box);
  attachment->SetName(u"b");
  attachment->SetType(u"t");
  attachment->SetEncoding(99);
  EXPECT_EQ(attachment->Name(), u"b");
  EXPECT_EQ(attachment->Type(), u"t");
  EXPECT_EQ(attachment->Encoding(), 99);
  EXPECT_FALSE(box.control().Changed());
}

TEST(Attachment, save_with_a_name_decodes_to_that_file) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const std::string target = box.folder().path("out");
  only_attachment(box)->Save(wide(target));
  EXPECT_EQ(tests::read_file(target), "ABC");
}

TEST(Attachment, save_replaces_an_existing_file) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const std::string target = box.folder().file("out", "something longer than the attachment");
  only_attachment(box)->Save(wide(target));
  EXPECT_EQ(tests::read_file(target), "ABC");
}

TEST(Attachment, save_without_a_name_writes_to_a_file_named_after_it_in_the_current_directory) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  tests::TemporaryFolder folder;
  const WorkingFolder working(folder.path(""));
  only_attachment(box)->Save();
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.bin"});
  EXPECT_EQ(tests::read_file(folder.path("a.bin")), "ABC");
}

TEST(Attachment, save_without_a_name_never_leaves_the_current_directory) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"../a.bin", "a.bin"},
      {"..\\..\\a.bin", "a.bin"},
      {"/etc/a.bin", "a.bin"},
      {"C:\\dir\\a.bin", "a.bin"},
      {"C:a.bin", "a.bin"},
      {"NUL", "_NUL"},
      {"a:b", "b"},
      {"ab:c", "ab_c"},
      {"..", "__"},
  };
  for (const auto& [name, expected] : cases) {
    Mailbox box(message_named(name));
    box.control().Lock();
    tests::TemporaryFolder outer;
    std::filesystem::create_directory(outer.path("inner"));
    {
      const WorkingFolder working(outer.path("inner"));
      only_attachment(box)->Save();
    }
    EXPECT_EQ(only_attachment(box)->Name(), wide(name));
    EXPECT_EQ(outer.names(), std::vector<std::string>{"inner"}) << name;
    EXPECT_EQ(tests::read_file(outer.path("inner/" + std::string(expected))), "ABC") << name;
  }
}

TEST(Attachment, a_name_that_the_client_put_is_used_exactly) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const auto attachment = only_attachment(box);
  attachment->SetName(wide(box.folder().path("put.bin")));
  attachment->Save();
  EXPECT_EQ(tests::read_file(box.folder().path("put.bin")), "ABC");
}

TEST(Attachment, saving_with_an_empty_name_reports_30007) {
  Mailbox box("From a\nContent-Transfer-Encoding: base64\nContent-Disposition: attachment\n\nQUJD\n");
  box.control().Lock();
  const auto attachment = only_attachment(box);
  EXPECT_EQ(attachment->Name(), u"");
  expect_error(ErrorNumber::filename_not_given, Reporter::attachment, [&] { attachment->Save(); });
  expect_error(ErrorNumber::filename_not_given, Reporter::attachment, [&] { attachment->Save(u""); });
}

TEST(Attachment, saving_under_a_name_that_is_only_a_folder_reports_30007) {
  Mailbox box(message_named("C:\\dir\\"));
  box.control().Lock();
  expect_error(ErrorNumber::filename_not_given, Reporter::attachment, [&] { only_attachment(box)->Save(); });
}

TEST(Attachment, saving_with_an_encoding_outside_1_to_5_reports_30009) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const auto attachment = only_attachment(box);
  const std::u16string target = wide(box.folder().path("out"));
  for (const int encoding : {0, 6, -1, 1000}) {
    attachment->SetEncoding(encoding);
    expect_error(ErrorNumber::unknown_encoder, Reporter::attachment, [&] { attachment->Save(target); });
  }
  EXPECT_EQ(box.folder().names(), std::vector<std::string>{"test.mbox"});
}

TEST(Attachment, an_empty_name_is_reported_before_an_unknown_encoding) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const auto attachment = only_attachment(box);
  attachment->SetEncoding(0);
  expect_error(ErrorNumber::filename_not_given, Reporter::attachment, [&] { attachment->Save(u""); });
}

TEST(Attachment, saving_into_a_missing_folder_or_onto_a_folder_reports_30008) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  for (const std::string& target : {box.folder().path("missing/out"), box.folder().path("")}) {
    expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
                 [&] { only_attachment(box)->Save(wide(target)); });
  }
}

TEST(Attachment, saving_onto_the_locked_mailbox_reports_30008_and_leaves_it_whole) {
  Mailbox box(message_named("a.bin"));
  const std::string before = box.content();
  box.control().Lock();
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { only_attachment(box)->Save(wide(box.path())); });
  std::filesystem::create_hard_link(box.path(), box.folder().path("link"));
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { only_attachment(box)->Save(wide(box.folder().path("link"))); });
  EXPECT_EQ(box.content(), before);
}

TEST(Attachment, saving_onto_the_file_it_is_read_from_reports_30008_and_leaves_it_whole) {
  tests::TemporaryFolder folder;
  const std::string source = folder.file("source", "QUJD");
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { attachment_in(source, 0, 4, 1)->Save(wide(source)); });
  EXPECT_EQ(tests::read_file(source), "QUJD");
}

#ifdef __linux__
TEST(Attachment, a_destination_that_cannot_take_the_bytes_reports_30008) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  expect_error(ErrorNumber::cannot_access_destination, Reporter::attachment,
               [&] { only_attachment(box)->Save(u"/dev/full"); });
}
#endif

TEST(Attachment, an_attachment_held_over_unlock_saves_an_empty_file) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  const auto attachment = only_attachment(box);
  box.control().Unlock();
  attachment->Save(wide(box.folder().path("out")));
  EXPECT_EQ(tests::read_file(box.folder().path("out")), "");
  EXPECT_EQ(attachment->Part(), nullptr);
  EXPECT_EQ(attachment->Name(), u"a.bin");
}

TEST(Attachment, an_attachment_held_over_the_end_of_its_control_saves_an_empty_file) {
  tests::TemporaryFolder folder;
  std::shared_ptr<CAttachment> attachment;
  {
    Mailbox box(message_named("a.bin"));
    box.control().Lock();
    attachment = only_attachment(box);
  }
  attachment->Save(wide(folder.path("out")));
  EXPECT_EQ(tests::read_file(folder.path("out")), "");
}

TEST(Attachment, part_is_the_message_that_holds_it) {
  Mailbox box(message_named("a.bin"));
  box.control().Lock();
  EXPECT_EQ(only_attachment(box)->Part(), box.message(0));
}

TEST(Attachment, each_encoding_has_its_decoder) {
  tests::TemporaryFolder folder;
  struct Case {
    int encoding;
    std::string_view coded, decoded;
  };
  const Case cases[] = {
      {1, "QUJD\r\n", "ABC"},
      // "ABC" in BinHex: 010000 010100 001001 000011 are positions 16, 20, 9 and 3 of the alphabet.
      {2, "junk:38*$:", "ABC"},
      {3, "begin 644 f\r\n#04)#\r\n`\r\nend\r\n", "ABC"},
      {4, "A=42=\r\nC=3D\r\n", "ABC=\r\n"},
      {5, "A=42\r\n", "A=42\r\n"},
  };
  for (const Case& one : cases) {
    const std::string source = folder.file("source", one.coded);
    attachment_in(source, 0, static_cast<std::int64_t>(one.coded.size()), one.encoding)->Save(wide(folder.path("out")));
    EXPECT_EQ(tests::read_file(folder.path("out")), one.decoded) << one.encoding;
  }
}

TEST(Attachment, a_7bit_copy_stops_exactly_at_the_end_offset) {
  tests::TemporaryFolder folder;
  const std::string source = folder.file("source", std::string(2000, 'x'));
  for (const std::int64_t end : {1, 511, 512, 513, 1025, 1999}) {
    attachment_in(source, 1, end, 5)->Save(wide(folder.path("out")));
    EXPECT_EQ(tests::read_file(folder.path("out")).size(), static_cast<std::size_t>(end - 1));
  }
}

TEST(Attachment, size_of_a_base64_attachment_with_1000_coded_bytes_is_750) {
  const auto size = [](int encoding, std::int64_t start, std::int64_t end) {
    return CAttachment(nullptr, {}, {nullptr, start, end}, encoding).Size();
  };
  EXPECT_EQ(size(1, 10, 1010), 750);
  EXPECT_EQ(size(2, 0, 1003), 750);
  EXPECT_EQ(size(3, 0, 1000), 750);
  EXPECT_EQ(size(4, 0, 1000), 1000);
  EXPECT_EQ(size(5, 0, 1000), 1000);
  EXPECT_EQ(size(0, 0, 1000), 1000);
  EXPECT_EQ(size(77, 0, 1000), 1000);
}

TEST(Attachment, a_negative_coded_size_divides_towards_zero_and_saves_an_empty_file) {
  tests::TemporaryFolder folder;
  const std::string source = folder.file("source", "QUJDQUJD");
  const auto attachment = attachment_in(source, 8, 1, 1);
  EXPECT_EQ(attachment->Size(), -3);
  for (int encoding = 1; encoding <= 5; ++encoding) {
    attachment->SetEncoding(encoding);
    attachment->Save(wide(folder.path("out")));
    EXPECT_EQ(tests::read_file(folder.path("out")), "") << encoding;
  }
}

}  // namespace
}  // namespace vellobar
