// Address lists: what is taken from a text stands in it, a list is its entries, and what a client puts reads as put.
#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "headers/address.h"
#include "mailbox/message.h"
#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

namespace {

void require_one_address(std::string_view text) {
  const std::string address = headers::address_of(text);
  const std::string name = headers::display_name_of(text);
  require(text.find(address) != text.npos, "an address stands in its text");
  require(text.find(name) != text.npos, "a display name stands in its text");
  require(address.empty() || address.find('@') != address.npos, "an address has an @");
  require(address.find(' ') == address.npos, "an address has no blank");
  require(name.find_last_of("\"'") != name.size() - 1 || name.empty(), "no quote ends a display name");
}

void require_entries(std::string_view list) {
  const std::vector<std::string_view> entries = headers::split_address_list(list);
  require(!entries.empty(), "a list has an entry");
  const char* behind = list.data();
  for (const std::string_view entry : entries) {
    require(entry.data() >= behind && entry.data() + entry.size() <= list.data() + list.size(),
            "entries stand in the list, one behind the other");
    behind = entry.data() + entry.size();
    require_one_address(entry);
  }
  for (const auto extract : {headers::display_name_of, headers::address_of}) {
    std::string joined;
    for (const std::string_view entry : entries) {
      const std::string taken = extract(entry);
      if (!joined.empty() && !taken.empty()) joined += ", ";
      joined += taken;
    }
    require_same(headers::from_each_address(list, extract), joined, "a list gives what its entries give");
  }
}

/// Letters and digits alone, which no rule about addresses touches.
std::string plain_word(std::string_view bytes) {
  std::string word;
  for (const char c : bytes) {
    const char lower = platform::lower_ascii(c);
    if ((lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9')) word += c;
  }
  return word.empty() ? "x" : word.substr(0, 100);
}

void require_put_reads_as_put(const std::string& name, const std::string& address) {
  CMessage message;
  message.load_headers();
  const std::string entry = name + " <" + address + ">";
  message.SetTo(platform::widen(0, entry + ", " + entry));
  require(message.ToName() == platform::widen(0, name + ", " + name), "names read as they were put");
  require(message.ToEmail() == platform::widen(0, address + ", " + address), "addresses read as they were put");
  message.SetFrom(platform::widen(0, entry));
  require(message.FromName() == platform::widen(0, name), "a sender's name reads as it was put");
  require(message.FromEmail() == platform::widen(0, address), "a sender's address reads as it was put");
}

}  // namespace

void fuzz_addresses(std::string_view input) {
  Choices choices(input);
  const std::string_view text = choices.text();
  require_one_address(text);
  require_entries(text);
  const std::u16string list = headers::address_list_text(platform::widen(0, text));
  require(platform::is_ascii(platform::narrow(platform::kUtf8CodePage, list)), "an address header is written in ASCII");
  const std::size_t middle = text.size() / 2;
  require_put_reads_as_put(plain_word(text.substr(0, middle)),
                           plain_word(text.substr(middle)) + "@" + plain_word(text.substr(middle / 2)));
  CMessage message;
  message.SetTo(platform::widen(0, text));
  message.SetCC(list);
  message.ToName();
  message.ToEmail();
  message.FromEmail();
}

}  // namespace vellobar::fuzz
