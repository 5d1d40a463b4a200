// Rows of calls as no script makes them on purpose: any member of any object that an earlier call gave, with what comes
// to hand as arguments. Each row is decided by the bytes of an input, those that are kept in fuzz/corpus/automation and
// a number of random ones, the same every time. Every call ends with a documented status, and nothing stays alive.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "fuzz/choices.h"
#include "tests/automation/hostile_values.h"
#include "tests/automation/mailbox_client.h"
#include "tests/automation/member_calls.h"

namespace vellobar::tests {

namespace {

using fuzz::Choices;

constexpr std::string_view kMailbox =
    "From ann@example.org\nSubject: =?utf-8?q?First?=\nContent-Type: multipart/mixed; boundary=XyZ\n\n"
    "--XyZ\nContent-Type: text/html\n\n<p>one</p>\n"
    "--XyZ\nContent-Type: application/x-test; name=a.bin\nContent-Transfer-Encoding: base64\n\nQUJD\n--XyZ--\n"
    "From bob@example.org\nDate: Sun, 7 Jan 2024 17:05:09 +0000\n\nbegin 644 b\n#86)C\n`\nend\n";

/// Names of files, of headers, and texts of both; all files lie in the current folder.
constexpr std::wstring_view kTexts[] = {L"",
                                        L"a.txt",
                                        L"client.mbox",
                                        L"missing\\x",
                                        L"Subject",
                                        L"Content-Type",
                                        L"multipart/mixed; boundary=\"q\"",
                                        L"From nobody",
                                        L"Subject: a\r\n\r\nbody\r\n",
                                        L"\u00E9\u4E2D\xD800 =?utf-8?q?x?=",
                                        L"X: 1\r\nY: 2\r\n\r\n",
                                        L"7 Jan 2024 10:00:00 GMT"};

constexpr std::size_t kMostObjects = 24;
constexpr std::size_t kMostCalls = 80;

/// The members of every interface that was called so far.
std::map<std::wstring, std::vector<MemberShape>>& called_interfaces() {
  static std::map<std::wstring, std::vector<MemberShape>> called;
  return called;
}

const std::vector<MemberShape>& members_of_class_of(IDispatch* object) {
  ComPtr<ITypeInfo> type;
  EXPECT_EQ(object->GetTypeInfo(0, 0, type.receive()), S_OK);
  Text name;
  EXPECT_EQ(type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr), S_OK);
  const auto [place, is_new] = called_interfaces().try_emplace(name.value());
  if (is_new) place->second = members_of(object);
  return place->second;
}

/// One row of calls. The objects that it gets live as long.
class CallRow {
 public:
  CallRow() : mailbox_(kMailbox) {
    const auto message = mailbox_.message(0);
    ComPtr<IvAttachments> attachments;
    ComPtr<IvAttachment> attachment;
    EXPECT_EQ(message->get_Attachments(attachments.receive()), S_OK);
    EXPECT_EQ(attachments->get_Item(0, attachment.receive()), S_OK);
    keep(mailbox_.control());
    keep(message.get());
    keep(mailbox_.headers(0).get());
    keep(attachment.get());
    for (const CLSID& id : {CLSID_Message, CLSID_Messages, CLSID_Attachments, CLSID_Decoder, CLSID_Encoder}) {
      keep(make<IDispatch>(id).get());
    }
  }

  void run(Choices choices) {
    for (std::size_t calls = 0; calls < kMostCalls && choices.has_more(); ++calls) make_call(choices);
  }

 private:
  void keep(IUnknown* object) {
    const auto found = query<IDispatch>(object);
    if (found && objects_.size() < kMostObjects) objects_.push_back(found);
  }

  IDispatch* any_object(Choices& choices) { return objects_[choices.below(objects_.size())].get(); }

  void make_call(Choices& choices) {
    IDispatch* const object = any_object(choices);
    const auto& members = members_of_class_of(object);
    const MemberShape& member = members[choices.below(members.size())];
    SCOPED_TRACE(member.name);
    // Its window waits for somebody.
    if (member.name == "About") return;
    // Wine never lets go of an object that it converted for a parameter.
    if (member.parameters == std::vector<VARTYPE>{VT_PTR}) return remove_message(object, choices);
    std::vector<HostileValue> values(member.parameters.size());
    std::vector<VARIANT> arguments;
    for (std::size_t i = 0; i < values.size(); ++i) {
      fill(values[i], member, member.parameters[i], choices);
      arguments.push_back(values[i].value);
    }
    Value result;
    call(object, member, arguments, result);
    const bool is_object = result.type() == VT_DISPATCH || result.type() == VT_UNKNOWN;
    if (is_object && V_UNKNOWN(&result.get()) != nullptr) keep(V_UNKNOWN(&result.get()));
  }

  void remove_message(IDispatch* object, Choices& choices) {
    const auto messages = query<IvMessages>(object);
    const auto message = query<IvMessage>(any_object(choices));
    if (!messages || !message) return;
    const HRESULT status = messages->Remove(message.get());
    EXPECT_TRUE(status == S_OK || status == E_INVALIDARG) << std::hex << status;
  }

  void fill(HostileValue& made, const MemberShape& member, VARTYPE type, Choices& choices) {
    // What a tag held is never released by a put, deliberately.
    const bool may_be_object = member.name != "Tag";
    if (choices.below(8) == 7 && may_be_object) {
      static const auto shapes = chief_hostile_shapes();
      shapes[choices.below(shapes.size())].make(made, objects_.front().get());
      return;
    }
    const std::size_t kind = type == VT_BSTR ? 0 : type == VT_VARIANT ? choices.below(4) : type == VT_PTR ? 4 : 2;
    switch (kind) {
      case 0:
        made.string = text(choices);
        V_VT(&made.value) = VT_BSTR;
        V_BSTR(&made.value) = made.string;
        return;
      case 1:
        V_VT(&made.value) = VT_ERROR;
        V_ERROR(&made.value) = DISP_E_PARAMNOTFOUND;
        return;
      case 2:
        V_VT(&made.value) = VT_I4;
        V_I4(&made.value) = static_cast<LONG>(choices.below(8)) - 1;
        return;
      case 3:
        V_VT(&made.value) = may_be_object ? VT_DISPATCH : VT_EMPTY;
        if (may_be_object) V_DISPATCH(&made.value) = any_object(choices);
        return;
      default:
        V_VT(&made.value) = VT_BYREF | VT_ARRAY | VT_UI1;
        made.array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(choices.below(200)));
        V_ARRAYREF(&made.value) = &made.array;
    }
  }

  static BSTR text(Choices& choices) {
    const std::wstring_view chosen = choices.among(kTexts);
    return SysAllocStringLen(chosen.data(), static_cast<UINT>(chosen.size()));
  }

  MailboxClient mailbox_;
  std::vector<ComPtr<IDispatch>> objects_;
};

class RandomCalls : public AutomationTest {
 protected:
  RandomCalls() {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(widened(folder_.path("")).c_str());
  }
  ~RandomCalls() override { SetCurrentDirectoryW(before_); }

  /// Puts back what belongs to the whole process.
  static void restore_settings() {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->put_CharSet(static_cast<Charsets>(0));
  }

  static void run(const std::string& input) {
    CallRow().run(Choices(input));
    restore_settings();
    EXPECT_EQ(Module::under_test().can_unload_now(), S_OK) << "something of the DLL is still alive";
  }

 private:
  TemporaryFolder folder_;
  wchar_t before_[MAX_PATH];
};

TEST_F(RandomCalls, rows_that_are_kept_end_with_documented_statuses) {
  const std::filesystem::path folder = source_file("fuzz/corpus/automation");
  int rows = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    SCOPED_TRACE(entry.path().string());
    run(read_file(entry.path().string()));
    ++rows;
  }
  EXPECT_GT(rows, 0);
}

TEST_F(RandomCalls, random_rows_end_with_documented_statuses) {
  const char* factor = std::getenv("VELLOBAR_TEST_ROUNDS");
  const int rounds = 120 * (factor == nullptr ? 1 : std::max(1, std::atoi(factor)));
  std::mt19937 random(1);
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    SCOPED_TRACE("row " + std::to_string(i));
    std::string input(40 + random() % 600, '\0');
    for (char& byte : input) byte = static_cast<char>(random() % 256);
    run(input);
  }
  EXPECT_EQ(called_interfaces().size(), 9u) << "the calls reach objects of every class";
}

}  // namespace

}  // namespace vellobar::tests
