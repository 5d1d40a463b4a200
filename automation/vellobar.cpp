// IVellobar: the control.
#include "mailbox/vellobar.h"

#include <olectl.h>

#include <memory>

#include "automation/about_box.h"
#include "automation/core_object.h"
#include "automation/hosting/hosting.h"
#include "automation/objects.h"
#include "mailbox/messages.h"

namespace vellobar::automation {

namespace {

class VellobarObject final : public CoreObject<VellobarObject, IVellobar, CVellobar> {
 public:
  using CoreObject::CoreObject;

  STDMETHODIMP QueryInterface(REFIID interface_id, void** to) override {
    const HRESULT found = CoreObject::QueryInterface(interface_id, to);
    if (found != E_NOINTERFACE || !Hosting::answers(interface_id)) return found;
    // Hosts ask for interfaces between a failure and its error information, which therefore stays.
    try {
      IUnknown* part = hosting().find(interface_id);
      part->AddRef();
      *to = part;
      return S_OK;
    } catch (...) {
      return result_of_current_exception();
    }
  }

  STDMETHODIMP get_Filename(BSTR* value) override { return get(value, &CVellobar::Filename); }
  STDMETHODIMP put_Filename(BSTR value) override {
    const bool changes = !core().Locked() && text_of(value) != core().Filename();
    return put_bindable(kFilename, changes, [&] { core().SetFilename(text_of(value)); });
  }
  STDMETHODIMP get_Messages(IvMessages** value) override { return get(value, &CVellobar::Messages); }
  STDMETHODIMP get_AutoUpdate(VARIANT_BOOL* value) override { return get(value, &CVellobar::AutoUpdate); }
  STDMETHODIMP put_AutoUpdate(VARIANT_BOOL value) override {
    const bool on = value != VARIANT_FALSE;
    return put_bindable(kAutoUpdate, on != core().AutoUpdate(), [&] { core().SetAutoUpdate(on); });
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
    const auto language = static_cast<std::int32_t>(value);
    return put_bindable(kLanguage, language != CVellobar::Language(), [&] { CVellobar::SetLanguage(language); });
  }
  STDMETHODIMP get_CharSet(Charsets* value) override {
    return answer(value, [] { return CVellobar::CharSet(); });
  }
  STDMETHODIMP put_CharSet(Charsets value) override {
    const auto code_page = static_cast<std::int32_t>(value);
    return put_bindable(kCharSet, code_page != CVellobar::CharSet(), [&] { CVellobar::SetCharSet(code_page); });
  }

 private:
  Hosting& hosting() {
    if (!hosting_) hosting_ = std::make_unique<Hosting>(static_cast<IVellobar&>(*this), core());
    return *hosting_;
  }

  /// Puts a value that containers may bind to; what changes it asks first those who listen.
  template <class Work>
  HRESULT put_bindable(DISPID identifier, bool changes, Work&& work) noexcept {
    // A listener may let the control go.
    const ComPtr<IVellobar> kept(this);
    if (changes && hosting_ && !hosting_->may_put(identifier)) {
      clear_error_information();
      return CTL_E_SETNOTPERMITTED;
    }
    return guarded(work);
  }

  template <class Builder, class... Texts>
  HRESULT build(Builder builder, Texts... texts) noexcept {
    return guarded([&] { std::invoke(builder, core(), text_of(texts)...); });
  }

  std::unique_ptr<Hosting> hosting_;
};

}  // namespace

ComPtr<IUnknown> new_vellobar() { return query<IUnknown>(VellobarObject::of(std::make_shared<CVellobar>()).get()); }

}  // namespace vellobar::automation
