// The tree found in one pass is the tree that splitting level by level finds: extents, texts and boundaries.
#include "mime/part_outline.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <vector>

#include "mime/delimiter_set.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

using mime::DelimiterSet;
using tests::Mailbox;

TEST(DelimiterSet, finds_the_outermost_of_those_that_a_line_begins_with) {
  DelimiterSet set;
  for (const char* delimiter : {"--abc", "--b", "--ab", "--abcd", "--b"}) set.push(delimiter);
  EXPECT_EQ(set.outermost_match("--abcdef"), 0u);
  EXPECT_EQ(set.outermost_match("--abd"), 2u);
  EXPECT_EQ(set.outermost_match("--b--"), 1u);
  EXPECT_EQ(set.outermost_match("--a"), DelimiterSet::kNone);
  EXPECT_EQ(set.outermost_match(""), DelimiterSet::kNone);
  EXPECT_EQ(set.outermost_match("--zz"), DelimiterSet::kNone);
  set.pop();
  EXPECT_EQ(set.outermost_match("--b"), 1u) << "the outer one of the same text stays";
  set.pop();
  set.pop();
  EXPECT_EQ(set.outermost_match("--abd"), DelimiterSet::kNone);
  EXPECT_EQ(set.outermost_match("--abcd"), 0u);
}

TEST(DelimiterSet, agrees_with_comparing_them_one_by_one) {
  std::mt19937 random(7);
  const auto word = [&] {
    std::string text = "--";
    for (auto length = random() % 5; length > 0; --length) text += static_cast<char>('a' + random() % 2);
    return text;
  };
  DelimiterSet set;
  std::vector<std::string> pushed;
  for (int step = 0; step < 20000; ++step) {
    if (random() % 2 != 0 && pushed.size() < 12) {
      pushed.push_back(word());
      set.push(pushed.back());
    } else if (!pushed.empty()) {
      pushed.pop_back();
      set.pop();
    }
    const std::string line = word();
    std::size_t expected = 0;
    while (expected < pushed.size() && !line.starts_with(pushed[expected])) ++expected;
    ASSERT_EQ(set.outermost_match(line), expected < pushed.size() ? expected : DelimiterSet::kNone) << line;
  }
}

/// Everything that a client can see of a tree, in one text.
std::string description(CMessage& top) {
  std::string text;
  std::vector<std::pair<std::shared_ptr<CMessage>, int>> waiting{{top.shared_from_this(), 0}};
  while (!waiting.empty()) {
    const auto [message, depth] = waiting.back();
    waiting.pop_back();
    const auto parts = message->Parts();
    const bool is_readable = message->load_headers() != nullptr;
    text += std::to_string(depth) + ": " + std::to_string(message->StartPosition()) + "-" +
            std::to_string(message->EndPosition()) + " " + std::to_string(message->Bytes()) + " " +
            std::to_string(message->Lines()) + " info '" + tests::plain(message->MailInfo()) + "' boundary '" +
            tests::plain(message->PartsBoundary()) + "' separator '" + tests::plain(parts->separator()) + "' headers " +
            (is_readable ? std::to_string(message->Headers()->Count()) + " text " + tests::plain(message->Text())
                         : "none") +
            "\n";
    for (std::int64_t i = parts->Count(); i-- > 0;) waiting.push_back({parts->Item(i), depth + 1});
  }
  return text;
}

std::string description_of(const std::string& mail, bool plain) {
  std::optional<mime::PlainSplitting> forced;
  if (plain) forced.emplace();
  Mailbox box(mail);
  box.control().Lock();
  std::string text;
  for (std::int64_t i = 0; i < box.count(); ++i) text += description(*box.message(i));
  return text;
}

/// Lines that matter to the split, in any order: real boundaries, prefixes of them, headers with and without their
/// empty line, folded ones, all line ends.
std::string random_mail(std::mt19937& random) {
  static constexpr const char* kLines[] = {
      "--aa\nContent-Type: multipart/mixed; boundary=b\n\n--b\nA: 1\n\none",
      "--b\nContent-Type: multipart/mixed; boundary=aab\n\npre\n--aab\n\none\n--aab\n\ntwo",
      "--aa\nContent-Type: multipart/mixed; boundary=cc\n\n--cc\nA: 1\n\none\n--cc--",
      "--cc\nContent-Type: multipart/mixed; boundary=dd\n\n--dd\n\none\n--dd\n\ntwo\n--dd--\nepilogue\n--cc",
      "--cc\nContent-Type: multipart/mixed; boundary=c\n\n--c\n\none\n--c\n\ntwo\n--c--",
      "Content-Type: multipart/mixed; boundary=aa",
      "Content-Type: multipart/x; boundary=\"aab\"",
      "content-type: Multipart/x;",
      "\tboundary=b",
      " boundary=\"aa\"; x",
      "Content-Type: text/plain",
      "Subject: x",
      "no colon",
      "--aa",
      "--aab",
      "--b",
      "--aa--",
      "--aab--",
      "--b--",
      "--bb",
      "--a",
      "--",
      "-",
      "",
      "",
      "",
      "text",
      " text",
      "\rtext",
      "te\rxt",
  };
  static constexpr const char* kEnds[] = {"\n", "\n", "\n", "\r\n"};
  std::string mail = "From a\nContent-Type: multipart/mixed; boundary=aa\n\n--aa\n";
  for (auto count = 5 + random() % 60; count > 0; --count) {
    mail += kLines[random() % std::size(kLines)];
    mail += kEnds[random() % std::size(kEnds)];
  }
  if (random() % 4 == 0) mail += kLines[random() % std::size(kLines)];
  return mail;
}

TEST(PartOutline, gives_the_tree_that_splitting_level_by_level_gives_on_random_mail) {
  std::mt19937 random(1);
  std::size_t deepest = 0;
  for (int i = 0; i < 150; ++i) {
    std::string mail;
    for (int message = 0; message < 20; ++message) mail += random_mail(random) + "\n";
    const std::string expected = description_of(mail, true);
    std::size_t depth = 1;
    while (expected.find("\n" + std::to_string(depth) + ": ") != std::string::npos) ++depth;
    deepest = std::max(deepest, depth - 1);
    ASSERT_EQ(description_of(mail, false), expected) << mail;
  }
  EXPECT_GE(deepest, 3u) << "the trees are too flat to tell";
}

TEST(PartOutline, gives_the_same_tree_whatever_block_a_line_falls_into) {
  std::mt19937 random(2);
  for (int i = 0; i < 60; ++i) {
    std::string mail = random_mail(random);
    // Long text lines in front of every line that matters move it across the blocks that are read.
    std::string spread;
    std::size_t line = mail.find("--aa\n") + 5;
    spread = mail.substr(0, line);
    while (line < mail.size()) {
      const std::size_t next = std::min(mail.find('\n', line), mail.size() - 1) + 1;
      spread += mail.substr(line, next - line);
      if (random() % 3 == 0) spread += "\n" + std::string(random() % 16383, 'x') + "\n";
      if (random() % 6 == 0) spread += "\n" + std::string(random() % 60, ' ') + std::string(random() % 9000, '\n');
      line = next;
    }
    ASSERT_TRUE(description_of(spread, false) == description_of(spread, true)) << i;
  }
}

TEST(PartOutline, gives_the_same_tree_with_lines_of_any_length) {
  std::mt19937 random(3);
  const auto long_text = [&] {
    const auto length = random() % (random() % 3 == 0 ? 400000 : 40000);
    return std::string(length, 'x') + "\n";
  };
  for (int i = 0; i < 60; ++i) {
    std::string mail = random_mail(random);
    for (auto count = 1 + random() % 3; count > 0; --count) {
      const std::size_t line = mail.find('\n', 60 + random() % (mail.size() - 60));
      if (line != std::string::npos) mail.insert(line + 1, (random() % 2 != 0 ? "\n" : "") + long_text());
    }
    if (random() % 3 == 0) mail += std::string(random() % 500000, '\n');
    if (random() % 3 == 0) mail += std::string(random() % 100000, 'y');
    ASSERT_TRUE(description_of(mail, false) == description_of(mail, true)) << i;
  }
}

TEST(PartOutline, gives_the_same_tree_with_header_and_delimiter_lines_of_any_length) {
  static constexpr const char* kStarts[] = {
      "X: ", "Content-Type: multipart/x; boundary=b ", " ", "--", "--aa", "--b", "--aab", "\n"};
  std::mt19937 random(4);
  for (int i = 0; i < 150; ++i) {
    std::string mail = random_mail(random);
    for (auto count = 1 + random() % 3; count > 0; --count) {
      const std::size_t line = mail.find('\n', 50 + random() % (mail.size() - 50));
      if (line == std::string::npos) continue;
      const auto length = random() % 4 == 0 ? random() % 400000 : 16300 + random() % 200;
      mail.insert(line + 1, kStarts[random() % std::size(kStarts)] + std::string(length, 'x') + "\n");
    }
    ASSERT_TRUE(description_of(mail, false) == description_of(mail, true)) << i;
  }
}

/// Multiparts one in the other, and in the innermost one a part with this text.
std::string nested(int levels, const std::string& innermost) {
  std::string mail = "From a\n";
  for (int i = 0; i < levels; ++i) {
    const std::string number = std::to_string(1000 + i);
    mail += "Content-Type: multipart/mixed; boundary=" + number + "\n\n--" + number + "\n";
  }
  mail += innermost + "\n";
  for (int i = levels; i-- > 0;)
    mail += "--" + std::to_string(1000 + i) + "\n\nlast\n--" + std::to_string(1000 + i) + "--\n";
  return mail;
}

TEST(PartOutline, gives_the_same_tree_with_a_long_line_below_many_levels) {
  for (const std::size_t length : {17'000u, 50'000u, 120'000u, 400'000u}) {
    for (const char* start : {"X: ", "X: 1\n\n", "--", "--1003"}) {
      const std::string mail = nested(60, start + std::string(length, 'x') + "\n");
      ASSERT_TRUE(description_of(mail, false) == description_of(mail, true)) << start << length;
    }
  }
}

TEST(PartOutline, leaves_lines_that_may_run_ahead_to_the_plain_form) {
  for (const std::size_t length : {16382u, 16383u, 16384u, 20000u, 60000u, 300000u}) {
    const std::string mail =
        "From a\nContent-Type: multipart/mixed; boundary=aa\n\n--aa\nContent-Type: multipart/x; boundary=b\n\n--b\nA: "
        "1\n"
        "\n" +
        std::string(length, 'x') + "\n--b\n\ntwo\n--b--\n--aa\n\nthree\n--aa--\n" + std::string(400000, '\n');
    ASSERT_TRUE(description_of(mail, false) == description_of(mail, true)) << length;
  }
}

TEST(PartOutline, is_not_used_for_a_part_whose_boundary_a_client_changed) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=aa\n\n--aa\nContent-Type: multipart/x; boundary=b\n\n"
      "pre\n--b\n\none\n--c\n\ntwo\n--c--\n--b--\n--aa--\n");
  box.control().Lock();
  const auto inner = box.message(0)->Parts()->Item(0);
  inner->Headers()->Item(0)->SetValue(u"multipart/x; boundary=c");
  ASSERT_EQ(inner->Parts()->Count(), 1);
  EXPECT_EQ(inner->Parts()->Item(0)->Text(), u"two\n");
  EXPECT_EQ(inner->Text(), u"pre\n--b\n\none\n");
}

TEST(PartOutline, is_not_used_after_the_file_was_closed) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=aa\n\n--aa\nContent-Type: multipart/x; boundary=b\n\n"
      "--b\n\none\n--b--\n--aa--\n");
  box.control().Lock();
  const auto inner = box.message(0)->Parts()->Item(0);
  inner->Headers();
  box.control().Unlock();
  EXPECT_EQ(inner->Parts()->Count(), 0);
  EXPECT_EQ(inner->Text(), u"");
}

TEST(PartOutline, serves_a_part_again_after_it_was_unloaded) {
  Mailbox box(
      "From a\nContent-Type: multipart/mixed; boundary=aa\n\n--aa\nContent-Type: multipart/x; boundary=b\n\n"
      "--b\n\none\n--b--\n--aa--\n");
  box.control().Lock();
  const auto inner = box.message(0)->Parts()->Item(0);
  EXPECT_EQ(inner->Parts()->Count(), 1);
  inner->Unload();
  EXPECT_EQ(inner->Parts()->Count(), 1);
  EXPECT_EQ(inner->Parts()->Item(0)->Text(), u"one\n");
}

}  // namespace
}  // namespace vellobar
