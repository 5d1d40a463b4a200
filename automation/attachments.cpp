// IvAttachments: the attachments of a message as a collection.
#include "attachments/attachments.h"

#include "attachments/attachment.h"
#include "automation/core_object.h"
#include "automation/enumerator.h"
#include "automation/objects.h"
#include "mailbox/message.h"

namespace vellobar::automation {

namespace {

class AttachmentsObject final : public CoreObject<AttachmentsObject, IvAttachments, CAttachments> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Count(short* value) override { return get(value, &CAttachments::Count); }
  STDMETHODIMP get_Item(short index, IvAttachment** value) override {
    return answer(value, [&] { return core().Item(index); });
  }
  STDMETHODIMP Add(BSTR filename, VARIANT encoding, IvMessage** result) override {
    return perform(result, [&] { return core().Add(text_of(filename), number_in(encoding)); });
  }
  STDMETHODIMP get_ScanText(VARIANT_BOOL* value) override { return get(value, &CAttachments::ScanText); }
  STDMETHODIMP put_ScanText(VARIANT_BOOL value) override {
    return guarded([&] { core().SetScanText(value != VARIANT_FALSE); });
  }
  STDMETHODIMP get__NewEnum(IUnknown** value) override { return new_enumerator<CAttachment>(core(), value); }
};

}  // namespace

ComPtr<IvAttachments> wrap(const std::shared_ptr<CAttachments>& attachments) {
  return AttachmentsObject::of(attachments);
}

ComPtr<IUnknown> new_attachments() { return query<IUnknown>(wrap(std::make_shared<CAttachments>()).get()); }

}  // namespace vellobar::automation
