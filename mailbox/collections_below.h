// The collections of parts that were made so far below a message, at any depth, in no certain order; detached ones as
// well.
#pragma once

#include <memory>
#include <vector>

namespace vellobar {

class CMessage;
class CMessages;

namespace mailbox {

class CollectionsBelow {
 public:
  enum class Which {
    all,
    attached,  ///< but for those that stay in a tree without the message
  };

  explicit CollectionsBelow(const CMessage& message, Which which = Which::all);

  /// Null behind the last one. Nothing may be made or let go in between.
  const std::shared_ptr<CMessages>* next();

 private:
  void add_parts_of(const CMessage& message);

  std::vector<const std::shared_ptr<CMessages>*> waiting_;
  std::vector<CMessage*> messages_;
};

}  // namespace mailbox
}  // namespace vellobar
