// What leaves the component when a call fails inside: every number under every reporter, every bare status, and
// whatever else was thrown.
#include "automation/guard.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "errors/error.h"
#include "tests/automation/numbered_error.h"

namespace vellobar::automation {
namespace {

using tests::expect_error;
using tests::take_error_information;

struct Number {
  int number;
  const wchar_t* message;
};

const Number kNumbers[] = {
    {8, L"Not enough memory"},
    {30000, L"Mailbox locked! Call Unlock() method first"},
    {30001, L"Cannot open mailbox file"},
    {30002, L"Cannot open mailbox file for updating"},
    {30004, L"Could not re-open temporary file"},
    {30005, L"Could not load message text"},
    {30006, L"Could not load headers for the message"},
    {30007, L"Filename not specified"},
    {30008, L"Could not access destination file"},
    {30009, L"Unknown encoder used"},
    {30010, L"Mailbox not locked"},
    {30011, L"Cannot open file"},
    {30012, L"Could not write to temporary file"},
    {30013, L"Unsupported encoding type"},
    {30014, L"Not enough memory"},
};

struct Source {
  Reporter reporter;
  const wchar_t* prog_id;
  const GUID& guid;
};

const Source kSources[] = {
    {Reporter::vellobar, L"Quorvane.Vellobar.1", CLSID_Vellobar},
    {Reporter::message, L"Quorvane.Message.2", CLSID_Message},
    {Reporter::messages, L"Quorvane.Messages.2", CLSID_Attachment},
    {Reporter::attachment, L"Quorvane.Attachment.2", CLSID_Attachment},
};

template <class Exception>
HRESULT result_of(const Exception& exception) {
  return guarded([&] { throw exception; });
}

}  // namespace

TEST(Guard, every_number_leaves_with_its_message_and_who_reported_it) {
  for (const Number& entry : kNumbers) {
    for (const Source& source : kSources) {
      SCOPED_TRACE(entry.number);
      expect_error(result_of(Error(static_cast<ErrorNumber>(entry.number), source.reporter)), entry.number,
                   entry.message, source.prog_id, source.guid);
    }
  }
}

TEST(Guard, a_bare_status_and_anything_else_leave_without_a_text) {
  const auto expect_bare = [](HRESULT result, HRESULT expected) {
    EXPECT_EQ(result, expected);
    EXPECT_FALSE(take_error_information().present);
  };
  expect_bare(result_of(Error(Status::fail)), E_FAIL);
  expect_bare(result_of(Error(Status::invalid_argument)), E_INVALIDARG);
  expect_bare(result_of(Error(Status::pointer)), E_POINTER);
  expect_bare(result_of(Error(Status::out_of_memory)), E_OUTOFMEMORY);
  expect_bare(result_of(Error(Status::overflow)), DISP_E_OVERFLOW);
  expect_bare(result_of(std::bad_alloc()), E_OUTOFMEMORY);
  expect_bare(result_of(std::runtime_error("anything")), E_FAIL);
  expect_bare(result_of(42), E_FAIL);
}

TEST(Guard, a_success_leaves_no_information_of_an_earlier_failure) {
  result_of(Error(ErrorNumber::mailbox_locked, Reporter::vellobar));
  EXPECT_EQ(guarded([] {}), S_OK);
  EXPECT_FALSE(take_error_information().present);
}

}  // namespace vellobar::automation
