#include "make_mailbox.h"

#include <iterator>
#include <stdexcept>
#include <string_view>

#include "platform/file.h"

namespace vellobar::bench {

namespace {

constexpr int kTextWidth = 72;
constexpr int kBase64Width = 76;

/// SplitMix64: small, and the same numbers with every library.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
    return mixed ^ (mixed >> 31);
  }
  int below(int count) { return static_cast<int>(next() % static_cast<std::uint64_t>(count)); }
  bool one_in(int count) { return below(count) == 0; }

 private:
  std::uint64_t state_;
};

constexpr std::string_view kWords[] = {
    "the",     "report", "From",  "meeting", "for",    "with",  "please", "attached", "and",    "schedule", "of",
    "monday",  "a",      "draft", "in",      "review", "this",  "week",   "to",       "agree",  "budget",   "that",
    "invoice", "we",     "send",  "numbers", "from",   "is",    "office", "on",       "thanks", "you",      "regards",
    "it",      "will",   "next",  "version", "at",     "final", "change", "not",      "are",    "ready",    "customer"};
constexpr std::string_view kEncodedWords[] = {"f=FCr", "=FCber", "caf=E9", "stra=DFe", "gr=FC=DFe", "d=E9j=E0"};

class MessageWriter {
 public:
  explicit MessageWriter(std::uint64_t seed) : random_(seed) {}

  /// One whole message with the empty line that ends it.
  const std::string& write(std::int64_t number) {
    text_.clear();
    envelope(number);
    switch (random_.below(4)) {
      case 0:
        plain_part();
        break;
      case 1:
        encoded_part("plain");
        break;
      case 2:
        alternative(boundary());
        break;
      default:
        mixed(boundary());
    }
    text_ += '\n';
    return text_;
  }

 private:
  std::string word() { return std::string(kWords[random_.below(std::size(kWords))]); }
  std::string address() { return word() + "." + word() + "@" + word() + ".example"; }
  std::string boundary() { return "----=_Part_" + std::to_string(random_.next()); }

  void envelope(std::int64_t number) {
    const std::string date = std::to_string(1 + random_.below(28));
    const std::string sender = address();
    text_ += "From " + sender + " Mon Jan  1 12:00:00 2024\n";
    for (int hop = 1 + random_.below(4); hop > 0; --hop) {
      text_ += "Received: from " + word() + ".example (" + word() + ".example [192.0.2." + std::to_string(hop) +
               "])\n\tby mail.example with ESMTP id " + std::to_string(random_.next()) + ";\n\tMon, " + date +
               " Jan 2024 12:00:0" + std::to_string(hop) + " +0000\n";
    }
    text_ += "Message-ID: <" + std::to_string(number) + "." + std::to_string(random_.next()) + "@mail.example>\n";
    text_ += "Date: Mon, " + date + " Jan 2024 12:00:00 +0000\nFrom: " + sender + "\nTo: " + address() + ",\n " +
             address() + "\nSubject: " + word() + " " + word() + " " + word() + "\nMIME-Version: 1.0\n";
  }

  template <class NextWord>
  void lines(int count, const NextWord& next_word) {
    for (; count > 0; --count) {
      const std::size_t start = text_.size();
      while (text_.size() - start < kTextWidth - 10) text_.append(next_word()).append(" ");
      text_.back() = '\n';
      // What a mail program does to a line that would read as a separator.
      if (std::string_view(text_).substr(start).starts_with("From ")) text_.insert(start, ">");
      if (random_.one_in(8)) text_ += '\n';
    }
  }

  void plain_part() {
    text_ += "Content-Type: text/plain; charset=us-ascii\nContent-Transfer-Encoding: 7bit\n\n";
    lines(5 + random_.below(200), [this] { return word(); });
  }

  void encoded_part(std::string_view subtype) {
    text_ += "Content-Type: text/" + std::string(subtype) +
             "; charset=\"iso-8859-1\"\nContent-Transfer-Encoding: quoted-printable\n\n";
    lines(5 + random_.below(300), [this] {
      return random_.one_in(12) ? std::string(kEncodedWords[random_.below(std::size(kEncodedWords))]) : word();
    });
  }

  void attachment() {
    const std::string name = word() + ".pdf";
    text_ += "Content-Type: application/pdf; name=\"" + name + "\"\nContent-Transfer-Encoding: base64\n" +
             "Content-Disposition: attachment;\n\tfilename=\"" + name + "\"\n\n";
    static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (int count = 20 + random_.below(2600); count > 0; --count) {
      std::uint64_t bits = 0;
      for (int column = 0; column < kBase64Width; ++column, bits >>= 6) {
        if (column % 10 == 0) bits = random_.next();
        text_ += kAlphabet[bits & 63];
      }
      text_ += '\n';
    }
  }

  void alternative(const std::string& delimiter) {
    text_ += "Content-Type: multipart/alternative;\n boundary=\"" + delimiter + "\"\n\n--" + delimiter + "\n";
    plain_part();
    text_ += "\n--" + delimiter + "\n";
    encoded_part("html");
    text_ += "\n--" + delimiter + "--\n";
  }

  void mixed(const std::string& delimiter) {
    text_ += "Content-Type: multipart/mixed;\n boundary=\"" + delimiter +
             "\"\n\nThis is a multi-part message in MIME format.\n\n--" + delimiter + "\n";
    plain_part();
    for (int count = 1 + random_.below(2); count > 0; --count) {
      text_ += "\n--" + delimiter + "\n";
      attachment();
    }
    text_ += "\n--" + delimiter + "--\n";
  }

  Random random_;
  std::string text_;
};

}  // namespace

MailboxSize make_mailbox(const std::string& path, std::int64_t bytes, std::uint64_t seed) {
  const auto file = platform::OutputFile::create(path);
  if (!file) throw std::runtime_error("cannot make " + path);
  MessageWriter writer(seed);
  MailboxSize made;
  while (made.bytes < bytes) {
    const std::string& message = writer.write(made.messages++);
    file->write(message);
    made.bytes += static_cast<std::int64_t>(message.size());
  }
  file->close();
  return made;
}

}  // namespace vellobar::bench
