// IvHeader: one header of a message.
#include "headers/header.h"

#include "automation/core_object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

class HeaderObject final : public CoreObject<HeaderObject, IvHeader, CHeader> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Name(BSTR* value) override { return get(value, &CHeader::Name); }
  STDMETHODIMP put_Name(BSTR value) override { return put(value, &CHeader::SetName); }
  STDMETHODIMP get_Value(BSTR* value) override { return get(value, &CHeader::Value); }
  STDMETHODIMP put_Value(BSTR value) override { return put(value, &CHeader::SetValue); }
  STDMETHODIMP ToString(BSTR* text) override { return get(text, &CHeader::ToString); }
};

}  // namespace

ComPtr<IvHeader> wrap(const std::shared_ptr<CHeader>& header) { return HeaderObject::of(header); }

std::shared_ptr<CHeader> header_behind(IUnknown* object) { return HeaderObject::core_of(object); }

ComPtr<IUnknown> new_header() { return query<IUnknown>(wrap(std::make_shared<CHeader>()).get()); }

}  // namespace vellobar::automation
