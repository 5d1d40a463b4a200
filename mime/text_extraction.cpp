// The texts of a message: which part of the tree holds the plain text or the HTML, and how its transfer encoding is
// undone.
#include <algorithm>
#include <deque>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "codecs/attachment_encoding.h"
#include "codecs/base64.h"
#include "codecs/quoted_printable.h"
#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/scratch_file.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

std::u16string lower(std::u16string text) {
  std::transform(text.begin(), text.end(), text.begin(), platform::lower_ascii<char16_t>);
  return text;
}

bool contains(std::u16string_view text, std::u16string_view wanted) {
  return text.find(wanted) != std::u16string_view::npos;
}

std::shared_ptr<CMessage> first_part(CMessages* parts, auto&& is_wanted) {
  for (std::int64_t i = 0; parts != nullptr && i < parts->Count(); ++i) {
    std::shared_ptr<CMessage> part = parts->Item(i);
    if (is_wanted(*part)) return part;
  }
  return nullptr;
}

using BufferDecoder = std::string (*)(std::string_view);

struct TextEncoding {
  std::u16string_view name;
  BufferDecoder decode;
};

std::string decode_quoted_printable_text(std::string_view text) { return codecs::decode_quoted_printable(text); }

constexpr TextEncoding kTextEncodings[] = {
    {u"quoted-printable", decode_quoted_printable_text},
    {u"base64", codecs::decode_base64},
};

/// Null for an encoding that leaves the text as it is.
BufferDecoder decoder_of(std::u16string_view lower_name) {
  for (const TextEncoding& encoding : kTextEncodings) {
    if (encoding.name == lower_name) return encoding.decode;
  }
  return nullptr;
}

/// A body with its transfer encoding undone; where it cannot stay as it is, `room` holds it. Long bodies: no copy of it
/// lives longer than it is needed.
std::string_view transfer_decoded(std::string_view body, BufferDecoder decode, std::string& room) {
  const int code_page = platform::process_code_page();
  // Between its conversions the text is bytes in the process code page. The length that counts is that of the wide
  // text; deliberate, see a_decoder_takes_as_many_bytes_as_the_wide_text_has_characters.
  std::string_view coded = body;
  std::size_t length = body.size();
  if (!platform::is_ascii(body) || !platform::keeps_ascii(code_page)) {
    const std::u16string text = platform::widen(code_page, body);
    length = text.size();
    room = platform::narrow(code_page, text);
    coded = room;
  }
  if (decode == nullptr) return coded;
  room = decode(coded.substr(0, length));
  return room;
}

std::string read_whole(const std::string& path) {
  const std::shared_ptr<platform::File> file = platform::File::open(path);
  if (!file) throw Error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message);
  std::string bytes(static_cast<std::size_t>(file->size()), '\0');
  bytes.resize(file->read(0, bytes.data(), bytes.size()));
  return bytes;
}

void decode_into(const std::string& path, codecs::AttachmentEncoding encoding, platform::File& coded) {
  try {
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path);
    if (!output) throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::message);
    if (!codecs::decode_stream(encoding, coded, 0, coded.size(), *output)) {
      throw Error(ErrorNumber::unsupported_encoding, Reporter::message);
    }
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_write_temporary_file, Reporter::message);
  }
}

}  // namespace

std::shared_ptr<CMessage> CMessage::find_part(std::u16string_view content_type) {
  /// A message whose parts are being searched; held, because what nobody holds may be let go.
  struct Level {
    std::shared_ptr<CMessage> message;
    std::int64_t next;
    std::shared_ptr<CMessage> take_part() { return message->existing_parts()->Item(next++); }
    bool is_over() const { return next == message->existing_parts()->Count(); }
  };
  // A part without a boundary has no parts, and is not read to learn it.
  const auto type_of = [](CMessage& part) {
    const Held before = part.held();
    std::u16string type = part.ContentType();
    part.drop_headers_that_run_on(before);
    return type;
  };
  const auto is_wanted = [&](CMessage& part) { return contains(type_of(part), content_type); };
  const auto is_alternative = [&](CMessage& part) { return contains(lower(type_of(part)), u"multipart/alternative"); };
  std::deque<Level> levels;
  // The caller holds this message itself, which need not be a shared one.
  for (std::shared_ptr<CMessage> message(std::shared_ptr<CMessage>(), this); message != nullptr;) {
    const Held before = message->held();
    const std::u16string type = lower(message->ContentType());
    CMessages* const parts = message->parts_if_any();
    message->drop_headers_that_run_on(before);
    if (contains(type, u"multipart/mixed") || contains(type, u"multipart/related")) {
      // Deliberate: nothing but that part is searched; see
      // without_a_plain_text_in_the_alternative_part_the_one_beside_it_is_not_used.
      if (std::shared_ptr<CMessage> alternative = first_part(parts, is_alternative)) {
        message = std::move(alternative);
        continue;
      }
    }
    if (contains(type, content_type)) return message;
    // What the search passes counts as loaded.
    message->changed_ = false;
    if (std::shared_ptr<CMessage> part = first_part(parts, is_wanted)) return part;
    if (parts != nullptr && parts->Count() > 0) levels.push_back({std::move(message), 0});
    if (levels.empty()) return nullptr;
    message = levels.back().take_part();
    // What is above the last part of each need not be held any longer, however deep that goes.
    if (levels.back().is_over()) levels.pop_back();
  }
  return nullptr;
}

std::u16string CMessage::PlainText() {
  const std::shared_ptr<CMessage> part = find_part(u"text/plain");
  return part != nullptr ? part->transfer_decoded_text(*this) : Text();
}

std::u16string CMessage::HTMLText() {
  const std::shared_ptr<CMessage> part = find_part(u"text/html");
  if (part == nullptr) throw Error(Status::fail);
  return part->transfer_decoded_text(*this);
}

std::u16string CMessage::transfer_decoded_text(CMessage& charset_source) {
  load_body();
  if (!body_) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  const std::u16string encoding = lower(ContentTransferEncoding());
  if (encoding.empty()) return Text();
  std::string room;
  const std::string_view decoded = transfer_decoded(*body_, decoder_of(encoding), room);
  std::u16string result = platform::widen(charset_source.code_page(), decoded.substr(0, decoded.find('\0')));
  if (result.empty()) return Text();
  // Deliberate: the last character goes; see the_last_character_of_a_decoded_text_is_dropped.
  result.pop_back();
  return result;
}

std::u16string CMessage::DecodedText(codecs::AttachmentEncoding encoded_as) {
  Load();
  if (body_->empty()) return {};
  mailbox::ScratchFile coded;
  coded.write(*body_);
  const std::shared_ptr<platform::File> opened = platform::File::open(coded.path());
  if (!opened) {
    // Deliberate: the file is left; whoever keeps it from being read may still want it.
    coded.keep();
    throw Error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message);
  }
  const mailbox::ScratchFile decoded(1);
  decode_into(decoded.path(), encoded_as, *opened);
  opened->close();
  try {
    return platform::widen(code_page(), read_whole(decoded.path()));
  } catch (const std::bad_alloc&) {
    throw Error(ErrorNumber::out_of_memory, Reporter::message);
  } catch (const std::length_error&) {
    throw Error(ErrorNumber::out_of_memory, Reporter::message);
  }
}

}  // namespace vellobar
