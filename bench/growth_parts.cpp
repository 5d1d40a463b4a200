// The tree of a message, its texts and its attachments: nested, near, many and long.
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "attachments/attachments.h"
#include "growth.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"

namespace vellobar::bench {
namespace {

/// A locked mailbox of one message in a folder of its own, which also takes what reading it leaves behind.
class Mail {
 public:
  explicit Mail(const std::string& text) {
    std::filesystem::create_directory(folder_);
    const std::string path = folder_ + "mail";
    std::ofstream(path, std::ios::binary) << "From a\n" << text;
    control_.SetFilename(std::u16string(path.begin(), path.end()));
    control_.Lock();
  }
  ~Mail() {
    control_.Unlock();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  Mail(const Mail&) = delete;
  Mail& operator=(const Mail&) = delete;

  CMessage& message() { return *control_.Messages()->Item(0); }
  std::u16string path_beside() const { return {beside_.begin(), beside_.end()}; }

 private:
  std::string folder_ =
      platform::temporary_folder() + "vellobar_growth_mail_" + std::to_string(platform::process_identifier()) + "/";
  std::string beside_ = folder_ + "written";
  platform::FixedTemporaryFolder fixed_{folder_};
  CVellobar control_;
};

// ---- What is done ----

using Doing = std::size_t (*)(Mail& mail);

std::size_t walk(Mail& mail) {
  std::size_t seen = 0;
  std::vector<std::shared_ptr<CMessage>> waiting{mail.message().shared_from_this()};
  while (!waiting.empty()) {
    const std::shared_ptr<CMessage> held = std::move(waiting.back());
    CMessage& message = *held;
    waiting.pop_back();
    if (message.load_headers() == nullptr) continue;
    seen += message.Text().size() + 1;
    const auto parts = message.Parts();
    for (std::int64_t i = 0; i < parts->Count(); ++i) waiting.push_back(parts->Item(i));
  }
  return seen;
}

std::size_t find_texts(Mail& mail) {
  return mail.message().PlainText().size() + (mail.message().find_part(u"text/html") != nullptr ? 1 : 0);
}

std::size_t find_attachments(Mail& mail) { return static_cast<std::size_t>(mail.message().Attachments()->Count()); }

std::size_t scan_text(Mail& mail) {
  const auto attachments = mail.message().Attachments();
  attachments->SetScanText(true);
  return static_cast<std::size_t>(attachments->Count());
}

std::size_t write(Mail& mail) {
  mail.message().Save(mail.path_beside());
  return 1;
}

GrowthWork work_on(const std::string& text, Doing doing) {
  return [mail = std::make_shared<Mail>(text), doing] { return doing(*mail); };
}

// ---- Mail ----

std::string opening(const std::string& boundary) {
  return "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
}

/// Multiparts one in the other around this part, about this size together.
std::string nested(std::size_t size, const std::string& innermost, bool is_closed = true) {
  std::string text;
  std::vector<std::string> closing;
  for (std::size_t closing_size = 0; text.size() + closing_size + innermost.size() < size;) {
    const std::string boundary = "b" + std::to_string(closing.size()) + "e";
    text += opening(boundary);
    closing.push_back("--" + boundary + "--\n");
    if (is_closed) closing_size += closing.back().size();
  }
  text += innermost;
  if (!is_closed) return text;
  for (std::size_t i = closing.size(); i-- > 0;) text += closing[i];
  return text;
}

std::string nested_plainly(std::size_t size) {
  return nested(size, "Content-Type: text/plain\nContent-Transfer-Encoding: 7bit\n\nx\n");
}

std::string parts(std::size_t size, std::string_view part) {
  return opening("X") + repeated(std::string(part) + "--X\n", size) + "\nlast\n--X--\n";
}

/// Multiparts each of whose delimiters begins the one of the multipart around it, and lines that nearly are one.
std::string near_delimiters(std::size_t size) {
  std::string text;
  for (std::size_t length = 300; length > 0; --length) text += opening(std::string(length, 'a') + "b");
  text += "\n";
  return text + repeated("--" + std::string(150, 'a') + "c\n--\n-\n--aaa\n--" + std::string(299, 'a') + "\n", size);
}

// ---- Families ----

GrowthWork nested_walked(std::size_t size) { return work_on(nested_plainly(size), walk); }
GrowthWork nested_texts(std::size_t size) { return work_on(nested_plainly(size), find_texts); }
GrowthWork nested_attachments(std::size_t size) { return work_on(nested_plainly(size), find_attachments); }
GrowthWork nested_written(std::size_t size) { return work_on(nested_plainly(size), write); }
GrowthWork nested_never_closed(std::size_t size) { return work_on(nested(size, "\nx\n", false), walk); }
GrowthWork nested_named_twice(std::size_t size) {
  std::string text;
  for (int i = 0; text.size() < size; ++i) {
    const std::string boundary = "b" + std::to_string(i) + "e";
    text += "Content-Type: multipart/mixed; boundary=" + boundary + "\n" + opening(boundary);
  }
  return work_on(text, find_attachments);
}
GrowthWork nested_over_a_long_header(std::size_t size) {
  return work_on(nested(size, "X: " + std::string(17'000, 'y') + "\n\nx\n"), walk);
}
GrowthWork nested_over_a_long_line(std::size_t size) {
  return work_on(nested(size, "\n" + std::string(17'000, 'y') + "\n"), walk);
}
GrowthWork nested_over_a_line_that_runs_ahead(std::size_t size) {
  return work_on(nested(size, "\n" + std::string(60'000, 'y') + "\n"), walk);
}
GrowthWork near_delimiter_lines(std::size_t size) { return work_on(near_delimiters(size), walk); }
GrowthWork near_opening_delimiter_lines(std::size_t size) {
  return work_on("Content-Type: multipart/mixed; boundary=XyZ\n\n" + repeated("--Xy\n--XyZ \n--xyz\n", size), walk);
}
GrowthWork many_parts(std::size_t size) { return work_on(parts(size, "Content-Type: text/x\n\nx\n"), walk); }
GrowthWork many_parts_texts(std::size_t size) {
  return work_on(parts(size, "Content-Type: text/x\n\nx\n"), find_texts);
}
GrowthWork many_parts_written(std::size_t size) { return work_on(parts(size, "A: b\n\nx\n"), write); }
GrowthWork many_empty_parts(std::size_t size) { return work_on(parts(size, "\n"), walk); }
GrowthWork many_attachments(std::size_t size) {
  return work_on(parts(size, "Content-Transfer-Encoding: base64\nContent-Type: image/x; name=y\n\nQQ\n"),
                 find_attachments);
}
GrowthWork many_headers_name_many_parts(std::size_t size) {
  return work_on(repeated("Content-Type: multipart/mixed; boundary=X\n", size / 2) + parts(size / 2, "\nx\n"),
                 find_attachments);
}
GrowthWork begin_lines(std::size_t size) { return work_on("\n" + repeated("begin 644 x\n", size), scan_text); }
GrowthWork begin_lines_without_a_name(std::size_t size) { return work_on("\n" + repeated("begin ", size), scan_text); }
GrowthWork blocks_in_text(std::size_t size) {
  return work_on("\n" + repeated("begin 644 x\n#04)#\nend\n\n", size), scan_text);
}

constexpr std::array kFamilies = {
    GrowthFamily{"nested_walked", nested_walked},
    GrowthFamily{"nested_texts", nested_texts},
    GrowthFamily{"nested_attachments", nested_attachments},
    GrowthFamily{"nested_written", nested_written},
    GrowthFamily{"nested_never_closed", nested_never_closed},
    GrowthFamily{"nested_named_twice", nested_named_twice},
    GrowthFamily{"nested_over_a_long_header", nested_over_a_long_header},
    GrowthFamily{"nested_over_a_long_line", nested_over_a_long_line},
    GrowthFamily{"nested_over_a_line_that_runs_ahead", nested_over_a_line_that_runs_ahead},
    GrowthFamily{"near_delimiter_lines", near_delimiter_lines},
    GrowthFamily{"near_opening_delimiter_lines", near_opening_delimiter_lines},
    GrowthFamily{"many_parts", many_parts},
    GrowthFamily{"many_parts_texts", many_parts_texts},
    GrowthFamily{"many_parts_written", many_parts_written},
    GrowthFamily{"many_empty_parts", many_empty_parts},
    GrowthFamily{"many_attachments", many_attachments},
    GrowthFamily{"many_headers_name_many_parts", many_headers_name_many_parts},
    GrowthFamily{"begin_lines", begin_lines},
    GrowthFamily{"begin_lines_without_a_name", begin_lines_without_a_name},
    // Each block makes a file.
    GrowthFamily{"blocks_in_text", blocks_in_text, std::size_t{32} << 10},
};

}  // namespace

std::span<const GrowthFamily> part_growth_families() { return kFamilies; }

}  // namespace vellobar::bench
