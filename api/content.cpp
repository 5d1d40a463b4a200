#include "api/content.h"

#include <string_view>
#include <system_error>
#include <utility>

#include "attachments/attachment.h"
#include "codecs/attachment_encoding.h"
#include "errors/error.h"
#include "platform/file.h"

namespace vellobar {

namespace {

class StringSink : public platform::ByteSink {
 public:
  void write(std::string_view bytes) override { bytes_ += bytes; }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

}  // namespace

std::string decoded_bytes(const CAttachment& attachment) {
  constexpr int kFirst = static_cast<int>(codecs::AttachmentEncoding::base64);
  constexpr int kLast = static_cast<int>(codecs::AttachmentEncoding::seven_bit);
  if (attachment.Encoding() < kFirst || attachment.Encoding() > kLast) {
    throw Error(ErrorNumber::unknown_encoder, Reporter::attachment);
  }
  StringSink sink;
  try {
    attachment.decode_to(sink);
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_load_text, Reporter::attachment);
  }
  return sink.take();
}

}  // namespace vellobar
