// Real mail as the core shows it.
#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "errors/error.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"
#include "tests/support/files.h"
#include "tests/support/mail_record.h"

namespace vellobar::tests {

namespace {

int number_of(const Error& error) { return error.status() == Status::numbered ? static_cast<int>(error.number()) : 1; }

ReadText result_of(const auto& call) {
  try {
    return {std::u16string(call()), 0};
  } catch (const Error& error) {
    return {{}, number_of(error)};
  }
}

class CoreMessage final : public ReadMessage {
 public:
  CoreMessage(std::shared_ptr<CMessage> message, const std::string& target)
      : message_(std::move(message)), target_(target) {}

  std::int64_t start() override { return message_->StartPosition(); }
  std::int64_t end() override { return message_->EndPosition(); }
  ReadText content_type() override {
    return result_of([&] { return message_->ContentType(); });
  }
  ReadText mail_info() override {
    return result_of([&] { return message_->MailInfo(); });
  }
  ReadText text() override {
    return result_of([&] { return message_->Text(); });
  }
  ReadText plain_text() override {
    return result_of([&] { return message_->PlainText(); });
  }
  ReadText html_text() override {
    return result_of([&] { return message_->HTMLText(); });
  }
  ReadText body() override {
    return result_of([&] { return message_->Body(); });
  }
  ReadText boundary() override {
    return result_of([&] { return message_->PartsBoundary(); });
  }
  std::int64_t part_count() override { return message_->Parts()->Count(); }
  std::unique_ptr<ReadMessage> part(std::int64_t index) override {
    return std::make_unique<CoreMessage>(message_->Parts()->Item(index), target_);
  }
  std::vector<ReadAttachment> attachments() override {
    std::vector<ReadAttachment> read;
    try {
      const std::shared_ptr<CAttachments> attachments = message_->Attachments();
      attachments->SetScanText(true);
      for (std::int64_t i = 0; i < attachments->Count(); ++i) read.push_back(read_attachment(*attachments->Item(i)));
    } catch (const Error& error) {
      read.push_back({.error = number_of(error)});
    }
    return read;
  }
  void unload() override { message_->Unload(); }

 private:
  ReadAttachment read_attachment(CAttachment& attachment) const {
    ReadAttachment read{attachment.Name(), attachment.Type(), attachment.Encoding(), attachment.Size(), {}, 0};
    try {
      attachment.Save(wide(target_));
      read.saved = read_file(target_);
    } catch (const Error& error) {
      read.error = number_of(error);
    }
    return read;
  }

  std::shared_ptr<CMessage> message_;
  const std::string& target_;
};

class CoreMailbox final : public ReadMailbox {
 public:
  CoreMailbox(const std::string& path, const std::string& target) : target_(target) {
    control_.SetFilename(wide(path));
    control_.Lock();
  }
  std::int64_t message_count() override { return control_.Messages()->Count(); }
  std::unique_ptr<ReadMessage> message(std::int64_t index) override {
    return std::make_unique<CoreMessage>(control_.Messages()->Item(index), target_);
  }

 private:
  CVellobar control_;
  const std::string& target_;
};

}  // namespace

MailRecord record_real_mail_of_core(const std::string& folder) {
  const platform::FixedTemporaryFolder temporary(folder);
  const std::string target = folder + "saved";
  return record_real_mail([&](const std::string& path) { return std::make_unique<CoreMailbox>(path, target); });
}

}  // namespace vellobar::tests
