// Every member of IvEncoder and IvDecoder with a small value of its own, so that none can stand for another: files,
// byte arrays and texts, and texts that no 8-bit code page holds.
#include <gtest/gtest.h>

#include <span>

#include "tests/automation/bytes.h"
#include "tests/automation/client.h"
#include "tests/support/files.h"

namespace vellobar::tests {

using namespace std::string_literals;

namespace {

/// Puts back the code page of the whole process at the end.
class CodingMembers : public AutomationTest {
 protected:
  CodingMembers() { make<IVellobar>(CLSID_Vellobar)->get_CharSet(&before_); }
  ~CodingMembers() override { make<IVellobar>(CLSID_Vellobar)->put_CharSet(before_); }

  static void use_code_page(Charsets code_page) {
    EXPECT_EQ(make<IVellobar>(CLSID_Vellobar)->put_CharSet(code_page), S_OK);
  }

 private:
  Charsets before_{};
};

template <class Interface>
struct FileMember {
  const wchar_t* name;
  DISPID identifier;
  HRESULT (STDMETHODCALLTYPE Interface::*code)(BSTR, BSTR);
  std::string in;
  std::string out;
};

template <class Interface>
struct DataMember {
  const wchar_t* name;
  DISPID identifier;
  HRESULT (STDMETHODCALLTYPE Interface::*code)(SAFEARRAY**, SAFEARRAY**);
  std::string in;
  std::string out;
};

template <class Interface>
struct TextMember {
  const wchar_t* name;
  DISPID identifier;
  HRESULT (STDMETHODCALLTYPE Interface::*code)(BSTR, BSTR*);
  std::wstring in;
  std::wstring out;
};

// "ABC" is the sextets 16, 20, 9, 3 and "A" the sextets 16, 16.
const FileMember<IvEncoder> kFileEncoders[] = {
    {L"Base64", 1, &IvEncoder::Base64, "ABC", "QUJD\r\n"},
    {L"Uuencode", 2, &IvEncoder::Uuencode, "AB", "begin 666 x.bin\r\n\"04(\r\nend\r\n"},
    // Whole groups at the end are written without a length of their own and without a line end.
    {L"Uuencode", 2, &IvEncoder::Uuencode, "ABC", "begin 666 x.bin\r\n`04)#end\r\n"},
    {L"QuotedPrintable", 3, &IvEncoder::QuotedPrintable, "a=b\xE9 ", "a=3Db=E9 "},
    {L"BinHex4", 4, &IvEncoder::BinHex4, "ABC", "(This file must be converted with BinHex 4.0)\r\n:38*$:\r\n"},
    {L"BinHex4", 4, &IvEncoder::BinHex4, "", "(This file must be converted with BinHex 4.0)\r\n::\r\n"},
};

const FileMember<IvDecoder> kFileDecoders[] = {
    {L"Base64", 1, &IvDecoder::Base64, "QUJD\r\nRA==\r\n", "ABCD"},
    {L"Uudecode", 2, &IvDecoder::Uudecode, "text\r\nbegin 644 x\r\n#04)#\r\nend\r\n", "ABC"},
    {L"QuotedPrintable", 3, &IvDecoder::QuotedPrintable, "a=3Db=\r\nc", "a=bc"},
    {L"BinHex4", 4, &IvDecoder::BinHex4, "junk:38*$:\r\n", "ABC"},
};

const DataMember<IvEncoder> kDataEncoders[] = {
    {L"Base64Data", 5, &IvEncoder::Base64Data, "A\0B"s, "QQBC"},
    {L"QuotedPrintableData", 6, &IvEncoder::QuotedPrintableData, "a=b\xE9\0"s, "a=3Db=E9\0"s},
    {L"UuencodeData", 7, &IvEncoder::UuencodeData, "\0\0\0A"s, "````00"},
};

const DataMember<IvDecoder> kDataDecoders[] = {
    {L"Base64Data", 5, &IvDecoder::Base64Data, "QQBC", "A\0B"s},
    {L"QuotedPrintableData", 6, &IvDecoder::QuotedPrintableData, "a=3Db_=00", "a=b_\0"s},
    // A last group yields three bytes however few characters it has.
    {L"UudecodeData", 7, &IvDecoder::UudecodeData, "04)#00", "ABCA\0\0"s},
};

const TextMember<IvEncoder> kTextEncoders[] = {
    {L"Base64Text", 8, &IvEncoder::Base64Text, L"A\0B"s, L"QQBC"},
    {L"UuencodeText", 9, &IvEncoder::UuencodeText, L"ABC", L"04)#"},
    {L"UuencodeText", 9, &IvEncoder::UuencodeText, L"A\0B"s, L"00!\""},
    {L"QuotedPrintableText", 10, &IvEncoder::QuotedPrintableText, L"a=\0\u00E9"s, L"a=3D\0=E9"s},
};

const TextMember<IvDecoder> kTextDecoders[] = {
    {L"Base64Text", 8, &IvDecoder::Base64Text, L"QQBC", L"A\0B"s},
    {L"UudecodeText", 9, &IvDecoder::UudecodeText, L"04)#", L"ABC"},
    {L"UudecodeText", 9, &IvDecoder::UudecodeText, L"00!\"", L"A\0B"s},
    {L"QuotedPrintableText", 10, &IvDecoder::QuotedPrintableText, L"a=3D\0=E9"s, L"a=\0\u00E9"s},
};

template <class Interface>
void expect_files(Interface* coder, std::span<const FileMember<Interface>> members) {
  for (const auto& member : members) {
    SCOPED_TRACE(testing::Message() << member.name << " of " << testing::PrintToString(member.in));
    TemporaryFolder folder;
    const std::wstring in = widened(folder.file("x.bin", member.in));
    EXPECT_EQ((coder->*member.code)(Text(in).get(), Text(widened(folder.path("early"))).get()), S_OK);
    EXPECT_EQ(read_file(folder.path("early")), member.out);
    Value source(in.c_str()), target(widened(folder.path("late")).c_str());
    EXPECT_EQ(identifier_of(coder, member.name), member.identifier);
    EXPECT_EQ(invoke(coder, member.identifier, DISPATCH_METHOD, {source.get(), target.get()}), S_OK);
    EXPECT_EQ(read_file(folder.path("late")), member.out);
  }
}

template <class Interface>
void expect_data(Interface* coder, std::span<const DataMember<Interface>> members) {
  for (const auto& member : members) {
    SCOPED_TRACE(testing::Message() << member.name);
    Bytes in(member.in), early, late;
    EXPECT_EQ((coder->*member.code)(in.place(), early.place()), S_OK);
    EXPECT_EQ(early.content(), member.out);
    Value source = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1), target = Value::of_type(VT_BYREF | VT_ARRAY | VT_UI1);
    V_ARRAYREF(&source.get()) = in.place();
    V_ARRAYREF(&target.get()) = late.place();
    EXPECT_EQ(identifier_of(coder, member.name), member.identifier);
    EXPECT_EQ(invoke(coder, member.identifier, DISPATCH_METHOD, {source.get(), target.get()}), S_OK);
    EXPECT_EQ(late.content(), member.out);
  }
}

template <class Interface>
void expect_texts(Interface* coder, std::span<const TextMember<Interface>> members) {
  for (const auto& member : members) {
    SCOPED_TRACE(testing::Message() << member.name << " of " << testing::PrintToString(member.in));
    Text in(member.in), out;
    EXPECT_EQ((coder->*member.code)(in.get(), out.receive()), S_OK);
    EXPECT_EQ(out.value(), member.out);
    Value source = Value::of_type(VT_BSTR), result;
    V_BSTR(&source.get()) = SysAllocStringLen(member.in.data(), static_cast<UINT>(member.in.size()));
    EXPECT_EQ(identifier_of(coder, member.name), member.identifier);
    EXPECT_EQ(invoke(coder, member.identifier, DISPATCH_METHOD, {source.get()}, result.receive()), S_OK);
    ASSERT_EQ(result.type(), VT_BSTR);
    EXPECT_EQ(result.text(), member.out);
  }
}

std::wstring encoded(HRESULT (STDMETHODCALLTYPE IvEncoder::*code)(BSTR, BSTR*), std::wstring_view text) {
  const auto encoder = make<IvEncoder>(CLSID_Encoder);
  Text out;
  EXPECT_EQ((encoder.get()->*code)(Text(text).get(), out.receive()), S_OK);
  return out.value();
}

}  // namespace

TEST_F(CodingMembers, each_encodes_a_file_in_its_own_way) {
  expect_files<IvEncoder>(make<IvEncoder>(CLSID_Encoder).get(), kFileEncoders);
}

TEST_F(CodingMembers, each_decodes_a_file_in_its_own_way) {
  expect_files<IvDecoder>(make<IvDecoder>(CLSID_Decoder).get(), kFileDecoders);
}

TEST_F(CodingMembers, a_file_that_is_missing_and_one_that_cannot_be_made_fail_without_a_number) {
  TemporaryFolder folder;
  const Text in(widened(folder.file("x.bin", "ABC"))), missing(widened(folder.path("missing"))),
      out(widened(folder.path("out"))), nowhere(widened(folder.path("missing/out")));
  const auto decoder = make<IvDecoder>(CLSID_Decoder);
  for (const auto& member : kFileDecoders) {
    SCOPED_TRACE(testing::Message() << member.name);
    EXPECT_EQ((decoder.get()->*member.code)(missing.get(), out.get()), E_FAIL);
    EXPECT_EQ((decoder.get()->*member.code)(in.get(), nowhere.get()), E_FAIL);
    EXPECT_EQ((decoder.get()->*member.code)(nullptr, out.get()), E_FAIL);
    EXPECT_EQ((decoder.get()->*member.code)(in.get(), nullptr), E_FAIL);
    EXPECT_FALSE(take_error_information().present);
  }
  EXPECT_EQ(folder.names(), std::vector<std::string>{"x.bin"});
}

TEST_F(CodingMembers, each_encodes_a_byte_array_in_its_own_way) {
  expect_data<IvEncoder>(make<IvEncoder>(CLSID_Encoder).get(), kDataEncoders);
}

TEST_F(CodingMembers, each_decodes_a_byte_array_in_its_own_way) {
  expect_data<IvDecoder>(make<IvDecoder>(CLSID_Decoder).get(), kDataDecoders);
}

TEST_F(CodingMembers, each_encodes_a_text_in_its_own_way_and_keeps_a_nul_inside) {
  use_code_page(CP1252);
  expect_texts<IvEncoder>(make<IvEncoder>(CLSID_Encoder).get(), kTextEncoders);
}

TEST_F(CodingMembers, each_decodes_a_text_in_its_own_way_and_keeps_a_nul_inside) {
  use_code_page(CP1252);
  expect_texts<IvDecoder>(make<IvDecoder>(CLSID_Decoder).get(), kTextDecoders);
}

TEST_F(CodingMembers, half_a_surrogate_pair_is_a_question_mark_in_an_8_bit_code_page) {
  use_code_page(CP1252);
  const std::wstring half(1, wchar_t{0xD83D});
  EXPECT_EQ(encoded(&IvEncoder::Base64Text, half), L"Pw==");
  EXPECT_EQ(encoded(&IvEncoder::UuencodeText, half), L"/P");
  EXPECT_EQ(encoded(&IvEncoder::QuotedPrintableText, half), L"?");
}

TEST_F(CodingMembers, half_a_surrogate_pair_is_a_replacement_character_in_utf_8) {
  use_code_page(UTF8);
  const std::wstring half(1, wchar_t{0xDE00});
  EXPECT_EQ(encoded(&IvEncoder::Base64Text, half), L"77+9");
  EXPECT_EQ(encoded(&IvEncoder::QuotedPrintableText, half), L"=EF=BF=BD");
}

TEST_F(CodingMembers, a_text_is_decoded_into_the_code_page_of_the_control) {
  use_code_page(UTF8);
  const auto decoder = make<IvDecoder>(CLSID_Decoder);
  Text text;
  EXPECT_EQ(decoder->QuotedPrintableText(Text(L"=F0=9F=98=80").get(), text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"\xD83D\xDE00");
  EXPECT_EQ(decoder->Base64Text(Text(L"w6k=").get(), text.receive()), S_OK);
  EXPECT_EQ(text.value(), L"\u00E9");
}

}  // namespace vellobar::tests
