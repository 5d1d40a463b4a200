// A program that creates objects as any host does, by their program identifiers: creating_client MAILBOX SUBJECT
// PROGID...
//
// Creates one object of each class in a single-threaded apartment. Then creates the control, the first class, from the
// multithreaded one and reads the subject of the mailbox's first message through the table of methods. Ends with 0 when
// all was as expected, 2 when a class is not known to the system, 1 otherwise.
#include <objidl.h>
#include <ole2.h>

#include <stdexcept>
#include <string>

#include "automation/com_ptr.h"
#include "vellobar_automation.h"

namespace {

using vellobar::automation::ComPtr;
using vellobar::automation::query;

struct NotKnown : std::runtime_error {
  using std::runtime_error::runtime_error;
};

void check(HRESULT result) {
  if (result == REGDB_E_CLASSNOTREG || result == CO_E_CLASSSTRING) throw NotKnown("class not known");
  if (FAILED(result)) throw std::runtime_error("failed");
}

void expect(bool condition) {
  if (!condition) throw std::runtime_error("not as expected");
}

template <class Interface>
ComPtr<Interface> create(const wchar_t* prog_id) {
  CLSID class_id{};
  check(CLSIDFromProgID(prog_id, &class_id));
  void* object = nullptr;
  check(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), &object));
  return ComPtr<Interface>::attach(static_cast<Interface*>(object));
}

void create_each(int count, wchar_t** prog_ids) {
  for (int i = 0; i < count; ++i) {
    UINT descriptions = 0;
    check(create<IDispatch>(prog_ids[i])->GetTypeInfoCount(&descriptions));
    expect(descriptions == 1);
  }
}

/// In the multithreaded apartment the control is reached through a stand-in.
void read_mailbox(const wchar_t* prog_id, const wchar_t* mailbox, const std::wstring& subject) {
  const auto control = create<IVellobar>(prog_id);
  expect(static_cast<bool>(query<IClientSecurity>(control.get())));
  const BSTR path = SysAllocString(mailbox);
  check(control->put_Filename(path));
  SysFreeString(path);
  check(control->Lock());
  ComPtr<IvMessages> messages;
  check(control->get_Messages(messages.receive()));
  ComPtr<IvMessage> message;
  check(messages->get_Item(0, message.receive()));
  BSTR found = nullptr;
  check(message->get_Subject(&found));
  expect(found != nullptr && subject == found);
  SysFreeString(found);
  check(control->Unlock());
}

template <class Work>
void in_apartment(DWORD kind, Work work) {
  check(CoInitializeEx(nullptr, kind));
  work();
  CoUninitialize();
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 4) return 1;
  try {
    in_apartment(COINIT_APARTMENTTHREADED, [&] { create_each(count - 3, arguments + 3); });
    in_apartment(COINIT_MULTITHREADED, [&] { read_mailbox(arguments[3], arguments[1], arguments[2]); });
  } catch (const NotKnown&) {
    return 2;
  } catch (const std::exception&) {
    return 1;
  }
  return 0;
}
