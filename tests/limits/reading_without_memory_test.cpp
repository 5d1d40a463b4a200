// What a client reads, with every allocation refused in turn: the same call gives the right answer as soon as there is
// memory again.
#include <gtest/gtest.h>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "attachments/block_source.h"
#include "codecs/attachment_encoding.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "platform/code_page.h"
#include "platform/file_handle.h"
#include "tests/limits/scarce_memory.h"

namespace vellobar::tests {
namespace {

constexpr std::string_view kMail =
    "From ann@example.org Tue Nov 15 08:12:31 1994\n"
    "From: =?utf-8?Q?Ann_=C3=89mile_the_first_of_her_name?= <ann@example.org>\n"
    "To: \"Bob, the second one\" <bob@example.org>,\n\tCarla Charles <carla@example.org>\n"
    "Subject: =?utf-8?B?R3LDvMOfZSBhdXMgWsO8cmljaA==?=\n"
    "Content-Description: =?windows-1251?Q?=CF=F0=E8=E2=E5=F2?=\n"
    "Content-ID: =?utf-7?Q?+AOk-t?=\n"
    "Date: Tue, 15 Nov 1994 08:12:31 +0000\n"
    "Content-Type: multipart/mixed; charset=\"windows-1252\"; boundary=\"the outer boundary\"\n"
    "\n"
    "a preamble that is long enough\n"
    "--the outer boundary\n"
    "Content-Type: multipart/alternative; boundary=\"the inner boundary\"\n"
    "\n"
    "--the inner boundary\n"
    "Content-Type: text/plain; charset=utf-8\n"
    "Content-Transfer-Encoding: base64\n"
    "\n"
    "YSBwbGFpbiB0ZXh0IG9mIHNvbWUgbGVuZ3RoLg==\n"
    "--the inner boundary\n"
    "Content-Type: text/html; charset=utf-8\n"
    "Content-Transfer-Encoding: quoted-printable\n"
    "\n"
    "<p>a text in =48TML of some length</p>.\n"
    "--the inner boundary--\n"
    "--the outer boundary\n"
    "Content-Type: application/octet-stream; name=\"a file with a long name.bin\"\n"
    "Content-Transfer-Encoding: base64\n"
    "\n"
    "dGhlIGNvbnRlbnQgb2YgdGhlIGZpbGU=\n"
    "--the outer boundary--\n"
    "From bob@example.org Tue Nov 15 09:00:00 1994\n"
    "Subject: a text with a file in it\n"
    "\n"
    "See below.\n"
    "begin 644 a-file-in-the-text.txt\n"
    "#04)#\n"
    "end\n"
    "\n";

void lock(Bench& bench) { bench.control->Lock(); }

/// Reads with some of the memory refused and then with all of it.
void read_all(const Step& read, const std::string& expected, std::string_view mail = kMail) {
  const Check check = [&](Bench& bench, bool) {
    bench.seen.clear();
    read(bench);
    EXPECT_EQ(bench.seen, expected);
  };
  refuse_each_allocation({mail, lock, read, check});
}

void see(Bench& bench, std::u16string_view text) { bench.seen += plain(text) + "|"; }

TEST(ReadingWithoutMemory, a_mailbox_that_could_not_be_indexed_is_locked_again_whole) {
  const Check check = [](Bench& bench, bool is_done) {
    EXPECT_TRUE(!is_done || bench.control->Messages()->Count() == 2);
    bench.control->Unlock();
    bench.control->Lock();
    EXPECT_EQ(bench.control->Messages()->Count(), 2);
  };
  refuse_each_allocation({kMail, nullptr, lock, check});
}

TEST(ReadingWithoutMemory, unlocking_leaves_an_empty_collection_or_the_mailbox_locked) {
  const Step unlock = [](Bench& bench) { bench.control->Unlock(); };
  const Check check = [](Bench& bench, bool is_done) {
    EXPECT_EQ(bench.control->Locked(), !is_done);
    EXPECT_EQ(bench.control->Messages()->Count(), is_done ? 0 : 2);
    EXPECT_EQ(bench.control->Messages()->owner()->control, bench.control.get());
    bench.control->Unlock();
    EXPECT_EQ(bench.control->Messages()->Count(), 0);
  };
  refuse_each_allocation({kMail, lock, unlock, check});
}

TEST(ReadingWithoutMemory, headers_are_found_by_position_and_by_name) {
  const Step read = [](Bench& bench) {
    const auto headers = bench.message()->Headers();
    see(bench, headers->Item(1)->Value());
    see(bench, headers->Item(u"CONTENT-TYPE")->Name());
    see(bench, headers->Item(u"date")->ToString());
    bench.seen += std::to_string(headers->ToString().size());
  };
  read_all(read,
           "\"Bob, the second one\" <bob@example.org>,\r\n\tCarla Charles <carla@example.org>|Content-Type|"
           "Date: Tue, 15 Nov 1994 08:12:31 +0000|424");
}

TEST(ReadingWithoutMemory, named_properties_are_decoded) {
  const Step read = [](Bench& bench) {
    CMessage& message = *bench.message();
    see(bench, message.From());
    see(bench, message.FromName());
    see(bench, message.FromEmail());
    see(bench, message.ToName());
    see(bench, message.ToEmail());
    see(bench, message.CharSet());
    see(bench, message.MailInfo());
    bench.seen += std::to_string(static_cast<int>(message.Date()));
  };
  read_all(read,
           "Ann ?mile the first of her name <ann@example.org>|Ann ?mile the first of her name|ann@example.org|"
           "Bob, the second one, Carla Charles|bob@example.org, carla@example.org|windows-1252|"
           "From ann@example.org Tue Nov 15 08:12:31 1994|34653");
}

TEST(ReadingWithoutMemory, encoded_words_of_every_kind_are_decoded) {
  const Step read = [](Bench& bench) {
    CMessage& message = *bench.message();
    for (const auto& text : {message.Subject(), message.ContentDescription(), message.ContentID()}) {
      bench.seen += platform::narrow(platform::kUtf8CodePage, text) + "|";
    }
  };
  read_all(read, "Gr\u00FC\u00DFe aus Z\u00FCrich|\u041F\u0440\u0438\u0432\u0435\u0442|\u00E9t|");
}

TEST(ReadingWithoutMemory, the_tree_of_parts_is_whole) {
  const Step read = [](Bench& bench) {
    std::vector<std::shared_ptr<CMessage>> waiting{bench.message()};
    while (!waiting.empty()) {
      const auto message = waiting.back();
      waiting.pop_back();
      see(bench, message->Text());
      see(bench, message->PartsBoundary());
      const auto parts = message->Parts();
      for (std::int64_t i = 0; i < parts->Count(); ++i) waiting.push_back(parts->Item(i));
    }
  };
  read_all(read,
           "a preamble that is long enough\n|--the outer boundary|"
           "dGhlIGNvbnRlbnQgb2YgdGhlIGZpbGU=\n||"
           "|--the inner boundary|"
           "<p>a text in =48TML of some length</p>.\n||"
           "YSBwbGFpbiB0ZXh0IG9mIHNvbWUgbGVuZ3RoLg==\n||");
}

TEST(ReadingWithoutMemory, texts_are_found_and_decoded) {
  const Step read = [](Bench& bench) {
    see(bench, bench.message()->PlainText());
    see(bench, bench.message()->HTMLText());
    see(bench, bench.message()->Parts()->Item(1)->DecodedText(codecs::AttachmentEncoding::base64));
  };
  read_all(read, "a plain text of some length|<p>a text in HTML of some length</p>.|the content of the file|");
}

TEST(ReadingWithoutMemory, a_whole_message_is_given_loaded_and_unloaded) {
  const Step read = [](Bench& bench) {
    CMessage& message = *bench.message(1);
    message.Load();
    see(bench, message.Body());
    see(bench, message.Text());
  };
  read_all(read,
           "Subject: a text with a file in it\r\n\r\n"
           "See below.\nbegin 644 a-file-in-the-text.txt\n#04)#\nend\n\n|"
           "See below.\nbegin 644 a-file-in-the-text.txt\n#04)#\nend\n\n|");
}

TEST(ReadingWithoutMemory, an_attachment_is_saved_once_it_was_found) {
  const Step prepare = [](Bench& bench) {
    lock(bench);
    EXPECT_EQ(bench.message()->Attachments()->Count(), 1);
  };
  const Step save = [](Bench& bench) {
    bench.message()->Attachments()->Item(0)->Save(wide(bench.folder.path("saved")));
    bench.seen = read_file(bench.folder.path("saved"));
  };
  const Check check = [&](Bench& bench, bool) {
    save(bench);
    EXPECT_EQ(bench.seen, "the content of the file");
  };
  refuse_each_allocation({kMail, prepare, save, check});
}

// A search that fails is not made again; what it found stays, and another collection finds everything.
TEST(ReadingWithoutMemory, attachments_are_found_as_far_as_there_is_memory) {
  const Step find = [](Bench& bench) {
    const auto attachments = bench.message()->Attachments();
    for (std::int64_t i = 0; i < attachments->Count(); ++i) see(bench, attachments->Item(i)->Name());
  };
  const Check check = [&](Bench& bench, bool is_done) {
    bench.seen.clear();
    find(bench);
    EXPECT_TRUE(bench.seen == "a file with a long name.bin|" || (!is_done && bench.seen.empty())) << bench.seen;
    bench.message()->Unload();
    bench.seen.clear();
    find(bench);
    EXPECT_EQ(bench.seen, "a file with a long name.bin|");
  };
  refuse_each_allocation({kMail, lock, find, check});
}

void find_a_block_in_text() {
  const Step find = [](Bench& bench) {
    const auto attachments = bench.message(1)->Attachments();
    attachments->SetScanText(true);
    for (std::int64_t i = 0; i < attachments->Count(); ++i) see(bench, attachments->Item(i)->Name());
  };
  const Check check = [&](Bench& bench, bool is_done) {
    const auto attachments = bench.message(1)->Attachments();
    const auto files = bench.temporary.names();
    EXPECT_EQ(static_cast<std::size_t>(attachments->Count()), files.size());
    EXPECT_TRUE(!is_done || bench.seen == "a-file-in-the-text.txt|") << bench.seen;
    for (const std::string& name : files) platform::remove_file(bench.temporary.path(name));
  };
  refuse_each_allocation({kMail, lock, find, check});
}

TEST(ReadingWithoutMemory, every_file_of_a_block_in_text_belongs_to_an_attachment) { find_a_block_in_text(); }

TEST(ReadingWithoutMemory, every_file_of_a_block_belongs_to_an_attachment_when_enough_of_them_are_open) {
  TemporaryFolder folder;
  const platform::FixedTemporaryFolder temporary(folder.path(""));
  CMessage others;
  std::u16string text;
  for (int i = 0; i < attachments::kBlockFilesKeptOpen; ++i) text += u"begin 644 f\r\n#04)#\r\nend\r\n\r\n";
  others.SetText(text);
  others.Attachments()->SetScanText(true);
  ASSERT_EQ(others.Attachments()->Count(), attachments::kBlockFilesKeptOpen);
  find_a_block_in_text();
}

TEST(ReadingWithoutMemory, a_saved_message_is_whole_and_an_older_file_stays_when_it_fails) {
  const Step prepare = [](Bench& bench) {
    lock(bench);
    write_file(bench.folder.path("saved"), "what was there before");
  };
  const Step save = [](Bench& bench) { bench.message(1)->Save(wide(bench.folder.path("saved"))); };
  const Check check = [&](Bench& bench, bool is_done) {
    const std::string whole =
        "From bob@example.org Tue Nov 15 09:00:00 1994\r\nSubject: a text with a file in it\r\n\r\n"
        "See below.\nbegin 644 a-file-in-the-text.txt\n#04)#\nend\n\n";
    EXPECT_EQ(read_file(bench.folder.path("saved")), is_done ? whole : "what was there before");
    save(bench);
    EXPECT_EQ(read_file(bench.folder.path("saved")), whole);
  };
  refuse_each_allocation({kMail, prepare, save, check});
}

}  // namespace
}  // namespace vellobar::tests
