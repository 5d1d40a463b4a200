#include "mime/decoding_passes.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "codecs/base64.h"
#include "mime/ascii.h"
#include "mime/encoded_word_syntax.h"
#include "mime/quoted_text.h"
#include "mime/working_text.h"
#include "platform/code_page.h"

namespace vellobar::mime {
namespace {

constexpr std::size_t npos = WorkingText::npos;
/// How much of the text is looked at first when it is not known how much is needed.
constexpr std::size_t kFirstLook = 64;

bool is_base64_letter(char c) { return is_ascii_letter(c) || is_ascii_digit(c) || c == '+' || c == '/'; }

class Decoding {
 public:
  explicit Decoding(std::string_view value) : text_(value), may_add_(most_added_bytes(value.size())) {}

  DecodedValue run() {
    bool goes_on = true;
    while (goes_on) {
      const bool fixes_utf7 = text_.holds(Pattern::unicode_utf7);
      choose_code_page();
      goes_on = decode_once();
      if (goes_on && fixes_utf7 && text_.holds(Pattern::plus)) goes_on = fix_utf7_run();
    }
    return {text_.copy(0), code_page_};
  }

 private:
  /// Without any prefix the code page of an earlier pass stays.
  void choose_code_page() {
    if (text_.holds(Pattern::unicode_utf7)) code_page_ = platform::kUtf7CodePage;
    if (text_.holds(Pattern::utf7)) {
      code_page_ = platform::kUtf7CodePage;
    } else if (text_.holds(Pattern::utf8)) {
      code_page_ = platform::kUtf8CodePage;
    } else if (text_.holds(Pattern::windows)) {
      code_page_ = text_.first_windows_number();
    }
  }

  /// False when there is nothing left to decode.
  bool decode_once() {
    if (text_.holds(Pattern::tab_fold)) {
      text_.replace(text_.first(Pattern::tab_fold), kTabFold.size(), {});
      return true;
    }
    return text_.holds(Pattern::word) && decode_word(text_.first(Pattern::word));
  }

  bool decode_word(std::size_t start) {
    const std::size_t encoding = text_.first(Pattern::encoding, start + kWordStart.size());
    if (encoding == npos) return false;
    const std::string marker = text_.copy(encoding, 3);
    const std::size_t begin = encoding + marker.size();
    const std::size_t end = text_.first(Pattern::word_end, begin);
    if (end == npos) return false;

    std::vector<Change> changes;
    changes.push_back({start, begin - start, {}});
    if (word_encoding_at(marker) == WordEncoding::base64) {
      changes.push_back({begin, end - begin, decoded_base64(text_.copy(begin, end - begin))});
    } else {
      std::vector<Change> decoded = changes_by_decoding_quoted_text(text_, begin, end);
      std::move(decoded.begin(), decoded.end(), std::back_inserter(changes));
    }
    changes.push_back({end, kWordEnd.size(), {}});
    return make(changes);
  }

  static std::string decoded_base64(std::string_view encoded) {
    std::string decoded = codecs::decode_base64(encoded);
    // Deliberate: what follows a decoded NUL is lost; see decoded_bytes_end_at_their_first_nul.
    decoded.resize(std::min(decoded.find('\0'), decoded.size()));
    return decoded;
  }

  /// The first "+" of the whole text and the Base64 letters behind it become what they stand for, in a way of its own:
  /// of the decoded bytes one leading NUL is skipped, the next one ends them, and they are read as UTF-7. See
  /// the_utf7_fix_up_reads_the_decoded_bytes_as_utf7_again. False when the value bursts.
  bool fix_utf7_run() {
    const std::size_t position = text_.first(Pattern::plus);
    const std::string letters = base64_letters_from(position + 1);
    const std::string decoded = codecs::decode_base64(letters);
    std::string_view bytes = decoded;
    if (bytes.starts_with('\0')) bytes.remove_prefix(1);
    bytes = bytes.substr(0, bytes.find('\0'));
    const std::size_t behind = position + 1 + letters.size();
    const std::size_t removed = 1 + letters.size() + (text_.copy(behind, 1) == "-" ? 1 : 0);
    return make({{position, removed,
                  platform::narrow(platform::process_code_page(), platform::widen(platform::kUtf7CodePage, bytes))}});
  }

  std::string base64_letters_from(std::size_t position) const {
    for (std::size_t count = kFirstLook;; count *= 2) {
      std::string text = text_.copy(position, count);
      const auto end = std::find_if_not(text.begin(), text.end(), is_base64_letter);
      if (end == text.end() && text.size() == count) continue;
      text.erase(end, text.end());
      return text;
    }
  }

  /// Makes changes that are in their order. False when the value bursts: then none is made.
  bool make(const std::vector<Change>& changes) {
    std::size_t removed = 0;
    std::size_t inserted = 0;
    for (const Change& change : changes) {
      removed += change.removed;
      inserted += change.inserted.size();
    }
    if (inserted > removed) {
      if (inserted - removed > may_add_) return false;
      may_add_ -= inserted - removed;
    }
    // From the last to the first, so that the positions of those that are left hold.
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
      text_.replace(change->position, change->removed, change->inserted);
    }
    return true;
  }

  WorkingText text_;
  int code_page_ = 0;
  std::size_t may_add_;
};

}  // namespace

DecodedValue decode_pass_by_pass(std::string_view value) { return Decoding(value).run(); }

}  // namespace vellobar::mime
