// IvEncoder and IvDecoder: byte arrays of every shape, texts and files.
#include <gtest/gtest.h>

#include "tests/automation/bytes.h"
#include "tests/automation/client.h"
#include "tests/support/files.h"

namespace vellobar::tests {

using namespace std::string_literals;

namespace {

class Coding : public AutomationTest {};

/// What a call does to an array that is no array of bytes: it fails and leaves the result alone.
void expect_refused(SAFEARRAY* array) {
  Bytes in(array), out("kept");
  EXPECT_EQ(make<IvEncoder>(CLSID_Encoder)->Base64Data(in.place(), out.place()), E_FAIL);
  EXPECT_EQ(out.content(), "kept");
  EXPECT_FALSE(take_error_information().present);
}

}  // namespace

TEST_F(Coding, byte_arrays_are_encoded_and_decoded_whatever_their_lower_bound) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  const auto decoder = make<IvDecoder>(CLSID_Decoder);
  for (LONG lower_bound : {0, 1, -7}) {
    Bytes raw("ABC\0D"s, lower_bound), coded, back;
    EXPECT_EQ(encoder->Base64Data(raw.place(), coded.place()), S_OK);
    EXPECT_EQ(coded.content(), "QUJDAEQ=");
    EXPECT_EQ(decoder->Base64Data(coded.place(), back.place()), S_OK);
    EXPECT_EQ(back.content(), "ABC\0D"s);
  }
}

TEST_F(Coding, an_old_result_array_is_replaced) {
  Bytes raw("ABC"), out("something old and longer");
  EXPECT_EQ(make<IvEncoder>(CLSID_Encoder)->Base64Data(raw.place(), out.place()), S_OK);
  EXPECT_EQ(out.content(), "QUJD");
}

TEST_F(Coding, an_empty_array_succeeds_with_none) {
  Bytes raw(""), out("old");
  EXPECT_EQ(make<IvEncoder>(CLSID_Encoder)->Base64Data(raw.place(), out.place()), S_OK);
  EXPECT_TRUE(out.is_null());
}

TEST_F(Coding, a_null_pointer_and_a_null_array_fail_and_leave_the_result_alone) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  Bytes none, out("kept");
  EXPECT_EQ(encoder->Base64Data(nullptr, out.place()), E_FAIL);
  EXPECT_EQ(encoder->QuotedPrintableData(none.place(), out.place()), E_FAIL);
  EXPECT_EQ(make<IvDecoder>(CLSID_Decoder)->UudecodeData(none.place(), out.place()), E_FAIL);
  EXPECT_EQ(out.content(), "kept");
}

TEST_F(Coding, a_null_place_for_the_result_succeeds_and_does_nothing) {
  Bytes raw("=e4");
  EXPECT_EQ(make<IvDecoder>(CLSID_Decoder)->QuotedPrintableData(raw.place(), nullptr), S_OK);
  EXPECT_EQ(raw.content(), "=e4");
}

TEST_F(Coding, arrays_of_more_dimensions_or_other_elements_are_refused) {
  SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
  expect_refused(SafeArrayCreate(VT_UI1, 2, bounds));
  expect_refused(SafeArrayCreate(VT_I4, 1, bounds));
  expect_refused(SafeArrayCreate(VT_BSTR, 1, bounds));
  expect_refused(SafeArrayCreate(VT_VARIANT, 1, bounds));
  expect_refused(SafeArrayCreate(VT_I1, 1, bounds));
}

TEST_F(Coding, a_locked_source_is_read_and_a_locked_result_is_refused_untouched) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  Bytes raw("ABC"), out("kept");
  SafeArrayLock(*raw.place());
  SafeArrayLock(*out.place());
  EXPECT_EQ(encoder->Base64Data(raw.place(), out.place()), E_FAIL);
  EXPECT_EQ(out.content(), "kept");
  SafeArrayUnlock(*out.place());
  EXPECT_EQ(encoder->Base64Data(raw.place(), out.place()), S_OK);
  EXPECT_EQ(out.content(), "QUJD");
  SafeArrayUnlock(*raw.place());
}

TEST_F(Coding, an_array_in_the_clients_own_memory_is_no_place_for_a_result_and_is_kept) {
  for (const int feature : {FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {
    Bytes raw("ABC"), out("kept");
    const USHORT before = (*out.place())->fFeatures;
    (*out.place())->fFeatures = static_cast<USHORT>(before | feature);
    EXPECT_EQ(make<IvEncoder>(CLSID_Encoder)->Base64Data(raw.place(), out.place()), E_FAIL);
    (*out.place())->fFeatures = before;
    EXPECT_EQ(out.content(), "kept");
  }
}

TEST_F(Coding, source_and_result_may_be_the_same_array) {
  Bytes data("ABC");
  EXPECT_EQ(make<IvEncoder>(CLSID_Encoder)->Base64Data(data.place(), data.place()), S_OK);
  EXPECT_EQ(data.content(), "QUJD");
}

TEST_F(Coding, the_quoted_printable_decoder_stores_upper_case_back_into_the_clients_array) {
  Bytes raw("a=cab"), out;
  EXPECT_EQ(make<IvDecoder>(CLSID_Decoder)->QuotedPrintableData(raw.place(), out.place()), S_OK);
  EXPECT_EQ(out.content(),
            "a\xCA"
            "b");
  EXPECT_EQ(raw.content(), "a=cAb");
}

TEST_F(Coding, texts_are_encoded_and_decoded) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  const auto decoder = make<IvDecoder>(CLSID_Decoder);
  Text text;
  EXPECT_EQ(encoder->Base64Text(Text(L"ABC").get(), text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"QUJD");
  EXPECT_EQ(decoder->Base64Text(Text(L"QUJD RA==").get(), text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"ABC");
  EXPECT_EQ(encoder->QuotedPrintableText(Text(L"a=b").get(), text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"a=3Db");
}

TEST_F(Coding, an_empty_text_fails_and_leaves_the_result_untouched) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  BSTR untouched = reinterpret_cast<BSTR>(&untouched);
  const BSTR before = untouched;
  EXPECT_EQ(encoder->Base64Text(nullptr, &untouched), E_FAIL);
  EXPECT_EQ(encoder->UuencodeText(Text(L"").get(), &untouched), E_FAIL);
  EXPECT_EQ(make<IvDecoder>(CLSID_Decoder)->Base64Text(Text(L"!").get(), &untouched), S_OK);
  EXPECT_EQ(untouched, before);
  EXPECT_EQ(encoder->Base64Text(Text(L"ABC").get(), nullptr), S_OK);
}

TEST_F(Coding, files_are_encoded_and_a_missing_one_fails_without_a_number) {
  TemporaryFolder folder;
  const std::wstring in = widened(folder.file("x.bin", "ABC")), out = widened(folder.path("out"));
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  EXPECT_EQ(encoder->Base64(Text(in).get(), Text(out).get()), S_OK);
  EXPECT_EQ(read_file(folder.path("out")), "QUJD\r\n");
  EXPECT_EQ(encoder->Base64(Text(in + L".missing").get(), Text(out).get()), E_FAIL);
  EXPECT_EQ(encoder->BinHex4(nullptr, nullptr), E_FAIL);
  EXPECT_FALSE(take_error_information().present);
}

TEST_F(Coding, a_late_bound_client_passes_arrays_by_reference) {
  Bytes raw("ABC"), coded;
  Value in = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1), out = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1);
  V_ARRAYREF(&in.get()) = raw.place();
  V_ARRAYREF(&out.get()) = coded.place();
  const auto encoder = make<IDispatch>(CLSID_Encoder);
  EXPECT_EQ(invoke(encoder.get(), identifier_of(encoder.get(), L"Base64Data"), DISPATCH_METHOD, {in.get(), out.get()}),
            S_OK);
  EXPECT_EQ(coded.content(), "QUJD");
}

}  // namespace vellobar::tests
