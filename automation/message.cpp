// IvMessage: a message of a mailbox, a part of a message, or a message that stands alone.
#include "mailbox/message.h"

#include "automation/core_object.h"
#include "automation/objects.h"
#include "codecs/attachment_encoding.h"
#include "headers/headers.h"
#include "mailbox/messages.h"

namespace vellobar::automation {

namespace {

class MessageObject final : public CoreObject<MessageObject, IvMessage, CMessage> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Body(BSTR* value) override { return get(value, &CMessage::Body); }
  STDMETHODIMP put_Body(BSTR value) override { return put(value, &CMessage::SetBody); }
  STDMETHODIMP get_StartPosition(long* value) override { return get(value, &CMessage::StartPosition); }
  STDMETHODIMP get_EndPosition(long* value) override { return get(value, &CMessage::EndPosition); }
  STDMETHODIMP get_Size(long* value) override { return get(value, &CMessage::Size); }
  STDMETHODIMP get_Tag(VARIANT* value) override {
    return guarded([&] {
      if (value == nullptr) return;
      VariantInit(value);
      if (const auto* held = std::any_cast<Variant>(&core().Tag())) *value = Variant(*held).detach();
    });
  }
  STDMETHODIMP put_Tag(VARIANT value) override {
    return guarded([&] {
      // A copy of a copy: what could not be handed out again later is refused now.
      std::any tag(std::in_place_type<Variant>, Variant(value));
      // What the tag held is not released, only forgotten; deliberate, held by the test
      // `Message.putting_a_tag_does_not_release_the_previous_one`.
      if (auto* held = std::any_cast<Variant>(&core().Tag())) held->detach();
      core().Tag() = std::move(tag);
    });
  }
  STDMETHODIMP get_Index(short* value) override { return get(value, &CMessage::Index); }
  /// A file is always replaced; `append` is accepted and ignored.
  STDMETHODIMP Save(BSTR filename, VARIANT /*append*/) override { return put(filename, &CMessage::Save); }
  STDMETHODIMP get_Text(BSTR* value) override { return get(value, &CMessage::Text); }
  STDMETHODIMP put_Text(BSTR value) override { return put(value, &CMessage::SetText); }
  STDMETHODIMP get_Bytes(long* value) override { return get(value, &CMessage::Bytes); }
  STDMETHODIMP get_Lines(long* value) override { return get(value, &CMessage::Lines); }
  STDMETHODIMP Load() override { return call(&CMessage::Load); }
  STDMETHODIMP Unload() override { return call(&CMessage::Unload); }
  STDMETHODIMP get_Headers(IvHeaders** value) override { return get(value, &CMessage::Headers); }
  STDMETHODIMP get_MailInfo(BSTR* value) override { return get(value, &CMessage::MailInfo); }
  STDMETHODIMP put_MailInfo(BSTR value) override { return put(value, &CMessage::SetMailInfo); }
  STDMETHODIMP get_Parts(IvMessages** value) override { return get(value, &CMessage::Parts); }
  STDMETHODIMP get_Attachments(IvAttachments** value) override { return get(value, &CMessage::Attachments); }
  STDMETHODIMP get_Changed(VARIANT_BOOL* value) override { return get(value, &CMessage::Changed); }
  STDMETHODIMP get_DecodedText(AttachmentEncodingsEnum encoded_as, BSTR* value) override {
    return answer(value, [&] { return core().DecodedText(static_cast<codecs::AttachmentEncoding>(encoded_as)); });
  }
  STDMETHODIMP Peek(BSTR filename) override { return put(filename, &CMessage::Peek); }

  STDMETHODIMP get_From(BSTR* value) override { return get(value, &CMessage::From); }
  STDMETHODIMP put_From(BSTR value) override { return put(value, &CMessage::SetFrom); }
  STDMETHODIMP get_Subject(BSTR* value) override { return get(value, &CMessage::subject); }
  STDMETHODIMP put_Subject(BSTR value) override { return put(value, &CMessage::SetSubject); }
  STDMETHODIMP get_CC(BSTR* value) override { return get(value, &CMessage::CC); }
  STDMETHODIMP put_CC(BSTR value) override { return put(value, &CMessage::SetCC); }
  STDMETHODIMP get_BCC(BSTR* value) override { return get(value, &CMessage::BCC); }
  STDMETHODIMP put_BCC(BSTR value) override { return put(value, &CMessage::SetBCC); }
  STDMETHODIMP get_ContentDescription(BSTR* value) override { return get(value, &CMessage::ContentDescription); }
  STDMETHODIMP put_ContentDescription(BSTR value) override { return put(value, &CMessage::SetContentDescription); }
  STDMETHODIMP get_ContentDisposition(BSTR* value) override { return get(value, &CMessage::ContentDisposition); }
  STDMETHODIMP put_ContentDisposition(BSTR value) override { return put(value, &CMessage::SetContentDisposition); }
  STDMETHODIMP get_ContentID(BSTR* value) override { return get(value, &CMessage::ContentID); }
  STDMETHODIMP put_ContentID(BSTR value) override { return put(value, &CMessage::SetContentID); }
  STDMETHODIMP get_ContentTransferEncoding(BSTR* value) override {
    return get(value, &CMessage::ContentTransferEncoding);
  }
  STDMETHODIMP put_ContentTransferEncoding(BSTR value) override {
    return put(value, &CMessage::SetContentTransferEncoding);
  }
  STDMETHODIMP get_ContentType(BSTR* value) override { return get(value, &CMessage::ContentType); }
  STDMETHODIMP put_ContentType(BSTR value) override { return put(value, &CMessage::SetContentType); }
  STDMETHODIMP get_Date(DATE* value) override { return get(value, &CMessage::Date); }
  STDMETHODIMP put_Date(DATE value) override {
    return guarded([&] { core().SetDate(value); });
  }
  STDMETHODIMP get_MessageID(BSTR* value) override { return get(value, &CMessage::MessageID); }
  STDMETHODIMP put_MessageID(BSTR value) override { return put(value, &CMessage::SetMessageID); }
  STDMETHODIMP get_MIMEVersion(BSTR* value) override { return get(value, &CMessage::MIMEVersion); }
  STDMETHODIMP put_MIMEVersion(BSTR value) override { return put(value, &CMessage::SetMIMEVersion); }
  STDMETHODIMP get_PartsBoundary(BSTR* value) override { return get(value, &CMessage::PartsBoundary); }
  STDMETHODIMP get_To(BSTR* value) override { return get(value, &CMessage::To); }
  STDMETHODIMP put_To(BSTR value) override { return put(value, &CMessage::SetTo); }
  STDMETHODIMP get_PlainText(BSTR* value) override { return get(value, &CMessage::PlainText); }
  STDMETHODIMP get_HTMLText(BSTR* value) override { return get(value, &CMessage::HTMLText); }
  STDMETHODIMP get_FromName(BSTR* value) override { return get(value, &CMessage::FromName); }
  STDMETHODIMP get_FromEmail(BSTR* value) override { return get(value, &CMessage::FromEmail); }
  STDMETHODIMP get_ToName(BSTR* value) override { return get(value, &CMessage::ToName); }
  STDMETHODIMP get_ToEmail(BSTR* value) override { return get(value, &CMessage::ToEmail); }
  STDMETHODIMP get_CharSet(BSTR* value) override { return get(value, &CMessage::CharSet); }
  STDMETHODIMP put_CharSet(BSTR value) override { return put(value, &CMessage::SetCharSet); }
};

}  // namespace

ComPtr<IvMessage> wrap(const std::shared_ptr<CMessage>& message) { return MessageObject::of(message); }

std::shared_ptr<CMessage> message_behind(IUnknown* object) { return MessageObject::core_of(object); }

ComPtr<IUnknown> new_message() { return query<IUnknown>(wrap(std::make_shared<CMessage>()).get()); }

}  // namespace vellobar::automation
