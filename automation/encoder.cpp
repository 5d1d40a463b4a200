// IvEncoder: the encoders for files, byte arrays and texts.
#include "codecs/encoder.h"

#include "automation/coding_object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

using codecs::CEncoder;

class EncoderObject final : public CodingObject<IvEncoder, CEncoder> {
 public:
  STDMETHODIMP Base64(BSTR in, BSTR out) override { return code_file(in, out, &CEncoder::Base64); }
  STDMETHODIMP Uuencode(BSTR in, BSTR out) override { return code_file(in, out, &CEncoder::Uuencode); }
  STDMETHODIMP QuotedPrintable(BSTR in, BSTR out) override { return code_file(in, out, &CEncoder::QuotedPrintable); }
  STDMETHODIMP BinHex4(BSTR in, BSTR out) override { return code_file(in, out, &CEncoder::BinHex4); }
  STDMETHODIMP Base64Data(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CEncoder::Base64Data);
  }
  STDMETHODIMP QuotedPrintableData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CEncoder::QuotedPrintableData);
  }
  STDMETHODIMP UuencodeData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CEncoder::UuencodeData);
  }
  STDMETHODIMP Base64Text(BSTR in, BSTR* out) override { return code_text(in, out, &CEncoder::Base64Text); }
  STDMETHODIMP UuencodeText(BSTR in, BSTR* out) override { return code_text(in, out, &CEncoder::UuencodeText); }
  STDMETHODIMP QuotedPrintableText(BSTR in, BSTR* out) override {
    return code_text(in, out, &CEncoder::QuotedPrintableText);
  }
};

}  // namespace

ComPtr<IUnknown> new_encoder() { return ComPtr<IUnknown>::attach(static_cast<IvEncoder*>(new EncoderObject)); }

}  // namespace vellobar::automation
