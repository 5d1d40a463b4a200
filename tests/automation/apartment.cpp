#include "tests/automation/apartment.h"

namespace vellobar::tests {

namespace {

/// Waits as the thread's apartment must: a single-threaded one answers calls.
void wait_for(HANDLE event) {
  DWORD which = 0;
  EXPECT_EQ(CoWaitForMultipleHandles(0, INFINITE, 1, &event, &which), S_OK);
}

}  // namespace

LivingApartment::LivingApartment(DWORD kind)
    : kind_(kind),
      wanted_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      done_(CreateEventW(nullptr, FALSE, FALSE, nullptr)),
      thread_(CreateThread(nullptr, 0, live, this, 0, nullptr)) {}

LivingApartment::~LivingApartment() {
  ends_ = true;
  SetEvent(wanted_);
  wait_for(thread_);
  for (HANDLE handle : {wanted_, done_, thread_}) CloseHandle(handle);
}

void LivingApartment::run(std::function<void()> work) {
  work_ = std::move(work);
  SetEvent(wanted_);
  wait_for(done_);
}

DWORD WINAPI LivingApartment::live(void* self) {
  auto& apartment = *static_cast<LivingApartment*>(self);
  EXPECT_EQ(CoInitializeEx(nullptr, apartment.kind_), S_OK);
  for (wait_for(apartment.wanted_); !apartment.ends_; wait_for(apartment.wanted_)) {
    apartment.work_();
    SetEvent(apartment.done_);
  }
  CoUninitialize();
  return 0;
}

void in_apartment(DWORD kind, const std::function<void()>& work) { LivingApartment(kind).run(work); }

// The system's stand-ins answer for the security of their calls; objects do not.
bool is_proxy(IUnknown* object) { return static_cast<bool>(query<IClientSecurity>(object)); }

ComPtr<IStream> into_stream(REFIID interface_id, IUnknown* object) {
  ComPtr<IStream> stream;
  EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(interface_id, object, stream.receive()), S_OK);
  return stream;
}

}  // namespace vellobar::tests
