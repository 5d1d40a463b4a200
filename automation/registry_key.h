// An open registry key. Every failure is thrown as std::system_error.
#pragma once

#include <windows.h>

#include <string>

namespace vellobar::automation {

class RegistryKey {
 public:
  /// Opens a key below `parent`, and makes it when it is not there.
  RegistryKey(HKEY parent, const std::wstring& path);
  ~RegistryKey();
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;

  HKEY get() const { return key_; }

  /// Sets a value of this key; the default value when the name is empty.
  void set_value(const std::wstring& name, const std::wstring& text);
  /// Makes a key below this one and sets its default value.
  void set_subkey(const std::wstring& path, const std::wstring& text);

 private:
  HKEY key_ = nullptr;
};

/// Whether there is such a key in this view of the registry (KEY_WOW64_32KEY, KEY_WOW64_64KEY).
bool has_key(HKEY parent, const std::wstring& path, REGSAM view);

/// Deletes a key with everything below it; nothing when it is not there.
void delete_tree(HKEY parent, const std::wstring& path);

/// Deletes a key that has no keys below it; leaves any other as it is.
void delete_childless(HKEY parent, const std::wstring& path);

}  // namespace vellobar::automation
