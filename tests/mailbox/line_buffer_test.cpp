#include "mailbox/line_buffer.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "scanner_fixture.h"

namespace vellobar::mailbox {
namespace {

using scanner_tests::WatchedMemory;
using namespace std::string_view_literals;

TEST(LineBuffer, a_new_buffer_holds_4096_bytes_of_room_and_no_line) {
  LineBuffer buffer;
  EXPECT_EQ(buffer.capacity(), 4096u);
  EXPECT_EQ(buffer.unread(), "");
  EXPECT_FALSE(buffer.take_line().has_value());
}

TEST(LineBuffer, a_line_is_taken_without_its_line_feed_but_counted_with_it) {
  LineBuffer buffer;
  buffer.append("first\nsecond\n");
  const auto first = buffer.take_line();
  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(first->text, "first");
  EXPECT_EQ(first->length, 6u);
  EXPECT_EQ(buffer.unread(), "second\n");
  EXPECT_EQ(buffer.take_line()->text, "second");
  EXPECT_FALSE(buffer.take_line().has_value());
}

TEST(LineBuffer, a_carriage_return_just_before_the_line_feed_belongs_to_the_line_end) {
  LineBuffer buffer;
  buffer.append("a\r\nb\r\r\n\r\n\n");
  const struct {
    std::string_view text;
    std::size_t length;
  } expected[] = {{"a", 3}, {"b\r", 4}, {"", 2}, {"", 1}};
  for (const auto& line : expected) {
    const auto taken = buffer.take_line();
    ASSERT_TRUE(taken.has_value());
    EXPECT_EQ(taken->text, line.text);
    EXPECT_EQ(taken->length, line.length);
  }
}

TEST(LineBuffer, a_line_feed_of_another_line_never_lends_its_carriage_return) {
  LineBuffer buffer;
  buffer.append("a\r");
  EXPECT_FALSE(buffer.take_line().has_value());
  buffer.append("\n");
  EXPECT_EQ(buffer.take_line()->text, "a");
  buffer.append("\nb\n");
  EXPECT_EQ(buffer.take_line()->length, 1u);
  EXPECT_EQ(buffer.take_line()->text, "b");
}

TEST(LineBuffer, the_text_of_a_line_is_zero_terminated_in_place) {
  LineBuffer buffer;
  buffer.append("a\r\nbc\nrest");
  const auto first = buffer.take_line();
  EXPECT_EQ(first->text.data()[1], '\0');
  const auto second = buffer.take_line();
  EXPECT_EQ(second->text.data()[2], '\0');
  EXPECT_EQ(buffer.unread().data()[4], '\0');
}

TEST(LineBuffer, zero_bytes_are_ordinary_text) {
  LineBuffer buffer;
  buffer.append("a\0b\0\n\0"sv);
  EXPECT_EQ(buffer.take_line()->text, "a\0b\0"sv);
  EXPECT_EQ(buffer.unread(), "\0"sv);
}

TEST(LineBuffer, the_storage_grows_when_the_bytes_and_their_zero_byte_would_reach_the_capacity) {
  LineBuffer fits;
  fits.append(std::string(4094, 'x'));
  EXPECT_EQ(fits.capacity(), 4096u);

  LineBuffer grows;
  grows.append(std::string(4095, 'x'));
  EXPECT_EQ(grows.capacity(), 32768u + 4096 + 4095 + 1);
  EXPECT_EQ(grows.unread(), std::string(4095, 'x'));
}

TEST(LineBuffer, the_growth_step_doubles_while_it_is_below_1280000) {
  LineBuffer buffer;
  std::size_t capacity = 4096;
  for (const std::size_t step : {32768u, 65536u, 131072u, 262144u, 524288u, 1048576u, 2097152u, 2097152u}) {
    const std::size_t filled = buffer.unread().size();
    const std::size_t count = capacity - filled;
    buffer.append(std::string(count, 'x'));
    capacity += step + count + 1;
    EXPECT_EQ(buffer.capacity(), capacity) << step;
  }
}

TEST(LineBuffer, unread_bytes_move_to_the_front_when_more_than_half_of_the_storage_was_read) {
  LineBuffer buffer;
  buffer.append(std::string(2048, 'a') + "\nkept");
  EXPECT_EQ(buffer.take_line()->length, 2049u);
  buffer.append(std::string(3000, 'b'));
  EXPECT_EQ(buffer.capacity(), 4096u);
  EXPECT_EQ(buffer.unread(), "kept" + std::string(3000, 'b'));
}

TEST(LineBuffer, the_storage_grows_when_just_half_of_it_was_read) {
  LineBuffer buffer;
  buffer.append(std::string(2047, 'a') + "\nkept");
  EXPECT_EQ(buffer.take_line()->length, 2048u);
  buffer.append(std::string(3000, 'b'));
  EXPECT_EQ(buffer.capacity(), 32768u + 4096 + 3000 + 1);
  EXPECT_EQ(buffer.unread(), "kept" + std::string(3000, 'b'));
}

TEST(LineBuffer, moving_to_the_front_is_followed_by_growth_when_that_is_not_enough) {
  LineBuffer buffer;
  buffer.append(std::string(2048, 'a') + "\nkept");
  buffer.take_line();
  buffer.append(std::string(5000, 'b'));
  EXPECT_EQ(buffer.capacity(), 32768u + 4096 + 5000 + 1);
  EXPECT_EQ(buffer.unread(), "kept" + std::string(5000, 'b'));
}

TEST(LineBuffer, the_whole_storage_is_overwritten_with_zeros_before_it_is_freed) {
  WatchedMemory memory;
  {
    LineBuffer buffer(&memory);
    buffer.append(std::string(10000, 'x') + "\n");
    buffer.take_line();
    LineBuffer moved(std::move(buffer));
    moved.append(std::string(100000, 'y'));
  }
  EXPECT_EQ(memory.sizes().size(), 3u);
  EXPECT_EQ(memory.held(), 0u);
  EXPECT_TRUE(memory.all_came_back_wiped());
}

TEST(LineBuffer, a_buffer_that_cannot_grow_holds_what_it_held) {
  WatchedMemory memory(1);
  LineBuffer buffer(&memory);
  buffer.append("held\n");
  EXPECT_THROW(buffer.append(std::string(5000, 'x')), std::bad_alloc);
  EXPECT_EQ(buffer.take_line()->text, "held");
}

}  // namespace
}  // namespace vellobar::mailbox
