// Four tasks in C++, early-bound, with the header that the IDL compiler makes from automation/vellobar.idl:
//
//     mailbox_tasks list MAILBOX                  lists the messages and marks the first as reviewed
//     mailbox_tasks attachments MAILBOX FOLDER    saves what is attached
//     mailbox_tasks build MESSAGE ATTACHED        writes a new message
//     mailbox_tasks encode FILE ENCODED           encodes a file with Base64
#include <ole2.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

#include "vellobar_automation.h"

using Microsoft::WRL::ComPtr;

namespace {

/// An automation string for one call, or for the result of one.
class Text {
 public:
  Text() = default;
  explicit Text(const std::wstring& text) : string_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(string_); }
  operator BSTR() const { return string_; }
  BSTR* receive() { return &string_; }
  /// A null automation string is an empty text.
  std::wstring value() const { return {string_ != nullptr ? string_ : L"", SysStringLen(string_)}; }

 private:
  BSTR string_ = nullptr;
};

/// A call that failed, with what the component says about it.
struct Failure {
  HRESULT status;
  std::wstring description;
};

void check(HRESULT status) {
  if (SUCCEEDED(status)) return;
  ComPtr<IErrorInfo> information;
  Text description;
  if (GetErrorInfo(0, &information) == S_OK) information->GetDescription(description.receive());
  throw Failure{status, description.value()};
}

void print(const std::wstring& text) {
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(), size, nullptr, nullptr);
  std::puts(narrow.c_str());
}

template <class Interface>
ComPtr<Interface> create(const wchar_t* program_id) {
  CLSID class_id;
  ComPtr<Interface> object;
  check(CLSIDFromProgID(program_id, &class_id));
  check(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface),
                         reinterpret_cast<void**>(object.GetAddressOf())));
  return object;
}

ComPtr<IVellobar> open_mailbox(const std::wstring& path) {
  const auto box = create<IVellobar>(L"Quorvane.Vellobar");
  check(box->put_Filename(Text(path)));
  check(box->Lock());
  return box;
}

/// Calls the action for every message of a mailbox.
template <class Action>
void for_each_message(const ComPtr<IVellobar>& box, Action action) {
  ComPtr<IvMessages> messages;
  short count = 0;
  check(box->get_Messages(&messages));
  check(messages->get_Count(&count));
  for (short i = 0; i < count; ++i) {
    ComPtr<IvMessage> message;
    check(messages->get_Item(i, &message));
    action(message);
  }
}

void list_and_edit(const std::wstring& path) {
  const auto box = open_mailbox(path);
  short count = 0;
  for_each_message(box, [&](const ComPtr<IvMessage>& message) {
    Text sender, subject;
    check(message->get_FromName(sender.receive()));
    check(message->get_Subject(subject.receive()));
    print(std::to_wstring(count++) + L": " + sender.value() + L": " + subject.value());
  });
  print(std::to_wstring(count) + L" messages");

  ComPtr<IvMessages> messages;
  ComPtr<IvMessage> first;
  ComPtr<IvHeaders> headers;
  ComPtr<IvHeader> added;
  check(box->get_Messages(&messages));
  check(messages->get_Item(0, &first));
  check(first->get_Headers(&headers));
  const Text yes(L"yes");
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = yes;
  check(headers->Add(Text(L"X-Reviewed"), value, &added));
  check(box->Update());
  check(box->Unlock());
}

/// The name as the sender wrote it, without what would lead to another folder or is not allowed in a file name.
std::wstring safe_name(std::wstring name) {
  const auto is_refused = [](wchar_t c) { return std::wstring(L"\\/:*?\"<>|").find(c) != std::wstring::npos; };
  std::replace_if(name.begin(), name.end(), is_refused, L'_');
  return name;
}

void save_attachments(const std::wstring& path, const std::wstring& folder) {
  const auto box = open_mailbox(path);
  for_each_message(box, [&](const ComPtr<IvMessage>& message) {
    ComPtr<IvAttachments> attachments;
    short index = 0, count = 0;
    check(message->get_Index(&index));
    check(message->get_Attachments(&attachments));
    check(attachments->get_Count(&count));
    for (short i = 0; i < count; ++i) {
      ComPtr<IvAttachment> attachment;
      Text name;
      check(attachments->get_Item(i, &attachment));
      check(attachment->get_Name(name.receive()));
      const Text target(folder + L"\\" + std::to_wstring(index) + L"-" + std::to_wstring(i) + L"-" +
                        safe_name(name.value()));
      VARIANT value;
      V_VT(&value) = VT_BSTR;
      V_BSTR(&value) = target;
      check(attachment->Save(value));
      print(target.value());
    }
  });
  check(box->Unlock());
}

void build_message(const std::wstring& path, const std::wstring& attached) {
  // The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path.
  const std::wstring whole_path = std::filesystem::absolute(attached).make_preferred().wstring();
  const auto box = create<IVellobar>(L"Quorvane.Vellobar");
  check(box->CreateTextHtmlAttachmentMessage(
      Text(path), Text(L"Mara Lindqvist <mara@example.org>"), Text(L"choir@example.net"), Text(L"The programme"),
      Text(L"Here is the programme."), Text(L"<p>Here is the <b>programme</b>.</p>"), Text(whole_path)));
  const auto built = create<IvMessage>(L"Quorvane.Message");
  ComPtr<IvHeaders> headers;
  Text block;
  check(built->Peek(Text(path)));
  check(built->get_Headers(&headers));
  check(headers->ToString(block.receive()));
  print(block.value());
}

void encode_file(const std::wstring& path, const std::wstring& encoded) {
  check(create<IvEncoder>(L"Quorvane.Encoder")->Base64(Text(path), Text(encoded)));
}

bool run(const std::wstring& task, const std::wstring& path, const std::wstring& target) {
  if (task == L"list") return list_and_edit(path), true;
  if (task == L"attachments") return save_attachments(path, target), true;
  if (task == L"build") return build_message(path, target), true;
  if (task == L"encode") return encode_file(path, target), true;
  return false;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int result = 1;
  try {
    if (count >= 3 && run(arguments[1], arguments[2], count > 3 ? arguments[3] : L"")) {
      result = 0;
    } else {
      std::puts("Usage: mailbox_tasks list|attachments|build|encode FILE [TARGET]");
    }
  } catch (const Failure& failure) {
    // The component's own numbers are the low 16 bits; the text says what happened.
    print(L"Error " + std::to_wstring(failure.status & 0xFFFF) + L": " + failure.description);
  }
  CoUninitialize();
  return result;
}
