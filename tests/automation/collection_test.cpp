// Collections: positions, names and objects as indexes, adding and removing, and enumerators.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

namespace vellobar::tests {

namespace {

class MessagesCollection : public AutomationTest {};
class HeadersCollection : public AutomationTest {};
class EnumeratorTest : public AutomationTest {};

short count_of(IvMessages* messages) {
  short count = -1;
  EXPECT_EQ(messages->get_Count(&count), S_OK);
  return count;
}

std::wstring text_of(IvHeaders* headers) {
  Text text;
  EXPECT_EQ(headers->ToString(text.receive()), S_OK);
  return text.value();
}

ComPtr<IEnumVARIANT> enumerator_of(IvMessages* messages) {
  ComPtr<IUnknown> unknown;
  EXPECT_EQ(messages->get__NewEnum(unknown.receive()), S_OK);
  return query<IEnumVARIANT>(unknown.get());
}

/// Headers A, B and C with the values 0, 1 and 2.
ComPtr<IvHeaders> three_headers() {
  auto headers = make<IvHeaders>(CLSID_Headers);
  EXPECT_EQ(headers->FromString(Text(L"A: 0\r\nB: 1\r\nC: 2").get()), S_OK);
  return headers;
}

HRESULT item(IvHeaders* headers, const VARIANT& index, std::wstring* name = nullptr) {
  ComPtr<IvHeader> header;
  const HRESULT result = headers->get_Item(index, header.receive());
  Text read;
  if (name != nullptr && header) header->get_Name(read.receive());
  if (name != nullptr) *name = read.value();
  return result;
}

bool exists(IvHeaders* headers, const VARIANT& index) {
  VARIANT_BOOL result = 5;
  EXPECT_EQ(headers->Exists(index, &result), S_OK);
  EXPECT_TRUE(result == VARIANT_TRUE || result == VARIANT_FALSE);
  return result == VARIANT_TRUE;
}

void expect_position(IvHeaders* headers, const VARIANT& index, const wchar_t* name) {
  std::wstring found;
  EXPECT_EQ(item(headers, index, &found), S_OK);
  EXPECT_EQ(found, name);
  EXPECT_TRUE(exists(headers, index));
}

void expect_no_index(IvHeaders* headers, const VARIANT& index) {
  EXPECT_EQ(item(headers, index), E_INVALIDARG);
  EXPECT_FALSE(exists(headers, index));
  EXPECT_EQ(headers->Remove(index), E_INVALIDARG);
  EXPECT_FALSE(take_error_information().present);
}

}  // namespace

TEST_F(MessagesCollection, item_outside_is_an_invalid_argument) {
  const auto empty = make<IvMessages>(CLSID_Messages);
  ComPtr<IvMessage> message;
  EXPECT_EQ(empty->get_Item(0, message.receive()), E_INVALIDARG);
  MailboxClient client;
  const auto messages = client.locked_messages();
  EXPECT_EQ(messages->get_Item(-1, message.receive()), E_INVALIDARG);
  EXPECT_EQ(messages->get_Item(2, message.receive()), E_INVALIDARG);
  EXPECT_FALSE(message);
  EXPECT_EQ(messages->get_Item(1, nullptr), S_OK);
}

TEST_F(MessagesCollection, add_without_an_argument_adds_an_empty_message) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  ComPtr<IvMessage> added;
  EXPECT_EQ(messages->Add(Value::missing().get(), added.receive()), S_OK);
  Text info;
  EXPECT_EQ(added->get_MailInfo(info.receive()), S_OK);
  EXPECT_EQ(info.value(), L"From <unknown>");
  EXPECT_EQ(count_of(messages.get()), 3);
}

TEST_F(MessagesCollection, add_without_a_place_for_the_result_still_adds) {
  const auto messages = make<IvMessages>(CLSID_Messages);
  EXPECT_EQ(messages->Add(Value::missing().get(), nullptr), S_OK);
  EXPECT_EQ(count_of(messages.get()), 1);
}

TEST_F(MessagesCollection, add_takes_a_file_name_directly_or_by_reference) {
  MailboxClient client;
  const std::string file = client.folder().file("one.eml", "Subject: From a file\r\n\r\nbody\r\n");
  const auto messages = make<IvMessages>(CLSID_Messages);
  Value name(widened(file).c_str());
  BSTR string = V_BSTR(&name.get());
  Value by_reference = Value::of_type(VT_BYREF | VT_BSTR);
  V_BSTRREF(&by_reference.get()) = &string;
  for (const VARIANT& argument : {name.get(), by_reference.get(), Value::reference_to(name.get()).get()}) {
    ComPtr<IvMessage> added;
    EXPECT_EQ(messages->Add(argument, added.receive()), S_OK);
    Text subject;
    EXPECT_EQ(added->get_Subject(subject.receive()), S_OK);
    EXPECT_EQ(subject.value(), L"From a file");
  }
  EXPECT_EQ(count_of(messages.get()), 3);
}

TEST_F(MessagesCollection, add_takes_an_existing_message_and_hands_the_same_one_out) {
  MailboxClient client;
  const auto message = client.message(0);
  const auto messages = make<IvMessages>(CLSID_Messages);
  ComPtr<IvMessage> added;
  EXPECT_EQ(messages->Add(Value(message.get()).get(), added.receive()), S_OK);
  EXPECT_EQ(added.get(), message.get());
  IDispatch* object = message.get();
  Value by_reference = Value::of_type(VT_BYREF | VT_DISPATCH);
  V_DISPATCHREF(&by_reference.get()) = &object;
  EXPECT_EQ(messages->Add(by_reference.get(), added.receive()), S_OK);
  EXPECT_EQ(added.get(), message.get());
  EXPECT_EQ(count_of(messages.get()), 2);
}

TEST_F(MessagesCollection, add_of_a_null_object_or_one_that_is_no_message_is_refused_and_adds_nothing) {
  const auto messages = make<IvMessages>(CLSID_Messages);
  ClientObject foreign;
  ComPtr<IvMessage> added;
  EXPECT_EQ(messages->Add(Value(static_cast<IDispatch*>(nullptr)).get(), added.receive()), E_INVALIDARG);
  EXPECT_EQ(messages->Add(Value(&foreign).get(), added.receive()), E_INVALIDARG);
  EXPECT_EQ(messages->Add(Value(make<IDispatch>(CLSID_Header).get()).get(), added.receive()), E_INVALIDARG);
  EXPECT_EQ(messages->Add(Value::of_type(VT_BYREF | VT_BSTR).get(), added.receive()), E_INVALIDARG);
  EXPECT_EQ(count_of(messages.get()), 0);
  EXPECT_EQ(foreign.references, 1u);
}

TEST_F(MessagesCollection, add_of_a_file_that_cannot_be_opened_without_an_owner_fails_without_a_number) {
  ComPtr<IvMessage> added;
  EXPECT_EQ(make<IvMessages>(CLSID_Messages)->Add(Value(L"no such file").get(), added.receive()), E_FAIL);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(MessagesCollection, remove_finds_the_very_message_and_the_second_time_none) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto first = client.message(0), second = client.message(1);
  EXPECT_EQ(messages->Remove(first.get()), S_OK);
  EXPECT_EQ(messages->Remove(first.get()), E_INVALIDARG);
  EXPECT_EQ(messages->Remove(nullptr), E_INVALIDARG);
  EXPECT_EQ(messages->Remove(make<IvMessage>(CLSID_Message).get()), E_INVALIDARG);
  short index = -1;
  EXPECT_EQ(second->get_Index(&index), S_OK);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(messages->RemoveAll(), S_OK);
  EXPECT_EQ(count_of(messages.get()), 0);
}

TEST_F(MessagesCollection, a_count_or_index_beyond_short_overflows_and_the_enumerator_walks_every_item) {
  std::string mailbox;
  for (int i = 0; i < 32769; ++i) mailbox += "From x\n\n";
  MailboxClient client(mailbox);
  const auto messages = client.locked_messages();
  short number = 7;
  EXPECT_EQ(messages->get_Count(&number), DISP_E_OVERFLOW);
  const auto items = enumerator_of(messages.get());
  EXPECT_EQ(items->Skip(32768), S_OK);
  Value last;
  ASSERT_EQ(items->Next(1, last.receive(), nullptr), S_OK);
  const auto message = query<IvMessage>(V_DISPATCH(&last.get()));
  EXPECT_EQ(message->get_Index(&number), DISP_E_OVERFLOW);
  long start = 0;
  EXPECT_EQ(message->get_StartPosition(&start), S_OK);
  EXPECT_EQ(start, 32768 * 8);
  EXPECT_EQ(items->Next(1, last.receive(), nullptr), S_FALSE);
}

TEST_F(HeadersCollection, a_number_of_any_type_that_fits_a_short_is_a_position) {
  const auto headers = three_headers();
  Value number = Value::of_type(VT_I4);
  V_I4(&number.get()) = 1;
  expect_position(headers.get(), number.get(), L"B");
  number = Value::of_type(VT_UI1);
  V_UI1(&number.get()) = 2;
  expect_position(headers.get(), number.get(), L"C");
  number = Value::of_type(VT_R8);
  V_R8(&number.get()) = 1.0;
  expect_position(headers.get(), number.get(), L"B");
  expect_position(headers.get(), Value::of_type(VT_EMPTY).get(), L"A");
  expect_position(headers.get(), Value(false).get(), L"A");
}

TEST_F(HeadersCollection, a_reference_is_followed_to_its_value) {
  const auto headers = three_headers();
  Value number(short{2});
  expect_position(headers.get(), Value::reference_to(number.get()).get(), L"C");
  Value name(L"b");
  expect_position(headers.get(), Value::reference_to(name.get()).get(), L"B");
  LONG position = 1;
  Value by_reference = Value::of_type(VT_BYREF | VT_I4);
  V_I4REF(&by_reference.get()) = &position;
  expect_position(headers.get(), by_reference.get(), L"B");
  expect_position(headers.get(), Value::reference_to(by_reference.get()).get(), L"B");
}

TEST_F(HeadersCollection, a_string_is_a_name_even_when_it_holds_digits) {
  const auto headers = three_headers();
  expect_no_index(headers.get(), Value(L"0").get());
  expect_position(headers.get(), Value(L"c").get(), L"C");
}

TEST_F(HeadersCollection, what_does_not_convert_to_a_short_is_an_invalid_argument_and_does_not_exist) {
  const auto headers = three_headers();
  Value large = Value::of_type(VT_I4);
  V_I4(&large.get()) = 32768;
  expect_no_index(headers.get(), large.get());
  Value huge = Value::of_type(VT_R8);
  V_R8(&huge.get()) = 1e300;
  expect_no_index(headers.get(), huge.get());
  expect_no_index(headers.get(), Value::missing().get());
  expect_no_index(headers.get(), Value(short{3}).get());
  expect_no_index(headers.get(), Value(short{-1}).get());
  expect_no_index(headers.get(), Value(true).get());
  for (int type : std::initializer_list<int>{VT_NULL, VT_ERROR, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY | VT_UI1,
                                             VT_ARRAY | VT_VARIANT, VT_RECORD}) {
    SCOPED_TRACE(type);
    expect_no_index(headers.get(), Value::of_type(static_cast<VARTYPE>(type)).get());
  }
}

TEST_F(HeadersCollection, a_reference_that_leads_nowhere_is_an_invalid_argument) {
  const auto headers = three_headers();
  for (int type : std::initializer_list<int>{VT_I2, VT_I4, VT_BSTR, VT_DISPATCH, VT_UNKNOWN, VT_VARIANT, VT_DECIMAL,
                                             VT_ARRAY | VT_UI1}) {
    SCOPED_TRACE(type);
    Value reference = Value::of_type(static_cast<VARTYPE>(VT_BYREF | type));
    expect_no_index(headers.get(), reference.get());
    expect_no_index(headers.get(), Value::reference_to(reference.get()).get());
  }
}

TEST_F(HeadersCollection, an_object_as_index_is_never_asked_for_its_value) {
  const auto headers = three_headers();
  ClientObject object;
  expect_no_index(headers.get(), Value(&object).get());
  EXPECT_EQ(object.calls, 0);
}

TEST_F(HeadersCollection, remove_takes_the_very_header_directly_or_by_reference) {
  const auto headers = three_headers();
  ComPtr<IvHeader> second, third;
  ASSERT_EQ(headers->get_Item(Value(L"B").get(), second.receive()), S_OK);
  ASSERT_EQ(headers->get_Item(Value(L"C").get(), third.receive()), S_OK);
  EXPECT_EQ(headers->Remove(Value(second.get()).get()), S_OK);
  EXPECT_EQ(headers->Remove(Value(second.get()).get()), E_INVALIDARG);
  Value object(third.get());
  EXPECT_EQ(headers->Remove(Value::reference_to(object.get()).get()), S_OK);
  EXPECT_EQ(text_of(headers.get()), L"A: 0\r\n");
}

TEST_F(HeadersCollection, remove_of_a_header_of_another_collection_is_an_invalid_argument) {
  const auto headers = three_headers(), others = three_headers();
  ComPtr<IvHeader> foreign;
  ASSERT_EQ(others->get_Item(Value(L"B").get(), foreign.receive()), S_OK);
  EXPECT_EQ(headers->Remove(Value(foreign.get()).get()), E_INVALIDARG);
  EXPECT_EQ(text_of(headers.get()), L"A: 0\r\nB: 1\r\nC: 2\r\n");
}

TEST_F(HeadersCollection, add_stores_a_string_value_and_ignores_any_other) {
  const auto headers = make<IvHeaders>(CLSID_Headers);
  Value text(L"v");
  EXPECT_EQ(headers->Add(Text(L"X-A").get(), text.get(), nullptr), S_OK);
  EXPECT_EQ(headers->Add(Text(L"X-B").get(), Value::reference_to(text.get()).get(), nullptr), S_OK);
  EXPECT_EQ(headers->Add(Text(L"X-C").get(), Value(short{5}).get(), nullptr), S_OK);
  EXPECT_EQ(headers->Add(Text(L"X-D").get(), Value::missing().get(), nullptr), S_OK);
  EXPECT_EQ(text_of(headers.get()), L"X-A: v\r\nX-B: v\r\nX-C: \r\nX-D: \r\n");
}

TEST_F(HeadersCollection, an_empty_one_is_a_null_string_and_exists_without_a_place_succeeds) {
  const auto headers = make<IvHeaders>(CLSID_Headers);
  Text text;
  EXPECT_EQ(headers->ToString(text.receive()), S_OK);
  EXPECT_TRUE(text.is_null());
  EXPECT_EQ(headers->Exists(Value(short{0}).get(), nullptr), S_OK);
  EXPECT_EQ(three_headers()->get_Item(Value(short{0}).get(), nullptr), S_OK);
}

TEST_F(EnumeratorTest, walks_the_items_that_were_there_when_it_was_made) {
  MailboxClient client;
  const auto messages = client.locked_messages();
  const auto items = enumerator_of(messages.get());
  EXPECT_EQ(messages->RemoveAll(), S_OK);
  VARIANT found[3];
  ULONG fetched = 9;
  EXPECT_EQ(items->Next(3, found, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2u);
  EXPECT_EQ(V_VT(&found[0]), VT_DISPATCH);
  EXPECT_EQ(V_VT(&found[1]), VT_DISPATCH);
  EXPECT_EQ(V_VT(&found[2]), VT_EMPTY);
  for (VARIANT& item : found) VariantClear(&item);
}

TEST_F(EnumeratorTest, next_wants_a_place_and_a_count_when_it_gives_more_than_one) {
  MailboxClient client;
  const auto items = enumerator_of(client.locked_messages().get());
  VARIANT found[2];
  ULONG fetched = 9;
  EXPECT_EQ(items->Next(2, found, nullptr), E_POINTER);
  EXPECT_EQ(items->Next(1, nullptr, &fetched), E_POINTER);
  EXPECT_EQ(fetched, 0u);
  EXPECT_EQ(items->Next(0, found, &fetched), S_OK);
  EXPECT_EQ(items->Next(2, found, &fetched), S_OK);
  EXPECT_EQ(fetched, 2u);
  for (VARIANT& item : found) VariantClear(&item);
}

TEST_F(EnumeratorTest, skips_resets_and_clones_with_positions_of_their_own) {
  MailboxClient client;
  const auto items = enumerator_of(client.locked_messages().get());
  EXPECT_EQ(items->Skip(1), S_OK);
  ComPtr<IEnumVARIANT> copy;
  ASSERT_EQ(items->Clone(copy.receive()), S_OK);
  EXPECT_EQ(items->Skip(2), S_FALSE);
  Value item;
  EXPECT_EQ(items->Next(1, item.receive(), nullptr), S_FALSE);
  ASSERT_EQ(copy->Next(1, item.receive(), nullptr), S_OK);
  long start = 0;
  EXPECT_EQ(query<IvMessage>(V_DISPATCH(&item.get()))->get_StartPosition(&start), S_OK);
  EXPECT_EQ(start, 99);
  EXPECT_EQ(items->Reset(), S_OK);
  EXPECT_EQ(items->Skip(2), S_OK);
  EXPECT_EQ(items->Clone(nullptr), E_POINTER);
}

TEST_F(EnumeratorTest, headers_enumerate_as_well_and_a_null_place_succeeds) {
  const auto headers = three_headers();
  EXPECT_EQ(headers->get__NewEnum(nullptr), S_OK);
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(headers->get__NewEnum(unknown.receive()), S_OK);
  std::wstring names;
  Value item;
  const auto items = query<IEnumVARIANT>(unknown.get());
  while (items->Next(1, item.receive(), nullptr) == S_OK) {
    Text name;
    query<IvHeader>(V_DISPATCH(&item.get()))->get_Name(name.receive());
    names += name.value();
  }
  EXPECT_EQ(names, L"ABC");
}

TEST_F(EnumeratorTest, of_headers_walks_those_that_were_there_when_each_is_removed_on_the_way) {
  const auto headers = three_headers();
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(headers->get__NewEnum(unknown.receive()), S_OK);
  std::wstring names;
  Value item;
  const auto items = query<IEnumVARIANT>(unknown.get());
  while (items->Next(1, item.receive(), nullptr) == S_OK) {
    const auto header = query<IvHeader>(V_DISPATCH(&item.get()));
    EXPECT_EQ(headers->Remove(Value(header.get()).get()), S_OK);
    EXPECT_EQ(headers->Add(Text(L"Added").get(), Value::missing().get(), nullptr), S_OK);
    Text name;
    header->get_Name(name.receive());
    names += name.value();
  }
  EXPECT_EQ(names, L"ABC");
  EXPECT_EQ(text_of(headers.get()), L"Added: \r\nAdded: \r\nAdded: \r\n");
}

}  // namespace vellobar::tests
