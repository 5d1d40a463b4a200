// The collections of parts that were made so far below a message, at any depth, in no certain order; detached ones as
// well.
#pragma once

#include <memory>
#include <vector>

namespace vellobar {

class CMessage;
class CMessages;

namespace mailbox {

enum class Below {
  everything,
  going_with_it,  ///< what would go with the message when it is let go
};

class CollectionsBelow {
 public:
  explicit CollectionsBelow(const CMessage& message, Below which = Below::everything);

  /// Whether one of them, which are shared pointers, is wanted. The predicate makes nothing and lets nothing go.
  template <typename Predicate>
  bool has_any(Predicate is_wanted) && {
    while (const std::shared_ptr<CMessages>* const parts = next()) {
      if (is_wanted(*parts)) return true;
    }
    return false;
  }

 private:
  const std::shared_ptr<CMessages>* next();
  void add_parts_of(const CMessage& message);

  std::vector<const std::shared_ptr<CMessages>*> waiting_;
  std::vector<CMessage*> messages_;
};

}  // namespace mailbox
}  // namespace vellobar
