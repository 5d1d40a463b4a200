// A message of a mailbox, a part of a message, or a message that stands alone: one record for all three. The record
// knows where its text lies in an open file; headers and body are read when somebody asks for them. Its sections are
// implemented in the folders that own their rules: text storage in mailbox/, named headers, dates and addresses in
// headers/, parts and decoded texts in mime/, attachments in attachments/.
//
// A message shares the file it reads from; when that file is closed it reads as empty. `collection` and the owner are
// ways back that the other side clears.
#pragma once

#include <any>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mailbox/extent.h"
#include "mailbox/message_entry.h"
#include "mailbox/owner.h"

namespace vellobar {

class CAttachments;
class CHeaders;
class CMessages;

namespace codecs {
enum class AttachmentEncoding;
}

namespace mailbox {
enum class Below;
class PartTree;
}  // namespace mailbox

namespace platform {
class File;
class ByteSink;
}  // namespace platform

class CMessage : public std::enable_shared_from_this<CMessage> {
 public:
  /// A message that stands alone: no owner, no collection, no file.
  CMessage();
  /// A message located by a scan.
  CMessage(OwnerLink owner, CMessages* collection, std::shared_ptr<platform::File> file, const mailbox::Extent& extent);
  /// A new message of a collection; its text is a file of its own of this size, or nothing.
  CMessage(OwnerLink owner, CMessages* collection, std::shared_ptr<platform::File> own_file, std::int64_t size);
  ~CMessage();
  CMessage(const CMessage&) = delete;
  CMessage& operator=(const CMessage&) = delete;

  // ---- Text storage ----

  /// Byte position of the first line, and just behind the last one, in the file the message is read from.
  std::int64_t StartPosition() const { return start_; }
  std::int64_t EndPosition() const { return end_; }
  /// EndPosition less StartPosition.
  std::int64_t Size() const { return end_ - start_; }
  /// Bytes and lines as counted by the scan; a message from a file of its own counts no lines (see Messages.Add, Peek).
  std::int64_t Bytes() const { return Size(); }
  std::int64_t Lines() const { return lines_; }
  /// For the client's own use.
  std::any& Tag() { return tag_; }

  /// Position in the collection; Status::fail when there is none or the message is not in it.
  std::int64_t Index() const;

  /// The first line, without its line end; a mailbox message's "From " line.
  std::u16string MailInfo();
  /// Marks the message and its mailbox changed; the text stays whatever is loaded later.
  void SetMailInfo(std::u16string_view mail_info);

  bool Changed() const { return changed_; }

  /// Reads headers and body into memory.
  void Load();
  /// Drops everything that was read, and MailInfo; what a client changed and did not write is lost.
  void Unload();
  /// Makes a file of its own the message's text and reads its headers. Error 30006 when it cannot be opened or its
  /// header block is unreadable; the message is then empty.
  void Peek(std::u16string_view filename);
  /// Writes the message to a file, replacing it. Error 30002 when it cannot be opened or is the locked mailbox itself.
  void Save(std::u16string_view filename);

  /// The body in the process code page. Error 30005 when it cannot be loaded.
  std::u16string Text();
  /// Replaces the body; the message is then read from a temporary file of its own. Does not count as a change.
  void SetText(std::u16string_view text);
  /// The whole message, headers included. Error 30005 when it cannot be loaded.
  std::u16string Body();
  /// Replaces the whole message, headers included, through a temporary file.
  void SetBody(std::u16string_view body);

  // ---- Headers ----

  /// The header block. Error 30006 when it is unreadable.
  std::shared_ptr<CHeaders> Headers();

  // Named headers, decoded. A getter finds the first header of its name and gives an empty text when there is none; a
  // setter replaces, removes (empty text) or appends one header and tells nobody. After the message was never read, a
  // setter appends without looking.
  std::u16string From();
  void SetFrom(std::u16string_view addresses);
  std::u16string Subject();
  void SetSubject(std::u16string_view subject);
  std::u16string CC();
  void SetCC(std::u16string_view addresses);
  std::u16string BCC();
  void SetBCC(std::u16string_view addresses);
  std::u16string To();
  void SetTo(std::u16string_view addresses);
  std::u16string ContentDescription();
  void SetContentDescription(std::u16string_view value);
  std::u16string ContentDisposition();
  void SetContentDisposition(std::u16string_view value);
  std::u16string ContentID();
  void SetContentID(std::u16string_view value);
  std::u16string ContentTransferEncoding();
  void SetContentTransferEncoding(std::u16string_view value);
  std::u16string ContentType();
  void SetContentType(std::u16string_view value);
  std::u16string MessageID();
  void SetMessageID(std::u16string_view value);
  std::u16string MIMEVersion();
  void SetMIMEVersion(std::u16string_view value);
  std::u16string ContentSubtype();
  void SetContentSubtype(std::u16string_view value);
  std::u16string ContentSubtypeParameters();
  void SetContentSubtypeParameters(std::u16string_view value);

  /// The "Date" header as an automation date in local time, the current time when there is none.
  /// Status::invalid_argument when its month cannot be read.
  double Date();
  void SetDate(double date);

  std::u16string FromName();
  std::u16string FromEmail();
  std::u16string ToName();
  std::u16string ToEmail();

  /// The charset named by the Content-Type header; putting it changes nothing.
  std::u16string CharSet();
  void SetCharSet(std::u16string_view charset);

  // ---- Parts ----

  /// The collection of parts.
  std::shared_ptr<CMessages> Parts();
  /// The delimiter line of the parts, as far as it is known.
  const std::u16string& PartsBoundary();

  // ---- Decoded texts ----

  /// The decoded text of the first part that is plain text (the message itself may be it); the message's own Text when
  /// there is none.
  std::u16string PlainText();
  /// The decoded text of the first part that is HTML; Status::fail when there is none.
  std::u16string HTMLText();
  /// The message's own text, decoded with the encoding that the caller names and read with the message's charset; empty
  /// when there is no text. Errors 30012, 30004, and 30013 for an encoding without a decoder.
  std::u16string DecodedText(codecs::AttachmentEncoding encoded_as);

  // ---- Attachments ----

  /// The collection of attachments. Error 30005 when the message cannot be loaded.
  std::shared_ptr<CAttachments> Attachments();

  // ---- Composing ----

  /// Makes a message that is not multipart yet multipart/`subtype`, with a boundary of its own; nobody is told.
  void make_multipart(std::u16string_view subtype);
  /// Makes `text` the part of this content type ("text/plain", "text/html"), which is added when the message has none;
  /// a message without one becomes multipart/alternative first.
  void set_text_part(std::u16string_view content_type, std::u16string_view text);

  // ---- For the component's own use ----

  /// The header block, read on first use; null when it is unreadable.
  CHeaders* load_headers();
  /// The header block as far as it was read.
  CHeaders* loaded_headers() const { return headers_.get(); }
  /// A named header's decoded value, valid until the next call; empty when there is none. The name is a literal.
  const std::u16string& decoded_header(std::string_view name);
  /// What Subject gives, valid until the next call: lists ask for it over and over and copy it anyway.
  const std::u16string& subject() { return decoded_header("Subject"); }
  /// The same for the caller to keep.
  std::u16string header_text(std::string_view name);
  /// Replaces, removes (empty value) or appends one header; tells nobody.
  void set_header_value(std::string_view name, std::u16string_view value);
  /// The Windows code page of the message's own charset name; 0 when it names none that counts.
  int code_page();

  /// Whether the first line is a separator line.
  bool has_separator() const { return has_separator_; }
  /// The file the text is read from, if any, and where the body begins in it once the headers were loaded.
  const std::shared_ptr<platform::File>& file() const { return file_; }
  std::int64_t body_offset() const { return body_offset_; }

  /// The message itself or the part below it that carries this content type, searched depth first; null when there is
  /// none.
  std::shared_ptr<CMessage> find_part(std::u16string_view content_type);
  /// The parts of a message that has a boundary or was given parts, else null. A text without a boundary is not read.
  CMessages* parts_if_any();

  const OwnerLink& owner() const { return owner_; }
  CMessages* collection() const { return collection_; }
  /// Called by a collection when it ends.
  void forget_collection(const CMessages& collection);
  /// Where the collection found the message last, so that it need not search; -1 when it never did.
  std::int64_t remembered_index() const { return remembered_index_; }
  void remember_index(std::int64_t index) const {
    if (remembered_index_ != kSeveralPlaces) remembered_index_ = index;
  }
  /// For a message that may be in several places, of which the first one counts.
  void forget_index() { remembered_index_ = kSeveralPlaces; }

  /// Where a message is written: between delimiter lines it never gets a separator line.
  enum class Place { alone, part };
  /// Writes the message: separator line, headers, empty line, body, parts. With `keeps`, all that was read stays in
  /// memory. Throws std::system_error when the sink fails or the message cannot be read whole.
  void write(platform::ByteSink& sink, Place place, bool keeps);

  /// Loads the message and all parts below it. With `for_good` they stay in memory, because the file may be closed;
  /// else parts that nobody holds may be let go again.
  void load_tree(bool for_good);

  /// True when a message that the caller and its collection alone hold reads the same after it is made again, with all
  /// that was made below it. Looks at no more objects than `patience`, and takes them off it.
  bool reads_the_same_again(std::size_t& patience) const noexcept;
  /// What is left when the message is let go, and what a message made again starts with.
  mailbox::Traces traces() const;
  void bear(const mailbox::Traces& traces) noexcept;
  /// Notes that an attachment knows this part, so that it is not let go by itself.
  void note_attachment() noexcept { has_attachment_ = true; }

  /// What of a message is in memory.
  struct Held {
    bool headers = false;
    bool body = false;
  };
  Held held() const { return {headers_ != nullptr, body_.has_value()}; }
  /// Drops what only a walk has read.
  void drop_what_walking_read(Held before);
  /// The same for the headers of a message whose block ran on behind its end: they are those of all that follows.
  void drop_headers_that_run_on(Held before);
  /// Drops headers that nobody holds or changed; they are read again when somebody asks for them.
  void drop_unchanged_headers() noexcept;
  /// True when a client holds a part at any depth, or a collection of parts.
  bool has_held_parts() const;
  bool has_held_parts(mailbox::Below which) const;

  /// True when these are the message's own parts or those of a part below it.
  bool has_below(const CMessages& parts) const;

  /// The collection of parts as far as it was made; null before.
  const std::shared_ptr<CMessages>& existing_parts() const { return parts_; }
  /// Takes the parts out, for whoever lets go of this message and what is below it.
  std::shared_ptr<CMessages> give_up_parts() noexcept { return std::move(parts_); }
  /// For a part that was found with a whole tree.
  void be_in(std::weak_ptr<mailbox::PartTree> tree) { tree_ = std::move(tree); }
  std::shared_ptr<mailbox::PartTree> tree() const { return tree_.lock(); }
  /// For a part that is about to be let go although something below it stays: leaves its parts in the tree. False when
  /// that cannot be.
  bool detach_parts() noexcept;
  /// For a message that leaves its place, or is about to lose its parts: takes up whatever stands by itself below it.
  /// From then on the message and all below it are in no tree.
  void leave_tree();
  /// True while the message is read from this very place.
  bool is_read_from(const platform::File* file, const mailbox::Extent& extent) const;

  /// For a message added from a file: notes whether the file's first line is a separator line.
  void recognise_separator_line();
  /// Gives a message added to a mailbox the separator line it lacks, from its sender and date.
  void make_missing_separator_line();
  /// Reads the text and splits it, as far as the header block can be read.
  void load_parts();
  /// Makes the message multipart for a part that is being added, when it has no boundary yet; nobody is told. A part
  /// that is given gets the delimiter as its MailInfo.
  void become_multipart_for_added_part(CMessage* takes_delimiter);
  /// Stores MailInfo without telling anybody; what is loaded later does not replace it.
  void store_mail_info(std::u16string mail_info) noexcept;
  /// Notes the temporary file that an added attachment reads from; only Unload deletes it.
  void keep_attachment_file(std::string path) { (*temporary_files_)[kAttachmentFile] = std::move(path); }

 private:
  /// A `remembered_index_` that is never kept.
  static constexpr std::int64_t kSeveralPlaces = -2;
  /// Paths of temporary files, by what they are for.
  using TemporaryFiles = std::array<std::string, 3>;
  static constexpr std::size_t kTextFile = 0;
  static constexpr std::size_t kBodyFile = 1;
  static constexpr std::size_t kAttachmentFile = 2;

  void load_body();
  /// For what is about to change: reads again what was read before the message was let go.
  void read_again();
  void split_parts(std::int64_t from);
  void split_level(std::int64_t from);
  bool load_from_outline(std::string_view delimiter);
  bool take_up_parts();
  void take_up_detached();
  void ensure_parts();
  /// The text with its transfer encoding undone, in the charset that the other message names.
  std::u16string transfer_decoded_text(CMessage& charset_source);
  void read_mail_info();
  struct OwnFile;
  OwnFile own_file(std::shared_ptr<platform::File> file, bool has_separator) const;
  void read_from(OwnFile own) noexcept;
  void move_to_own_file();
  void drop_content();
  void drop_body();
  void drop_parts();
  void drop_attachments();
  void close_own_file();
  /// For what stores a path later, when nothing may fail any longer.
  void make_room_for_temporary_files();
  void delete_temporary_file(std::size_t slot);
  void write_to_file(const std::string& path);
  /// Where Save and Text put write it.
  Place own_place() const;
  std::optional<std::string> separator_line_for(Place place) const;
  void write_separator_line(platform::ByteSink& sink, Place place) const;
  /// Writes all but the parts. True when they are to follow.
  bool write_own_text(platform::ByteSink& sink, Place place);
  /// The whole message but its parts, as a client reads it.
  void append_own_body(std::u16string& to) const;
  bool is_as_read();
  bool is_as_found() const noexcept;
  bool is_unloaded() const { return first_line_is_separator_ && !has_separator_; }
  /// What ScanText of the attachments says.
  bool scans_text() const;
  /// The same of all but its own headers.
  bool has_body_of_file(mailbox::Below which);
  /// True when the header block, which has been read, goes on behind the end.
  bool headers_run_on() const { return body_offset_ > end_; }
  bool has_headers_of_file();
  void write_own_bytes(platform::ByteSink& sink, Place place);

  std::int64_t start_ = 0;
  std::int64_t end_ = 0;
  std::int64_t lines_ = 0;
  std::int64_t body_offset_ = 0;
  mutable std::int64_t remembered_index_ = -1;
  bool has_separator_ = false;
  bool first_line_is_separator_ = false;  ///< what has_separator_ was before an Unload cleared it
  bool changed_ = false;
  bool has_own_file_ = false;
  bool mail_info_given_ = false;
  // What was read and dropped to save memory.
  bool headers_were_read_ = false;
  bool body_was_read_ = false;
  bool parts_were_read_ = false;
  bool scans_text_ = false;
  bool has_left_ = false;             ///< its place, or lost the parts that it had there
  bool stays_whole_ = false;          ///< was loaded because its file may be closed
  bool has_attachment_ = false;       ///< and attachments know this part
  bool text_was_put_ = false;         ///< the body is not that of the file
  bool is_cut_short_ = false;         ///< the file gave less of the body than it should hold
  bool has_misplaced_parts_ = false;  ///< the parts do not lie where their positions say, or are not all there
  CMessages* collection_ = nullptr;
  OwnerLink owner_;
  std::shared_ptr<platform::File> file_;
  std::shared_ptr<CHeaders> headers_;
  std::u16string mail_info_;
  std::optional<std::string> body_;
  std::u16string parts_boundary_;
  std::shared_ptr<CMessages> parts_;
  std::shared_ptr<CAttachments> attachments_;
  std::weak_ptr<mailbox::PartTree> tree_;
  std::any tag_;
  std::unique_ptr<TemporaryFiles> temporary_files_;  ///< made together with the first file of its own
};

}  // namespace vellobar
