// What a container saves and loads with the control: `Filename`, `AutoUpdate`, `Language` and `CharSet`, in a stream of
// its own or in the stream "Contents" of a storage. Loading only stores the values and never opens the mailbox; when it
// fails, nothing has changed. The storage itself is never kept, so there is nothing to let go of between calls.
#pragma once

#include <ocidl.h>

#include <optional>

#include "automation/hosting/advice.h"
#include "automation/hosting/control_part.h"
#include "automation/hosting/saved_properties.h"

namespace vellobar {
class CVellobar;
}

namespace vellobar::automation {

class Persistence final : public ControlPart<IPersistStreamInit, IPersistStorage> {
 public:
  Persistence(IUnknown& control, CVellobar& core, Advice& advice);

  bool is_dirty() const;

  STDMETHODIMP GetClassID(CLSID* class_id) override;
  /// S_OK when a saved property differs from what was last saved or loaded, else S_FALSE.
  STDMETHODIMP IsDirty() override;

  STDMETHODIMP Load(IStream* stream) override;
  STDMETHODIMP Save(IStream* stream, BOOL clear_dirty) override;
  STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
  /// A new control: no `Filename`, no `AutoUpdate`. `Language` and `CharSet` are the process's own and stay.
  STDMETHODIMP InitNew() override;

  STDMETHODIMP InitNew(IStorage* storage) override;
  STDMETHODIMP Load(IStorage* storage) override;
  STDMETHODIMP Save(IStorage* storage, BOOL same_as_load) override;
  STDMETHODIMP SaveCompleted(IStorage* storage) override;
  STDMETHODIMP HandsOffStorage() override;

 private:
  enum class StorageState { none, ready, saving, hands_off };

  static SavedProperties new_values();
  SavedProperties current() const;
  void take_over(SavedProperties properties);
  HRESULT load_from(IStream& stream);
  HRESULT save_to(IStream& stream) const;

  CVellobar& core_;
  Advice& advice_;
  SavedProperties saved_;
  StorageState state_ = StorageState::none;
  bool saves_own_storage_ = false;
  /// Written to a storage; counts as saved when the container says that the save is complete.
  std::optional<SavedProperties> written_;
};

}  // namespace vellobar::automation
