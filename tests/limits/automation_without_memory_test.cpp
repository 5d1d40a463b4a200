// What a client does through automation, with every allocation refused in turn, those of strings and arrays included:
// each call succeeds or says that there is no memory, nothing of the component stays alive, and the mailbox is the old
// one or the new one.
#include <gtest/gtest.h>

#include <filesystem>
#include <new>

#include "tests/automation/client.h"
#include "tests/limits/counted_memory.h"
#include "tests/limits/refused_automation_memory.h"
#include "tests/support/files.h"

STDAPI DllGetClassObject(REFCLSID class_id, REFIID interface_id, LPVOID* to);
STDAPI DllCanUnloadNow();

namespace vellobar::tests {
namespace {

constexpr std::string_view kMail =
    "From ann@example.org Tue Nov 15 08:12:31 1994\r\n"
    "Subject: a subject of some length\r\n"
    "Content-Type: multipart/mixed; boundary=\"a boundary of some length\"\r\n"
    "\r\n"
    "--a boundary of some length\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "a text of some length\r\n"
    "--a boundary of some length\r\n"
    "Content-Type: application/octet-stream; name=\"a file of some length.bin\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "dGhlIGNvbnRlbnQgb2YgaXQ=\r\n"
    "--a boundary of some length--\r\n";

/// The call that a client gave up after. Thrown instead of counted, so that what follows needs no results it lacks.
struct GaveUp {
  HRESULT result;
};

void need(HRESULT result) {
  if (FAILED(result)) throw GaveUp{result};
}

/// What a client wants for a result place.
template <class Interface, class Call>
ComPtr<Interface> object(Call call) {
  ComPtr<Interface> result;
  need(call(result.receive()));
  return result;
}

template <class Call>
std::wstring text(Call call) {
  Text result;
  need(call(result.receive()));
  return result.value();
}

template <class Interface>
ComPtr<Interface> make_inside(REFCLSID class_id) {
  void* factory = nullptr;
  need(DllGetClassObject(class_id, IID_IClassFactory, &factory));
  const auto owner = ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(factory));
  void* made = nullptr;
  need(owner->CreateInstance(nullptr, __uuidof(Interface), &made));
  return ComPtr<Interface>::attach(static_cast<Interface*>(made));
}

/// What the client hands over, made before memory gets scarce.
struct Given {
  explicit Given(const TemporaryFolder& folder)
      : mailbox(widened(folder.path("mail"))), saved(widened(folder.path("saved")).c_str()) {}

  Text mailbox;
  Value saved;
  Text subject{L"another subject of some length"}, name{L"X-Added-To-It"};
  Value value{L"the value of it"}, content_type{L"content-type"}, first{short{0}};
};

ComPtr<IvMessage> first_message(IVellobar& control) {
  const auto messages = object<IvMessages>([&](auto to) { return control.get_Messages(to); });
  return object<IvMessage>([&](auto to) { return messages->get_Item(0, to); });
}

using Act = void (*)(IVellobar& control, Given& given);

void read_headers(IVellobar& control, Given& given) {
  const auto message = first_message(control);
  const auto headers = object<IvHeaders>([&](auto to) { return message->get_Headers(to); });
  const auto header = object<IvHeader>([&](auto to) { return headers->get_Item(given.content_type.get(), to); });
  text([&](auto to) { return header->get_Value(to); });
  text([&](auto to) { return headers->ToString(to); });
  text([&](auto to) { return message->get_Subject(to); });
  text([&](auto to) { return message->get_ToName(to); });
  const auto items = object<IUnknown>([&](auto to) { return headers->get__NewEnum(to); });
  const auto walk = query<IEnumVARIANT>(items.get());
  Value item;
  need(walk->Next(1, item.receive(), nullptr));
  const auto copy = object<IEnumVARIANT>([&](auto to) { return walk->Clone(to); });
}

void change_headers(IVellobar& control, Given& given) {
  const auto message = first_message(control);
  need(message->put_Subject(given.subject.get()));
  const auto headers = object<IvHeaders>([&](auto to) { return message->get_Headers(to); });
  object<IvHeader>([&](auto to) { return headers->Add(given.name.get(), given.value.get(), to); });
  need(headers->Remove(given.first.get()));
}

void read_texts(IVellobar& control, Given&) {
  const auto message = first_message(control);
  text([&](auto to) { return message->get_PlainText(to); });
  text([&](auto to) { return message->get_Text(to); });
  text([&](auto to) { return message->get_Body(to); });
  const auto parts = object<IvMessages>([&](auto to) { return message->get_Parts(to); });
  const auto part = object<IvMessage>([&](auto to) { return parts->get_Item(1, to); });
  text([&](auto to) { return part->get_DecodedText(encBASE64, to); });
}

void save_attachments(IVellobar& control, Given& given) {
  const auto message = first_message(control);
  const auto attachments = object<IvAttachments>([&](auto to) { return message->get_Attachments(to); });
  // A search that found too little memory is not made again; there may be nothing in the list.
  short count = 0;
  need(attachments->get_Count(&count));
  const auto attachment = object<IvAttachment>([&](auto to) { return attachments->get_Item(0, to); });
  text([&](auto to) { return attachment->get_Name(to); });
  need(attachment->Save(given.saved.get()));
}

void update(IVellobar& control, Given& given) {
  change_headers(control, given);
  need(control.Update());
}

void keep_a_tag(IVellobar& control, Given& given) {
  const auto message = first_message(control);
  need(message->put_Tag(given.value.get()));
  Value tag;
  need(message->get_Tag(tag.receive()));
}

void code(IVellobar&, Given& given) {
  const auto encoder = make_inside<IvEncoder>(CLSID_Encoder);
  text([&](auto to) { return encoder->Base64Text(given.subject.get(), to); });
  SAFEARRAY* in = SafeArrayCreateVector(VT_UI1, 0, 20);
  if (in == nullptr) throw GaveUp{E_OUTOFMEMORY};
  SAFEARRAY* out = nullptr;
  const HRESULT result = encoder->Base64Data(&in, &out);
  SafeArrayDestroy(in);
  if (out != nullptr) SafeArrayDestroy(out);
  need(result);
}

constexpr std::string_view kUpdated =
    "From ann@example.org Tue Nov 15 08:12:31 1994\r\n"
    "Content-Type: multipart/mixed; boundary=\"a boundary of some length\"\r\n"
    "Subject: another subject of some length\r\n"
    "X-Added-To-It: the value of it\r\n"
    "\r\n"
    "--a boundary of some length\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "a text of some length\r\n"
    "--a boundary of some length\r\n"
    "Content-Type: application/octet-stream; name=\"a file of some length.bin\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "dGhlIGNvbnRlbnQgb2YgaXQ=\r\n"
    "--a boundary of some length--\r\n"
    "\r\n\r\n";

bool says_no_memory(HRESULT result) {
  return result == E_OUTOFMEMORY || result == static_cast<HRESULT>(0x800A0008) ||
         result == static_cast<HRESULT>(0x800A0000 + 30014);
}

/// With all memory: what an update that ran out of it had to leave to the next Lock is completed or put back.
void lock_and_unlock(Given& given) {
  const auto control = make_inside<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(control->put_Filename(given.mailbox.get()), S_OK);
  EXPECT_EQ(control->Lock(), S_OK);
  EXPECT_EQ(control->Unlock(), S_OK);
}

/// False when it did not come to the refused allocation.
bool refuse(Act act, const TemporaryFolder& folder, std::size_t number, Refusal refusal) {
  write_file(folder.path("mail"), kMail);
  Given given(folder);
  bool came = false;
  HRESULT result = S_OK;
  {
    const RefusedAllocation refused(number, refusal);
    try {
      const auto control = make_inside<IVellobar>(CLSID_Vellobar);
      need(control->put_Filename(given.mailbox.get()));
      need(control->Lock());
      act(*control.get(), given);
    } catch (const GaveUp& gave_up) {
      result = gave_up.result;
    } catch (const std::bad_alloc&) {
      // The client's own.
      result = E_OUTOFMEMORY;
    }
    came = refused.came();
  }
  EXPECT_EQ(DllCanUnloadNow(), S_OK) << "something of the component is still alive";
  EXPECT_TRUE(result == S_OK ? true : came && says_no_memory(result)) << std::hex << result;
  const ErrorInformation information = take_error_information();
  lock_and_unlock(given);
  const bool is_numbered = FAILED(result) && result != E_OUTOFMEMORY;
  EXPECT_TRUE(!is_numbered || refusal != Refusal::once || information.description == L"Not enough memory");
  const std::string content = read_file(folder.path("mail"));
  EXPECT_TRUE(act == update ? content == kUpdated || (result != S_OK && content == kMail) : content == kMail)
      << content;
  EXPECT_EQ(folder.names().size(), std::filesystem::exists(folder.path("saved")) ? 2u : 1u);
  return came;
}

void refuse_each_allocation(Act act) {
  TemporaryFolder folder;
  const RefusableAutomationMemory refusable;
  for (int i = 0; i < 2; ++i) refuse(act, folder, static_cast<std::size_t>(-2), Refusal::once);
  for (const Refusal refusal : {Refusal::once, Refusal::from_then_on}) {
    const std::size_t pieces = allocated_pieces();
    for (std::size_t number = 1; refuse(act, folder, number, refusal); number += 3) {
      EXPECT_EQ(allocated_pieces(), pieces);
      if (!::testing::Test::HasFailure()) continue;
      ADD_FAILURE() << "allocation " << number << (refusal == Refusal::once ? "" : " and all that follow");
      return;
    }
  }
}

TEST(AutomationWithoutMemory, headers_are_read_or_there_is_no_memory) { refuse_each_allocation(read_headers); }
TEST(AutomationWithoutMemory, headers_are_changed_or_there_is_no_memory) { refuse_each_allocation(change_headers); }
TEST(AutomationWithoutMemory, texts_are_read_or_there_is_no_memory) { refuse_each_allocation(read_texts); }
TEST(AutomationWithoutMemory, attachments_are_saved_or_there_is_no_memory) { refuse_each_allocation(save_attachments); }
TEST(AutomationWithoutMemory, a_tag_is_kept_or_there_is_no_memory) { refuse_each_allocation(keep_a_tag); }
TEST(AutomationWithoutMemory, bytes_and_texts_are_coded_or_there_is_no_memory) { refuse_each_allocation(code); }

TEST(AutomationWithoutMemory, the_mailbox_is_the_old_one_or_the_new_one) { refuse_each_allocation(update); }

}  // namespace
}  // namespace vellobar::tests
