// One attachment of a message: where its coded bytes lie, how they are coded, and what it is called. It reads from the
// file that its part reads from, or from a temporary file of its own that holds a UU block found in text. When the
// mailbox's file was closed (the mailbox was unlocked) there is nothing left to decode.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "mailbox/owner.h"

namespace vellobar {

class CMessage;
class CMessages;

namespace platform {
class ByteSink;
class File;
}  // namespace platform

/// Where coded bytes lie: from `start` to just before `end`. There may be no file.
struct CodedRange {
  std::shared_ptr<platform::File> file;
  std::int64_t start = 0;
  std::int64_t end = 0;
  std::string reopened_from = {};  ///< the path of a file, instead, that is open only while it is decoded
};

/// What holds an attachment: a message or part, or the place of a part that need not be an object.
struct HoldingPart {
  std::weak_ptr<CMessage> object = {};
  std::weak_ptr<CMessages> parts = {};
  std::int64_t start = 0;  ///< in the file of those parts
};

class CAttachment {
 public:
  /// An attachment that stands alone, of nothing.
  CAttachment();
  CAttachment(OwnerLink owner, HoldingPart part, CodedRange range, int encoding);
  CAttachment(const CAttachment&) = delete;
  CAttachment& operator=(const CAttachment&) = delete;

  /// The file name as the mail gives it, or as the client put it.
  const std::u16string& Name() const { return name_; }
  void SetName(std::u16string_view name);
  /// The content type, or the disposition where that gave the name.
  const std::u16string& Type() const { return type_; }
  void SetType(std::u16string_view type);
  /// A number of codecs::AttachmentEncoding; any number can be put.
  int Encoding() const { return encoding_; }
  void SetEncoding(int encoding);

  /// Decodes to a file, created or replaced, that is called like the attachment and stands in the current folder. A
  /// name from the mail is made harmless first, a name that the client put is used as it stands. Error 30007 when the
  /// name is empty, 30009 when the encoding is unknown, 30008 when the file cannot be written or is the mailbox itself.
  void Save();
  /// The same with a file name of the client's own.
  void Save(std::u16string_view filename);

  /// The message or part that holds the attachment; null when it is gone.
  std::shared_ptr<CMessage> Part() const;

  /// The size of the coded bytes; for Base64, BinHex and UUencode three quarters of it, an estimate of the decoded
  /// size.
  std::int64_t Size() const;

  /// For the component's own use: what discovery read in the mail.
  void describe(std::u16string name, std::u16string type);
  /// True when a client put something.
  bool is_changed() const { return is_changed_; }
  const CodedRange& range() const { return range_; }
  /// Another object that says the same.
  std::shared_ptr<CAttachment> another() const;
  /// Decodes into a sink; nothing when there is no source or the encoding is unknown. Throws std::system_error when the
  /// source cannot be read, and what the sink throws.
  void decode_to(platform::ByteSink& sink) const;

 private:
  void save_to(std::u16string_view filename);
  std::shared_ptr<platform::File> open_source() const;
  void decode(platform::File& source, platform::ByteSink& sink) const;
  bool is_mailbox(const std::string& path) const;

  OwnerLink owner_;
  HoldingPart part_;
  CodedRange range_;
  int encoding_ = 0;
  std::u16string name_;
  std::u16string type_;
  bool name_given_ = false;  ///< by the client
  bool is_changed_ = false;
};

}  // namespace vellobar
