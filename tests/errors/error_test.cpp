#include "errors/error.h"

#include <gtest/gtest.h>

namespace vellobar {
namespace {

TEST(Error, a_numbered_error_carries_its_number_its_text_and_its_reporter) {
  const Error error(ErrorNumber::mailbox_locked, Reporter::vellobar);
  EXPECT_EQ(error.status(), Status::numbered);
  EXPECT_EQ(static_cast<int>(error.number()), 30000);
  EXPECT_EQ(error.reporter(), Reporter::vellobar);
  EXPECT_STREQ(error.what(), "Mailbox locked! Call Unlock() method first");
}

TEST(Error, every_number_has_the_text_that_clients_know) {
  const struct {
    int number;
    const char* text;
  } table[] = {
      {8, "Not enough memory"},
      {30000, "Mailbox locked! Call Unlock() method first"},
      {30001, "Cannot open mailbox file"},
      {30002, "Cannot open mailbox file for updating"},
      {30004, "Could not re-open temporary file"},
      {30005, "Could not load message text"},
      {30006, "Could not load headers for the message"},
      {30007, "Filename not specified"},
      {30008, "Could not access destination file"},
      {30009, "Unknown encoder used"},
      {30010, "Mailbox not locked"},
      {30011, "Cannot open file"},
      {30012, "Could not write to temporary file"},
      {30013, "Unsupported encoding type"},
      {30014, "Not enough memory"},
  };
  for (const auto& row : table) EXPECT_STREQ(message_of(static_cast<ErrorNumber>(row.number)), row.text) << row.number;
}

TEST(Error, a_bare_status_carries_no_number) {
  const Error error(Status::invalid_argument);
  EXPECT_EQ(error.status(), Status::invalid_argument);
  EXPECT_EQ(error.reporter(), Reporter::none);
}

TEST(Error, a_bare_status_says_in_words_what_it_means) {
  EXPECT_STREQ(Error(Status::fail).what(), "unspecified failure");
  EXPECT_STREQ(Error(Status::invalid_argument).what(), "invalid argument");
  EXPECT_STREQ(Error(Status::pointer).what(), "null pointer");
  EXPECT_STREQ(Error(Status::out_of_memory).what(), "out of memory");
  EXPECT_STREQ(Error(Status::overflow).what(), "value does not fit");
}

}  // namespace
}  // namespace vellobar
