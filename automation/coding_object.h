// What the encoder and the decoder object share: how file names, byte arrays and texts reach a member of the core's
// class. The objects have no state.
#pragma once

#include <functional>
#include <vector>

#include "automation/byte_array.h"
#include "automation/byte_array_arguments.h"
#include "automation/object.h"

namespace vellobar::automation {

template <class Interface, class Coder>
class CodingObject : public Object<Interface> {
 public:
  STDMETHODIMP Invoke(DISPID identifier, REFIID reserved, LCID locale, WORD kind, DISPPARAMS* arguments, VARIANT* to,
                      EXCEPINFO* exception, UINT* bad_argument) override {
    const auto invoke = [&](DISPPARAMS* with) {
      return Object<Interface>::Invoke(identifier, reserved, locale, kind, with, to, exception, bad_argument);
    };
    const bool codes_data = identifier >= kFirstOfData && identifier <= kLastOfData;
    if (!codes_data || FAILED(check_arguments(arguments))) return invoke(arguments);
    ByteArrayArguments taken;
    if (const HRESULT result = taken.take(*arguments); FAILED(result)) return result;
    const HRESULT result = invoke(taken.get());
    return FAILED(result) ? result : taken.give_back();
  }

 protected:
  template <auto Member>
  HRESULT code_file(BSTR in_file, BSTR out_file) noexcept {
    return guarded([&] { std::invoke(Member, Coder(), text_of(in_file), text_of(out_file)); });
  }

  /// Both places may name the same array: the old one goes only when the result is complete.
  template <auto Member>
  HRESULT code_data(SAFEARRAY** in_data, SAFEARRAY** out_data) noexcept {
    return guarded([&] {
      std::vector<unsigned char> result;
      {
        const ArrayBytes in(in_data);
        if (out_data == nullptr) return;
        result = std::invoke(Member, Coder(), in.bytes());
      }
      replace_array(out_data, result);
    });
  }

  /// A result without characters leaves the client's place as it was.
  template <auto Member>
  HRESULT code_text(BSTR in_text, BSTR* out_text) noexcept {
    return guarded([&] {
      const std::u16string result = std::invoke(Member, Coder(), text_of(in_text));
      if (out_text != nullptr && !result.empty()) hand_out(out_text, result);
    });
  }

 private:
  /// The members that code byte arrays, the same in both interfaces.
  static constexpr DISPID kFirstOfData = 5, kLastOfData = 7;
};

}  // namespace vellobar::automation
