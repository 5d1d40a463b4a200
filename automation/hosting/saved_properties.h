// The properties that a container saves with the control, and the bytes that hold them. Numbers are little-endian:
//
//   offset  size
//        0     4  "VLBp"
//        4     4  version, 1
//        8     4  size of what follows, in bytes: 16 plus twice the number of characters
//       12     4  AutoUpdate, 0 or 1
//       16     4  Language
//       20     4  CharSet
//       24     4  number of UTF-16 characters of Filename, at most 32,767
//       28        the characters
//
// Nothing stands behind the last character; what a container keeps behind it in the same stream is left unread.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vellobar::automation {

struct SavedProperties {
  std::u16string filename;
  bool auto_update = false;
  std::int32_t language = 0;
  std::int32_t char_set = 0;

  bool operator==(const SavedProperties&) const = default;
};

inline constexpr std::size_t kSavedHeaderSize = 12;
/// Longest path that Windows knows; a longer `Filename` is not saved.
inline constexpr std::size_t kLongestSavedFilename = 32767;

/// Size of the bytes that hold these properties.
std::size_t saved_size(const SavedProperties& properties);

/// E_INVALIDARG for a `Filename` that is too long.
HRESULT to_bytes(const SavedProperties& properties, std::string& bytes);

/// Reads the header and finds the size of what follows it. STG_E_INVALIDHEADER when these are not our bytes or their
/// sizes cannot be; STG_E_OLDDLL for a later version.
HRESULT read_header(std::string_view header, std::size_t& size);

/// Reads what follows the header. STG_E_DOCFILECORRUPT when it is not what we write; `properties` is then as it was.
HRESULT read_properties(std::string_view bytes, SavedProperties& properties);

}  // namespace vellobar::automation
