// A mailbox from its first lock to its last update, with anything that a client may do in between. The same steps are
// taken three times: by a client that reads everything between any two of them, so that each update can be foretold; by
// one that reads nothing it need not, for which the same bytes must come out; and by a careless one, for which no more
// is promised than that nothing is lost.
#include <string>

#include "fuzz/choices.h"
#include "fuzz/literal_mail.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/mailbox_life.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mailbox/message.h"
#include "platform/clock.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"

namespace vellobar::fuzz {

namespace {

/// Without steps in between, what an update makes of a mailbox follows from its bytes alone.
void require_untouched_update(std::string_view content) {
  const std::vector<LiteralMessage> messages = read_mailbox(content);
  for (const LiteralMessage& message : messages) {
    for (const auto& [name, value] : message.block.headers) {
      if (value.find_first_of("/") != value.npos) return;  // may have parts
    }
  }
  MailboxLife life(content, Client::reads_only_what_it_must);
  life.update();
  const std::string once = life.file();
  require_same(once, rewritten(messages), "an update of untouched messages writes them back");
  life.update();
  require_same(life.file(), rewritten(read_mailbox(once)), "so does a second one");
}

std::string after(std::string_view content, std::string_view steps, Client client) {
  MailboxLife life(content, client);
  for (Choices choices(steps); choices.has_more();) life.step(choices);
  life.update();
  return with_plain_boundaries(life.file());
}

}  // namespace

void fuzz_mailbox(std::string_view input) {
  Choices choices(input);
  const std::string_view steps = choices.take(choices.below(100));
  std::string content(choices.text());
  if (!has_short_lines(content)) return;
  tests::FaultyFileSystem without_waiting;
  const platform::FixedFileSystem fixed(without_waiting);
  const platform::FixedClock clock({}, 0);
  require_untouched_update(content);
  const std::string foretold = after(content, steps, Client::reads_everything);
  require_same(after(content, steps, Client::reads_only_what_it_must), foretold,
               "what is read in between does not change what is written");
  after(content, steps, Client::is_careless);
}

}  // namespace vellobar::fuzz
