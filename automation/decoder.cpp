// IvDecoder: the decoders for files, byte arrays and texts.
#include "codecs/decoder.h"

#include "automation/coding_object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

using codecs::CDecoder;

class DecoderObject final : public CodingObject<IvDecoder, CDecoder> {
 public:
  STDMETHODIMP Base64(BSTR in, BSTR out) override { return code_file(in, out, &CDecoder::Base64); }
  STDMETHODIMP Uudecode(BSTR in, BSTR out) override { return code_file(in, out, &CDecoder::Uudecode); }
  STDMETHODIMP QuotedPrintable(BSTR in, BSTR out) override { return code_file(in, out, &CDecoder::QuotedPrintable); }
  STDMETHODIMP BinHex4(BSTR in, BSTR out) override { return code_file(in, out, &CDecoder::BinHex4); }
  STDMETHODIMP Base64Data(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CDecoder::Base64Data);
  }
  STDMETHODIMP QuotedPrintableData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CDecoder::QuotedPrintableData);
  }
  STDMETHODIMP UudecodeData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data(in, out, &CDecoder::UudecodeData);
  }
  STDMETHODIMP Base64Text(BSTR in, BSTR* out) override { return code_text(in, out, &CDecoder::Base64Text); }
  STDMETHODIMP UudecodeText(BSTR in, BSTR* out) override { return code_text(in, out, &CDecoder::UudecodeText); }
  STDMETHODIMP QuotedPrintableText(BSTR in, BSTR* out) override {
    return code_text(in, out, &CDecoder::QuotedPrintableText);
  }
};

}  // namespace

ComPtr<IUnknown> new_decoder() { return ComPtr<IUnknown>::attach(static_cast<IvDecoder*>(new DecoderObject)); }

}  // namespace vellobar::automation
