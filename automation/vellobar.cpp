// IVellobar: the control.
#include "mailbox/vellobar.h"

#include "automation/about_box.h"
#include "automation/core_object.h"
#include "automation/objects.h"
#include "mailbox/messages.h"

namespace vellobar::automation {

namespace {

class VellobarObject final : public CoreObject<VellobarObject, IVellobar, CVellobar> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP get_Filename(BSTR* value) override { return get(value, &CVellobar::Filename); }
  STDMETHODIMP put_Filename(BSTR value) override { return put(value, &CVellobar::SetFilename); }
  STDMETHODIMP get_Messages(IvMessages** value) override { return get(value, &CVellobar::Messages); }
  STDMETHODIMP get_AutoUpdate(VARIANT_BOOL* value) override { return get(value, &CVellobar::AutoUpdate); }
  STDMETHODIMP put_AutoUpdate(VARIANT_BOOL value) override {
    return guarded([&] { core().SetAutoUpdate(value != VARIANT_FALSE); });
  }
  STDMETHODIMP Update() override { return call(&CVellobar::Update); }
  STDMETHODIMP Lock() override { return call(&CVellobar::Lock); }
  STDMETHODIMP Unlock() override { return call(&CVellobar::Unlock); }
  STDMETHODIMP get_Version(BSTR* value) override {
    return answer(value, [] { return CVellobar::Version(); });
  }
  STDMETHODIMP get_Changed(VARIANT_BOOL* value) override { return get(value, &CVellobar::Changed); }
  STDMETHODIMP About() override {
    return guarded([] { show_about_box(); });
  }

  STDMETHODIMP CreateSimpleMessage(BSTR save_as, BSTR from, BSTR to, BSTR subject, BSTR text) override {
    return build(&CVellobar::CreateSimpleMessage, save_as, from, to, subject, text);
  }
  STDMETHODIMP CreateTextHtmlMessage(BSTR save_as, BSTR from, BSTR to, BSTR subject, BSTR plain_text,
                                     BSTR html_text) override {
    return build(&CVellobar::CreateTextHtmlMessage, save_as, from, to, subject, plain_text, html_text);
  }
  STDMETHODIMP CreateSimpleAttachmentMessage(BSTR save_as, BSTR from, BSTR to, BSTR subject, BSTR text,
                                             BSTR attachment) override {
    return build(&CVellobar::CreateSimpleAttachmentMessage, save_as, from, to, subject, text, attachment);
  }
  STDMETHODIMP CreateTextHtmlAttachmentMessage(BSTR save_as, BSTR from, BSTR to, BSTR subject, BSTR plain_text,
                                               BSTR html_text, BSTR attachment) override {
    return build(&CVellobar::CreateTextHtmlAttachmentMessage, save_as, from, to, subject, plain_text, html_text,
                 attachment);
  }

  STDMETHODIMP get_Language(LanguageEnum* value) override {
    return answer(value, [] { return CVellobar::Language(); });
  }
  STDMETHODIMP put_Language(LanguageEnum value) override {
    return guarded([&] { CVellobar::SetLanguage(static_cast<std::int32_t>(value)); });
  }
  STDMETHODIMP get_CharSet(Charsets* value) override {
    return answer(value, [] { return CVellobar::CharSet(); });
  }
  STDMETHODIMP put_CharSet(Charsets value) override {
    return guarded([&] { CVellobar::SetCharSet(static_cast<std::int32_t>(value)); });
  }

 private:
  template <class Builder, class... Texts>
  HRESULT build(Builder builder, Texts... texts) noexcept {
    return guarded([&] { std::invoke(builder, core(), text_of(texts)...); });
  }
};

}  // namespace

ComPtr<IUnknown> new_vellobar() { return query<IUnknown>(VellobarObject::of(std::make_shared<CVellobar>()).get()); }

}  // namespace vellobar::automation
