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
  explicit MessageEntry(const Extent& extent) noexcept : extent_(extent) {}
  /// A message that no scan found.
  explicit MessageEntry(std::shared_ptr<CMessage> object) {
    extent_.set_marks(kIsAdded);
    keep(std::move(object));
  }

  bool is_added() const noexcept { return has(kIsAdded); }

  std::int64_t start() const noexcept { return extent_.start(); }
  bool has_separator() const noexcept { return extent_.has_separator(); }
  Extent extent() const noexcept { return extent_.extent(); }

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
    return {.headers_were_read = has(kHeadersWereRead),
            .body_was_read = has(kBodyWasRead),
            .parts_were_read = has(kPartsWereRead),
            .was_unloaded = has(kWasUnloaded),
            .scans_text = has(kScansText)};
  }
  void leave(const Traces& traces) noexcept {
    const auto mark = [](unsigned bit, bool is_set) { return is_set ? bit : 0; };
    extent_.set_marks((extent_.marks() & kIsAdded) | mark(kHeadersWereRead, traces.headers_were_read) |
                      mark(kBodyWasRead, traces.body_was_read) | mark(kPartsWereRead, traces.parts_were_read) |
                      mark(kWasUnloaded, traces.was_unloaded) | mark(kScansText, traces.scans_text));
  }

 private:
  static constexpr unsigned kIsAdded = 1, kHeadersWereRead = 2, kBodyWasRead = 4, kPartsWereRead = 8, kWasUnloaded = 16,
                            kScansText = 32;
  static inline const std::shared_ptr<CMessage> kNone;

  bool has(unsigned bit) const noexcept { return (extent_.marks() & bit) != 0; }

  PackedExtent extent_;
  std::unique_ptr<std::shared_ptr<CMessage>> object_;
};

}  // namespace mailbox
}  // namespace vellobar
