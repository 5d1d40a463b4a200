// Work in another apartment than the test's own, which answers calls meanwhile as a single-threaded apartment must.
#pragma once

#include <ole2.h>

#include <functional>

#include "tests/automation/client.h"

namespace vellobar::tests {

/// Runs work in a thread of its own that joins an apartment (COINIT_MULTITHREADED, COINIT_APARTMENTTHREADED), and
/// answers calls until it has ended.
void in_apartment(DWORD kind, const std::function<void()>& work);

/// An apartment with a thread of its own, in which an object can live while others call it.
class LivingApartment {
 public:
  explicit LivingApartment(DWORD kind);
  ~LivingApartment();
  LivingApartment(const LivingApartment&) = delete;
  LivingApartment& operator=(const LivingApartment&) = delete;

  /// Runs work in the apartment and waits until it is done.
  void run(std::function<void()> work);

 private:
  static DWORD WINAPI live(void* self);

  DWORD kind_;
  HANDLE wanted_, done_, thread_;
  std::function<void()> work_;
  bool ends_ = false;
};

/// True for a stand-in that carries calls into another apartment.
bool is_proxy(IUnknown* object);

/// An interface of an object as a stream that another apartment can read it from.
ComPtr<IStream> into_stream(REFIID interface_id, IUnknown* object);
/// Takes the interface out of the stream.
template <class Interface>
ComPtr<Interface> from_stream(ComPtr<IStream>& stream) {
  void* found = nullptr;
  EXPECT_EQ(CoGetInterfaceAndReleaseStream(stream.detach(), __uuidof(Interface), &found), S_OK);
  return ComPtr<Interface>::attach(static_cast<Interface*>(found));
}

}  // namespace vellobar::tests
