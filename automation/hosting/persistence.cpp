#include "automation/hosting/persistence.h"

#include <string>
#include <utility>

#include "automation/guard.h"
#include "mailbox/vellobar.h"
#include "vellobar_automation.h"

namespace vellobar::automation {

namespace {

constexpr wchar_t kStreamName[] = L"Contents";

/// Reads exactly this many bytes; STG_E_READFAULT where the stream ends before.
HRESULT read_exactly(IStream& stream, std::string& bytes, std::size_t size) {
  bytes.resize(size);
  std::size_t got = 0;
  while (got < size) {
    ULONG read = 0;
    const HRESULT result = stream.Read(bytes.data() + got, static_cast<ULONG>(size - got), &read);
    if (FAILED(result)) return result;
    if (read == 0 || read > size - got) return STG_E_READFAULT;
    got += read;
  }
  return S_OK;
}

HRESULT read_saved(IStream& stream, SavedProperties& properties) {
  std::string bytes;
  if (const HRESULT result = read_exactly(stream, bytes, kSavedHeaderSize); FAILED(result)) return result;
  std::size_t size = 0;
  if (const HRESULT result = read_header(bytes, size); FAILED(result)) return result;
  if (const HRESULT result = read_exactly(stream, bytes, size); FAILED(result)) return result;
  return read_properties(bytes, properties);
}

}  // namespace

Persistence::Persistence(IUnknown& control, CVellobar& core, Advice& advice)
    : ControlPart(control), core_(core), advice_(advice), saved_(new_values()) {}

SavedProperties Persistence::new_values() { return {{}, false, CVellobar::Language(), CVellobar::CharSet()}; }

SavedProperties Persistence::current() const {
  return {core_.Filename(), core_.AutoUpdate(), CVellobar::Language(), CVellobar::CharSet()};
}

bool Persistence::is_dirty() const { return !(current() == saved_); }

/// Throws before anything is changed: `Filename` cannot be put while the mailbox is locked.
void Persistence::take_over(SavedProperties properties) {
  core_.SetFilename(properties.filename);
  CVellobar::SetLanguage(properties.language);
  CVellobar::SetCharSet(properties.char_set);
  core_.SetAutoUpdate(properties.auto_update);
  saved_ = std::move(properties);
}

HRESULT Persistence::load_from(IStream& stream) {
  SavedProperties properties;
  if (const HRESULT result = read_saved(stream, properties); FAILED(result)) return result;
  take_over(std::move(properties));
  return S_OK;
}

HRESULT Persistence::save_to(IStream& stream) const {
  std::string bytes;
  if (const HRESULT result = to_bytes(current(), bytes); FAILED(result)) return result;
  ULONG written = 0;
  const HRESULT result = stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
  if (FAILED(result)) return result;
  return written == bytes.size() ? S_OK : STG_E_WRITEFAULT;
}

STDMETHODIMP Persistence::GetClassID(CLSID* class_id) {
  if (class_id == nullptr) return E_POINTER;
  *class_id = CLSID_Vellobar;
  return S_OK;
}

STDMETHODIMP Persistence::IsDirty() {
  return guarded([&] { return is_dirty() ? S_OK : S_FALSE; });
}

STDMETHODIMP Persistence::Load(IStream* stream) {
  if (stream == nullptr) return E_POINTER;
  return guarded([&] { return load_from(*stream); });
}

STDMETHODIMP Persistence::Save(IStream* stream, BOOL clear_dirty) {
  if (stream == nullptr) return E_POINTER;
  return guarded([&] {
    const HRESULT result = save_to(*stream);
    if (SUCCEEDED(result) && clear_dirty != FALSE) saved_ = current();
    return result;
  });
}

STDMETHODIMP Persistence::GetSizeMax(ULARGE_INTEGER* size) {
  if (size == nullptr) return E_POINTER;
  return guarded([&] { size->QuadPart = saved_size(current()); });
}

STDMETHODIMP Persistence::InitNew() {
  return guarded([&] { take_over(new_values()); });
}

STDMETHODIMP Persistence::InitNew(IStorage* storage) {
  if (storage == nullptr) return E_POINTER;
  if (state_ != StorageState::none) return CO_E_ALREADYINITIALIZED;
  return guarded([&] {
    take_over(new_values());
    state_ = StorageState::ready;
  });
}

STDMETHODIMP Persistence::Load(IStorage* storage) {
  if (storage == nullptr) return E_POINTER;
  if (state_ != StorageState::none) return CO_E_ALREADYINITIALIZED;
  return guarded([&] {
    ComPtr<IStream> stream;
    HRESULT result = storage->OpenStream(kStreamName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.receive());
    if (SUCCEEDED(result)) result = load_from(*stream.get());
    if (SUCCEEDED(result)) state_ = StorageState::ready;
    return result;
  });
}

STDMETHODIMP Persistence::Save(IStorage* storage, BOOL same_as_load) {
  if (storage == nullptr) return E_POINTER;
  if (state_ == StorageState::saving || state_ == StorageState::hands_off) return E_UNEXPECTED;
  return guarded([&] {
    constexpr DWORD kMode = STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE;
    ComPtr<IStream> stream;
    HRESULT result = storage->CreateStream(kStreamName, kMode, 0, 0, stream.receive());
    if (SUCCEEDED(result)) result = save_to(*stream.get());
    if (FAILED(result)) return result;
    state_ = StorageState::saving;
    saves_own_storage_ = same_as_load != FALSE;
    written_ = current();
    return S_OK;
  });
}

/// A container that saved to its own storage, or that goes on with the new one, has what was saved: it counts as clean.
STDMETHODIMP Persistence::SaveCompleted(IStorage* storage) {
  if (state_ == StorageState::none || state_ == StorageState::ready) return E_UNEXPECTED;
  if (state_ == StorageState::hands_off && storage == nullptr) return E_INVALIDARG;
  const ComPtr<IUnknown> kept(&control());
  return guarded([&] {
    const auto written = std::exchange(written_, std::nullopt);
    state_ = StorageState::ready;
    if (!written) return;
    if (saves_own_storage_ || storage != nullptr) saved_ = *written;
    advice_.tell_saved();
  });
}

STDMETHODIMP Persistence::HandsOffStorage() {
  if (state_ == StorageState::none) return E_UNEXPECTED;
  state_ = StorageState::hands_off;
  return S_OK;
}

}  // namespace vellobar::automation
