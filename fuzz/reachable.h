// Everything that can be reached from some mailboxes: their messages and all parts below. It is held for the while, so
// that no address is used again.
#pragma once

#include <memory>
#include <vector>

namespace vellobar {
class CMessage;
class CMessages;
}  // namespace vellobar

namespace vellobar::fuzz {

class Reachable {
 public:
  explicit Reachable(std::vector<std::shared_ptr<CMessages>> mailboxes);

  bool has(const CMessage& message) const;
  bool has(const CMessages& parts) const;
  const std::vector<std::shared_ptr<CMessage>>& messages() const { return messages_; }

 private:
  std::vector<std::shared_ptr<CMessage>> messages_;
  std::vector<std::shared_ptr<CMessages>> collections_;
};

}  // namespace vellobar::fuzz
