// IvEncoder: the encoders for files, byte arrays and texts.
#include "codecs/encoder.h"

#include "automation/coding_object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

using codecs::CEncoder;

class EncoderObject final : public CodingObject<IvEncoder, CEncoder> {
 public:
  STDMETHODIMP Base64(BSTR in, BSTR out) override { return code_file<&CEncoder::Base64>(in, out); }
  STDMETHODIMP Uuencode(BSTR in, BSTR out) override { return code_file<&CEncoder::Uuencode>(in, out); }
  STDMETHODIMP QuotedPrintable(BSTR in, BSTR out) override { return code_file<&CEncoder::QuotedPrintable>(in, out); }
  STDMETHODIMP BinHex4(BSTR in, BSTR out) override { return code_file<&CEncoder::BinHex4>(in, out); }
  STDMETHODIMP Base64Data(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CEncoder::Base64Data>(in, out);
  }
  STDMETHODIMP QuotedPrintableData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CEncoder::QuotedPrintableData>(in, out);
  }
  STDMETHODIMP UuencodeData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CEncoder::UuencodeData>(in, out);
  }
  STDMETHODIMP Base64Text(BSTR in, BSTR* out) override { return code_text<&CEncoder::Base64Text>(in, out); }
  STDMETHODIMP UuencodeText(BSTR in, BSTR* out) override { return code_text<&CEncoder::UuencodeText>(in, out); }
  STDMETHODIMP QuotedPrintableText(BSTR in, BSTR* out) override {
    return code_text<&CEncoder::QuotedPrintableText>(in, out);
  }
};

}  // namespace

ComPtr<IUnknown> new_encoder() { return ComPtr<IUnknown>::attach(static_cast<IvEncoder*>(new EncoderObject)); }

}  // namespace vellobar::automation
