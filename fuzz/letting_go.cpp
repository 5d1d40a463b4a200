// Messages and parts that nobody holds are let go and made again. The same life of a mailbox is played twice, once with
// nearly all of them kept and once with a few: a client sees no difference.
#include <optional>
#include <string>

#include "fuzz/choices.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/nested_mail.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "fuzz/watchful_client.h"
#include "mailbox/recent_messages.h"
#include "platform/file_system.h"
#include "tests/support/faulty_file_system.h"

namespace vellobar::fuzz {

namespace {

std::string seen_in_life(std::string_view content, std::string_view decisions) {
  Choices choices(decisions);
  WatchfulClient client(content, choices.flip());
  while (choices.has_more()) client.step(choices);
  client.finish();
  return client.seen();
}

}  // namespace

void fuzz_letting_go(std::string_view input) {
  // A way down through many levels is held while it is longer than what is kept.
  constexpr std::size_t kKept[] = {1, 2, 3, 8};
  constexpr std::size_t kMostNests = 3;
  constexpr std::size_t kMostDecisions = 1024;
  Choices choices(input);
  const std::size_t kept = choices.among(kKept);
  std::string content;
  for (std::size_t nests = choices.below(kMostNests + 1); nests > 0; --nests) content += nested_message(choices);
  const std::string_view decisions = choices.take(choices.below(256) * kMostDecisions / 256);
  content += choices.text();
  if (!has_short_lines(content)) return;
  tests::FaultyFileSystem without_waiting;
  const platform::FixedFileSystem fixed(without_waiting);
  const std::string as_usual = seen_in_life(content, decisions);
  const mailbox::FewRecentMessages few(kept);
  require_same(seen_in_life(content, decisions), as_usual, "a client does not see that messages are let go");
}

}  // namespace vellobar::fuzz
