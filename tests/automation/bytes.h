// Byte arrays as a client passes them to the encoder and the decoder.
#pragma once

#include <gtest/gtest.h>
#include <ole2.h>

#include <string>
#include <string_view>

namespace vellobar::tests {

/// A byte array owned by the client.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::string_view content, LONG lower_bound = 0) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(content.size()), lower_bound};
    array_ = SafeArrayCreate(VT_UI1, 1, &bound);
    content.copy(static_cast<char*>(array_->pvData), content.size());
  }
  explicit Bytes(SAFEARRAY* array) : array_(array) {}
  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;
  ~Bytes() {
    if (array_ != nullptr) SafeArrayDestroy(array_);
  }

  SAFEARRAY** place() { return &array_; }
  bool is_null() const { return array_ == nullptr; }
  std::string content() const {
    if (array_ == nullptr) return "(null)";
    EXPECT_EQ(SafeArrayGetDim(array_), 1u);
    EXPECT_EQ(array_->rgsabound[0].lLbound, 0);
    return {static_cast<const char*>(array_->pvData), array_->rgsabound[0].cElements};
  }

 private:
  SAFEARRAY* array_ = nullptr;
};

}  // namespace vellobar::tests
