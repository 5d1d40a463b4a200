// An early-bound host: makes the control by its class identifier and works through the table of methods. It is given a
// folder for its mailbox, prints "all as expected" at the end, and ends with 1 at the first wrong value.
#include <ole2.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "automation/com_ptr.h"
#include "vellobar_automation.h"

namespace {

using vellobar::automation::ComPtr;
using vellobar::automation::query;

[[noreturn]] void fail(const char* what) {
  std::printf("%s\n", what);
  std::exit(1);
}

void expect(bool condition, const char* what) {
  if (!condition) fail(what);
}

void succeed(HRESULT result, const char* what) {
  if (result != S_OK) std::printf("status %08lx\n", static_cast<unsigned long>(result));
  expect(result == S_OK, what);
}

/// An automation string for one call.
class Text {
 public:
  Text() = default;
  explicit Text(const wchar_t* text) : string_(SysAllocString(text)) {}
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  ~Text() { SysFreeString(string_); }
  BSTR get() const { return string_; }
  BSTR* receive() { return &string_; }
  bool is(const wchar_t* expected) const { return string_ != nullptr && std::wstring(string_) == expected; }

 private:
  BSTR string_ = nullptr;
};

VARIANT text_variant(const Text& text) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = text.get();
  return value;
}

std::string content_of(const std::wstring& path) {
  std::ifstream file(std::string(path.begin(), path.end()), std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

ComPtr<IVellobar> new_control() {
  void* control = nullptr;
  succeed(CoCreateInstance(CLSID_Vellobar, nullptr, CLSCTX_INPROC_SERVER, IID_IVellobar, &control),
          "create the control");
  return ComPtr<IVellobar>::attach(static_cast<IVellobar*>(control));
}

void read_mailbox(IVellobar* control) {
  ComPtr<IvMessages> messages;
  succeed(control->get_Messages(messages.receive()), "get the messages");
  short count = 0;
  succeed(messages->get_Count(&count), "count the messages");
  expect(count == 2, "two messages");

  ComPtr<IvMessage> message;
  succeed(messages->get_Item(1, message.receive()), "get a message");
  Text subject;
  succeed(message->get_Subject(subject.receive()), "read the subject");
  expect(subject.is(L"Two"), "the subject of the second message");
  long start = 0;
  succeed(message->get_StartPosition(&start), "read the position");
  expect(start == 66, "the second message starts behind the first");

  ComPtr<IvHeaders> headers;
  ComPtr<IvHeader> added;
  succeed(message->get_Headers(headers.receive()), "get the headers");
  const Text name(L"X-Early"), value(L"bound");
  succeed(headers->Add(name.get(), text_variant(value), added.receive()), "add a header");
}

void expect_error_text(IVellobar* control) {
  const Text other(L"other");
  expect(control->put_Filename(other.get()) == static_cast<HRESULT>(0x800A7530), "no new name while locked");
  const auto support = query<ISupportErrorInfo>(control);
  succeed(support->InterfaceSupportsErrorInfo(IID_IVellobar), "error information is supported");
  ComPtr<IErrorInfo> information;
  succeed(GetErrorInfo(0, information.receive()), "error information is there");
  Text description;
  succeed(information->GetDescription(description.receive()), "read the description");
  expect(description.is(L"Mailbox locked! Call Unlock() method first"), "the description of the error");
}

void run(const std::wstring& path) {
  {
    std::ofstream file(std::string(path.begin(), path.end()), std::ios::binary);
    file << "From a@example.org Mon Jan  1 10:00:00 2024\r\nSubject: One\r\n\r\n1\r\n\r\n"
         << "From b@example.org Tue Jan  2 11:00:00 2024\r\nSubject: Two\r\n\r\n2\r\n";
  }
  const auto control = new_control();
  const Text name(path.c_str());
  succeed(control->put_Filename(name.get()), "name the mailbox");
  succeed(control->Lock(), "lock");
  read_mailbox(control.get());
  expect_error_text(control.get());
  succeed(control->Update(), "update");
  expect(content_of(path).ends_with("Subject: Two\r\nX-Early: bound\r\n\r\n2\r\n\r\n"), "the header reached the file");
  succeed(control->Unlock(), "unlock");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  expect(count == 2, "usage: vellobar_client FOLDER");
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  run(std::wstring(arguments[1]) + L"\\early.mbox");
  CoUninitialize();
  std::printf("all as expected\n");
  return 0;
}
