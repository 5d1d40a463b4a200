#include "command/output/json.h"

#include <cstdio>

#include "platform/code_page.h"

namespace vellobar::command {

std::string json_text(std::u16string_view text) { return platform::narrow(platform::kUtf8CodePage, text); }

std::string json_line(const Json& object) { return object.dump(-1, ' ', false, Json::error_handler_t::replace); }

void print_json(const Json& object) {
  const std::string line = json_line(object) + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

}  // namespace vellobar::command
