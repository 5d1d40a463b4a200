// Byte arrays in the variables of a script: late-bound calls whose arguments are references to VARIANTs.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/automation/bytes.h"
#include "tests/automation/client.h"

namespace vellobar::tests {

using namespace std::string_literals;

namespace {

/// A variable with an array of bytes.
Value bytes_in_variable(const std::string& content) {
  Value variable = Value::of_type(VT_ARRAY | VT_UI1);
  V_ARRAY(&variable.get()) = std::exchange(*Bytes(content).place(), nullptr);
  return variable;
}

/// What a script makes of `Array(...)`: an array of VARIANTs.
template <class... Elements>
Value array_of(Elements... elements) {
  Value variable = Value::of_type(VT_ARRAY | VT_VARIANT);
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, sizeof...(elements));
  auto* place = static_cast<VARIANT*>(array->pvData);
  (VariantCopy(place++, &elements.get()), ...);
  V_ARRAY(&variable.get()) = array;
  return variable;
}

Value number(VARTYPE type, LONGLONG value) {
  Value number = Value::of_type(type);
  V_I8(&number.get()) = value;
  return number;
}

std::string content_of(Value& variable) {
  if (variable.type() == VT_EMPTY) return "(empty)";
  if (variable.type() == VT_BSTR) return "(text)";
  if (variable.type() != (VT_ARRAY | VT_UI1)) return "type " + std::to_string(variable.type());
  Bytes bytes(V_ARRAY(&variable.get()));
  const std::string content = bytes.content();
  *bytes.place() = nullptr;
  return content;
}

class ArrayVariables : public AutomationTest {
 protected:
  HRESULT encode(VARIANT in, VARIANT out, const wchar_t* member = L"Base64Data") {
    const auto encoder = make<IDispatch>(CLSID_Encoder);
    exception_ = EXCEPINFO{};
    return invoke(encoder.get(), identifier_of(encoder.get(), member), DISPATCH_METHOD, {in, out}, nullptr,
                  &exception_);
  }
  HRESULT encode(Value& in, Value& out, const wchar_t* member = L"Base64Data") {
    return encode(Value::reference_to(in.get()).get(), Value::reference_to(out.get()).get(), member);
  }
  HRESULT decode(Value& in, Value& out, const wchar_t* member) {
    const auto decoder = make<IDispatch>(CLSID_Decoder);
    return invoke(decoder.get(), identifier_of(decoder.get(), member), DISPATCH_METHOD,
                  {Value::reference_to(in.get()).get(), Value::reference_to(out.get()).get()});
  }
  void expect_refused(Value in, HRESULT expected) {
    Value out(L"kept");
    EXPECT_EQ(encode(in, out), expected);
    EXPECT_EQ(out.text(), L"kept");
  }

  EXCEPINFO exception_{};
};

}  // namespace

TEST_F(ArrayVariables, hold_the_bytes_to_code_and_receive_the_result) {
  Value raw = bytes_in_variable("ABC"), coded, back;
  const struct {
    const wchar_t *encoder, *decoder;
    const char* coded;
  } kMembers[] = {{L"Base64Data", L"Base64Data", "QUJD"},
                  {L"QuotedPrintableData", L"QuotedPrintableData", "ABC"},
                  {L"UuencodeData", L"UudecodeData", "04)#"}};
  for (const auto& member : kMembers) {
    EXPECT_EQ(encode(raw, coded, member.encoder), S_OK);
    EXPECT_EQ(content_of(coded), member.coded);
    EXPECT_EQ(decode(coded, back, member.decoder), S_OK);
    EXPECT_EQ(content_of(back), "ABC");
  }
  EXPECT_EQ(content_of(raw), "ABC");
}

TEST_F(ArrayVariables, whatever_a_variable_held_the_result_takes_its_place) {
  Value raw = bytes_in_variable("ABC");
  Value outs[] = {Value(), Value(L"old"), Value(short{5}), array_of(Value(L"old")),
                  bytes_in_variable("old and longer")};
  for (Value& out : outs) {
    EXPECT_EQ(encode(raw, out), S_OK);
    EXPECT_EQ(content_of(out), "QUJD");
  }
  ClientObject object;
  Value held(&object);
  EXPECT_EQ(encode(raw, held), S_OK);
  EXPECT_EQ(content_of(held), "QUJD");
  EXPECT_EQ(object.references, 1u);
}

TEST_F(ArrayVariables, source_and_result_may_be_the_same_variable) {
  Value bytes = bytes_in_variable("ABC"), numbers = array_of(number(VT_I2, 65));
  EXPECT_EQ(encode(bytes, bytes), S_OK);
  EXPECT_EQ(content_of(bytes), "QUJD");
  EXPECT_EQ(encode(numbers, numbers), S_OK);
  EXPECT_EQ(content_of(numbers), "QQ==");
}

TEST_F(ArrayVariables, a_result_without_bytes_leaves_a_variable_empty) {
  Value none = bytes_in_variable(""), out = bytes_in_variable("old");
  EXPECT_EQ(encode(none, out), S_OK);
  EXPECT_EQ(content_of(out), "(empty)");
}

TEST_F(ArrayVariables, an_array_of_whole_numbers_is_taken_as_bytes) {
  Value numbers = array_of(number(VT_I2, 65), number(VT_I4, 0), number(VT_UI1, 255)), none = array_of(), out;
  EXPECT_EQ(encode(numbers, out), S_OK);
  EXPECT_EQ(content_of(out), "QQD/");
  EXPECT_EQ(numbers.type(), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(encode(none, out), S_OK);
  EXPECT_EQ(content_of(out), "(empty)");
}

TEST_F(ArrayVariables, an_array_without_a_variable_is_taken_too) {
  Value bytes = bytes_in_variable("ABC"), numbers = array_of(number(VT_I2, 65)), out;
  EXPECT_EQ(encode(bytes.get(), Value::reference_to(out.get()).get()), S_OK);
  EXPECT_EQ(content_of(out), "QUJD");
  EXPECT_EQ(encode(numbers.get(), Value::reference_to(out.get()).get()), S_OK);
  EXPECT_EQ(content_of(out), "QQ==");
  Value by_reference = Value::of_type(VT_BYREF | VT_ARRAY | VT_VARIANT);
  V_ARRAYREF(&by_reference.get()) = &V_ARRAY(&numbers.get());
  EXPECT_EQ(encode(by_reference.get(), Value::reference_to(out.get()).get()), S_OK);
  EXPECT_EQ(content_of(out), "QQ==");
}

TEST_F(ArrayVariables, may_be_references_to_arrays_themselves) {
  Bytes raw("ABC"), coded("old");
  Value in = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1), out = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1);
  V_ARRAYREF(&in.get()) = raw.place();
  V_ARRAYREF(&out.get()) = coded.place();
  EXPECT_EQ(encode(in, out), S_OK);
  EXPECT_EQ(coded.content(), "QUJD");
}

TEST_F(ArrayVariables, may_be_named_in_any_order) {
  Value raw = bytes_in_variable("ABC"), coded;
  VARIANT arguments[] = {Value::reference_to(raw.get()).get(), Value::reference_to(coded.get()).get()};
  DISPID names[] = {0, 1};
  const auto encoder = make<IDispatch>(CLSID_Encoder);
  const DISPID member = identifier_of(encoder.get(), L"Base64Data");
  DISPPARAMS both{arguments, names, 2, 2};
  EXPECT_EQ(encoder->Invoke(member, IID_NULL, 0, DISPATCH_METHOD, &both, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(content_of(coded), "QUJD");
  std::swap(arguments[0], arguments[1]);
  names[0] = 1;
  DISPPARAMS one{arguments, names, 2, 1};
  EXPECT_EQ(encoder->Invoke(member, IID_NULL, 0, DISPATCH_METHOD, &one, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(content_of(coded), "QUJD");
}

TEST_F(ArrayVariables, what_holds_no_bytes_is_refused_and_the_result_stays) {
  expect_refused(Value(), DISP_E_TYPEMISMATCH);
  expect_refused(Value(L"ABC"), DISP_E_TYPEMISMATCH);
  expect_refused(array_of(number(VT_I2, 65), number(VT_I2, 256)), DISP_E_OVERFLOW);
  expect_refused(array_of(number(VT_I4, -1)), DISP_E_OVERFLOW);
  expect_refused(array_of(Value(L"65")), DISP_E_TYPEMISMATCH);
  expect_refused(array_of(Value()), DISP_E_TYPEMISMATCH);
  expect_refused(array_of(number(VT_BOOL, 0)), DISP_E_TYPEMISMATCH);
  Value square = Value::of_type(VT_ARRAY | VT_VARIANT);
  SAFEARRAYBOUND bounds[2] = {{1, 0}, {1, 0}};
  V_ARRAY(&square.get()) = SafeArrayCreate(VT_VARIANT, 2, bounds);
  expect_refused(std::move(square), DISP_E_TYPEMISMATCH);
}

TEST_F(ArrayVariables, an_array_variable_that_holds_none_fails_and_the_result_stays) {
  expect_refused(Value::of_type(VT_ARRAY | VT_UI1), DISP_E_EXCEPTION);
  EXPECT_EQ(exception_.scode, E_FAIL);
  expect_refused(Value::of_type(VT_ARRAY | VT_VARIANT), DISP_E_TYPEMISMATCH);
}

TEST_F(ArrayVariables, a_variable_whose_array_is_in_use_keeps_it) {
  Value raw = bytes_in_variable("ABC"), out = bytes_in_variable("kept");
  SafeArrayLock(V_ARRAY(&out.get()));
  EXPECT_EQ(encode(raw, out), DISP_E_ARRAYISLOCKED);
  SafeArrayUnlock(V_ARRAY(&out.get()));
  EXPECT_EQ(content_of(out), "kept");
}

TEST_F(ArrayVariables, the_quoted_printable_decoder_stores_upper_case_back_into_the_array_of_a_variable) {
  Value raw = bytes_in_variable("a=cab"), out;
  EXPECT_EQ(decode(raw, out, L"QuotedPrintableData"), S_OK);
  EXPECT_EQ(content_of(raw), "a=cAb");
}

TEST_F(ArrayVariables, a_result_needs_a_variable) {
  Value raw = bytes_in_variable("ABC"), out;
  EXPECT_EQ(encode(Value::reference_to(raw.get()).get(), out.get()), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(encode(raw.get(), raw.get()), DISP_E_TYPEMISMATCH);
}

}  // namespace vellobar::tests
