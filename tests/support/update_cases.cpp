#include "tests/support/update_cases.h"

#include <algorithm>
#include <filesystem>

#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/file_system.h"
#include "platform/staging_files.h"

namespace vellobar::tests {

namespace fs = std::filesystem;

namespace {

constexpr char kMultipart[] =
    "From a\nSubject: m\nContent-Type: multipart/mixed; boundary=\"xyzw\"\n\npreamble\n"
    "--xyzw\nContent-Type: text/plain\n\nfirst\n--xyzw\nContent-Type: text/html\n\n<b>second</b>\n--xyzw--\nepilogue\n";

std::string many_messages(int count) {
  std::string mailbox;
  for (int i = 0; i < count; ++i) {
    mailbox += "From sender" + std::to_string(i) + "\nSubject: " + std::to_string(i) + "\n\n" +
               std::string(static_cast<std::size_t>(i % 7) * 40, 'x') + "\n\n";
  }
  return mailbox;
}

/// The last message of the mailbox, made when there is none.
std::shared_ptr<CMessage> last_message(CVellobar& control) {
  const auto& messages = control.Messages();
  return messages->Count() > 0 ? messages->Item(messages->Count() - 1) : messages->Add();
}

}  // namespace

const std::vector<MailboxShape>& mailbox_shapes() {
  using namespace std::string_literals;
  static const std::vector<MailboxShape> shapes = {
      {"empty", ""},
      {"one message", "From a\nSubject: 1\n\none\n"},
      {"two messages", "From a\nSubject: 1\n\none\n\nFrom b\nSubject: 2\n\ntwo\n"},
      {"CR LF", "From a\r\nSubject: 1\r\n\r\none\r\n\r\nFrom b\r\nSubject: 2\r\n\r\ntwo\r\n\r\n"},
      {"no last line end", "From a\nSubject: 1\n\none\n\nFrom b\nSubject: 2\n\ntwo"},
      {"no separator first", "Subject: lost\n\nno separator\nFrom b\nSubject: 2\n\ntwo\n"},
      {"separator alone", "From a\n"},
      {"headers alone", "From a\nSubject: 1\nX: 2\n"},
      {"empty bodies", "From a\n\nFrom b\nX: 1\n\n\n\n\nFrom c\n\n"},
      {"continued header", "From a\nSubject: 1\n\tand more\n and more\n\none\n"},
      {"continuation first", "From a\n odd\nSubject: 1\n\none\n"},
      {"unreadable headers", "From a\nX: " + std::string(20000, 'v') + "\n\none\nFrom b\n\ntwo\n"},
      {"NULs", "From a\nX: \0\0\n\n\0one\0\nFrom b\n\n\0"s},
      {"8-bit bytes", "From a\nSubject: \xC4\xD6\xDC\n\n\x80\xFF\xE4\n"},
      {"lone CRs", "From a\rb\nSubject: 1\r2\n\none\rtwo\r\r\n"},
      {"multipart", kMultipart},
      {"multipart between others", "From x\n\none\n"s + kMultipart + "From y\nSubject: 3\n\nthree\n"},
      {"no closing delimiter", "From a\nContent-Type: multipart/mixed; boundary=q\n\n--q\n\none\n--q\n\ntwo\n"},
      {"nested parts",
       "From a\nContent-Type: multipart/mixed; boundary=out\n\n--out\n"
       "Content-Type: multipart/mixed; boundary=inn\n\n--inn\n\ndeep\n--inn--\n--out--\n"},
      {"many messages", many_messages(60)},
      {"long last line", "From a\n\none\n\nFrom b\n\n" + std::string(40000, 'x') + "\nend\n"},
      {"larger than a buffer", "From a\nSubject: 1\n\n" + many_messages(1) + std::string(300'000, '\n') + "end\n"},
  };
  return shapes;
}

const std::vector<MailboxEdit>& mailbox_edits() {
  static const std::vector<MailboxEdit> edits = {
      {"none", [](CVellobar&) {}},
      {"header added", [](CVellobar& control) { last_message(control)->Headers()->Add(u"X-New", u"yes"); }},
      {"subject put",
       [](CVellobar& control) { last_message(control)->SetSubject(u"something much longer than before"); }},
      {"separator line put", [](CVellobar& control) { last_message(control)->SetMailInfo(u"From somebody else"); }},
      {"body put", [](CVellobar& control) { last_message(control)->SetBody(u"Subject: new\r\n\r\nnew text\r\n"); }},
      {"headers removed", [](CVellobar& control) { last_message(control)->SetBody(u"\r\n"); }},
      {"first message removed",
       [](CVellobar& control) {
         last_message(control);
         control.Messages()->Remove(*control.Messages()->Item(0));
         ;
       }},
      {"last message removed", [](CVellobar& control) { control.Messages()->Remove(*last_message(control)); }},
      {"all messages removed", [](CVellobar& control) { control.Messages()->RemoveAll(); }},
      {"messages added",
       [](CVellobar& control) {
         control.Messages()->Add()->SetBody(std::u16string(u"Subject: added\r\n\r\n") + std::u16string(3000, u'a'));
         control.Messages()->Add();
       }},
  };
  return edits;
}

namespace {

template <typename Case>
std::vector<Case> swept(const std::vector<Case>& all) {
  if (kTriesAll) return all;
  std::vector<Case> some;
  for (std::size_t i = 2; i < all.size(); i += 5) some.push_back(all[i]);
  return some;
}

}  // namespace

std::vector<MailboxShape> swept_shapes() { return swept(mailbox_shapes()); }

std::vector<MailboxEdit> swept_edits() { return swept(mailbox_edits()); }

const char* name_of(Way way) noexcept {
  if (way == Way::by_renaming) return "by_renaming";
  return way == Way::over_the_old_one ? "over_the_old_one" : "staged_elsewhere";
}

MailboxToBreak::MailboxToBreak(Way way)
    : folder_(Medium::memory),
      temporary_(Medium::memory),
      elsewhere_(Medium::memory),
      fixed_(temporary_.path("")),
      path_(folder_.file("box", "")) {
  if (way == Way::staged_elsewhere) fs::create_directory(platform::staging_files_beside(path_).fresh);
  if (way != Way::over_the_old_one) return;
  near_link_ = folder_.path("link");
  far_link_ = elsewhere_.path("box");
  fs::create_hard_link(path_, near_link_);
  fs::create_hard_link(path_, far_link_);
}

std::vector<std::string> MailboxToBreak::paths() const {
  std::vector<std::string> paths;
  for (const TemporaryFolder* folder : {&folder_, &temporary_}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder->path(""))) {
      if (!entry.is_directory()) paths.push_back(entry.path().string());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::vector<std::string> MailboxToBreak::leftovers() const {
  std::vector<std::string> leftovers = paths();
  std::erase_if(leftovers, [](const std::string& path) {
    return path.find(".vellobar-") == path.npos && !path.ends_with(".lock");
  });
  return leftovers;
}

bool MailboxToBreak::keeps_notes() const {
  platform::FileSystem& files = platform::real_file_system();
  const bool keeps = !files.leave_note(path_, "a note") && platform::note_on(path_) == "a note";
  static_cast<void>(files.leave_note(path_, {}));
  return keeps;
}

void MailboxToBreak::reset(const std::string& content) {
  for (const std::string& path : paths()) {
    if (path != path_ && path != near_link_) fs::remove(path);
  }
  static_cast<void>(platform::real_file_system().leave_note(path_, {}));
  write_file(path_, content);
}

void MailboxToBreak::lock(CVellobar& control, const std::string& name) const {
  control.SetFilename(wide(name));
  control.Lock();
}

}  // namespace vellobar::tests
