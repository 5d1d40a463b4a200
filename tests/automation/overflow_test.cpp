// Numbers and sizes that the types of automation cannot hold: an overflow or a lack of memory, never a wrapped one.
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>

#include "automation/byte_array.h"
#include "automation/objects.h"
#include "automation/text.h"
#include "mailbox/message.h"

namespace vellobar::automation {

TEST(Overflow, positions_and_counts_of_a_message_are_told_as_long_as_a_long_holds_them) {
  const struct {
    const char* name;
    HRESULT (STDMETHODCALLTYPE IvMessage::*get)(long*);
    mailbox::Extent last, next;
  } kNumbers[] = {
      {"StartPosition", &IvMessage::get_StartPosition, {.start = 0x7FFFFFFF}, {.start = 0x80000000}},
      {"EndPosition", &IvMessage::get_EndPosition, {.end = 0x7FFFFFFF}, {.end = 0x80000000}},
      {"Size", &IvMessage::get_Size, {.start = 1, .end = 0x80000000}, {.start = 1, .end = 0x80000001}},
      {"Bytes", &IvMessage::get_Bytes, {.start = 1, .end = 0x80000000}, {.start = 1, .end = 0x80000001}},
      {"Lines", &IvMessage::get_Lines, {.lines = 0x7FFFFFFF}, {.lines = 0x80000000}},
  };
  for (const auto& number : kNumbers) {
    SCOPED_TRACE(number.name);
    const auto get = [&](const mailbox::Extent& extent, long& value) {
      const auto message = wrap(std::make_shared<CMessage>(nullptr, nullptr, nullptr, extent));
      return (message.get()->*number.get)(&value);
    };
    long value = 0;
    EXPECT_EQ(get(number.last, value), S_OK);
    EXPECT_EQ(value, 0x7FFFFFFF);
    EXPECT_EQ(get(number.next, value), DISP_E_OVERFLOW);
    EXPECT_EQ(value, 0);
  }
}

#ifdef _WIN64
TEST(Overflow, a_text_longer_than_any_automation_string_is_a_lack_of_memory_and_not_its_beginning) {
  const char16_t beginning[] = u"abc";
  EXPECT_THROW(new_string({beginning, 0x1'0000'0003}), std::bad_alloc);
}

TEST(Overflow, bytes_for_which_there_is_no_array_are_a_lack_of_memory_and_the_old_ones_stay) {
  unsigned char first = 0;
  SAFEARRAY* place = nullptr;
  EXPECT_THROW(replace_array(&place, {&first, 0x1'0000'0001}), std::bad_alloc);
  EXPECT_EQ(place, nullptr);
}
#endif

}  // namespace vellobar::automation
