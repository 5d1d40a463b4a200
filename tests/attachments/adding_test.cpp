#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/resource.h>

#include <csignal>
#endif

#include <filesystem>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using tests::expect_error;
using tests::expect_status;
using tests::Mailbox;
using tests::wide;

constexpr std::string_view kMessage = "From a\nSubject: x\n\nbody\n";

/// A mailbox of one message, a temporary folder of its own, and files to attach.
class Adding : public testing::Test {
 protected:
  Adding() : box_(kMessage) { box_.control().Lock(); }

  /// A file whose name has a backslash before "a.bin" on every system: a folder separator on Windows, a part of the
  /// name elsewhere.
  std::u16string file(std::string_view content) { return wide(files_.file("dir\\a.bin", content)); }

  /// The text of the part that adding a file makes.
  std::string added(std::string_view content, std::optional<int> encoding) {
    const std::u16string path = file(content);
    box_.message(0)->Attachments()->Add(path, encoding);
    const std::vector<std::string> made = temporary_.names();
    EXPECT_EQ(made.size(), 1u);
    return made.empty() ? std::string() : tests::read_file(temporary_.path(made[0]));
  }

  void SetUp() override { std::filesystem::create_directory(files_.path("dir")); }

  tests::TemporaryFolder files_;
  tests::TemporaryFolder temporary_;
  platform::FixedTemporaryFolder fixed_{temporary_.path("")};
  Mailbox box_;
};

TEST_F(Adding, a_base64_part_has_type_encoding_disposition_and_the_coded_lines) {
  EXPECT_EQ(added("ABC", 1),
            "Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
            "Content-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
            "QUJD\r\n");
}

TEST_F(Adding, without_an_encoding_a_part_is_base64) {
  EXPECT_EQ(added("", std::nullopt),
            "Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
            "Content-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
            "\r\n");
}

TEST_F(Adding, a_binhex_part_has_its_disposition_behind_the_opening_colon) {
  EXPECT_EQ(added("ABC", 2),
            "Content-Type: application/mac-binhex40\r\n\r\n"
            "(This file must be converted with BinHex 4.0)\r\n:"
            "Content-Disposition: attachment; filename=\"a.bin\"\r\n"
            "38*$:\r\n");
}

TEST_F(Adding, a_uu_part_is_framed_by_begin_644_and_end_on_a_line_of_its_own) {
  EXPECT_EQ(added("ABCD", 3),
            "Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
            "Content-Transfer-Encoding: x-uuencode\r\n"
            "Content-Disposition: attachment;\r\n\t filename=\"a.bin\"\r\n\r\n"
            "begin 644 a.bin\r\n"
            "$04)#1`\r\n"
            "\r\nend\r\n");
}

TEST_F(Adding, a_quoted_printable_part_is_escaped) {
  EXPECT_EQ(added("a=\xE4\r\n", 4),
            "Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
            "Content-Transfer-Encoding: quoted-printable\r\n"
            "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
            "a=3D=E4\r\n");
}

TEST_F(Adding, a_7bit_part_is_text_with_the_bytes_unchanged_and_no_disposition) {
  EXPECT_EQ(added("a=\xE4\n\r\n", 5),
            "Content-Type: text/plain;\r\n\t name=\"a.bin\"\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\n"
            "a=\xE4\n\r\n");
}

TEST_F(Adding, a_large_7bit_file_is_copied_whole) {
  std::string content;
  for (int i = 0; i < 100'000; ++i) content += static_cast<char>(i % 251);
  EXPECT_TRUE(added(content, 5).ends_with("7bit\r\n\r\n" + content));
}

TEST_F(Adding, add_takes_the_name_behind_the_last_backslash_and_else_unknown) {
  const std::u16string slashes = wide(files_.file("plain.bin", "x"));
  ASSERT_EQ(std::filesystem::path::preferred_separator == '/', slashes.find(u'\\') == slashes.npos);
  const auto part = box_.message(0)->Attachments()->Add(slashes);
  const bool has_backslash = slashes.find(u'\\') != slashes.npos;
  EXPECT_EQ(part->ContentDisposition(),
            has_backslash ? u"attachment; filename=\"plain.bin\"" : u"attachment; filename=\"unknown\"");
}

TEST_F(Adding, a_bare_file_name_or_one_with_slashes_only_names_the_attachment_unknown) {
  EXPECT_EQ(CAttachments::name_for(u"C:\\dir\\a.bin"), u"a.bin");
  EXPECT_EQ(CAttachments::name_for(u"C:/dir/a.bin"), u"unknown");
  EXPECT_EQ(CAttachments::name_for(u"dir\\"), u"");
  EXPECT_EQ(CAttachments::name_for(u""), u"unknown");
  files_.file("bare.bin", "ABC");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(files_.path(""));
  box_.message(0)->Attachments()->Add(u"bare.bin", 1);
  std::filesystem::current_path(before);
  ASSERT_EQ(temporary_.names().size(), 1u);
  EXPECT_EQ(tests::read_file(temporary_.path(temporary_.names()[0])),
            "Content-Type: application/octet-stream;\r\n\t name=\"unknown\"\r\n"
            "Content-Transfer-Encoding: base64\r\n"
            "Content-Disposition: attachment; filename=\"unknown\"\r\n\r\n"
            "QUJD\r\n");
}

TEST_F(Adding, the_new_part_is_the_result_and_the_last_of_the_messages_parts) {
  const auto part = box_.message(0)->Attachments()->Add(file("ABC"));
  const auto parts = box_.message(0)->Parts();
  ASSERT_EQ(parts->Count(), 1);
  EXPECT_EQ(parts->Item(0), part);
  EXPECT_EQ(part->Text(), u"QUJD\r\n");
  EXPECT_EQ(part->ContentTransferEncoding(), u"base64");
}

TEST_F(Adding, does_not_join_the_list_but_a_first_count_that_comes_later_finds_it) {
  const auto message = box_.message(0);
  const auto attachments = message->Attachments();
  EXPECT_EQ(attachments->Count(), 0);
  attachments->Add(file("ABC"));
  EXPECT_EQ(attachments->Count(), 0);
  box_.control().Unlock();
  box_.control().Lock();
  const auto fresh = box_.message(0)->Attachments();
  fresh->Add(file("ABC"));
  EXPECT_EQ(fresh->Count(), 1);
  EXPECT_EQ(fresh->Item(0)->Name(), u"a.bin");
}

TEST_F(Adding, what_was_added_is_saved_from_its_own_file) {
  const auto attachments = box_.message(0)->Attachments();
  attachments->Add(file("some bytes\0\xFF"));
  const std::u16string target = wide(files_.path("out"));
  attachments->Item(0)->Save(target);
  EXPECT_EQ(tests::read_file(files_.path("out")), "some bytes\0\xFF");
}

TEST_F(Adding, marks_the_mailbox_changed) {
  box_.message(0)->Attachments()->Add(file("ABC"));
  EXPECT_TRUE(box_.control().Changed());
}

TEST_F(Adding, with_auto_update_writes_the_mailbox_at_once) {
  box_.control().SetAutoUpdate(true);
  const auto part = box_.message(0)->Attachments()->Add(file("ABC"));
  EXPECT_FALSE(box_.control().Changed());
  EXPECT_EQ(box_.message(0)->Attachments()->Count(), 1);
  EXPECT_EQ(part->Text(), u"QUJD\r\n");
}

TEST_F(Adding, its_temporary_file_is_deleted_by_the_parts_own_unload_only) {
  auto part = box_.message(0)->Attachments()->Add(file("ABC"));
  EXPECT_EQ(temporary_.names().size(), 1u);
  part->Unload();
  EXPECT_EQ(temporary_.names().size(), 0u);
  part = box_.message(0)->Attachments()->Add(file("ABC"));
  box_.control().Unlock();
  part.reset();
  EXPECT_EQ(temporary_.names().size(), 1u);
}

TEST_F(Adding, an_empty_file_name_reports_30007) {
  expect_error(ErrorNumber::filename_not_given, Reporter::vellobar, [&] { box_.message(0)->Attachments()->Add(u""); });
}

TEST_F(Adding, a_file_that_cannot_be_opened_reports_30011_and_adds_nothing) {
  for (const std::string& path : {files_.path("missing"), files_.path("dir")}) {
    expect_error(ErrorNumber::cannot_open_file, Reporter::vellobar,
                 [&] { box_.message(0)->Attachments()->Add(wide(path)); });
  }
  EXPECT_EQ(box_.message(0)->Parts()->Count(), 0);
  EXPECT_EQ(temporary_.names().size(), 0u);
  EXPECT_FALSE(box_.control().Changed());
}

TEST_F(Adding, another_encoding_reports_30013_and_leaves_the_temporary_file_behind) {
  for (const int encoding : {0, 6, -1}) {
    const std::u16string path = file("ABC");
    expect_error(ErrorNumber::unsupported_encoding, Reporter::vellobar,
                 [&] { box_.message(0)->Attachments()->Add(path, encoding); });
  }
  EXPECT_EQ(temporary_.names().size(), 3u);
  EXPECT_EQ(box_.message(0)->Parts()->Count(), 0);
}

TEST_F(Adding, without_a_temporary_folder_reports_30012_and_adds_nothing) {
  const std::u16string path = file("ABC");
  const platform::FixedTemporaryFolder missing(temporary_.path("missing/"));
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar,
               [&] { box_.message(0)->Attachments()->Add(path); });
  EXPECT_EQ(box_.message(0)->Parts()->Count(), 0);
}

#ifdef __linux__

/// No file can be written beyond this size until the object dies.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : signal_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, signal_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*signal_)(int);
  rlimit before_{};
};

TEST_F(Adding, a_temporary_folder_without_room_reports_30012_and_leaves_nothing_behind) {
  const std::u16string path = file(std::string(100'000, 'x'));
  const FileSizeLimit limit(50'000);
  expect_error(ErrorNumber::cannot_write_temporary_file, Reporter::vellobar,
               [&] { box_.message(0)->Attachments()->Add(path); });
  EXPECT_EQ(temporary_.names().size(), 0u);
  EXPECT_EQ(box_.message(0)->Parts()->Count(), 0);
  EXPECT_FALSE(box_.control().Changed());
}

#endif

TEST_F(Adding, without_a_control_every_error_is_a_plain_failure) {
  const auto message = std::make_shared<CMessage>();
  const auto attachments = message->Attachments();
  const std::u16string path = file("ABC");
  expect_status(Status::fail, [&] { attachments->Add(u""); });
  expect_status(Status::fail, [&] { attachments->Add(wide(files_.path("missing"))); });
  expect_status(Status::fail, [&] { attachments->Add(path, 0); });
  EXPECT_NE(attachments->Add(path), nullptr);
}

// ---- Round trips ----

std::string bytes_of_size(std::size_t size, std::string_view end = {}) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i * 7 + i / 256 + 3);
  return bytes.append(end);
}

std::vector<std::size_t> interesting_sizes() {
  std::vector<std::size_t> sizes;
  for (std::size_t size = 0; size <= 200; ++size) sizes.push_back(size);
  for (const std::size_t edge : {260, 512, 570, 1000, 1024, 2048, 16384, 32768, 49152, 65536, 262144}) {
    for (std::size_t size = edge - 2; size <= edge + 2; ++size) sizes.push_back(size);
  }
  return sizes;
}

/// What comes back of these files from a mailbox to which they were added, that was written, and read again.
std::vector<std::string> round_trip(const tests::TemporaryFolder& files, const std::vector<std::string>& contents,
                                    int encoding) {
  Mailbox box(kMessage);
  box.control().Lock();
  for (const std::string& content : contents) {
    box.message(0)->Attachments()->Add(wide(files.file("dir\\in.bin", content)), encoding);
  }
  box.control().Update();
  EXPECT_EQ(box.count(), 1);
  std::vector<std::string> got;
  const auto attachments = box.message(0)->Attachments();
  for (std::int64_t i = 0; i < attachments->Count(); ++i) {
    EXPECT_EQ(attachments->Item(i)->Name(), u"in.bin");
    EXPECT_EQ(attachments->Item(i)->Encoding(), encoding);
    attachments->Item(i)->Save(wide(files.path("out")));
    got.push_back(tests::read_file(files.path("out")));
  }
  return got;
}

TEST_F(Adding, base64_gives_back_every_file) {
  std::vector<std::string> contents;
  for (const std::size_t size : interesting_sizes()) contents.push_back(bytes_of_size(size));
  const std::vector<std::string> got = round_trip(files_, contents, 1);
  ASSERT_EQ(got.size(), contents.size());
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_TRUE(got[i] == contents[i]) << contents[i].size();
}

TEST_F(Adding, a_uu_part_of_whole_groups_that_fill_no_line_has_no_length_to_be_read_back_with) {
  EXPECT_TRUE(added("ABC", 3).ends_with("begin 644 a.bin\r\n`04)#\r\nend\r\n"));
}

TEST_F(Adding, uu_gives_back_every_other_file_with_the_last_group_filled_up) {
  std::vector<std::string> contents;
  for (const std::size_t size : interesting_sizes()) {
    const bool has_no_length = size > 0 && size < 45 && size % 3 == 0;
    if (!has_no_length) contents.push_back(bytes_of_size(size));
  }
  const std::vector<std::string> got = round_trip(files_, contents, 3);
  ASSERT_EQ(got.size(), contents.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_TRUE(got[i].starts_with(contents[i])) << contents[i].size();
    EXPECT_EQ(got[i].size(), (contents[i].size() + 2) / 3 * 3);
  }
}

TEST_F(Adding, a_file_without_a_last_line_end_gets_one_before_the_delimiter_and_is_not_lost) {
  EXPECT_EQ(round_trip(files_, {"first", "second"}, 4), (std::vector<std::string>{"first\r\n", "second\r\n"}));
}

TEST(AddingToTheLastMessage, whose_text_has_no_last_line_end_keeps_text_and_attachment) {
  tests::TemporaryFolder files;
  Mailbox box("From a\nSubject: x\n\nno line end");
  box.control().Lock();
  box.message(0)->Attachments()->Add(wide(files.file("a.bin", "ABC")));
  box.control().Update();
  EXPECT_EQ(box.message(0)->Text(), u"no line end\r\n");
  ASSERT_EQ(box.message(0)->Attachments()->Count(), 1);
  box.message(0)->Attachments()->Item(0)->Save(wide(files.path("out")));
  EXPECT_EQ(tests::read_file(files.path("out")), "ABC");
}

TEST_F(Adding, quoted_printable_gives_back_every_file_that_ends_with_a_line_end) {
  std::vector<std::string> contents;
  for (const std::size_t size : interesting_sizes()) contents.push_back(bytes_of_size(size, "\r\n"));
  const std::vector<std::string> got = round_trip(files_, contents, 4);
  ASSERT_EQ(got.size(), contents.size());
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_TRUE(got[i] == contents[i]) << contents[i].size();
}

}  // namespace
}  // namespace vellobar
