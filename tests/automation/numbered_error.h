// Numbered errors as a client sees them: a result, and error information on the thread.
#pragma once

#include "tests/automation/client.h"

namespace vellobar::tests {

inline HRESULT numbered(int number) { return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(number)); }

/// That a call failed with a number, and what the thread's error information says of it.
inline void expect_error(HRESULT result, int number, const wchar_t* description, const wchar_t* source, REFGUID guid) {
  EXPECT_EQ(result, numbered(number));
  const ErrorInformation information = take_error_information();
  ASSERT_TRUE(information.present);
  EXPECT_EQ(information.description, description);
  EXPECT_EQ(information.source, source);
  EXPECT_EQ(information.guid, guid);
  EXPECT_EQ(information.help_file, L"");
  EXPECT_EQ(information.help_context, 0u);
}

}  // namespace vellobar::tests
