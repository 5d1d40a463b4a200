#include "tests/limits/huge_mail.h"

#include <array>
#include <memory>
#include <vector>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "errors/error.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"

namespace vellobar::tests {

namespace {

constexpr std::size_t kKilo = 1000;
constexpr std::size_t kMega = kKilo * kKilo;
// Each message is read many times, and each read costs much under Wine.
#if defined(_WIN32)
constexpr std::size_t kManyTiny = 100 * kKilo;
constexpr std::size_t kManySmall = 800 * kKilo;
#else
constexpr std::size_t kManyTiny = kMega;
constexpr std::size_t kManySmall = 2 * kMega;
#endif

// ---- Mail

void repeat(std::ostream& to, std::string_view piece, std::size_t size) {
  for (std::size_t written = 0; written < size; written += piece.size()) to << piece;
}

void line(std::ostream& to, std::string_view before, std::string_view piece, std::size_t size) {
  to << before;
  repeat(to, piece, size);
  to << '\n';
}

void one_line_body(std::ostream& to, std::string_view encoding, std::string_view piece, std::size_t size) {
  to << "From a\nContent-Type: text/plain\nContent-Transfer-Encoding: " << encoding << "\n\n";
  line(to, "", piece, size);
}

/// A value that goes on over lines of this kind, because no header line may be long.
void folded(std::ostream& to, std::string_view name, std::string_view piece, std::size_t size) {
  to << "From a\n" << name << ": x\n";
  repeat(to, piece, size);
  to << "\nbody\n";
}

void multipart(std::ostream& to, std::string_view part, std::size_t size) {
  to << "From a\nContent-Type: multipart/mixed; boundary=XyZ\n\n--XyZ\n";
  repeat(to, part, size);
  to << "\nlast\n--XyZ--\n";
}

void nested(std::ostream& to, std::size_t size) {
  constexpr std::size_t kLevel = 66;
  const std::size_t levels = size / kLevel;
  to << "From a\n";
  for (std::size_t i = 0; i < levels; ++i) {
    to << "Content-Type: multipart/mixed; boundary=b" << i << "e\n\n--b" << i << "e\n";
  }
  to << "Content-Type: text/plain\n\nthe heart\n";
  for (std::size_t i = levels; i-- > 0;) to << "--b" << i << "e--\n";
}

void messages(std::ostream& to, std::size_t size) { repeat(to, "From a\n\nx\n", size); }
void headers(std::ostream& to, std::size_t size) {
  to << "From a\n";
  repeat(to, "a:\n", size);
  to << "\nx\n";
}
void usual_headers(std::ostream& to, std::size_t size) {
  to << "From a\n";
  repeat(to, "Received: from one.example.org by two.example.org; Tue, 15 Nov 1994 08:12:31 +0000\n", size);
  to << "\nx\n";
}
void parts(std::ostream& to, std::size_t size) { multipart(to, "\nx\n--XyZ\n", size); }
void parts_that_run_on(std::ostream& to, std::size_t size) { multipart(to, "A: b\n--XyZ\n", size); }
void attachments(std::ostream& to, std::size_t size) {
  multipart(to, "Content-Transfer-Encoding: base64\nContent-Type: image/gif; name=a.gif\n\nR0lG\n--XyZ\n", size);
}
void long_header_line(std::ostream& to, std::size_t size) {
  line(to, "From a\nSubject: ", "x", size);
  to << "\nbody\n";
}
void long_separator_line(std::ostream& to, std::size_t size) {
  line(to, "From ", "x", size);
  to << "Subject: x\n\nbody\n";
}
void long_plain_line(std::ostream& to, std::size_t size) { one_line_body(to, "8bit", "x", size); }
void long_base64_line(std::ostream& to, std::size_t size) { one_line_body(to, "base64", "QUJD", size); }
void long_quoted_printable_line(std::ostream& to, std::size_t size) {
  one_line_body(to, "quoted-printable", "=41b", size);
}
void long_uu_line(std::ostream& to, std::size_t size) {
  one_line_body(to, "x-uuencode\nContent-Disposition: attachment; filename=\"x\"", "#04)#", size);
}
void text(std::ostream& to, std::size_t size) {
  to << "From a\n\n";
  repeat(to, "A line of text of the length that lines in mail usually have, more or less.\n", size);
}
void addresses(std::ostream& to, std::size_t size) { folded(to, "To", "\t\"A, B\" <a@example.org>,\n", size); }
void encoded_words(std::ostream& to, std::size_t size) { folded(to, "Subject", " =?utf-8?Q?=C3=A9?=\n", size); }
void parameters(std::ostream& to, std::size_t size) {
  folded(to, "Content-Type", "\t; charset=\"x\"; name=\"y\"\n", size);
}
void blocks_in_text(std::ostream& to, std::size_t size) {
  to << "From a\n\n";
  repeat(to, "begin 644 x\n#04)#\nend\n\n", size);
}

// What most_memory is above 4 for: the text of headers of three bytes as a client gets it has ten; parts of 9 bytes
// take 32 each in their table, beside a text of 22; the objects that always stay are large beside a mail of 80 KB.
constexpr std::array kMails = {
    HugeMail{"nested_multiparts", nested, 660 * kKilo, 6600 * kKilo},
    HugeMail{"messages", messages, kManyTiny, 10 * kMega},
    HugeMail{"headers", headers, 300 * kKilo, 3 * kMega, 5},
    HugeMail{"usual_headers", usual_headers, 2 * kMega, 100 * kMega},
    HugeMail{"parts", parts, kManyTiny, 9 * kMega, 7},
    HugeMail{"attachments", attachments, kManySmall, 80 * kMega},
    HugeMail{"long_header_line", long_header_line, 10 * kMega, 200 * kMega},
    HugeMail{"long_separator_line", long_separator_line, 10 * kMega, 200 * kMega},
    HugeMail{"long_plain_line", long_plain_line, 10 * kMega, 200 * kMega},
    HugeMail{"long_base64_line", long_base64_line, 10 * kMega, 200 * kMega},
    HugeMail{"long_quoted_printable_line", long_quoted_printable_line, 10 * kMega, 200 * kMega},
    HugeMail{"long_uu_line", long_uu_line, 10 * kMega, 200 * kMega},
    HugeMail{"text", text, 10 * kMega, 200 * kMega},
    HugeMail{"addresses", addresses, 2 * kMega, 20 * kMega},
    HugeMail{"encoded_words", encoded_words, 2 * kMega, 20 * kMega},
    HugeMail{"parameters", parameters, 2 * kMega, 20 * kMega},
    HugeMail{"blocks_in_text", blocks_in_text, 40 * kKilo, 1000 * kKilo},
    // The last one, because what is written of it grows with its square.
    HugeMail{"parts_that_run_on", parts_that_run_on, 8 * kKilo, 80 * kKilo, 60, true},
};

// ---- What a client does

template <typename Act>
std::size_t for_each_message(CVellobar& control, Act act) {
  std::size_t seen = 0;
  const auto messages = control.Messages();
  for (std::int64_t i = 0; i < messages->Count(); ++i) seen += act(*messages->Item(i));
  return seen;
}

/// What cannot be read counts as nothing.
template <typename Read>
std::size_t size_of(Read read) {
  try {
    return static_cast<std::size_t>(read());
  } catch (const Error&) {
    return 0;
  }
}

std::size_t lock(CVellobar& control) {
  control.Lock();
  return static_cast<std::size_t>(control.Messages()->Count());
}

std::size_t read_headers(CVellobar& control) {
  return for_each_message(control, [](CMessage& message) {
    std::size_t seen = size_of([&] { return message.Headers()->Count(); });
    seen += size_of([&] { return message.Headers()->Exists(u"missing") ? 1 : 0; });
    for (const auto getter : {&CMessage::Subject, &CMessage::From, &CMessage::To, &CMessage::ContentType,
                              &CMessage::ToName, &CMessage::ToEmail, &CMessage::CharSet, &CMessage::MailInfo}) {
      seen += (message.*getter)().size();
    }
    return seen + size_of([&] { return message.Date(); });
  });
}

std::size_t walk_headers(CVellobar& control) {
  return for_each_message(control, [](CMessage& message) {
    return size_of([&] {
      std::size_t seen = 0;
      for (const auto& header : message.Headers()) seen += header->Name().size() + header->Value().size();
      return seen;
    });
  });
}

std::size_t export_headers(CVellobar& control) {
  return for_each_message(
      control, [](CMessage& message) { return size_of([&] { return message.Headers()->ToString().size(); }); });
}

std::size_t read_texts(CVellobar& control) {
  return for_each_message(control, [](CMessage& message) {
    return size_of([&] { return message.PlainText().size(); }) + size_of([&] { return message.HTMLText().size(); });
  });
}

/// The client lets go of what is above the last part of each.
std::size_t walk_parts(CVellobar& control) {
  return for_each_message(control, [](CMessage& top) {
    struct Level {
      std::shared_ptr<CMessages> parts;
      std::int64_t next;
    };
    std::size_t seen = 0;
    std::vector<Level> levels;
    const auto push = [&](std::shared_ptr<CMessages> parts) {
      if (parts->Count() > 0) levels.push_back({std::move(parts), 0});
    };
    push(top.Parts());
    while (!levels.empty()) {
      Level& level = levels.back();
      const auto part = level.parts->Item(level.next++);
      if (level.next == level.parts->Count()) levels.pop_back();
      seen += size_of([&] { return part->Text().size(); }) + 1;
      push(part->Parts());
    }
    return seen;
  });
}

std::size_t read_bodies(CVellobar& control) {
  return for_each_message(control, [](CMessage& message) { return size_of([&] { return message.Body().size(); }); });
}

std::size_t find_attachments(CVellobar& control) {
  return for_each_message(control, [](CMessage& message) {
    return size_of([&] {
      const auto attachments = message.Attachments();
      attachments->SetScanText(true);
      const std::int64_t count = attachments->Count();
      return count == 0 ? 0 : attachments->Item(count - 1)->Size() + count;
    });
  });
}

std::size_t save(CVellobar& control) {
  if (control.Messages()->Count() == 0) return 0;
  return size_of([&] {
    control.Messages()->Item(0)->Save(control.Filename() + u".saved");
    return 1;
  });
}

std::size_t update(CVellobar& control) {
  return size_of([&] {
    control.Update();
    return control.Messages()->Count();
  });
}

std::size_t unlock(CVellobar& control) {
  control.Unlock();
  return 0;
}

constexpr std::array kSteps = {
    ClientStep{"lock", lock},          ClientStep{"headers", read_headers},
    ClientStep{"walk", walk_headers},  ClientStep{"export", export_headers},
    ClientStep{"texts", read_texts},   ClientStep{"parts", walk_parts},
    ClientStep{"bodies", read_bodies}, ClientStep{"attachments", find_attachments},
    ClientStep{"save", save},          ClientStep{"update", update},
    ClientStep{"unlock", unlock},
};

}  // namespace

std::span<const HugeMail> huge_mails() { return kMails; }

std::span<const ClientStep> client_steps() { return kSteps; }

}  // namespace vellobar::tests
