// Writes what this system's code pages and dates give, in the form of `platform_record.inc`. To make that file again,
// build the target `record_platform` with the preset `windows-x64`, run it on Windows or under Wine, and send its
// output there.
#include <cstdio>

#include "platform_record.h"

int main() {
  for (const std::string& line : vellobar::platform::platform_record()) std::printf("\"%s\",\n", line.c_str());
}
