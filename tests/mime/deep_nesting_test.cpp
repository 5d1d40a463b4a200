// Ten thousand levels of multipart, on a stack of 256 KB.
#include <gtest/gtest.h>

#include "tests/support/mailboxes.h"
#include "tests/support/small_stack.h"

namespace vellobar {
namespace {

using tests::Mailbox;

constexpr int kLevels = 10000;

/// A message that holds a multipart in a multipart, and so on; the innermost part is plain text.
std::string nested_mail(int levels) {
  std::string mail = "From a\n";
  for (int level = 0; level < levels; ++level) {
    const std::string boundary = "level" + std::to_string(level) + "x";
    mail += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  mail += "Content-Type: text/plain\n\nthe heart\n";
  for (int level = levels - 1; level >= 0; --level) mail += "--level" + std::to_string(level) + "x--\n";
  return mail;
}

std::int64_t depth_of(std::shared_ptr<CMessage> message) {
  std::int64_t depth = 0;
  for (; message->Parts()->Count() > 0; ++depth) message = message->Parts()->Item(0);
  return depth;
}

TEST(DeepNesting, is_walked_searched_loaded_unloaded_and_destroyed_on_a_small_stack) {
  Mailbox box(nested_mail(kLevels));
  tests::run_on_small_stack([&] {
    box.control().Lock();
    EXPECT_EQ(depth_of(box.message(0)), kLevels);
    EXPECT_EQ(box.message(0)->PlainText(), u"the heart\n");
    box.message(0)->Unload();
    box.message(0)->Load();
    EXPECT_EQ(depth_of(box.message(0)), kLevels);
    box.control().Unlock();
  });
}

TEST(DeepNesting, is_destroyed_on_a_small_stack_when_a_client_lets_go_last) {
  tests::run_on_small_stack([&] {
    Mailbox box(nested_mail(kLevels));
    box.control().Lock();
    std::shared_ptr<CMessage> message = box.message(0);
    std::shared_ptr<CMessages> parts = message->Parts();
    EXPECT_EQ(depth_of(message), kLevels);
    box.control().Messages()->RemoveAll();
    box.control().Unlock();
    message.reset();
    EXPECT_EQ(parts->Count(), 1);
    parts.reset();
  });
}

TEST(DeepNesting, is_written_by_update_and_save_on_a_small_stack) {
  Mailbox box(nested_mail(kLevels));
  tests::run_on_small_stack([&] {
    box.control().Lock();
    box.control().Update();
    const std::string once = box.content();
    EXPECT_NE(once.find("the heart\n--level9999x--\r\n\r\n--level9998x--\r\n\r\n"), std::string::npos);
    const auto held = box.message(0);
    box.control().Update();
    EXPECT_TRUE(box.content() == once);
    EXPECT_EQ(depth_of(held), kLevels);
    box.message(0)->Save(tests::wide(box.folder().path("saved.eml")));
    EXPECT_EQ(tests::read_file(box.folder().path("saved.eml")).size(), once.size() - 2);
  });
}

TEST(DeepNesting, gives_its_body_on_a_small_stack) {
  Mailbox box(nested_mail(kLevels));
  tests::run_on_small_stack([&] {
    box.control().Lock();
    const std::string body = tests::plain(box.message(0)->Body());
    EXPECT_NE(body.find("the heart\n--level9999x--\r\n--level9998x--\r\n"), std::string::npos);
    EXPECT_TRUE(body.ends_with("--level1x--\r\n--level0x--\r\n"));
  });
}

}  // namespace
}  // namespace vellobar
