// An ordered collection of messages: a mailbox's, filled by a scan, or the parts of a message. A scanned message is an
// extent in a compact table; its object is made when somebody asks for it, and kept as long as somebody holds it or it
// differs from what would be read again. Of the others in a mailbox only those made last are kept; see RecentMessages.
// Add, Remove and RemoveAll tell the owning control.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mailbox/extent.h"
#include "mailbox/item_iterator.h"
#include "mailbox/made_on_use.h"
#include "mailbox/message_entry.h"
#include "mailbox/owner.h"
#include "mailbox/snapshot.h"

namespace vellobar {

class CMessage;

namespace mailbox {
class PartTree;
struct ScanResult;
}  // namespace mailbox

namespace platform {
class File;
class ByteSink;
}  // namespace platform

class CMessages : public std::enable_shared_from_this<CMessages> {
 public:
  /// A mailbox's collection; without an owner it stands alone.
  CMessages();
  explicit CMessages(OwnerLink owner);
  /// The parts of a message.
  CMessages(OwnerLink owner, CMessage& parent);
  ~CMessages();
  CMessages(const CMessages&) = delete;
  CMessages& operator=(const CMessages&) = delete;

  std::int64_t Count() const { return static_cast<std::int64_t>(items_.size()); }

  /// The message at a position counted from 0; Status::invalid_argument outside. The object lives as long as the caller
  /// holds it; nobody may keep a plain pointer to it.
  std::shared_ptr<CMessage> Item(std::int64_t index);

  /// Appends a new empty message.
  std::shared_ptr<CMessage> Add();
  /// Appends a new message read from a file (name narrowed with the process code page); an empty name means a new empty
  /// message. A file that cannot be opened: error 30011, Status::fail when the collection has no owner; nothing is
  /// added.
  std::shared_ptr<CMessage> Add(std::u16string_view filename);
  /// Appends an existing message, which is loaded and keeps its own links. Null, or a message that this collection is a
  /// part of: Status::invalid_argument.
  void Add(const std::shared_ptr<CMessage>& message);

  /// Removes that very message (its first place); Status::invalid_argument when it is not here.
  void Remove(const CMessage& message);
  void RemoveAll();

  // For the component's own use.

  /// The messages that the collection has now, whatever becomes of it.
  std::shared_ptr<mailbox::Snapshot<CMessages, CMessage>> snapshot() { return snapshots_.take(shared_from_this()); }
  /// The message at an index that is there.
  std::shared_ptr<CMessage> object_at(std::size_t index);

  /// Position of the first place that holds this very message, -1 when it is not here.
  std::int64_t position_of(const CMessage& message) const;

  /// Appends a record for each message found between `from` and `limit`; the records read from this file later. Returns
  /// whether everything up to the limit was indexed. Error 8 when memory runs out: what was found stays.
  bool scan(const std::shared_ptr<platform::File>& file, std::int64_t from, std::int64_t limit);

  /// The same for the parts of a message between the opening delimiter line and the message's end. The last one found,
  /// which is what follows the closing delimiter when there is one, is never a part. What an earlier attempt found is
  /// given up.
  mailbox::ScanResult split(const std::shared_ptr<platform::File>& file, std::int64_t from, std::int64_t limit,
                            std::u16string_view delimiter);

  /// The same with what an outline has found. The parts know the tree, when one is given.
  void split(const std::shared_ptr<platform::File>& file, std::u16string_view delimiter,
             const std::function<void(mailbox::ExtentSink&)>& find_parts,
             const std::shared_ptr<mailbox::PartTree>& tree);
  /// For the outermost collection of a tree: it ends with this one.
  void own(std::shared_ptr<mailbox::PartTree> tree) noexcept { own_tree_ = std::move(tree); }

  /// A new message whose text is an open file of this size, appended without telling the control. A parts collection
  /// makes its parent multipart first when it is not.
  std::shared_ptr<CMessage> adopt(std::shared_ptr<platform::File> file, std::int64_t size);

  /// A new part with an empty text of its own, appended without telling the control.
  std::shared_ptr<CMessage> append_empty();

  /// The message at a position as it is held, else one made for the caller alone.
  std::shared_ptr<CMessage> for_walking(std::int64_t index);
  /// The messages that are held as objects are appended.
  void append_existing(std::vector<CMessage*>& to) const;
  /// Whether one of them is wanted.
  template <typename Predicate>
  bool any_object(Predicate is_wanted) const {
    return std::any_of(items_.begin(), items_.end(),
                       [&](const Entry& entry) { return entry.object() && is_wanted(*entry.object()); });
  }
  /// Lets the object of a message go, of which the caller has one reference, when nobody else holds anything of it and
  /// it reads the same when it is made again. Looks at no more objects than `patience`, and takes them off it.
  void let_go(const std::shared_ptr<CMessage>& message, std::size_t& patience) noexcept;
  /// The message that a scan found at that position of the file, as long as it is here or somebody holds it; else null.
  std::shared_ptr<CMessage> found_at(std::int64_t start);
  /// True when one of the messages was read.
  bool has_traces() const;
  /// For the parts of a message that was let go after some of them had been read.
  void count_as_read() noexcept { parts_were_read_ = true; }
  /// True when a client holds one of the messages.
  bool has_held_items() const;
  /// True while the collection holds just what was scanned, each message where it was found.
  bool is_as_scanned() const;

  /// Throws std::system_error when a scanned message does not begin where it was found any longer.
  void check_positions() const;
  /// For a message whose header block runs on behind its end, as far as those of its neighbours do: of the messages
  /// that nobody but the collection holds only the last one keeps such headers, for mail can have thousands that all
  /// run on.
  void keep_headers_that_run_on(CMessage& message) noexcept;

  /// Writes a whole mailbox, having made sure that every scanned message still begins where it was found. Messages of
  /// which a client holds nothing are read, written and dropped one at a time; the others stay in memory, whole. Throws
  /// std::system_error when a message does not begin in its place (with nothing written), cannot be read whole, or when
  /// the sink fails.
  void write_mailbox(platform::ByteSink& sink);

  /// The separator line that starts each message: "From ", or a parts collection's delimiter.
  const std::u16string& separator() const { return separator_; }
  void set_separator(std::u16string separator) noexcept { separator_ = std::move(separator); }

  const OwnerLink& owner() const { return owner_; }
  CMessage* parent() const { return parent_; }
  /// True for the parts of a message that is there, or was let go.
  bool is_of_message() const { return parent_ != nullptr || is_detached(); }
  /// True also when their message is gone.
  bool is_of_parts() const { return is_of_parts_; }

  // Parts that outlive the object of their message; see PartTree.

  std::shared_ptr<mailbox::PartTree> tree() const { return tree_.lock(); }
  /// The tree of which this is the outermost collection, if there is one.
  const mailbox::PartTree* own_tree() const { return own_tree_.get(); }
  bool is_detached() const { return detached_from_ != kAttached; }
  /// For a message that begins there and is let go.
  void detach_from(std::int64_t message) noexcept;
  /// For the message made again.
  void attach_to(CMessage& message) noexcept;
  /// Ends a detached collection that need not be kept.
  void end_unless_kept() noexcept;
  /// True when it is not just what would be made again.
  bool must_be_kept() const;
  /// For attachments, which look their parts up here.
  void keep_for_attachments() noexcept { is_kept_for_attachments_ = true; }
  /// True when all would be the same if it were made again with a message that attachments know, or do not know.
  bool is_as_made_anew(bool with_attachments) const;
  /// Appends the messages that have objects, and makes those of which something stands by itself.
  void append_ways_down(std::vector<std::shared_ptr<CMessage>>& to);
  /// See CMessage::leave_tree; for all messages.
  void leave_trees();
  /// The collection and its messages are in no tree any longer.
  void leave_tree() noexcept;

  /// For a message that lets go of its parts, and of all below them, however deep that is. Needs no memory.
  static void release(std::shared_ptr<CMessages> parts) noexcept;

 private:
  using Entry = mailbox::MessageEntry;

  /// For whatever changes which items there are, or where they are read from.
  void before_change() { snapshots_.hold_items(); }
  void give_up_items() noexcept;
  void release_items(std::shared_ptr<CMessages>& to_release) noexcept;
  void release_tree(std::shared_ptr<CMessages>& to_release) noexcept;
  mailbox::ScanResult scan_range(std::int64_t from, std::int64_t limit);
  std::shared_ptr<CMessage> new_object(const Entry& entry);
  void write(platform::ByteSink& to);
  /// What the MailInfo of a message says that is added to parts.
  enum class Carries { its_own_line, the_delimiter };
  void append(const std::shared_ptr<CMessage>& message, Carries line);
  void remember_removed(const Entry& entry);
  void check_position(std::int64_t position) const;

  OwnerLink owner_;
  CMessage* parent_ = nullptr;
  std::u16string separator_;
  std::shared_ptr<platform::File> file_;
  mailbox::MadeOnUse<Entry> items_;
  std::weak_ptr<mailbox::PartTree> tree_;
  std::shared_ptr<mailbox::PartTree> own_tree_;
  static constexpr std::int64_t kAttached = -1;
  std::int64_t detached_from_ = kAttached;
  mutable std::size_t first_object_ = 0;  ///< no message in front of it has an object, unless the collection was edited
  bool is_of_parts_ = false;
  bool is_edited_ = false;
  bool parts_were_read_ = false;
  bool is_kept_for_attachments_ = false;
  bool has_lasting_traces_ = false;               ///< parts that were let go left more than that they were read
  std::string scanned_separator_;                 ///< the separator as the scan compared it
  std::vector<std::int64_t> removed_positions_;   ///< where scanned messages began that were removed since
  std::vector<std::weak_ptr<CMessage>> removed_;  ///< objects of removed messages, which others may hold
  mailbox::Snapshots<CMessages, CMessage> snapshots_;
  std::shared_ptr<CMessages> next_to_release_;
  std::weak_ptr<CMessage> with_headers_that_run_on_;
};

/// `for (const auto& message : mailbox.Messages())`: see ItemIterator.
inline ItemIterator<CMessages, CMessage> begin(std::shared_ptr<CMessages> messages) {
  return ItemIterator<CMessages, CMessage>(std::move(messages));
}
inline std::default_sentinel_t end(std::shared_ptr<CMessages>) { return {}; }

}  // namespace vellobar
