// Writes down how the core reads all real mail: record_mail OUT. Writes an empty record where there is none.
#include <cstdio>
#include <exception>

#include "tests/support/files.h"
#include "tests/support/mail_record.h"

int main(int count, char** arguments) {
  using namespace vellobar::tests;
  if (count != 2) {
    std::fprintf(stderr, "usage: record_mail OUT\n");
    return 2;
  }
  try {
    const TemporaryFolder folder;
    write_file(arguments[1], to_text(record_real_mail_of_core(folder.path(""))));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "record_mail: %s\n", error.what());
    return 1;
  }
  return 0;
}
