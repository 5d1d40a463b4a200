#include "automation/registry_key.h"

#include <system_error>

namespace vellobar::automation {

namespace {

void check(LONG result) {
  if (result != ERROR_SUCCESS) throw std::system_error(static_cast<int>(result), std::system_category());
}

bool has_subkeys(HKEY parent, const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  DWORD subkeys = 0;
  const LONG result = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, nullptr);
  RegCloseKey(key);
  check(result);
  return subkeys > 0;
}

}  // namespace

RegistryKey::RegistryKey(HKEY parent, const std::wstring& path) {
  check(RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr, &key_,
                        nullptr));
}

RegistryKey::~RegistryKey() { RegCloseKey(key_); }

void RegistryKey::set_value(const std::wstring& name, const std::wstring& text) {
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  check(RegSetValueExW(key_, name.empty() ? nullptr : name.c_str(), 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(text.c_str()), size));
}

void RegistryKey::set_subkey(const std::wstring& path, const std::wstring& text) {
  RegistryKey(key_, path).set_value(L"", text);
}

bool has_key(HKEY parent, const std::wstring& path, REGSAM view) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

void delete_tree(HKEY parent, const std::wstring& path) {
  const LONG result = RegDeleteTreeW(parent, path.c_str());
  if (result != ERROR_FILE_NOT_FOUND) check(result);
}

void delete_childless(HKEY parent, const std::wstring& path) {
  if (has_subkeys(parent, path)) return;
  const LONG result = RegDeleteKeyW(parent, path.c_str());
  if (result != ERROR_FILE_NOT_FOUND) check(result);
}

}  // namespace vellobar::automation
