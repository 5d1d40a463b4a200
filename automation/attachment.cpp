// IvAttachment: one attachment of a message.
#include "automation/object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

class AttachmentObject final : public Object<IvAttachment> {
 public:
  STDMETHODIMP get_Name(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Name(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_Type(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Type(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_Encoding(AttachmentEncodingsEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Encoding(AttachmentEncodingsEnum) override { return E_NOTIMPL; }
  STDMETHODIMP Save(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_Part(IvMessage**) override { return E_NOTIMPL; }
  STDMETHODIMP get_Size(long*) override { return E_NOTIMPL; }
};

}  // namespace

ComPtr<IUnknown> new_attachment() { return ComPtr<IUnknown>::attach(static_cast<IvAttachment*>(new AttachmentObject)); }

}  // namespace vellobar::automation
