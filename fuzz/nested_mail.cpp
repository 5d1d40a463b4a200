#include "fuzz/nested_mail.h"

#include <cstddef>
#include <iterator>

namespace vellobar::fuzz {

namespace {

/// Header block and text of a part; each "#" becomes a number.
constexpr std::string_view kParts[] = {
    "Content-Type: text/plain\n\ntext #\n",
    "\nno headers #\n",
    "Content-Type: image/gif; name=\"#.gif\"\nContent-Transfer-Encoding: base64\n\nR0lG\n",
    "Content-Type: text/html\nContent-Transfer-Encoding: quoted-printable\n\n<p>html=20#\n",
    "Content-Type: text/plain\n\nbegin 644 #.txt\n#0V%T\n`\nend\n",
    "Subject: part #\nContent-Disposition: attachment; filename=\"#.txt\"\n\nattached #\n",
    "",
    "X-Runs: on #\n",
    "Content-Type: message/rfc822\n\nSubject: inner #\n\ninner text\n",
    "Content-Type: multipart/mixed; boundary=never\n\nno part #\n",
};

constexpr std::size_t kMostDeep = 40;

std::string numbered(std::string_view text, std::size_t number) {
  std::string result;
  for (const char c : text) result += c == '#' ? std::to_string(number) : std::string(1, c);
  return result;
}

/// How all levels of a message look.
struct Style {
  std::size_t in_front = 0;
  std::size_t behind = 0;
  std::size_t first_kind = 0;
  std::size_t next_kind = 0;
  std::size_t names = 0;
  std::size_t unclosed = 0;  ///< this level has no closing delimiter line, when there are that many

  std::string boundary(std::size_t level) const {
    switch (names) {
      case 0:  // none begins with another one
        return "level" + std::to_string(level + 10);
      case 1:
        return "b" + std::to_string(level);
      default:
        return "same";
    }
  }
};

class NestWriter {
 public:
  explicit NestWriter(const Style& style) : style_(style) {}

  std::string write(std::size_t depth) {
    std::string front, behind;
    for (std::size_t level = 0; level < depth; ++level) {
      const std::string line = "--" + style_.boundary(level);
      front += "Content-Type: multipart/mixed; boundary=\"" + style_.boundary(level) + "\"\n\n";
      for (std::size_t i = 0; i < style_.in_front; ++i) front += line + "\n" + part();
      front += line + "\nSubject: level " + std::to_string(level) + "\n";
      std::string rest = "\n";
      for (std::size_t i = 0; i < style_.behind; ++i) rest += line + "\n" + part();
      if (style_.unclosed == 0 || style_.unclosed != level) rest += line + "--\n";
      behind.insert(0, rest);
    }
    return front + part() + behind;
  }

 private:
  std::string part() {
    const std::size_t kind = (style_.first_kind + parts_ * style_.next_kind) % std::size(kParts);
    return numbered(kParts[kind], parts_++);
  }

  const Style& style_;
  std::size_t parts_ = 0;
};

}  // namespace

std::string nested_message(Choices& choices) {
  constexpr std::size_t kSiblings[] = {1, 0, 2, 1, 0, 3};
  const std::size_t depth = choices.below(kMostDeep + 1);
  const std::size_t siblings = choices.below(36);
  const std::size_t kinds = choices.below(100);
  const std::size_t rare = choices.below(256);
  constexpr std::size_t kNames[] = {0, 0, 0, 0, 0, 1, 2, 0};
  const Style style{.in_front = kSiblings[siblings % 6],
                    .behind = kSiblings[siblings / 6],
                    .first_kind = kinds % 10,
                    .next_kind = kinds / 10,
                    .names = kNames[rare % 8],
                    .unclosed = rare / 8};
  return "From a@b Mon Jan  1 10:00:00 2024\nSubject: nested\nFrom: \"A\" <a@b>\n" + NestWriter(style).write(depth) +
         "\n";
}

}  // namespace vellobar::fuzz
