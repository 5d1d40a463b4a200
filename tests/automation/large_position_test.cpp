// Positions that `long` cannot hold, in a file of 2 GB that is all hole behind its headers.
#include <gtest/gtest.h>

#include "tests/automation/mailbox_client.h"

// Needs the types of the headers above.
#include <winioctl.h>

namespace vellobar::tests {

namespace {

class LargePosition : public AutomationTest {};

/// Makes a file larger without filling it; false when the system cannot, or would have to write it all.
bool extend(const std::string& path, LONGLONG size) {
  const HANDLE file =
      CreateFileW(widened(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  DWORD ignored = 0;
  // Where it is refused the end of the file decides alone.
  DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &ignored, nullptr);
  LARGE_INTEGER end;
  end.QuadPart = size;
  const bool extended = SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
  CloseHandle(file);
  return extended;
}

}  // namespace

TEST_F(LargePosition, the_last_position_that_fits_a_long_is_told_and_the_next_one_overflows) {
  MailboxClient client;
  const auto message = client.message(0);
  const std::string file = client.folder().file("large.eml", "Subject: large\r\n\r\n");
  const struct {
    const wchar_t* name;
    HRESULT (STDMETHODCALLTYPE IvMessage::*get)(long*);
  } kNumbers[] = {{L"EndPosition", &IvMessage::get_EndPosition},
                  {L"Size", &IvMessage::get_Size},
                  {L"Bytes", &IvMessage::get_Bytes}};

  if (!extend(file, 0x7FFFFFFF)) GTEST_SKIP() << "no file of 2 GB can be made here";
  ASSERT_EQ(message->Peek(Text(widened(file)).get()), S_OK);
  for (const auto& number : kNumbers) {
    SCOPED_TRACE(testing::Message() << number.name);
    long value = 0;
    EXPECT_EQ((message.get()->*number.get)(&value), S_OK);
    EXPECT_EQ(value, 0x7FFFFFFF);
  }

  ASSERT_EQ(message->Unload(), S_OK);
  if (!extend(file, 0x80000000LL)) GTEST_SKIP() << "no file above 2 GB can be made here";
  ASSERT_EQ(message->Peek(Text(widened(file)).get()), S_OK);
  for (const auto& number : kNumbers) {
    SCOPED_TRACE(testing::Message() << number.name);
    long value = 7;
    EXPECT_EQ((message.get()->*number.get)(&value), DISP_E_OVERFLOW);
    EXPECT_FALSE(take_error_information().present);
    EXCEPINFO exception{};
    Value result;
    EXPECT_EQ(invoke(message.get(), identifier_of(message.get(), number.name), DISPATCH_PROPERTYGET, {},
                     result.receive(), &exception),
              DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, DISP_E_OVERFLOW);
    EXPECT_EQ(exception.bstrDescription, nullptr);
  }
  Text subject;
  EXPECT_EQ(message->get_Subject(subject.receive()), S_OK);
  EXPECT_EQ(subject.value(), L"large");
  EXPECT_EQ(message->Unload(), S_OK);
}

}  // namespace vellobar::tests
