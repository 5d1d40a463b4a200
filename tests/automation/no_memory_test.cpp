// What a client sees when the component runs out of memory in the middle of a call: the status that says so, everything
// as it was before, and never an exception.
#include <gtest/gtest.h>
#include <ocidl.h>

#include <memory>
#include <string>

#include "automation/class_factory.h"
#include "automation/class_table.h"
#include "automation/guard.h"
#include "automation/module.h"
#include "automation/objects.h"
#include "mailbox/message.h"
#include "tests/automation/failing_allocations.h"
#include "tests/automation/hosting/client_side.h"
#include "vellobar_automation.h"

namespace vellobar::automation {
namespace {

using tests::PropertyListener;
using tests::Text;
using tests::with_each_allocation_failing;

template <class Wanted>
ComPtr<Wanted> new_control() {
  return query<Wanted>(new_vellobar().get());
}

std::wstring filename_of(IVellobar* control) {
  Text filename;
  EXPECT_EQ(control->get_Filename(filename.receive()), S_OK);
  return filename.value();
}

/// A call that makes an enumerator: it fails whole or gives one. (Telling listeners may lack memory after a success.)
template <class Interface, class Call>
void expect_enumerator(Call call) {
  HRESULT result = S_OK;
  ComPtr<Interface> made;
  with_each_allocation_failing([&] { result = call(made.receive()); },
                               [&](bool failed) {
                                 EXPECT_TRUE(result == S_OK || (failed && result == E_OUTOFMEMORY)) << result;
                                 EXPECT_EQ(static_cast<bool>(made), result == S_OK);
                               });
}

class NoMemory : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(living_objects(), 0); }
};

}  // namespace

TEST_F(NoMemory, an_object_of_each_class_is_made_whole_or_not_at_all) {
  for (const ClassEntry& entry : class_table()) {
    HRESULT result = S_OK;
    void* object = nullptr;
    const auto make = [&] {
      void* factory = nullptr;
      result = get_class_object(entry.class_id, IID_IClassFactory, &factory);
      if (FAILED(result)) return;
      const auto owner = ComPtr<IClassFactory>::attach(static_cast<IClassFactory*>(factory));
      result = owner->CreateInstance(nullptr, entry.interface_id, &object);
    };
    with_each_allocation_failing(make, [&](bool failed) {
      EXPECT_EQ(result, failed ? E_OUTOFMEMORY : S_OK);
      EXPECT_EQ(object == nullptr, failed);
      if (object != nullptr) static_cast<IUnknown*>(object)->Release();
      EXPECT_EQ(living_objects(), 0);
    });
  }
}

TEST_F(NoMemory, the_object_of_a_message_is_made_whole_or_not_at_all) {
  HRESULT result = S_OK;
  ComPtr<IvMessage> object;
  const auto message = std::make_shared<CMessage>();
  with_each_allocation_failing([&] { result = guarded([&] { object = wrap(message); }); },
                               [&](bool failed) {
                                 EXPECT_EQ(result, failed ? E_OUTOFMEMORY : S_OK);
                                 EXPECT_EQ(living_objects(), failed ? 0 : 1);
                               });
}

TEST_F(NoMemory, enumerators_are_made_whole_or_not_at_all) {
  PropertyListener listener;
  const auto control = new_control<IConnectionPointContainer>();
  ComPtr<IConnectionPoint> point;
  ASSERT_EQ(control->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()), S_OK);
  DWORD cookie = 0;
  ASSERT_EQ(point->Advise(&listener, &cookie), S_OK);
  expect_enumerator<IEnumConnections>([&](auto** to) { return point->EnumConnections(to); });
  expect_enumerator<IEnumConnectionPoints>([&](auto** to) { return control->EnumConnectionPoints(to); });
  const auto object = query<IOleObject>(control.get());
  expect_enumerator<IEnumOLEVERB>([&](auto** to) { return object->EnumVerbs(to); });
  const auto data = query<IDataObject>(control.get());
  expect_enumerator<IEnumFORMATETC>([&](auto** to) { return data->EnumFormatEtc(DATADIR_GET, to); });
  EXPECT_EQ(point->Unadvise(cookie), S_OK);
}

TEST_F(NoMemory, a_value_that_containers_listen_to_is_put_or_stays) {
  PropertyListener listener;
  const auto control = new_control<IVellobar>();
  ComPtr<IConnectionPoint> point;
  ASSERT_EQ(
      query<IConnectionPointContainer>(control.get())->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()),
      S_OK);
  DWORD cookie = 0;
  ASSERT_EQ(point->Advise(&listener, &cookie), S_OK);
  listener.changed.reserve(100);
  listener.requested.reserve(100);
  const Text name(L"a file name that is longer than a string object holds by itself");
  HRESULT result = S_OK;
  with_each_allocation_failing([&] { result = control->put_Filename(name.get()); },
                               [&](bool) {
                                 const bool put = result == S_OK;
                                 EXPECT_TRUE(put || result == E_OUTOFMEMORY);
                                 EXPECT_EQ(filename_of(control.get()), put ? name.value() : L"");
                                 EXPECT_EQ(control->put_Filename(nullptr), S_OK);
                               });
  EXPECT_EQ(point->Unadvise(cookie), S_OK);
}

TEST_F(NoMemory, a_control_loads_everything_or_nothing) {
  const Text name(L"a file name that is longer than a string object holds by itself");
  ComPtr<IStream> stream;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), S_OK);
  {
    const auto saved = new_control<IVellobar>();
    ASSERT_EQ(saved->put_Filename(name.get()), S_OK);
    ASSERT_EQ(saved->put_AutoUpdate(VARIANT_TRUE), S_OK);
    ASSERT_EQ(query<IPersistStreamInit>(saved.get())->Save(stream.get(), TRUE), S_OK);
  }
  const auto control = new_control<IVellobar>();
  const auto persistent = query<IPersistStreamInit>(control.get());
  HRESULT result = S_OK;
  const auto load = [&] { result = persistent->Load(stream.get()); };
  const auto rewind = [&] { ASSERT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK); };
  rewind();
  with_each_allocation_failing(load, [&](bool failed) {
    EXPECT_EQ(result, failed ? E_OUTOFMEMORY : S_OK);
    VARIANT_BOOL updates = VARIANT_FALSE;
    EXPECT_EQ(control->get_AutoUpdate(&updates), S_OK);
    EXPECT_EQ(updates != VARIANT_FALSE, !failed);
    EXPECT_EQ(filename_of(control.get()), failed ? L"" : name.value());
    EXPECT_EQ(persistent->IsDirty(), S_FALSE);
    rewind();
  });
}

}  // namespace vellobar::automation
