// A client that holds objects of a mailbox at every depth for long, edits and reads them as a row of decisions says,
// and writes down all that it sees. What two mailboxes show the same decisions can be compared byte by byte: where
// something is made at random it is made alike or left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/choices.h"
#include "mailbox/snapshot.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"

namespace vellobar {
class CAttachment;
class CAttachments;
class CHeader;
class CHeaders;
class CMessage;
class CMessages;
}  // namespace vellobar

namespace vellobar::fuzz {

/// The objects of one kind that a client holds, the last few of them.
template <typename Object>
class HeldObjects {
 public:
  void hold(std::shared_ptr<Object> object) {
    constexpr std::size_t kMost = 6;
    if (objects_.size() < kMost) {
      objects_.push_back(std::move(object));
    } else {
      objects_[oldest_++ % kMost] = std::move(object);
    }
  }
  void let_go(Choices& choices) {
    if (!objects_.empty())
      objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(choices.below(objects_.size())));
  }
  template <typename Predicate>
  void let_go_if(Predicate is_meant) {
    std::erase_if(objects_, [&](const std::shared_ptr<Object>& object) { return is_meant(*object); });
  }
  void clear() { objects_.clear(); }

  /// Null when there is none.
  std::shared_ptr<Object> any(Choices& choices) const {
    return objects_.empty() ? nullptr : objects_[choices.below(objects_.size())];
  }
  const std::vector<std::shared_ptr<Object>>& all() const { return objects_; }

  /// Which of them that object is, for the record.
  std::string place_of(const std::shared_ptr<Object>& object) const {
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      if (objects_[i] == object) return "held " + std::to_string(i) + ' ';
    }
    return object ? "not held " : "none ";
  }

 private:
  std::vector<std::shared_ptr<Object>> objects_;
  std::size_t oldest_ = 0;
};

class WatchfulClient {
 public:
  WatchfulClient(std::string_view content, bool reads_attachments);
  ~WatchfulClient();
  WatchfulClient(const WatchfulClient&) = delete;
  WatchfulClient& operator=(const WatchfulClient&) = delete;

  /// One thing that a client may do.
  void step(Choices& choices);
  /// Writes the mailbox, and reads all there is.
  void finish();

  /// All that was seen so far.
  const std::string& seen() const { return seen_; }

 private:
  using Message = std::shared_ptr<CMessage>;
  struct Step {
    const char* name;
    void (WatchfulClient::*take)(Choices&);
  };
  static const std::vector<Step>& steps();

  void glance(Choices&);
  void read_tree(Choices&);
  void read_headers_of_all(Choices&);
  void read_parts_of_all(Choices&);
  void hold_message(Choices&);
  void hold_parts(Choices&);
  void hold_headers(Choices&);
  void hold_header(Choices&);
  void hold_attachments(Choices&);
  void hold_attachment(Choices&);
  void begin_walk(Choices&);
  void walk_on(Choices&);
  void read_held(Choices&);
  void let_go(Choices&);
  void add_header(Choices&);
  void remove_header(Choices&);
  void put_header(Choices&);
  void put_named_header(Choices&);
  void put_text(Choices&);
  void put_body(Choices&);
  void put_mail_info(Choices&);
  void put_tag(Choices&);
  void add_message(Choices&);
  void add_object(Choices&);
  void remove_message(Choices&);
  void add_part(Choices&);
  void add_part_object(Choices&);
  void remove_part(Choices&);
  void remove_all(Choices&);
  void attach(Choices&);
  void change_attachment(Choices&);
  void save_attachment(Choices&);
  void scan_text(Choices&);
  void load(Choices&);
  void unload(Choices&);
  void peek(Choices&);
  void save(Choices&);
  void deliver(Choices&);
  void update(Choices&);
  void update_other(Choices&);
  void lock_again(Choices&);

  class Reachable;
  /// A message of one of the mailboxes, one that is held, or a part below any of these, however deep.
  Message message(Choices& choices);
  Message top(Choices& choices);
  /// The same for a change. Attachments are found once and stay so whatever changes; those of a message that was let go
  /// would be found anew, so a client that reads attachments finds all of them before the change.
  Message message_to_change(Choices& choices);
  std::shared_ptr<CMessages> parts_to_change(Choices& choices);
  void find_attachments_above(CMessage* message) const;
  /// The same, read by now. A boundary in a header decides about parts when the text is read, deliberately, and that of
  /// a message that was let go is read again, after which it counts as unchanged; a part that was let go together with
  /// its message counts as read when another one was.
  Message loaded_message(Choices& choices);
  std::shared_ptr<CHeaders> headers(Choices& choices);
  std::shared_ptr<CMessages> parts(Choices& choices);
  std::shared_ptr<CAttachment> attachment(Choices& choices);
  std::u16string piece(Choices& choices) const;
  std::u16string piece_in_file(Choices& choices);

  /// What a closed file held is there as far as it was read and kept, unless an update reads it whole. So objects that
  /// are in no mailbox any longer are held on to only as long as no file is closed.
  void let_go_of_strays();

  /// Writes down what the call returns or the error it throws.
  template <typename Call>
  void note(const char* what, Call call);
  void note_message(CMessage& message);
  void note_attachment(const CAttachment& attachment);
  void note_all_held();
  void note_file(const CVellobar& control);

  std::string content_;
  bool reads_attachments_;
  platform::FixedTemporaryFolder temporary_;
  std::size_t files_ = 0;
  std::uint32_t ticks_ = 0;
  CVellobar control_;
  CVellobar other_;
  HeldObjects<CMessage> messages_;
  HeldObjects<CMessages> collections_;
  HeldObjects<CHeaders> headers_;
  HeldObjects<CHeader> single_headers_;
  HeldObjects<CAttachments> attachments_;
  HeldObjects<CAttachment> single_attachments_;
  /// A walk over a collection, and how far it came.
  struct Walk {
    std::weak_ptr<CMessages> of;
    std::shared_ptr<mailbox::Snapshot<CMessages, CMessage>> items;
    std::size_t next = 0;
  };
  HeldObjects<Walk> walks_;
  std::string seen_;
};

}  // namespace vellobar::fuzz
