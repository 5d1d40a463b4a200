// A mailbox file and a control that names it, as a client sees them.
#pragma once

#include "tests/automation/client.h"
#include "tests/support/files.h"

namespace vellobar::tests {

inline constexpr std::string_view kTwoMessages =
    "From ann@example.org Mon Jan  1 10:00:00 2024\r\n"
    "From: Ann <ann@example.org>\r\n"
    "Subject: First\r\n"
    "\r\n"
    "one\r\n"
    "From bob@example.org Tue Jan  2 11:00:00 2024\r\n"
    "Subject: Second\r\n"
    "\r\n"
    "two\r\n";

class MailboxClient {
 public:
  explicit MailboxClient(std::string_view content = kTwoMessages)
      : path_(folder_.file("client.mbox", content)), control_(make<IVellobar>(CLSID_Vellobar)) {
    EXPECT_EQ(control_->put_Filename(Text(widened(path_)).get()), S_OK);
  }

  IVellobar* control() { return control_.get(); }
  void let_control_go() { control_ = ComPtr<IVellobar>(); }
  const TemporaryFolder& folder() const { return folder_; }
  std::string content() const { return read_file(path_); }

  ComPtr<IvMessages> messages() {
    ComPtr<IvMessages> messages;
    EXPECT_EQ(control_->get_Messages(messages.receive()), S_OK);
    return messages;
  }
  ComPtr<IvMessages> locked_messages() {
    EXPECT_EQ(control_->Lock(), S_OK);
    return messages();
  }
  ComPtr<IvMessage> message(short index) {
    ComPtr<IvMessage> message;
    EXPECT_EQ(locked_messages()->get_Item(index, message.receive()), S_OK);
    return message;
  }
  ComPtr<IvHeaders> headers(short index) {
    ComPtr<IvHeaders> headers;
    EXPECT_EQ(message(index)->get_Headers(headers.receive()), S_OK);
    return headers;
  }

 private:
  TemporaryFolder folder_;
  std::string path_;
  ComPtr<IVellobar> control_;
};

}  // namespace vellobar::tests
