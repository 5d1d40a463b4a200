// A client that holds objects of a mailbox at every depth for long, edits and reads them as a row of decisions says,
// and writes down all that it sees. What two mailboxes show the same decisions can be compared byte by byte: where
// something is made at random it is made alike or left out. Each section of the class has a file of its own:
// watchful_client_reading.cpp and so on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/held_objects.h"
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

  // ---- Reading ----

  void glance(Choices&);
  void read_tree(Choices&);
  void read_headers_of_all(Choices&);
  void read_parts_of_all(Choices&);
  void begin_walk(Choices&);
  void walk_on(Choices&);
  void read_held(Choices&);
  void load(Choices&);
  void save(Choices&);
  void save_attachment(Choices&);

  // ---- Holding ----

  void hold_message(Choices&);
  void hold_parts(Choices&);
  void hold_headers(Choices&);
  void hold_header(Choices&);
  void hold_attachments(Choices&);
  void hold_attachment(Choices&);
  void let_go(Choices&);
  /// What a closed file held is there as far as it was read and kept, unless an update reads it whole. So objects that
  /// are in no mailbox any longer are held on to only as long as no file is closed.
  void let_go_of_strays();

  // ---- Editing ----

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
  void scan_text(Choices&);
  void unload(Choices&);
  void peek(Choices&);

  // ---- The files of the mailboxes ----

  void deliver(Choices&);
  void update(Choices&);
  void update_other(Choices&);
  void lock_again(Choices&);

  // ---- Choosing ----

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

  // ---- Notes of what is seen ----

  /// Writes down what the call returns or the error it throws.
  void note(const char* what, const std::function<std::string()>& call);
  void note_message(CMessage& message);
  void note_tag(CMessage& message);
  void note_attachment(const CAttachment& attachment);
  void note_all_held();
  void note_file(const CVellobar& control);
  static std::string shown(std::u16string_view text);

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
