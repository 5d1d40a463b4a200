// IvHeaders: the header block of a message as a collection.
#include "headers/headers.h"

#include "automation/core_object.h"
#include "automation/enumerator.h"
#include "automation/objects.h"
#include "headers/header.h"

namespace vellobar::automation {

namespace {

class HeadersObject final : public CoreObject<HeadersObject, IvHeaders, CHeaders> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Item(VARIANT index, IvHeader** value) override {
    return perform(value, [&] {
      const auto place = index_in(index);
      if (!place) throw Error(Status::invalid_argument);
      return place->name ? core().Item(*place->name) : core().Item(place->position);
    });
  }
  STDMETHODIMP get_Count(short* value) override { return get(value, &CHeaders::Count); }
  STDMETHODIMP ToString(BSTR* text) override { return get(text, &CHeaders::ToString); }
  STDMETHODIMP Add(BSTR name, VARIANT value, IvHeader** header) override {
    return perform(header, [&] { return core().Add(text_of(name), string_in(value).value_or(u"")); });
  }
  STDMETHODIMP Remove(VARIANT index) override {
    return guarded([&] { remove(index); });
  }
  STDMETHODIMP RemoveAll() override { return call(&CHeaders::RemoveAll); }
  STDMETHODIMP get__NewEnum(IUnknown** value) override { return new_enumerator<CHeader>(core(), value); }
  STDMETHODIMP Exists(VARIANT index, VARIANT_BOOL* result) override {
    return answer(result, [&] {
      const auto place = index_in(index);
      return place && (place->name ? core().Exists(*place->name) : core().Exists(place->position));
    });
  }
  STDMETHODIMP FromString(BSTR text) override { return put(text, &CHeaders::FromString); }

 private:
  void remove(const VARIANT& index) {
    const auto place = index_in(index);
    if (place) return place->name ? core().Remove(*place->name) : core().Remove(place->position);
    IDispatch* object = nullptr;
    const auto header = holds_object(index, object) ? header_behind(object) : nullptr;
    if (!header) throw Error(Status::invalid_argument);
    core().Remove(*header);
  }
};

}  // namespace

ComPtr<IvHeaders> wrap(const std::shared_ptr<CHeaders>& headers) { return HeadersObject::of(headers); }

ComPtr<IUnknown> new_headers() { return query<IUnknown>(wrap(std::make_shared<CHeaders>()).get()); }

}  // namespace vellobar::automation
