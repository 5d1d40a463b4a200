// Real mail, where it is present, read through the DLL: every message's tree, texts and attachments are those that the
// core gives, in this program and as a native program of the build machine wrote them down.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "tests/automation/client.h"
#include "tests/support/files.h"
#include "tests/support/mail_record.h"

namespace vellobar::tests {

namespace {

/// The number of a failed call, 1 for a failure without one, 0 for success.
int number_of(HRESULT result) {
  if (SUCCEEDED(result)) return 0;
  return HRESULT_FACILITY(result) == FACILITY_CONTROL ? HRESULT_CODE(result) : 1;
}

std::u16string client_text(const Text& text) {
  const std::wstring value = text.value();
  return {value.begin(), value.end()};
}

template <class Object>
ReadText read(Object* object, HRESULT (STDMETHODCALLTYPE Object::*get)(BSTR*)) {
  Text text;
  const int error = number_of((object->*get)(text.receive()));
  return {client_text(text), error};
}

template <class Object, class Number>
Number read_number(Object* object, HRESULT (STDMETHODCALLTYPE Object::*get)(Number*)) {
  Number number{};
  EXPECT_EQ((object->*get)(&number), S_OK);
  return number;
}

class DllMessage final : public ReadMessage {
 public:
  DllMessage(ComPtr<IvMessage> message, const std::string& target) : message_(std::move(message)), target_(target) {}

  std::int64_t start() override { return read_number(message_.get(), &IvMessage::get_StartPosition); }
  std::int64_t end() override { return read_number(message_.get(), &IvMessage::get_EndPosition); }
  ReadText content_type() override { return read(message_.get(), &IvMessage::get_ContentType); }
  ReadText mail_info() override { return read(message_.get(), &IvMessage::get_MailInfo); }
  ReadText text() override { return read(message_.get(), &IvMessage::get_Text); }
  ReadText plain_text() override { return read(message_.get(), &IvMessage::get_PlainText); }
  ReadText html_text() override { return read(message_.get(), &IvMessage::get_HTMLText); }
  ReadText body() override { return read(message_.get(), &IvMessage::get_Body); }
  ReadText boundary() override { return read(message_.get(), &IvMessage::get_PartsBoundary); }
  std::int64_t part_count() override { return read_number(parts().get(), &IvMessages::get_Count); }
  std::unique_ptr<ReadMessage> part(std::int64_t index) override {
    ComPtr<IvMessage> part;
    EXPECT_EQ(parts()->get_Item(static_cast<short>(index), part.receive()), S_OK);
    return std::make_unique<DllMessage>(std::move(part), target_);
  }
  std::vector<ReadAttachment> attachments() override {
    ComPtr<IvAttachments> attachments;
    short count = 0;
    HRESULT result = message_->get_Attachments(attachments.receive());
    if (SUCCEEDED(result)) result = attachments->put_ScanText(VARIANT_TRUE);
    if (SUCCEEDED(result)) result = attachments->get_Count(&count);
    std::vector<ReadAttachment> read;
    if (FAILED(result)) read.push_back({.error = number_of(result)});
    for (short i = 0; i < count; ++i) read.push_back(read_attachment(attachments.get(), i));
    return read;
  }
  void unload() override { EXPECT_EQ(message_->Unload(), S_OK); }

 private:
  ComPtr<IvMessages> parts() {
    ComPtr<IvMessages> parts;
    EXPECT_EQ(message_->get_Parts(parts.receive()), S_OK);
    return parts;
  }
  ReadAttachment read_attachment(IvAttachments* attachments, short index) const {
    ComPtr<IvAttachment> attachment;
    EXPECT_EQ(attachments->get_Item(index, attachment.receive()), S_OK);
    ReadAttachment result{read(attachment.get(), &IvAttachment::get_Name).text,
                          read(attachment.get(), &IvAttachment::get_Type).text,
                          read_number(attachment.get(), &IvAttachment::get_Encoding),
                          read_number(attachment.get(), &IvAttachment::get_Size),
                          {},
                          0};
    Value target(widened(target_).c_str());
    result.error = number_of(attachment->Save(target.get()));
    if (result.error == 0) result.saved = read_file(target_);
    return result;
  }

  ComPtr<IvMessage> message_;
  const std::string& target_;
};

class DllMailbox final : public ReadMailbox {
 public:
  DllMailbox(const std::string& path, const std::string& target)
      : control_(make<IVellobar>(CLSID_Vellobar)), target_(target) {
    EXPECT_EQ(control_->put_Filename(Text(widened(path)).get()), S_OK);
    EXPECT_EQ(control_->Lock(), S_OK);
    EXPECT_EQ(control_->get_Messages(messages_.receive()), S_OK);
  }
  std::int64_t message_count() override { return read_number(messages_.get(), &IvMessages::get_Count); }
  std::unique_ptr<ReadMessage> message(std::int64_t index) override {
    ComPtr<IvMessage> message;
    EXPECT_EQ(messages_->get_Item(static_cast<short>(index), message.receive()), S_OK);
    return std::make_unique<DllMessage>(std::move(message), target_);
  }

 private:
  ComPtr<IVellobar> control_;
  ComPtr<IvMessages> messages_;
  const std::string& target_;
};

/// Read once; the tests compare it.
const MailRecord& record_of_dll() {
  static const MailRecord record = [] {
    const TemporaryFolder folder;
    // Blocks found in text go to the temporary folder of the process.
    SetEnvironmentVariableA("TMP", folder.path("").c_str());
    const std::string target = folder.path("saved");
    return record_real_mail([&](const std::string& path) { return std::make_unique<DllMailbox>(path, target); });
  }();
  return record;
}

void expect_same(const MailRecord& expected) {
  EXPECT_EQ(record_of_dll().size(), expected.size());
  for (const auto& [name, lines] : expected) {
    const auto found = record_of_dll().find(name);
    ASSERT_NE(found, record_of_dll().end()) << name;
    if (found->second == lines) continue;
    const auto [mine, other] = std::mismatch(found->second.begin(), found->second.end(), lines.begin(), lines.end());
    const auto line_at = [](const std::string& text, std::string::const_iterator at) {
      const std::size_t position = static_cast<std::size_t>(at - text.begin());
      const std::size_t start = position == 0 ? 0 : text.rfind('\n', position - 1) + 1;
      return text.substr(start, text.find('\n', position) - start);
    };
    ADD_FAILURE() << name << "\n  the DLL: " << line_at(found->second, mine)
                  << "\n  expected: " << line_at(lines, other);
  }
}

class RealMail : public AutomationTest {};

TEST_F(RealMail, reads_through_the_dll_as_through_the_core) {
  const TemporaryFolder folder;
  const MailRecord of_core = record_real_mail_of_core(folder.path(""));
  if (of_core.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  expect_same(of_core);
}

TEST_F(RealMail, reads_through_the_dll_as_a_native_program_under_sanitizers_read_it) {
  const char* const path = std::getenv("VELLOBAR_MAIL_RECORD");
  if (path == nullptr) GTEST_SKIP() << "no record of a native program: VELLOBAR_MAIL_RECORD names it";
  const MailRecord native = to_record(read_file(path));
  if (native.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  expect_same(native);
}

}  // namespace

}  // namespace vellobar::tests
