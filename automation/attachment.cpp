// IvAttachment: one attachment of a message.
#include "attachments/attachment.h"

#include "automation/core_object.h"
#include "automation/objects.h"
#include "mailbox/message.h"

namespace vellobar::automation {

namespace {

class AttachmentObject final : public CoreObject<AttachmentObject, IvAttachment, CAttachment> {
 public:
  using CoreObject::CoreObject;

  /// The system takes arguments that a property leaves over to the default member of the object it returned, without
  /// looking whether there is one: an attachment may have no part.
  STDMETHODIMP Invoke(DISPID identifier, REFIID reserved, LCID locale, WORD kind, DISPPARAMS* arguments, VARIANT* to,
                      EXCEPINFO* exception, UINT* bad_argument) override {
    constexpr DISPID kPart = 5;
    if (identifier == kPart && arguments != nullptr && arguments->cArgs > 0) return DISP_E_BADPARAMCOUNT;
    return CoreObject::Invoke(identifier, reserved, locale, kind, arguments, to, exception, bad_argument);
  }

  STDMETHODIMP get_Name(BSTR* value) override { return get(value, &CAttachment::Name); }
  STDMETHODIMP put_Name(BSTR value) override { return put(value, &CAttachment::SetName); }
  STDMETHODIMP get_Type(BSTR* value) override { return get(value, &CAttachment::Type); }
  STDMETHODIMP put_Type(BSTR value) override { return put(value, &CAttachment::SetType); }
  STDMETHODIMP get_Encoding(AttachmentEncodingsEnum* value) override { return get(value, &CAttachment::Encoding); }
  STDMETHODIMP put_Encoding(AttachmentEncodingsEnum value) override {
    return guarded([&] { core().SetEncoding(static_cast<int>(value)); });
  }
  STDMETHODIMP Save(VARIANT filename) override {
    return guarded([&] {
      const auto name = string_in(filename);
      return name ? core().Save(*name) : core().Save();
    });
  }
  STDMETHODIMP get_Part(IvMessage** value) override { return get(value, &CAttachment::Part); }
  STDMETHODIMP get_Size(long* value) override { return get(value, &CAttachment::Size); }
};

}  // namespace

ComPtr<IvAttachment> wrap(const std::shared_ptr<CAttachment>& attachment) { return AttachmentObject::of(attachment); }

ComPtr<IUnknown> new_attachment() { return query<IUnknown>(wrap(std::make_shared<CAttachment>()).get()); }

}  // namespace vellobar::automation
