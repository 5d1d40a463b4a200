// The four builders of IVellobar: each writes its file from its own arguments, through the table of methods and by
// identifier, and reports what went wrong.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::tests {

namespace {

/// `text` with what stands between `before` and the next `after` replaced, wherever `before` is.
std::string with_replaced(std::string text, std::string_view before, char after, std::string_view by) {
  const std::size_t found = text.find(before);
  if (found == text.npos) return text;
  const std::size_t start = found + before.size();
  return text.replace(start, text.find(after, start) - start, by);
}

/// A written message with its date, identifier and boundary, which differ each time, named instead.
std::string without_what_varies(std::string text) {
  constexpr std::string_view kBoundary = "boundary=\"";
  const std::size_t found = text.find(kBoundary);
  if (found != text.npos) {
    const std::size_t start = found + kBoundary.size();
    const std::string boundary = text.substr(start, text.find('"', start) - start);
    for (std::size_t at = text.find(boundary); at != text.npos; at = text.find(boundary)) {
      text.replace(at, boundary.size(), "BOUNDARY");
    }
  }
  text = with_replaced(text, "\r\nDate: ", '\r', "DATE");
  return with_replaced(text, "\r\nMessage-ID: <", '>', "IDENTIFIER");
}

constexpr std::string_view kFirstHeaders =
    "From: \"Ann\" <ann@x>\r\n"
    "To: \"Bob\" <bob@x>\r\n"
    "Subject: a subject\r\n"
    "Date: DATE\r\n";

constexpr std::string_view kLastHeaders =
    "X-Mailer: Quorvane! Vellobar Component 2.2.6.119\r\n"
    "X-MimeOLE: X-MimeOLE: Produced by Quorvane! Vellobar Component 2.2.6.119\r\n"
    "Message-ID: <IDENTIFIER>\r\n";

constexpr std::string_view kAttachmentPart =
    "--BOUNDARY\r\n"
    "Content-Type: application/octet-stream;\r\n\t name=\"a.bin\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\n"
    "QUJD\r\n";

std::string message(std::string_view own_headers, std::string_view body) {
  return std::string(kFirstHeaders) + std::string(own_headers) + std::string(kLastHeaders) + "\r\n" + std::string(body);
}

class BuilderMembers : public AutomationTest {
 protected:
  void TearDown() override {
    control_ = ComPtr<IVellobar>();
    AutomationTest::TearDown();
  }

  std::wstring target() const { return widened(folder_.path("new.eml")); }
  std::string written() const { return without_what_varies(read_file(folder_.path("new.eml"))); }
  std::wstring file_to_attach() const {
    std::wstring path = widened(folder_.file("a.bin", "ABC"));
    for (wchar_t& character : path) character = character == L'/' ? L'\\' : character;
    return path;
  }
  IVellobar* control() { return control_.get(); }

  /// Calls a builder late-bound with the addresses and the subject of these tests and arguments of its own.
  void build_late_bound(const wchar_t* name, DISPID identifier, const std::vector<std::wstring>& own) {
    write_file(folder_.path("new.eml"), "");
    std::vector<Value> values;
    for (const std::wstring& text : {target(), from_.value(), to_.value(), subject_.value()}) {
      values.emplace_back(text.c_str());
    }
    for (const std::wstring& text : own) values.emplace_back(text.c_str());
    std::vector<VARIANT> arguments;
    for (Value& value : values) arguments.push_back(value.get());
    EXPECT_EQ(identifier_of(control(), name), identifier);
    EXPECT_EQ(invoke(control(), identifier, DISPATCH_METHOD, arguments), S_OK);
  }

  const Text from_{L"Ann <ann@x>"}, to_{L"Bob <bob@x>"}, subject_{L"a subject"};
  TemporaryFolder folder_;

 private:
  ComPtr<IVellobar> control_ = make<IVellobar>(CLSID_Vellobar);
};

}  // namespace

TEST_F(BuilderMembers, a_simple_message_is_its_text) {
  const std::string expected = message("Content-Type: text/plain\r\n", "hello\r\n");
  EXPECT_EQ(control()->CreateSimpleMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                           Text(L"hello\r\n").get()),
            S_OK);
  EXPECT_EQ(written(), expected);
  build_late_bound(L"CreateSimpleMessage", 9, {L"hello\r\n"});
  EXPECT_EQ(written(), expected);
}

TEST_F(BuilderMembers, a_text_and_html_message_has_both_as_alternatives) {
  const std::string expected =
      message("MIME-Version: 1.0\r\nContent-Type: multipart/alternative;\r\n\t boundary=\"BOUNDARY\"\r\n",
              "--BOUNDARY\r\nContent-Type: text/plain\r\n\r\nplain\r\n"
              "--BOUNDARY\r\nContent-Type: text/html\r\n\r\n<p>\r\n"
              "--BOUNDARY--\r\n\r\n");
  EXPECT_EQ(control()->CreateTextHtmlMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                             Text(L"plain\r\n").get(), Text(L"<p>\r\n").get()),
            S_OK);
  EXPECT_EQ(written(), expected);
  build_late_bound(L"CreateTextHtmlMessage", 10, {L"plain\r\n", L"<p>\r\n"});
  EXPECT_EQ(written(), expected);
}

TEST_F(BuilderMembers, a_simple_message_with_an_attachment_has_both_as_mixed_parts) {
  const std::string expected =
      message("Content-Type: multipart/mixed;\r\n\t boundary=\"BOUNDARY\"\r\nMIME-Version: 1.0\r\n",
              "--BOUNDARY\r\nContent-Type: text/plain\r\n\r\nplain\r\n" + std::string(kAttachmentPart) +
                  "--BOUNDARY--\r\n\r\n");
  EXPECT_EQ(control()->CreateSimpleAttachmentMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                                     Text(L"plain\r\n").get(), Text(file_to_attach()).get()),
            S_OK);
  EXPECT_EQ(written(), expected);
  build_late_bound(L"CreateSimpleAttachmentMessage", 11, {L"plain\r\n", file_to_attach()});
  EXPECT_EQ(written(), expected);
}

TEST_F(BuilderMembers, a_text_and_html_message_with_an_attachment_has_all_three) {
  const std::string expected =
      message("MIME-Version: 1.0\r\nContent-Type: multipart/alternative;\r\n\t boundary=\"BOUNDARY\"\r\n",
              "--BOUNDARY\r\nContent-Type: text/plain\r\n\r\nplain\r\n"
              "--BOUNDARY\r\nContent-Type: text/html\r\n\r\n<p>\r\n" +
                  std::string(kAttachmentPart) + "--BOUNDARY--\r\n\r\n");
  EXPECT_EQ(control()->CreateTextHtmlAttachmentMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                                       Text(L"plain\r\n").get(), Text(L"<p>\r\n").get(),
                                                       Text(file_to_attach()).get()),
            S_OK);
  EXPECT_EQ(written(), expected);
  build_late_bound(L"CreateTextHtmlAttachmentMessage", 12, {L"plain\r\n", L"<p>\r\n", file_to_attach()});
  EXPECT_EQ(written(), expected);
}

TEST_F(BuilderMembers, an_attachment_that_cannot_be_opened_or_has_no_name_is_reported_and_nothing_is_written) {
  expect_error(control()->CreateSimpleAttachmentMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                                        Text(L"t").get(), Text(L"no such file").get()),
               30011, L"Cannot open file", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  expect_error(control()->CreateTextHtmlAttachmentMessage(Text(target()).get(), from_.get(), to_.get(), subject_.get(),
                                                          Text(L"t").get(), Text(L"h").get(), nullptr),
               30007, L"Filename not specified", L"Quorvane.Vellobar.1", CLSID_Vellobar);
  EXPECT_TRUE(folder_.names().empty());
}

TEST_F(BuilderMembers, a_file_that_cannot_be_made_is_reported_under_the_message_class) {
  expect_error(control()->CreateSimpleMessage(Text(widened(folder_.path("missing/new.eml"))).get(), from_.get(),
                                              to_.get(), subject_.get(), Text(L"t").get()),
               30002, L"Cannot open mailbox file for updating", L"Quorvane.Message.2", CLSID_Message);
}

}  // namespace vellobar::tests
