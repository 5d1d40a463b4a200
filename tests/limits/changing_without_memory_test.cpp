// What a client changes, with every allocation refused in turn: afterwards the mailbox would be written either as it
// was or as it was to become.
#include <gtest/gtest.h>

#include "attachments/attachments.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "platform/file_handle.h"
#include "tests/limits/scarce_memory.h"

namespace vellobar::tests {
namespace {

constexpr std::string_view kMail =
    "From ann@example.org Tue Nov 15 08:12:31 1994\r\n"
    "Subject: a subject of some length\r\n"
    "X-Header-Of-Its-Own: a value of some length\r\n"
    "\r\n"
    "a body of more than fifteen bytes\r\n";

const std::string kSeparator = "From ann@example.org Tue Nov 15 08:12:31 1994\r\n";
const std::string kSubject = "Subject: a subject of some length\r\n";
const std::string kOther = "X-Header-Of-Its-Own: a value of some length\r\n";
const std::string kBody = "\r\na body of more than fifteen bytes\r\n";

/// Changes a mailbox of one message, of which a client has read nothing and then everything.
void change(const Step& act, const std::string& changed) {
  const std::string unchanged = kSeparator + kSubject + kOther + kBody + "\r\n";
  const Step lock = [](Bench& bench) { bench.control->Lock(); };
  const Step load = [](Bench& bench) {
    bench.control->Lock();
    bench.message()->Load();
  };
  const Check check = [&](Bench& bench, bool is_done) {
    const std::string written = bench.written();
    if (!is_done && written == unchanged) return;
    EXPECT_EQ(written, changed);
  };
  refuse_each_allocation({kMail, lock, act, check});
  refuse_each_allocation({kMail, load, act, check});
}

/// The same where it is the client's to have nothing done by a call that failed.
void change_wholly(const Step& act, const std::string& changed) {
  const std::string unchanged = kSeparator + kSubject + kOther + kBody + "\r\n";
  const Step load = [](Bench& bench) {
    bench.control->Lock();
    bench.message()->Load();
  };
  const Check check = [&](Bench& bench, bool is_done) { EXPECT_EQ(bench.written(), is_done ? changed : unchanged); };
  refuse_each_allocation({kMail, load, act, check});
}

TEST(ChangingWithoutMemory, a_headers_name_and_value_are_put) {
  change_wholly([](Bench& bench) { bench.message()->Headers()->Item(1)->SetName(u"X-Another-Name-For-It"); },
                kSeparator + kSubject + "X-Another-Name-For-It: a value of some length\r\n" + kBody + "\r\n");
  change_wholly([](Bench& bench) { bench.message()->Headers()->Item(0)->SetValue(u"another value of some length"); },
                kSeparator + "Subject: another value of some length\r\n" + kOther + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, a_header_is_added_and_removed) {
  change_wholly([](Bench& bench) { bench.message()->Headers()->Add(u"X-Added-Header", u"the value of it"); },
                kSeparator + kSubject + kOther + "X-Added-Header: the value of it\r\n" + kBody + "\r\n");
  change_wholly([](Bench& bench) { bench.message()->Headers()->Remove(u"x-header-of-its-own"); },
                kSeparator + kSubject + kBody + "\r\n");
  change_wholly([](Bench& bench) { bench.message()->Headers()->RemoveAll(); }, kSeparator + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, headers_from_a_string_are_added_all_or_none) {
  change_wholly(
      [](Bench& bench) {
        bench.message()->Headers()->FromString(u"X-First-Of-Two: with a value\r\nX-Second-Of-Two: with another\r\n");
      },
      kSeparator + kSubject + kOther + "X-First-Of-Two: with a value\r\nX-Second-Of-Two: with another\r\n" + kBody +
          "\r\n");
}

// The walk of an automation host over the two headers.
TEST(ChangingWithoutMemory, a_walk_over_headers_that_change_shows_those_there_were) {
  std::shared_ptr<mailbox::Snapshot<CHeaders, CHeader>> walk;
  const Step begin = [&](Bench& bench) {
    bench.control->Lock();
    bench.message()->Load();
    walk = bench.message()->Headers()->snapshot();
  };
  const auto change = [&](const Step& act, const std::string& changed) {
    const std::string unchanged = kSeparator + kSubject + kOther + kBody + "\r\n";
    const Check check = [&](Bench& bench, bool is_done) {
      EXPECT_EQ((*walk)[0]->Name() + (*walk)[1]->Name(), u"SubjectX-Header-Of-Its-Own");
      walk.reset();
      EXPECT_EQ(bench.written(), is_done ? changed : unchanged);
    };
    refuse_each_allocation({kMail, begin, act, check});
  };
  change([](Bench& bench) { bench.message()->Headers()->RemoveAll(); }, kSeparator + kBody + "\r\n");
  change([](Bench& bench) { bench.message()->Headers()->Remove(0); }, kSeparator + kOther + kBody + "\r\n");
  change([](Bench& bench) { bench.message()->SetSubject(u""); }, kSeparator + kOther + kBody + "\r\n");
  change([](Bench& bench) { bench.message()->Headers()->FromString(u"X-First: a\r\nX-Second: b\r\n"); },
         kSeparator + kSubject + kOther + "X-First: a\r\nX-Second: b\r\n" + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, a_header_is_parsed_wholly_or_not_at_all) {
  const Step parse = [](Bench& bench) {
    bench.message()->Headers()->Item(0)->parse_line(u"X-Parsed-Header: with the value it has");
  };
  change_wholly(parse, kSeparator + "X-Parsed-Header: with the value it has\r\n" + kOther + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, named_properties_are_put) {
  change_wholly([](Bench& bench) { bench.message()->SetSubject(u"Gr\u00FC\u00DFe von weit her"); },
                kSeparator + "Subject: =?UTF-8?B?R3LDvMOfZSB2b24gd2VpdCBoZXI=?=\r\n" + kOther + kBody + "\r\n");
  change_wholly([](Bench& bench) { bench.message()->SetTo(u"Bob Brown <bob@example.org>"); },
                kSeparator + kSubject + kOther + "To: \"Bob Brown\" <bob@example.org>\r\n" + kBody + "\r\n");
  change_wholly([](Bench& bench) { bench.message()->SetContentID(u""); },
                kSeparator + kSubject + kOther + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, mail_info_is_put) {
  change([](Bench& bench) { bench.message()->SetMailInfo(u"From somebody else in this world"); },
         "From somebody else in this world\r\n" + kSubject + kOther + kBody + "\r\n");
}

TEST(ChangingWithoutMemory, text_is_put_and_the_old_one_stays_when_it_fails) {
  change([](Bench& bench) { bench.message()->SetText(u"another text that is long enough"); },
         kSeparator + kSubject + kOther + "\r\nanother text that is long enough\r\n\r\n");
}

TEST(ChangingWithoutMemory, body_is_put_and_the_old_one_stays_when_it_fails) {
  change([](Bench& bench) { bench.message()->SetBody(u"X-New: a new header\r\n\r\nanother text that is long enough"); },
         kSeparator + "X-New: a new header\r\n\r\nanother text that is long enough\r\n");
}

TEST(ChangingWithoutMemory, a_file_is_peeked_at_and_the_old_content_stays_when_it_fails) {
  change(
      [](Bench& bench) {
        write_file(bench.folder.path("peeked"), "X-Peeked: a header of the file\r\n\r\nand the text of it\r\n");
        bench.message()->Peek(wide(bench.folder.path("peeked")));
      },
      kSeparator + "X-Peeked: a header of the file\r\n\r\nand the text of it\r\n\r\n");
}

TEST(ChangingWithoutMemory, messages_are_added_and_removed) {
  const std::string old = kSeparator + kSubject + kOther + kBody;
  change([](Bench& bench) { bench.control->Messages()->Add(); }, old + "From <unknown>\r\n\r\n\r\n");
  change(
      [](Bench& bench) {
        write_file(bench.folder.path("added"), "From: Bob Brown <bob@example.org>\r\n\r\nthe text of it\r\n");
        bench.control->Messages()->Add(wide(bench.folder.path("added")));
      },
      old + "From bob@example.org\r\nFrom: Bob Brown <bob@example.org>\r\n\r\nthe text of it\r\n\r\n");
  change([](Bench& bench) { bench.control->Messages()->Remove(*bench.message()); }, "");
  change([](Bench& bench) { bench.control->Messages()->RemoveAll(); }, "");
}

TEST(ChangingWithoutMemory, an_existing_message_is_added) {
  const Step act = [](Bench& bench) {
    const auto message = std::make_shared<CMessage>();
    message->SetFrom(u"Bob Brown <bob@example.org>");
    message->SetText(u"the text that was put");
    bench.control->Messages()->Add(message);
  };
  change(act, kSeparator + kSubject + kOther + kBody +
                  "From bob@example.org\r\nFrom: \"Bob Brown\" <bob@example.org>\r\n\r\nthe text that was put\r\n\r\n");
}

/// What is written with the boundary, which differs from time to time, called B.
std::string with_plain_boundary(std::string written) {
  const std::size_t at = written.find("----=_NextPart_");
  if (at == std::string::npos) return written;
  const std::string boundary = written.substr(at, written.find('"', at) - at);
  for (std::size_t i = written.find(boundary); i != std::string::npos; i = written.find(boundary)) {
    written.replace(i, boundary.size(), "B");
  }
  return written;
}

/// Adds a part to a message without any, which makes it multipart.
void add_part(const Step& act, const std::string& part) {
  const Step lock = [](Bench& bench) {
    bench.control->Lock();
    bench.message()->Load();
    write_file(bench.folder.path("attached"), "the content of it");
  };
  const Check check = [&](Bench& bench, bool is_done) {
    const std::string changed = kSeparator + kSubject + kOther + "Content-Type: multipart/mixed; boundary=\"B\"\r\n" +
                                kBody + "--B\r\n" + part + "--B--\r\n\r\n\r\n";
    EXPECT_EQ(with_plain_boundary(bench.written()),
              is_done ? changed : kSeparator + kSubject + kOther + kBody + "\r\n");
    bench.control.reset();
    for (const std::string& name : bench.temporary.names()) {
      EXPECT_TRUE(is_done) << "a failure leaves a file";
      platform::remove_file(bench.temporary.path(name));
    }
  };
  refuse_each_allocation({kMail, lock, act, check});
}

TEST(ChangingWithoutMemory, a_part_is_added) {
  add_part([](Bench& bench) { bench.message()->Parts()->Add(); }, "\r\n");
  add_part(
      [](Bench& bench) {
        const auto part = std::make_shared<CMessage>();
        part->SetSubject(u"a subject of some length");
        bench.message()->Parts()->Add(part);
      },
      "Subject: a subject of some length\r\n\r\n");
}

TEST(ChangingWithoutMemory, a_file_is_attached) {
#ifdef _WIN32
  const std::string name = "attached";
#else
  const std::string name = "unknown";  // only a backslash separates here
#endif
  add_part([](Bench& bench) { bench.message()->Attachments()->Add(wide(bench.folder.path("attached"))); },
           "Content-Type: application/octet-stream;\r\n\t name=\"" + name +
               "\"\r\nContent-Transfer-Encoding: base64\r\n"
               "Content-Disposition: attachment; filename=\"" +
               name + "\"\r\n\r\ndGhlIGNvbnRlbnQgb2YgaXQ=\r\n");
}

}  // namespace
}  // namespace vellobar::tests
