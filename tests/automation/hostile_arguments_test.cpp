// Every member of every class, found in the type library and called with every hostile argument in every place, with
// too few and too many arguments, and without a place for the result: a status that clients can expect, never a crash,
// and never error information after a success.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

#include "tests/automation/hostile_values.h"
#include "tests/automation/mailbox_client.h"
#include "tests/automation/member_calls.h"
#include "tests/automation/no_temporary_folder.h"

namespace vellobar::tests {

namespace {

constexpr std::string_view kMailbox =
    "From ann@example.org Mon Jan  1 10:00:00 2024\r\n"
    "From: Ann <ann@example.org>\r\n"
    "Subject: First\r\n"
    "Content-Type: multipart/mixed; boundary=XyZ\r\n"
    "\r\n"
    "--XyZ\r\n"
    "Content-Type: text/html\r\n"
    "\r\n"
    "<p>one</p>\r\n"
    "--XyZ\r\n"
    "Content-Type: application/x-test; name=a.bin\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "QUJD\r\n"
    "--XyZ--\r\n"
    "From bob@example.org Tue Jan  2 11:00:00 2024\r\n"
    "Subject: Second\r\n"
    "\r\n"
    "two\r\n";

/// One object of a class, made for one member and thrown away with what that did to it. The mailbox, where there is
/// one, lives as long.
struct Subject {
  std::unique_ptr<MailboxClient> mailbox;
  ComPtr<IDispatch> object;
};

Subject alone(REFCLSID class_id) { return {nullptr, make<IDispatch>(class_id)}; }

template <class Interface>
Subject out_of_mailbox(ComPtr<Interface> (*find)(MailboxClient&)) {
  auto mailbox = std::make_unique<MailboxClient>(kMailbox);
  const auto found = find(*mailbox);
  return {std::move(mailbox), query<IDispatch>(found.get())};
}

ComPtr<IVellobar> control(MailboxClient& mailbox) {
  mailbox.locked_messages();
  return ComPtr<IVellobar>(mailbox.control());
}
ComPtr<IvMessages> messages(MailboxClient& mailbox) { return mailbox.locked_messages(); }
ComPtr<IvMessage> message(MailboxClient& mailbox) { return mailbox.message(0); }
ComPtr<IvHeaders> headers(MailboxClient& mailbox) { return mailbox.headers(0); }
ComPtr<IvHeader> header(MailboxClient& mailbox) {
  ComPtr<IvHeader> header;
  EXPECT_EQ(mailbox.headers(0)->get_Item(Value(L"Subject").get(), header.receive()), S_OK);
  return header;
}
ComPtr<IvAttachments> attachments(MailboxClient& mailbox) {
  ComPtr<IvAttachments> attachments;
  EXPECT_EQ(mailbox.message(0)->get_Attachments(attachments.receive()), S_OK);
  return attachments;
}
ComPtr<IvAttachment> attachment(MailboxClient& mailbox) {
  ComPtr<IvAttachment> attachment;
  EXPECT_EQ(attachments(mailbox)->get_Item(0, attachment.receive()), S_OK);
  return attachment;
}

struct SubjectEntry {
  const char* name;
  Subject (*make)();
};

const SubjectEntry kSubjects[] = {
    {"control", [] { return out_of_mailbox(control); }},
    {"message", [] { return out_of_mailbox(message); }},
    {"messages", [] { return out_of_mailbox(messages); }},
    {"header", [] { return out_of_mailbox(header); }},
    {"headers", [] { return out_of_mailbox(headers); }},
    {"attachment", [] { return out_of_mailbox(attachment); }},
    {"attachments", [] { return out_of_mailbox(attachments); }},
    {"decoder", [] { return alone(CLSID_Decoder); }},
    {"encoder", [] { return alone(CLSID_Encoder); }},
    {"message alone", [] { return alone(CLSID_Message); }},
    {"messages alone", [] { return alone(CLSID_Messages); }},
    {"attachment alone", [] { return alone(CLSID_Attachment); }},
    {"attachments alone", [] { return alone(CLSID_Attachments); }},
};

/// Runs in a folder of its own, since arguments that convert to text are file names for some members, and without a
/// visible desktop, where the about box returns at once.
class HostileArguments : public AutomationTest {
 protected:
  HostileArguments() {
    GetCurrentDirectoryW(MAX_PATH, before_);
    SetCurrentDirectoryW(widened(folder_.path("")).c_str());
    visible_ = GetProcessWindowStation();
    hidden_ = CreateWindowStationW(L"vellobar_hostile", 0, WINSTA_ALL_ACCESS, nullptr);
    EXPECT_TRUE(SetProcessWindowStation(hidden_));
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->get_Language(&language_);
    control->get_CharSet(&charset_);
  }
  ~HostileArguments() override {
    SetCurrentDirectoryW(before_);
    SetProcessWindowStation(visible_);
    CloseWindowStation(hidden_);
  }
  /// Puts back what belongs to the whole process.
  void restore_settings() {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    control->put_Language(language_);
    control->put_CharSet(charset_);
  }

  /// Calls every member of every class.
  template <class Work>
  void for_each_member(Work work) {
    for (const SubjectEntry& entry : kSubjects) {
      for (const MemberShape& member : members_of(entry.make().object.get())) {
        SCOPED_TRACE(std::string(entry.name) + "." + member.name);
        work(entry.make().object.get(), member);
        restore_settings();
        EXPECT_EQ(Module::under_test().can_unload_now(), S_OK);
      }
    }
  }

 private:
  TemporaryFolder folder_;
  wchar_t before_[MAX_PATH];
  HWINSTA visible_, hidden_;
  LanguageEnum language_{};
  Charsets charset_{};
};

/// An argument that a parameter of this type takes. A text names no file that can be made: a call that comes to its
/// file ends there, and thousands of them stay fast.
void make_friendly(HostileValue& made, VARTYPE type) {
  if (type == VT_BSTR) {
    made.string = SysAllocString(L"no such folder\\friendly");
    V_VT(&made.value) = VT_BSTR;
    V_BSTR(&made.value) = made.string;
  } else if (type == VT_VARIANT) {
    V_VT(&made.value) = VT_ERROR;
    V_ERROR(&made.value) = DISP_E_PARAMNOTFOUND;
  } else if (type == VT_PTR) {
    V_VT(&made.value) = VT_BYREF | VT_ARRAY | VT_UI1;
    made.array = SafeArrayCreateVector(VT_UI1, 0, 3);
    V_ARRAYREF(&made.value) = &made.array;
  } else {
    V_VT(&made.value) = VT_I4;
  }
}

/// A message that is its own tag would keep itself for ever, since what a tag held is never released by a put. And for
/// a parameter that is an object, Wine never lets go of the one it converted.
bool keeps_itself(const MemberShape& member, const HostileShape& shape) {
  const bool takes_object = member.parameters == std::vector<VARTYPE>{VT_PTR};
  return (member.name == "Tag" || takes_object) && shape.name.find("the object itself") != std::string::npos;
}

/// One call with a hostile argument in one place and friendly ones in the others.
void call_with(IDispatch* object, const MemberShape& member, std::size_t place, const HostileShape& shape) {
  std::vector<HostileValue> values(member.parameters.size());
  std::vector<VARIANT> arguments;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i == place) {
      shape.make(values[i], object);
    } else {
      make_friendly(values[i], member.parameters[i]);
    }
    arguments.push_back(values[i].value);
  }
  call(object, member, arguments);
}

void call_with_count(IDispatch* object, const MemberShape& member, std::size_t count, const HostileShape& shape) {
  std::vector<HostileValue> values(count);
  std::vector<VARIANT> arguments;
  for (HostileValue& value : values) {
    shape.make(value, object);
    arguments.push_back(value.value);
  }
  call(object, member, arguments);
}

}  // namespace

TEST_F(HostileArguments, every_hostile_argument_in_every_place_of_every_member_gives_a_documented_status) {
  for_each_member([](IDispatch* object, const MemberShape& member) {
    // The builders compose in temporary files, which takes time; without a folder for them they still take every
    // argument.
    std::optional<NoTemporaryFolder> missing;
    if (member.name.starts_with("Create")) missing.emplace();
    for (std::size_t place = 0; place < member.parameters.size(); ++place) {
      for (const HostileShape& shape : hostile_shapes()) {
        SCOPED_TRACE("argument " + std::to_string(place) + ": " + shape.name);
        if (!keeps_itself(member, shape)) call_with(object, member, place, shape);
      }
    }
  });
}

TEST_F(HostileArguments, any_other_number_of_arguments_gives_a_documented_status) {
  const auto shapes = chief_hostile_shapes();
  for_each_member([&](IDispatch* object, const MemberShape& member) {
    for (std::size_t count = 0; count <= member.parameters.size() + 2; ++count) {
      for (const HostileShape& shape : shapes) {
        SCOPED_TRACE(std::to_string(count) + " times " + shape.name);
        if (count != member.parameters.size() && !keeps_itself(member, shape))
          call_with_count(object, member, count, shape);
      }
    }
  });
}

TEST_F(HostileArguments, a_member_of_another_kind_or_an_unknown_one_is_not_found) {
  for_each_member([](IDispatch* object, const MemberShape& member) {
    for (WORD kind : {WORD{0}, WORD{DISPATCH_PROPERTYPUTREF}, WORD{0x80}}) {
      EXPECT_TRUE(FAILED(invoke(object, member.identifier, kind, {})));
    }
    EXPECT_EQ(invoke(object, 4711, member.kind, {Value().get()}), DISP_E_MEMBERNOTFOUND);
  });
}

TEST_F(HostileArguments, without_a_place_for_result_and_exception_the_call_is_the_same) {
  for_each_member([](IDispatch* object, const MemberShape& member) {
    std::vector<HostileValue> values(member.parameters.size());
    std::vector<VARIANT> arguments;
    for (std::size_t i = 0; i < values.size(); ++i) {
      make_friendly(values[i], member.parameters[i]);
      arguments.push_back(values[i].value);
    }
    EXCEPINFO exception{};
    exception.scode = E_FAIL;
    const HRESULT status = invoke(object, member.identifier, member.kind, arguments, nullptr, nullptr);
    if (status != DISP_E_EXCEPTION) expect_status(status, exception);
    EXPECT_FALSE(SUCCEEDED(status) && take_error_information().present);
    take_error_information();
  });
}

}  // namespace vellobar::tests
