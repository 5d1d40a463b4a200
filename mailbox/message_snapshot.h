// The items that a collection of messages has now, for a walk that goes on whatever becomes of the collection. They are
// those of the collection as long as that does not change, so that a walk over a million messages does not hold a
// million objects; before it changes they are all made and held.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace vellobar {

class CMessage;
class CMessages;

namespace mailbox {

class MessageSnapshot {
 public:
  explicit MessageSnapshot(std::shared_ptr<CMessages> collection);
  ~MessageSnapshot();
  MessageSnapshot(const MessageSnapshot&) = delete;
  MessageSnapshot& operator=(const MessageSnapshot&) = delete;

  std::size_t size() const { return size_; }
  std::shared_ptr<CMessage> operator[](std::size_t index) const;

  /// Makes and holds all items; called by the collection before it changes. Without memory for them nothing is done.
  void hold_items();

 private:
  std::shared_ptr<CMessages> collection_;  ///< null once the items are held
  std::size_t size_;
  std::vector<std::shared_ptr<CMessage>> items_;
};

}  // namespace mailbox
}  // namespace vellobar
