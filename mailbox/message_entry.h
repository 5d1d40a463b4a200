// A place in a collection of messages, in 32 bytes: where the scan found the message, what shows of a message that was
// read and let go again, and, behind one pointer, its object as long as it is kept. Most messages have none, and mail
// can have a million of them.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "mailbox/extent.h"

namespace vellobar {

class CMessage;

namespace mailbox {

/// What a message shows of earlier reading, although nothing of it is in memory any longer.
struct Traces {
  bool headers_were_read = false;  ///< a header that is put replaces one of its name
  bool body_was_read = false;      ///< the boundary is known
  bool parts_were_read = false;    ///< some of the parts, at any depth; the first two count for all of them then
  bool was_unloaded = false;       ///< the separator line is read as a header line
  bool scans_text = false;         ///< what Attachments.ScanText was put to
};

class MessageEntry {
 public:
  MessageEntry() = default;
  explicit MessageEntry(const Extent& extent) noexcept : start_(extent.start), end_(extent.end) {
    numbers_ = static_cast<std::uint64_t>(extent.lines) << kMarks | mark(kHasSeparator, extent.has_separator);
  }
  /// A message that no scan found.
  explicit MessageEntry(std::shared_ptr<CMessage> object) { keep(std::move(object)); }

  std::int64_t start() const noexcept { return start_; }
  bool has_separator() const noexcept { return has(kHasSeparator); }
  Extent extent() const noexcept {
    return {start_, end_, static_cast<std::int64_t>(numbers_ >> kMarks), has_separator()};
  }

  /// Null for a message without an object.
  const std::shared_ptr<CMessage>& object() const noexcept { return object_ ? *object_ : kNone; }
  void keep(std::shared_ptr<CMessage> object) {
    object_ = std::make_unique<std::shared_ptr<CMessage>>(std::move(object));
  }
  std::shared_ptr<CMessage> give_up_object() noexcept {
    if (!object_) return nullptr;
    std::shared_ptr<CMessage> object = std::move(*object_);
    object_.reset();
    return object;
  }

  Traces traces() const noexcept {
    return {has(kHeadersWereRead), has(kBodyWasRead), has(kPartsWereRead), has(kWasUnloaded), has(kScansText)};
  }
  void leave(const Traces& traces) noexcept {
    constexpr std::uint64_t kTraces = kHeadersWereRead | kBodyWasRead | kPartsWereRead | kWasUnloaded | kScansText;
    numbers_ = (numbers_ & ~kTraces) | mark(kHeadersWereRead, traces.headers_were_read) |
               mark(kBodyWasRead, traces.body_was_read) | mark(kPartsWereRead, traces.parts_were_read) |
               mark(kWasUnloaded, traces.was_unloaded) | mark(kScansText, traces.scans_text);
  }

 private:
  static constexpr int kMarks = 8;
  static constexpr std::uint64_t kHasSeparator = 1, kHeadersWereRead = 2, kBodyWasRead = 4, kPartsWereRead = 8,
                                 kWasUnloaded = 16, kScansText = 32;
  static inline const std::shared_ptr<CMessage> kNone;

  static std::uint64_t mark(std::uint64_t bit, bool is_set) noexcept { return is_set ? bit : 0; }
  bool has(std::uint64_t bit) const noexcept { return (numbers_ & bit) != 0; }

  std::int64_t start_ = 0;
  std::int64_t end_ = 0;
  std::uint64_t numbers_ = 0;  ///< the lines, and the marks below them
  std::unique_ptr<std::shared_ptr<CMessage>> object_;
};

}  // namespace mailbox
}  // namespace vellobar
