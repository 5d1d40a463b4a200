#include "automation/byte_array.h"

#include <algorithm>
#include <new>
#include <utility>

#include "errors/error.h"

namespace vellobar::automation {

namespace {

/// What an array of a fixed size has that a client declared among its own variables.
constexpr USHORT kNotOnTheHeap = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE;

bool is_array_of_bytes(SAFEARRAY* array) {
  if (SafeArrayGetDim(array) != 1 || SafeArrayGetElemsize(array) != 1) return false;
  VARTYPE type = VT_EMPTY;
  return FAILED(SafeArrayGetVartype(array, &type)) || type == VT_UI1;
}

SAFEARRAY* new_array(std::span<const unsigned char> bytes) {
  if (!std::in_range<ULONG>(bytes.size())) throw std::bad_alloc();
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (array == nullptr) throw std::bad_alloc();
  std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(array->pvData));
  return array;
}

}  // namespace

ArrayBytes::ArrayBytes(SAFEARRAY* const* array) : array_(array != nullptr ? *array : nullptr) {
  void* data = nullptr;
  if (array_ == nullptr || !is_array_of_bytes(array_) || FAILED(SafeArrayAccessData(array_, &data))) {
    throw Error(Status::fail);
  }
  bytes_ = {static_cast<unsigned char*>(data), array_->rgsabound[0].cElements};
}

ArrayBytes::~ArrayBytes() { SafeArrayUnaccessData(array_); }

void replace_array(SAFEARRAY** place, std::span<const unsigned char> bytes) {
  if (*place != nullptr && ((*place)->fFeatures & kNotOnTheHeap) != 0) throw Error(Status::fail);
  SAFEARRAY* made = bytes.empty() ? nullptr : new_array(bytes);
  if (*place != nullptr && FAILED(SafeArrayDestroy(*place))) {
    if (made != nullptr) SafeArrayDestroy(made);
    throw Error(Status::fail);
  }
  *place = made;
}

}  // namespace vellobar::automation
