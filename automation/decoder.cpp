// IvDecoder: the decoders for files, byte arrays and texts.
#include "codecs/decoder.h"

#include "automation/coding_object.h"
#include "automation/objects.h"

namespace vellobar::automation {

namespace {

using codecs::CDecoder;

class DecoderObject final : public CodingObject<IvDecoder, CDecoder> {
 public:
  STDMETHODIMP Base64(BSTR in, BSTR out) override { return code_file<&CDecoder::Base64>(in, out); }
  STDMETHODIMP Uudecode(BSTR in, BSTR out) override { return code_file<&CDecoder::Uudecode>(in, out); }
  STDMETHODIMP QuotedPrintable(BSTR in, BSTR out) override { return code_file<&CDecoder::QuotedPrintable>(in, out); }
  STDMETHODIMP BinHex4(BSTR in, BSTR out) override { return code_file<&CDecoder::BinHex4>(in, out); }
  STDMETHODIMP Base64Data(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CDecoder::Base64Data>(in, out);
  }
  STDMETHODIMP QuotedPrintableData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CDecoder::QuotedPrintableData>(in, out);
  }
  STDMETHODIMP UudecodeData(SAFEARRAY** in, SAFEARRAY** out) override {
    return code_data<&CDecoder::UudecodeData>(in, out);
  }
  STDMETHODIMP Base64Text(BSTR in, BSTR* out) override { return code_text<&CDecoder::Base64Text>(in, out); }
  STDMETHODIMP UudecodeText(BSTR in, BSTR* out) override { return code_text<&CDecoder::UudecodeText>(in, out); }
  STDMETHODIMP QuotedPrintableText(BSTR in, BSTR* out) override {
    return code_text<&CDecoder::QuotedPrintableText>(in, out);
  }
};

}  // namespace

ComPtr<IUnknown> new_decoder() { return ComPtr<IUnknown>::attach(static_cast<IvDecoder*>(new DecoderObject)); }

}  // namespace vellobar::automation
