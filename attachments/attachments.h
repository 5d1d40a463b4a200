// The attachments of a message, found when somebody first counts them: parts whose headers say so, at any depth, and
// with ScanText the UU blocks in the message's own plain text. Found once; what is added later does not join the list.
// The collection belongs to its message, which clears the way back when it lets the collection go.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "attachments/found_blocks.h"
#include "attachments/made_attachments.h"
#include "mailbox/extent.h"
#include "mailbox/item_iterator.h"
#include "mailbox/made_on_use.h"
#include "mailbox/owner.h"
#include "mailbox/snapshot.h"

namespace vellobar {

class CAttachment;
class CMessage;
class CMessages;
struct CodedRange;

namespace platform {
class File;
}

class CAttachments : public std::enable_shared_from_this<CAttachments> {
 public:
  /// A collection that stands alone, without a message.
  CAttachments();
  CAttachments(OwnerLink owner, CMessage& message);
  ~CAttachments();
  CAttachments(const CAttachments&) = delete;
  CAttachments& operator=(const CAttachments&) = delete;

  /// How many were found; the first call searches. Status::fail when the message is gone. Error 30012 (Status::fail
  /// without a control) when the file of a block found in text cannot be read again: what was found until then stays.
  std::int64_t Count();

  /// The attachment at a position counted from 0, searching first like Count; Status::invalid_argument outside.
  std::shared_ptr<CAttachment> Item(std::int64_t index);

  /// Whether the message's plain text is searched for UU blocks; counts only before the first Count.
  bool ScanText() const { return scan_text_; }
  void SetScanText(bool on) { scan_text_ = on; }

  /// Adds a new part that carries a file, coded as the number of codecs::AttachmentEncoding says, and returns it. The
  /// part is named by what follows the last backslash of the file name, "unknown" when there is none. Errors 30007 (no
  /// file name), 30011 (the file cannot be read), 30012 and 30004 (temporary file), 30013 (encoding); Status::fail in
  /// their place when there is no control, and when the message is gone.
  std::shared_ptr<CMessage> Add(std::u16string_view filename, std::optional<int> encoding = std::nullopt);

  // For the component's own use.

  /// The attachments, searching first like Count. What was found stays, also when the message lets the collection go.
  std::shared_ptr<mailbox::Snapshot<CAttachments, CAttachment>> snapshot();
  /// The attachment at a position where one was found.
  std::shared_ptr<CAttachment> object_at(std::size_t position);

  /// A list this long is not lengthened by attachments that it holds already; see list_again.
  static constexpr std::size_t kMostWithRepetitions = 65536;

  /// What Add calls a file: all behind the last backslash, "unknown" when there is none.
  static std::u16string_view name_for(std::u16string_view filename);
  /// Add under a name of the caller's choice, with errors that keep their numbers also without a control.
  std::shared_ptr<CMessage> add_as(std::u16string_view name, std::u16string_view filename, int encoding);
  /// Called by the message when it lets this collection go.
  void forget_message() { message_ = nullptr; }
  /// True when somebody asked for them.
  bool were_found() const noexcept { return is_scanned_; }
  /// True when another collection would find the same, and nobody holds or changed anything of this one.
  bool can_be_found_again() const noexcept;

 private:
  /// A part as it was found. Of a few the objects are made at once, and of what reads otherwise than the file; of the
  /// others when somebody asks for them.
  struct Found {
    mailbox::PackedExtent part;
    std::uint32_t parts = 0;  ///< the place in parts_ of the collection it is in
    int encoding = 0;
  };
  static constexpr std::size_t kMostMadeAtOnce = 2048;

  bool has_control() const { return owner_ && owner_->control != nullptr; }
  void find_attachments();
  void find_in_parts(CMessage& message);
  void list(CMessage& part, int encoding, const std::shared_ptr<CMessages>& parts);
  bool reads_as_listed(CMessage& part) const;
  std::shared_ptr<CAttachment> made(const Found& found) const;
  std::shared_ptr<CAttachment> made(std::u16string name, CodedRange block) const;
  void list_again(std::size_t first, std::size_t behind);
  void find_in_text(CMessage& message);
  void list(const std::u16string& name, const CodedRange& block);

  OwnerLink owner_;
  CMessage* message_ = nullptr;
  bool is_scanned_ = false;
  bool is_whole_ = false;  ///< the search came to its end
  bool searched_text_ = false;
  bool has_blocks_ = false;  ///< some were found in text, and have files
  bool scan_text_ = false;
  mailbox::MadeOnUse<Found> items_;
  attachments::FoundBlocks blocks_;  ///< listed behind the parts
  attachments::MadeAttachments made_;
  std::shared_ptr<platform::File> file_;         ///< of the parts that are not made yet
  std::vector<std::weak_ptr<CMessages>> parts_;  ///< the collections that they are in
  std::weak_ptr<CMessage> with_blocks_;          ///< whose text was searched
};

/// `for (const auto& attachment : message->Attachments())`: see ItemIterator.
inline ItemIterator<CAttachments, CAttachment> begin(std::shared_ptr<CAttachments> attachments) {
  return ItemIterator<CAttachments, CAttachment>(std::move(attachments));
}
inline std::default_sentinel_t end(std::shared_ptr<CAttachments>) { return {}; }

}  // namespace vellobar
