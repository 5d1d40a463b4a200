// The life of one mailbox in the hands of a client: it is locked, read, edited in every way, updated and locked again,
// as a row of decisions says, and held to the laws on the way.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/choices.h"
#include "mailbox/vellobar.h"
#include "platform/temporary_file.h"

namespace vellobar {
class CMessage;
}

namespace vellobar::fuzz {

enum class Client {
  reads_only_what_it_must,
  reads_everything,  ///< between any two steps, so that each update can be foretold
  is_careless,  ///< uses messages of a mailbox that is closed, updates by itself, changes code pages, cuts the file
};

class MailboxLife {
 public:
  MailboxLife(std::string_view content, Client client);
  ~MailboxLife();
  MailboxLife(const MailboxLife&) = delete;
  MailboxLife& operator=(const MailboxLife&) = delete;

  /// One thing that a client may do.
  void step(Choices& choices);
  /// Writes the mailbox, locks it afresh, and lets go of all that was held.
  void update();

  std::string file() const;

 private:
  using Step = void (MailboxLife::*)(Choices&);
  static const std::vector<Step>& steps();
  static const std::vector<Step>& careless_steps();

  void read(Choices&);
  void add_header(Choices&);
  void remove_header(Choices&);
  void put_header(Choices&);
  void put_named_header(Choices&);
  void put_text(Choices&);
  void put_body(Choices&);
  void put_mail_info(Choices&);
  void add_message(Choices&);
  void add_file(Choices&);
  void add_object(Choices&);
  void remove_message(Choices&);
  void remove_all(Choices&);
  void add_part(Choices&);
  void add_part_object(Choices&);
  void remove_part(Choices&);
  void attach(Choices&);
  void load(Choices&);
  void unload(Choices&);
  void peek(Choices&);
  void save(Choices&);
  void hold(Choices&);
  void let_go(Choices&);
  void deliver(Choices&);
  void update_and_lock(Choices&);
  void lock_again(Choices&);
  void turn_auto_update(Choices&);
  void change_code_page(Choices&);
  void cut_file(Choices&);

  std::shared_ptr<CMessage> message(Choices& choices);
  /// One that was read by now: a boundary in a header decides about parts when the text is read, deliberately.
  std::shared_ptr<CMessage> loaded_message(Choices& choices);
  /// A message of the mailbox or one that is held.
  std::shared_ptr<CMessage> any_message(Choices& choices);
  /// A file that holds a piece of the mailbox's first content.
  std::u16string piece_in_file(Choices& choices);
  std::u16string piece(Choices& choices);
  void require_reading_changes_nothing();
  void require_foretold_update();
  void update_carelessly();
  void locked();

  std::string content_;
  Client client_;
  std::string path_;
  platform::FixedTemporaryFolder temporary_;
  CVellobar control_;
  std::vector<std::shared_ptr<CMessage>> held_;
  std::string delivered_;
};

}  // namespace vellobar::fuzz
