#include "automation/hosting/saved_properties.h"

namespace vellobar::automation {

namespace {

constexpr std::string_view kMark = "VLBp";
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kNumberSize = 4;
constexpr std::size_t kFixedSize = 4 * kNumberSize;

void append(std::string& bytes, std::uint32_t number) {
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((number >> shift) & 0xFF);
}

std::uint32_t number_at(std::string_view bytes, std::size_t index, std::size_t size = kNumberSize) {
  std::uint32_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = (number << 8) | static_cast<unsigned char>(bytes[index + i]);
  return number;
}

}  // namespace

std::size_t saved_size(const SavedProperties& properties) {
  return kSavedHeaderSize + kFixedSize + 2 * properties.filename.size();
}

HRESULT to_bytes(const SavedProperties& properties, std::string& bytes) {
  if (properties.filename.size() > kLongestSavedFilename) return E_INVALIDARG;
  bytes = kMark;
  append(bytes, kVersion);
  append(bytes, static_cast<std::uint32_t>(saved_size(properties) - kSavedHeaderSize));
  append(bytes, properties.auto_update ? 1 : 0);
  append(bytes, static_cast<std::uint32_t>(properties.language));
  append(bytes, static_cast<std::uint32_t>(properties.char_set));
  append(bytes, static_cast<std::uint32_t>(properties.filename.size()));
  for (const char16_t character : properties.filename) {
    bytes += static_cast<char>(character & 0xFF);
    bytes += static_cast<char>(character >> 8);
  }
  return S_OK;
}

HRESULT read_header(std::string_view header, std::size_t& size) {
  if (header.size() != kSavedHeaderSize || !header.starts_with(kMark)) return STG_E_INVALIDHEADER;
  const std::uint32_t version = number_at(header, 4);
  if (version > kVersion) return STG_E_OLDDLL;
  const std::uint32_t size_behind = number_at(header, 8);
  const bool can_be = size_behind >= kFixedSize && size_behind <= kFixedSize + 2 * kLongestSavedFilename;
  if (version != kVersion || !can_be) return STG_E_INVALIDHEADER;
  size = size_behind;
  return S_OK;
}

HRESULT read_properties(std::string_view bytes, SavedProperties& properties) {
  if (bytes.size() < kFixedSize) return STG_E_DOCFILECORRUPT;
  const std::uint32_t auto_update = number_at(bytes, 0);
  const std::size_t characters = number_at(bytes, 12);
  if (auto_update > 1 || characters > kLongestSavedFilename) return STG_E_DOCFILECORRUPT;
  if (bytes.size() != kFixedSize + 2 * characters) return STG_E_DOCFILECORRUPT;
  SavedProperties read{{},
                       auto_update == 1,
                       static_cast<std::int32_t>(number_at(bytes, 4)),
                       static_cast<std::int32_t>(number_at(bytes, 8))};
  read.filename.reserve(characters);
  for (std::size_t i = kFixedSize; i < bytes.size(); i += 2) {
    read.filename += static_cast<char16_t>(number_at(bytes, i, 2));
  }
  properties = std::move(read);
  return S_OK;
}

}  // namespace vellobar::automation
