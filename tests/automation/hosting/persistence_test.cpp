// What a container saves and loads with the control.
#include <gtest/gtest.h>

#include <string>

#include "tests/automation/hosting/client_side.h"
#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

constexpr HRESULT kMailboxLocked = static_cast<HRESULT>(0x800A7530);

using namespace std::string_literals;

ComPtr<IStream> stream_with(const std::string& bytes) {
  ComPtr<IStream> stream;
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.receive()), S_OK);
  EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), S_OK);
  EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  return stream;
}

/// All bytes of the stream from its start.
std::string bytes_of(IStream* stream) {
  EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  std::string bytes(1000, '\0');
  ULONG read = 0;
  EXPECT_EQ(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read), S_OK);
  bytes.resize(read);
  return bytes;
}

std::wstring filename_of(IVellobar* control) {
  Text filename;
  EXPECT_EQ(control->get_Filename(filename.receive()), S_OK);
  return filename.value();
}

bool updates_by_itself(IVellobar* control) {
  VARIANT_BOOL on = VARIANT_FALSE;
  EXPECT_EQ(control->get_AutoUpdate(&on), S_OK);
  return on != VARIANT_FALSE;
}

ComPtr<IStorage> new_storage() {
  ComPtr<ILockBytes> memory;
  EXPECT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, memory.receive()), S_OK);
  ComPtr<IStorage> storage;
  EXPECT_EQ(StgCreateDocfileOnILockBytes(memory.get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                         storage.receive()),
            S_OK);
  return storage;
}

/// `Filename` is "a.mbox" and a letter of two bytes, `AutoUpdate` on, `Language` German, `CharSet` UTF-8.
const std::string kSaved =
    "VLBp"
    "\x01\x00\x00\x00"
    "\x1E\x00\x00\x00"
    "\x01\x00\x00\x00"
    "\x07\x04\x00\x00"
    "\xE9\xFD\x00\x00"
    "\x07\x00\x00\x00"
    "a\0.\0m\0b\0o\0x\0\x17\x01"s;

std::string with(std::string bytes, std::size_t at, char byte) {
  bytes[at] = byte;
  return bytes;
}

class Persistence : public AutomationTest {
 protected:
  void SetUp() override { put_process_values(lngEnglish, ActiveCP); }
  void TearDown() override {
    put_process_values(static_cast<LanguageEnum>(GetUserDefaultLCID()), ActiveCP);
    AutomationTest::TearDown();
  }

  static void put_process_values(LanguageEnum language, Charsets char_set) {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    EXPECT_EQ(control->put_Language(language), S_OK);
    EXPECT_EQ(control->put_CharSet(char_set), S_OK);
  }

  static ComPtr<IVellobar> control_with_values() {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    EXPECT_EQ(control->put_Filename(Text(L"a.mbox\u0117").get()), S_OK);
    EXPECT_EQ(control->put_AutoUpdate(VARIANT_TRUE), S_OK);
    EXPECT_EQ(control->put_Language(lngGerman), S_OK);
    EXPECT_EQ(control->put_CharSet(UTF8), S_OK);
    return control;
  }

  static void expect_values(IVellobar* control) {
    EXPECT_EQ(filename_of(control), L"a.mbox\u0117");
    EXPECT_TRUE(updates_by_itself(control));
    LanguageEnum language{};
    EXPECT_EQ(control->get_Language(&language), S_OK);
    EXPECT_EQ(language, lngGerman);
    Charsets char_set{};
    EXPECT_EQ(control->get_CharSet(&char_set), S_OK);
    EXPECT_EQ(char_set, UTF8);
  }

  static void expect_new_values(IVellobar* control) {
    EXPECT_EQ(filename_of(control), L"");
    EXPECT_FALSE(updates_by_itself(control));
    LanguageEnum language{};
    EXPECT_EQ(control->get_Language(&language), S_OK);
    EXPECT_EQ(language, lngEnglish);
    Charsets char_set{};
    EXPECT_EQ(control->get_CharSet(&char_set), S_OK);
    EXPECT_EQ(char_set, ActiveCP);
  }

  /// Loads bytes that are none of ours and expects that nothing changed.
  static void expect_refused(const std::string& bytes, HRESULT expected) {
    const auto control = make<IVellobar>(CLSID_Vellobar);
    EXPECT_EQ(query<IPersistStreamInit>(control.get())->Load(stream_with(bytes).get()), expected);
    expect_new_values(control.get());
  }
};

}  // namespace

TEST_F(Persistence, saves_four_properties_in_a_stream) {
  const auto control = control_with_values();
  const auto stream = stream_with("");
  EXPECT_EQ(query<IPersistStreamInit>(control.get())->Save(stream.get(), TRUE), S_OK);
  EXPECT_EQ(bytes_of(stream.get()), kSaved);
}

TEST_F(Persistence, loads_what_was_saved_and_leaves_what_stands_behind_it) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto stream = stream_with(kSaved + "next");
  const auto persistent = query<IPersistStreamInit>(control.get());
  EXPECT_EQ(persistent->Load(stream.get()), S_OK);
  expect_values(control.get());
  EXPECT_EQ(persistent->IsDirty(), S_FALSE);
  char next[4];
  ULONG read = 0;
  EXPECT_EQ(stream->Read(next, 4, &read), S_OK);
  EXPECT_EQ(std::string(next, read), "next");
}

TEST_F(Persistence, loading_never_opens_the_mailbox) {
  MailboxClient client;
  const auto stream = stream_with("");
  EXPECT_EQ(query<IPersistStreamInit>(client.control())->Save(stream.get(), TRUE), S_OK);
  EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(query<IPersistStreamInit>(control.get())->Load(stream.get()), S_OK);
  EXPECT_EQ(filename_of(control.get()), filename_of(client.control()));
  // A control that is locked would refuse another name.
  EXPECT_EQ(control->put_Filename(Text(L"other").get()), S_OK);
}

TEST_F(Persistence, tells_the_exact_size) {
  ULARGE_INTEGER size{};
  EXPECT_EQ(query<IPersistStreamInit>(control_with_values().get())->GetSizeMax(&size), S_OK);
  EXPECT_EQ(size.QuadPart, kSaved.size());
}

TEST_F(Persistence, a_control_is_dirty_from_the_first_change_to_a_save_that_clears_it) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto persistent = query<IPersistStreamInit>(control.get());
  EXPECT_EQ(persistent->IsDirty(), S_FALSE);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
  EXPECT_EQ(persistent->Save(stream_with("").get(), FALSE), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
  EXPECT_EQ(persistent->Save(stream_with("").get(), TRUE), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_FALSE);
  EXPECT_EQ(control->put_Filename(nullptr), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
}

TEST_F(Persistence, what_was_put_before_the_container_asks_is_dirty_too) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  EXPECT_EQ(query<IPersistStreamInit>(control.get())->IsDirty(), S_OK);
}

TEST_F(Persistence, a_new_control_names_no_mailbox_and_leaves_the_values_of_the_process) {
  const auto control = control_with_values();
  const auto persistent = query<IPersistStreamInit>(control.get());
  EXPECT_EQ(persistent->InitNew(), S_OK);
  EXPECT_EQ(filename_of(control.get()), L"");
  EXPECT_FALSE(updates_by_itself(control.get()));
  Charsets char_set{};
  EXPECT_EQ(control->get_CharSet(&char_set), S_OK);
  EXPECT_EQ(char_set, UTF8);
  EXPECT_EQ(persistent->IsDirty(), S_FALSE);
}

TEST_F(Persistence, a_stream_cut_short_anywhere_changes_nothing) {
  for (std::size_t size = 0; size < kSaved.size(); ++size) expect_refused(kSaved.substr(0, size), STG_E_READFAULT);
}

TEST_F(Persistence, bytes_of_somebody_else_change_nothing) {
  expect_refused(with(kSaved, 0, 'v'), STG_E_INVALIDHEADER);
  expect_refused(std::string(64, '\xFF'), STG_E_INVALIDHEADER);
  expect_refused(with(kSaved, 4, 0), STG_E_INVALIDHEADER);
}

TEST_F(Persistence, a_later_version_is_refused) { expect_refused(with(kSaved, 4, 2), STG_E_OLDDLL); }

TEST_F(Persistence, sizes_and_flags_that_cannot_be_change_nothing) {
  expect_refused(with(kSaved, 8, 15), STG_E_INVALIDHEADER);
  expect_refused(with(kSaved, 11, '\x7F'), STG_E_INVALIDHEADER);
  expect_refused(with(kSaved, 8, 0x1C), STG_E_DOCFILECORRUPT);
  expect_refused(with(kSaved, 12, 2), STG_E_DOCFILECORRUPT);
  expect_refused(with(kSaved, 24, 6), STG_E_DOCFILECORRUPT);
  expect_refused(with(kSaved, 27, '\x7F'), STG_E_DOCFILECORRUPT);
}

TEST_F(Persistence, a_locked_control_loads_nothing) {
  MailboxClient client;
  client.locked_messages();
  const auto persistent = query<IPersistStreamInit>(client.control());
  const std::wstring before = filename_of(client.control());
  EXPECT_EQ(persistent->Load(stream_with(kSaved).get()), kMailboxLocked);
  EXPECT_EQ(take_error_information().description, L"Mailbox locked! Call Unlock() method first");
  EXPECT_EQ(persistent->InitNew(), kMailboxLocked);
  EXPECT_EQ(filename_of(client.control()), before);
  EXPECT_FALSE(updates_by_itself(client.control()));
  Charsets char_set{};
  EXPECT_EQ(client.control()->get_CharSet(&char_set), S_OK);
  EXPECT_EQ(char_set, ActiveCP);
}

TEST_F(Persistence, a_file_name_longer_than_any_path_is_not_saved) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto persistent = query<IPersistStreamInit>(control.get());
  EXPECT_EQ(control->put_Filename(Text(std::wstring(32767, L'x')).get()), S_OK);
  const auto longest = stream_with("");
  EXPECT_EQ(persistent->Save(longest.get(), TRUE), S_OK);
  EXPECT_EQ(longest->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  EXPECT_EQ(query<IPersistStreamInit>(make<IVellobar>(CLSID_Vellobar).get())->Load(longest.get()), S_OK);
  EXPECT_EQ(control->put_Filename(Text(std::wstring(32768, L'x')).get()), S_OK);
  EXPECT_EQ(persistent->Save(stream_with("").get(), TRUE), E_INVALIDARG);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
}

TEST_F(Persistence, loading_tells_the_listeners_what_changed) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto container = query<IConnectionPointContainer>(control.get());
  ComPtr<IConnectionPoint> point;
  ASSERT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()), S_OK);
  DWORD cookie = 0;
  ASSERT_EQ(point->Advise(&listener, &cookie), S_OK);
  EXPECT_EQ(query<IPersistStreamInit>(control.get())->Load(stream_with(kSaved).get()), S_OK);
  EXPECT_EQ(listener.changed, (std::vector<DISPID>{0, 1, 13, 14}));
}

TEST_F(Persistence, a_storage_holds_the_same_bytes_in_its_stream_of_contents) {
  const auto storage = new_storage();
  {
    const auto persistent = query<IPersistStorage>(control_with_values().get());
    EXPECT_EQ(persistent->InitNew(storage.get()), S_OK);
  }
  const auto control = control_with_values();
  const auto persistent = query<IPersistStorage>(control.get());
  EXPECT_EQ(persistent->Save(storage.get(), TRUE), S_OK);
  EXPECT_EQ(persistent->SaveCompleted(nullptr), S_OK);
  ComPtr<IStream> stream;
  ASSERT_EQ(storage->OpenStream(L"Contents", nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.receive()), S_OK);
  EXPECT_EQ(bytes_of(stream.get()), kSaved);
  stream = ComPtr<IStream>();

  put_process_values(lngEnglish, ActiveCP);
  const auto loaded = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(query<IPersistStorage>(loaded.get())->Load(storage.get()), S_OK);
  expect_values(loaded.get());
}

TEST_F(Persistence, listeners_are_told_when_a_new_control_has_its_storage) {
  PropertyListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);
  ComPtr<IConnectionPoint> point;
  ASSERT_EQ(
      query<IConnectionPointContainer>(control.get())->FindConnectionPoint(IID_IPropertyNotifySink, point.receive()),
      S_OK);
  DWORD cookie = 0;
  ASSERT_EQ(point->Advise(&listener, &cookie), S_OK);
  const auto persistent = query<IPersistStorage>(control.get());
  HRESULT again = S_OK;
  listener.when_changed = [&](DISPID) { again = persistent->InitNew(new_storage().get()); };
  EXPECT_EQ(persistent->InitNew(new_storage().get()), S_OK);
  EXPECT_EQ(listener.changed, std::vector<DISPID>{0});
  EXPECT_EQ(again, CO_E_ALREADYINITIALIZED);
  EXPECT_EQ(point->Unadvise(cookie), S_OK);
}

TEST_F(Persistence, a_storage_is_loaded_or_made_once) {
  const auto storage = new_storage();
  const auto persistent = query<IPersistStorage>(make<IVellobar>(CLSID_Vellobar).get());
  EXPECT_EQ(persistent->Load(storage.get()), STG_E_FILENOTFOUND);
  EXPECT_EQ(persistent->InitNew(storage.get()), S_OK);
  EXPECT_EQ(persistent->InitNew(storage.get()), CO_E_ALREADYINITIALIZED);
  EXPECT_EQ(persistent->Load(storage.get()), CO_E_ALREADYINITIALIZED);
}

TEST_F(Persistence, a_save_to_the_own_storage_is_clean_when_it_is_completed) {
  AdviseListener listener;
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto persistent = query<IPersistStorage>(control.get());
  const auto storage = new_storage(), other = new_storage();
  DWORD cookie = 0;
  EXPECT_EQ(query<IOleObject>(control.get())->Advise(&listener, &cookie), S_OK);
  EXPECT_EQ(persistent->InitNew(storage.get()), S_OK);
  EXPECT_EQ(control->put_Filename(Text(L"a").get()), S_OK);

  EXPECT_EQ(persistent->Save(other.get(), FALSE), S_OK);
  EXPECT_EQ(persistent->Save(other.get(), FALSE), E_UNEXPECTED);
  EXPECT_EQ(persistent->SaveCompleted(nullptr), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
  EXPECT_EQ(listener.saves, 1);

  EXPECT_EQ(persistent->Save(storage.get(), TRUE), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_OK);
  EXPECT_EQ(persistent->SaveCompleted(nullptr), S_OK);
  EXPECT_EQ(persistent->IsDirty(), S_FALSE);
  EXPECT_EQ(listener.saves, 2);
}

TEST_F(Persistence, nothing_is_saved_between_hands_off_and_the_next_storage) {
  const auto persistent = query<IPersistStorage>(make<IVellobar>(CLSID_Vellobar).get());
  const auto storage = new_storage();
  EXPECT_EQ(persistent->HandsOffStorage(), E_UNEXPECTED);
  EXPECT_EQ(persistent->InitNew(storage.get()), S_OK);
  EXPECT_EQ(persistent->SaveCompleted(nullptr), E_UNEXPECTED);
  EXPECT_EQ(persistent->HandsOffStorage(), S_OK);
  EXPECT_EQ(persistent->Save(storage.get(), TRUE), E_UNEXPECTED);
  EXPECT_EQ(persistent->SaveCompleted(nullptr), E_INVALIDARG);
  EXPECT_EQ(persistent->SaveCompleted(storage.get()), S_OK);
  EXPECT_EQ(persistent->Save(storage.get(), TRUE), S_OK);
}

TEST_F(Persistence, names_the_class_of_the_control) {
  CLSID class_id{};
  EXPECT_EQ(query<IPersist>(make<IVellobar>(CLSID_Vellobar).get())->GetClassID(&class_id), S_OK);
  EXPECT_EQ(class_id, CLSID_Vellobar);
}

TEST_F(Persistence, null_pointers_are_refused) {
  const auto control = make<IVellobar>(CLSID_Vellobar);
  const auto in_stream = query<IPersistStreamInit>(control.get());
  EXPECT_EQ(in_stream->Load(nullptr), E_POINTER);
  EXPECT_EQ(in_stream->Save(nullptr, TRUE), E_POINTER);
  EXPECT_EQ(in_stream->GetSizeMax(nullptr), E_POINTER);
  EXPECT_EQ(in_stream->GetClassID(nullptr), E_POINTER);
  const auto in_storage = query<IPersistStorage>(control.get());
  EXPECT_EQ(in_storage->Load(nullptr), E_POINTER);
  EXPECT_EQ(in_storage->InitNew(nullptr), E_POINTER);
  EXPECT_EQ(in_storage->Save(nullptr, TRUE), E_POINTER);
}

}  // namespace vellobar::tests
