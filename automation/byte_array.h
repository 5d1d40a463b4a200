// One-dimensional arrays of bytes as clients send and receive them. An array of another shape or element type is
// Status::fail; lower bounds may be anything.
#pragma once

#include <ole2.h>

#include <span>

namespace vellobar::automation {

/// The bytes of a client's array, in place, for as long as this lives.
class ArrayBytes {
 public:
  /// Status::fail when there is no array or it is not one of bytes.
  explicit ArrayBytes(SAFEARRAY* const* array);
  ~ArrayBytes();
  ArrayBytes(const ArrayBytes&) = delete;
  ArrayBytes& operator=(const ArrayBytes&) = delete;

  std::span<unsigned char> bytes() const { return bytes_; }

 private:
  SAFEARRAY* array_;
  std::span<unsigned char> bytes_;
};

/// Puts a new array, lower bound 0, in the place of the one that is there; no bytes leave the place empty.
/// Status::fail, and nothing changed, when the old array is locked or of a fixed size.
void replace_array(SAFEARRAY** place, std::span<const unsigned char> bytes);

}  // namespace vellobar::automation
