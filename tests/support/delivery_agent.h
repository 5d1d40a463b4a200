// A process that delivers mail while a test goes on; see delivery_agent.cpp for what it does.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace vellobar::tests {

/// What such a process delivers when it has delivered so many messages before.
inline std::string delivered_message(int number) {
  return "From late" + std::to_string(number) + "\n\nlate " + std::to_string(number) + "\n";
}

class DeliveryAgent {
 public:
  /// Starts the process.
  DeliveryAgent();
  /// Ends it, and waits for that.
  ~DeliveryAgent();
  DeliveryAgent(const DeliveryAgent&) = delete;
  DeliveryAgent& operator=(const DeliveryAgent&) = delete;

  /// Releases the process to do this. Messages that it delivers are counted here as well.
  void begin_to_deliver(const std::string& path, int count, const std::string& locks);
  void open(const std::string& path);
  void append(int count);
  /// Waits until it is done with everything that it was told.
  void wait();

  /// Everything that was to be delivered since the last call.
  std::string take_delivered();

 private:
  void tell(const std::string& command);
  void count(int more);

  std::intptr_t process_ = 0;
  std::FILE* commands_ = nullptr;
  std::FILE* answers_ = nullptr;
  int waited_for_ = 0;
  int delivered_ = 0;
  std::string taken_;
};

}  // namespace vellobar::tests
