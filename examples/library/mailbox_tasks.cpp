// Four tasks in C++ with the library, on Linux and Windows:
//
//     mailbox_tasks list MAILBOX                  lists the messages and marks the first as reviewed
//     mailbox_tasks attachments MAILBOX FOLDER    saves what is attached
//     mailbox_tasks build MESSAGE ATTACHED        writes a new message
//     mailbox_tasks encode FILE ENCODED           encodes a file with Base64
#include <vellobar/vellobar.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>

using std::filesystem::path;
using vellobar::filename;
using vellobar::to_utf8;

namespace {

void list_and_edit(const path& mailbox) {
  vellobar::CVellobar box;
  box.SetFilename(filename(mailbox));
  box.Lock();
  std::cout << box.Messages()->Count() << " messages\n";
  for (const auto& message : box.Messages()) {
    std::cout << message->Index() << ": " << to_utf8(message->FromEmail()) << ", " << to_utf8(message->Subject())
              << '\n';
  }
  box.Messages()->Item(0)->Headers()->Add(u"X-Reviewed", u"yes");
  box.Update();
}

/// The name comes with the mail: without what would lead to another folder, or is no name at all on some system.
std::string safe_name(const std::u16string& from_mail) {
  std::string name = to_utf8(from_mail);
  const auto is_refused = [](unsigned char c) { return c < ' ' || std::string_view("\\/:*?\"<>|").find(c) < 9; };
  std::ranges::replace_if(name, is_refused, '_');
  return name;
}

void save_attachments(const path& mailbox, const path& folder) {
  vellobar::CVellobar box;
  box.SetFilename(filename(mailbox));
  box.Lock();
  for (const auto& message : box.Messages()) {
    int number = 0;
    for (const auto& attachment : message->Attachments()) {
      const std::string name =
          std::to_string(message->Index()) + "-" + std::to_string(number++) + "-" + safe_name(attachment->Name());
      const path target = folder / std::u8string(name.begin(), name.end());
      attachment->Save(filename(target));
      std::cout << name << '\n';
    }
  }
}

void build_message(const path& save_as, const path& attached) {
  const auto message =
      vellobar::compose::new_message(u"Mara Lindqvist <mara@example.org>", u"choir@example.net", u"The programme");
  message->set_text_part(u"text/plain", u"Here is the programme.");
  message->set_text_part(u"text/html", u"<p>Here is the <b>programme</b>.</p>");
  vellobar::compose::add_component_headers(*message);
  vellobar::attach(*message, attached);
  message->Save(filename(save_as));

  vellobar::CMessage built;
  built.Peek(filename(save_as));
  for (const auto& header : built.Headers()) {
    std::cout << to_utf8(header->Name()) << ": " << to_utf8(header->Value()) << '\n';
  }
}

void encode_file(const path& plain, const path& encoded) {
  vellobar::CEncoder().Base64(filename(plain), filename(encoded));
}

bool run(const std::string& task, const path& file, const path& target) {
  if (task == "list") return list_and_edit(file), true;
  if (task == "attachments") return save_attachments(file, target), true;
  if (task == "build") return build_message(file, target), true;
  if (task == "encode") return encode_file(file, target), true;
  return false;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    if (count >= 3 && run(arguments[1], arguments[2], count > 3 ? arguments[3] : "")) return 0;
    std::cout << "Usage: mailbox_tasks list|attachments|build|encode FILE [TARGET]\n";
  } catch (const vellobar::Error& error) {
    std::cout << "Error " << static_cast<int>(error.number()) << ": " << error.what() << '\n';
  }
  return 1;
}
