// IvAttachments: the attachments of a message as a collection.
#include "automation/object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

class AttachmentsObject final : public Object<IvAttachments> {
 public:
  STDMETHODIMP get_Count(short*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Item(short, IvAttachment**) override { return E_NOTIMPL; }
  STDMETHODIMP Add(BSTR, VARIANT, IvMessage**) override { return E_NOTIMPL; }
  STDMETHODIMP get_ScanText(VARIANT_BOOL*) override { return E_NOTIMPL; }
  STDMETHODIMP put_ScanText(VARIANT_BOOL) override { return E_NOTIMPL; }
  STDMETHODIMP get__NewEnum(IUnknown**) override { return E_NOTIMPL; }
};

}  // namespace

ComPtr<IUnknown> new_attachments() {
  return ComPtr<IUnknown>::attach(static_cast<IvAttachments*>(new AttachmentsObject));
}

}  // namespace vellobar::automation
