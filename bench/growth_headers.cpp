// Header blocks, and the named getters of a message with values made to hurt.
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "errors/error.h"
#include "growth.h"
#include "headers/address.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"

namespace vellobar::bench {
namespace {

std::u16string client_text(std::string_view bytes) { return platform::widen(platform::kAnsiCodePage, bytes); }

// ---- Named getters ----

/// Everything that a client can read by name from a message whose header of one name has this value.
template <const char* name>
GrowthWork read_named(const std::string& value) {
  auto message = std::make_shared<CMessage>();
  message->Headers()->Add(std::u16string(name, name + std::char_traits<char>::length(name)), client_text(value));
  return [message] {
    std::size_t size = 0;
    for (const auto getter :
         {&CMessage::Subject, &CMessage::From, &CMessage::To, &CMessage::CC, &CMessage::BCC,
          &CMessage::ContentDescription, &CMessage::ContentDisposition, &CMessage::ContentID,
          &CMessage::ContentTransferEncoding, &CMessage::ContentType, &CMessage::MessageID, &CMessage::MIMEVersion,
          &CMessage::FromName, &CMessage::FromEmail, &CMessage::ToName, &CMessage::ToEmail, &CMessage::CharSet}) {
      size += ((*message).*getter)().size();
    }
    return size;
  };
}

constexpr char kSubject[] = "Subject";
constexpr char kFrom[] = "From";
constexpr char kTo[] = "To";
constexpr char kContentType[] = "Content-Type";

template <const char* name, const char* piece>
GrowthWork named(std::size_t size) {
  return read_named<name>(repeated(piece, size));
}

template <const char* front, const char* piece, const char* back>
GrowthWork date(std::size_t size) {
  auto message = std::make_shared<CMessage>();
  message->Headers()->Add(u"Date", client_text(front + repeated(piece, size) + back));
  return [message] {
    try {
      return static_cast<std::size_t>(message->Date());
    } catch (const Error&) {
      return std::size_t{0};
    }
  };
}

/// An address list that a client writes.
template <const char* piece>
GrowthWork written(std::size_t size) {
  return [text = client_text(repeated(piece, size))] { return headers::address_list_text(text).size(); };
}

constexpr char kWord[] = "=?utf-8?Q?=C3=A9?= ";
constexpr char kFold[] = "word\r\n\t";
constexpr char kEntry[] = "Jane Doe <jane@example>, ";
constexpr char kBareEntry[] = "j@x,";
constexpr char kComma[] = ",";
constexpr char kQuote[] = "\"";
constexpr char kApostrophe[] = "'";
constexpr char kOpening[] = "<";
constexpr char kClosing[] = ">";
constexpr char kBrackets[] = "<>";
constexpr char kAt[] = "@";
constexpr char kAtAndSpace[] = "@ ";
constexpr char kSpace[] = " ";
constexpr char kQuotesAndBrackets[] = "\"<'@ ";
constexpr char kEightBit[] = "\xE9,";
constexpr char kCharset[] = "charset ";
constexpr char kCharsetAndEquals[] = "; charset=\"";
constexpr char kDigit[] = "9";
constexpr char kDateStart[] = "15 Nov ";
constexpr char kDateEnd[] = "15 Nov 1994 08:12:31 GMT";
constexpr char kYear[] = "1994 ";
constexpr char kNothing[] = "";
constexpr char kBlanks[] = "\x01\xFF \t";
constexpr char kDayName[] = "Tue";
constexpr char kLineEnd[] = "\r\n";

// ---- Header blocks ----

/// A mailbox of one message with this header block; its file is gone when the work is done with.
class BlockFile {
 public:
  explicit BlockFile(const std::string& block)
      : path_(std::filesystem::temp_directory_path() / "vellobar_growth_headers.mbox") {
    std::ofstream(path_, std::ios::binary) << "From a\n" << block << "\nbody\n";
    control_.SetFilename(path_.u16string());
    control_.Lock();
    message_ = control_.Messages()->Item(0);
  }
  ~BlockFile() {
    control_.Unlock();
    std::filesystem::remove(path_);
  }
  BlockFile(const BlockFile&) = delete;
  BlockFile& operator=(const BlockFile&) = delete;

  CMessage& message() { return *message_; }

 private:
  std::filesystem::path path_;
  CVellobar control_;
  std::shared_ptr<CMessage> message_;
};

template <const char* piece>
GrowthWork load_block(std::size_t size) {
  auto file = std::make_shared<BlockFile>("Subject: x\n" + repeated(piece, size));
  return [file] {
    const auto headers = file->message().Headers();
    return static_cast<std::size_t>(headers->Count()) + headers->ToString().size() + file->message().Subject().size();
  };
}

GrowthWork every_header(std::size_t size) {
  auto file = std::make_shared<BlockFile>(repeated("X-A: b\n", size));
  return [file] {
    const auto headers = file->message().Headers();
    std::size_t sum = headers->Exists(u"missing") ? 1 : 0;
    for (std::int64_t i = 0; i < headers->Count(); ++i) sum += headers->Item(i)->Value().size();
    return sum;
  };
}

GrowthWork from_string(std::size_t size) {
  return [text = client_text(repeated("X-A: b\r\n\tc: d\r\nno colon\r\n", size))] {
    CHeaders headers;
    headers.FromString(text);
    return static_cast<std::size_t>(headers.Count());
  };
}

constexpr char kHeaderLine[] = "X-A: b\n";
constexpr char kContinuation[] = "\tmore of the same\n";
constexpr char kLineWithoutColon[] = "nothing\n";
constexpr char kShortestLine[] = ":\n";

constexpr std::array kFamilies = {
    GrowthFamily{"subject_of_words", named<kSubject, kWord>},
    GrowthFamily{"subject_of_folds", named<kSubject, kFold>},
    GrowthFamily{"from_entries", named<kFrom, kEntry>},
    GrowthFamily{"from_words", named<kFrom, kWord>},
    GrowthFamily{"from_quotes", named<kFrom, kQuote>},
    GrowthFamily{"from_brackets", named<kFrom, kBrackets>},
    GrowthFamily{"from_openings", named<kFrom, kOpening>},
    GrowthFamily{"from_ats", named<kFrom, kAt>},
    GrowthFamily{"from_spaces", named<kFrom, kSpace>},
    GrowthFamily{"to_entries", named<kTo, kEntry>},
    GrowthFamily{"to_bare_entries", named<kTo, kBareEntry>},
    GrowthFamily{"to_words", named<kTo, kWord>},
    GrowthFamily{"to_commas", named<kTo, kComma>},
    GrowthFamily{"to_quotes", named<kTo, kQuote>},
    GrowthFamily{"to_apostrophes", named<kTo, kApostrophe>},
    GrowthFamily{"to_openings", named<kTo, kOpening>},
    GrowthFamily{"to_closings", named<kTo, kClosing>},
    GrowthFamily{"to_ats_and_spaces", named<kTo, kAtAndSpace>},
    GrowthFamily{"to_quotes_and_brackets", named<kTo, kQuotesAndBrackets>},
    GrowthFamily{"to_8_bit_bytes", named<kTo, kEightBit>},
    GrowthFamily{"date_of_words", date<kNothing, kWord, kDateEnd>},
    GrowthFamily{"date_behind_blanks", date<kNothing, kBlanks, kDateEnd>},
    GrowthFamily{"date_behind_commas", date<kDayName, kComma, kDateEnd>},
    GrowthFamily{"date_of_spaces", date<kDateStart, kSpace, kYear>},
    GrowthFamily{"date_of_digits", date<kDateStart, kDigit, kNothing>},
    GrowthFamily{"date_with_a_long_year_and_zone", date<kDateEnd, kDigit, kNothing>},
    GrowthFamily{"content_type_of_charsets", named<kContentType, kCharset>},
    GrowthFamily{"content_type_of_parameters", named<kContentType, kCharsetAndEquals>},
    GrowthFamily{"written_entries", written<kEntry>},
    GrowthFamily{"written_commas", written<kComma>},
    GrowthFamily{"written_line_ends", written<kLineEnd>},
    GrowthFamily{"written_quotes", written<kQuote>},
    GrowthFamily{"written_quotes_and_brackets", written<kQuotesAndBrackets>},
    GrowthFamily{"block_of_headers", load_block<kHeaderLine>},
    GrowthFamily{"block_of_continuations", load_block<kContinuation>},
    GrowthFamily{"block_of_lines_without_colon", load_block<kLineWithoutColon>},
    GrowthFamily{"block_of_shortest_headers", load_block<kShortestLine>},
    GrowthFamily{"block_read_by_position", every_header},
    GrowthFamily{"block_from_a_string", from_string},
};

}  // namespace

std::span<const GrowthFamily> header_growth_families() { return kFamilies; }

}  // namespace vellobar::bench
