// What the encoder and the decoder object share: how file names, byte arrays and texts reach a member of the core's
// class. The objects have no state.
#pragma once

#include <functional>
#include <vector>

#include "automation/byte_array.h"
#include "automation/object.h"

namespace vellobar::automation {

template <class Interface, class Coder>
class CodingObject : public Object<Interface> {
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
};

}  // namespace vellobar::automation
