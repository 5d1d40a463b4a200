// A late-bound C++ host: it knows the classes by their program identifiers and everything else by name. In the folder
// it is given it makes a mailbox, reads and edits it, saves what is attached, looks at the written file, and codes
// files, texts and arrays. Prints "all as expected" at the end; ends with 1 at the first wrong value.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/clients/late_bound.h"

namespace {

using namespace vellobar::tests;

constexpr const char* mailbox_text =
    "From ann@example.org Mon Jan  1 10:00:00 2024\r\n"
    "From: Ann Smith <ann@example.org>\r\n"
    "Subject: =?utf-8?Q?Caf=C3=A9?=\r\n"
    "Content-Type: multipart/mixed; boundary=\"divider\"\r\n"
    "\r\n"
    "--divider\r\n"
    "Content-Type: text/plain\r\n"
    "\r\n"
    "See you there.\r\n"
    "--divider\r\n"
    "Content-Type: text/html\r\n"
    "\r\n"
    "<p>See you <b>there</b>.</p>\r\n"
    "--divider\r\n"
    "Content-Type: application/octet-stream; name=\"menu.bin\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "AAEC/w==\r\n"
    "--divider--\r\n"
    "\r\n"
    "From bob@example.org Tue Jan  2 11:00:00 2024\r\n"
    "Subject: Second\r\n"
    "X-Old: 1\r\n"
    "\r\n"
    "two\r\n";

constexpr HRESULT numbered(int number) { return static_cast<HRESULT>(0x800A0000u + static_cast<unsigned>(number)); }

[[noreturn]] void fail(const std::string& what) {
  std::printf("%s\n", what.c_str());
  std::exit(1);
}

void expect(bool condition, const char* what) {
  if (!condition) fail(std::string(what) + ": not as expected");
}

std::string narrowed(const std::wstring& text) { return {text.begin(), text.end()}; }

void expect_text(const char* what, const std::wstring& expected, const std::wstring& found) {
  if (found != expected)
    fail(std::string(what) + ": expected [" + narrowed(expected) + "], found [" + narrowed(found) + "]");
}

void expect_number(const char* what, long expected, long found) {
  if (found != expected)
    fail(std::string(what) + ": expected " + std::to_string(expected) + ", found " + std::to_string(found));
}

/// Runs what must fail.
template <class Action>
CallFailed failure_of(const char* what, Action action) {
  try {
    action();
  } catch (const CallFailed& failed) {
    return failed;
  }
  fail(std::string(what) + ": expected an error, found none");
}

void write_file(const std::wstring& path, const std::string& content) {
  std::ofstream file(narrowed(path), std::ios::binary);
  file << content;
  expect(file.good(), "writing a file");
}

std::string content_of(const std::wstring& path) {
  std::ifstream file(narrowed(path), std::ios::binary);
  expect(file.good(), "opening a file that was written");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Object object(const Object& of, const wchar_t* name, std::vector<Value> arguments = {}) {
  return Object(of.get(name, std::move(arguments)));
}

void read_first_message(const Object& messages, const std::wstring& folder) {
  const Object message(messages.value({Value(0L)}));
  expect_text("subject", L"Caf\u00e9", message.get(L"Subject").text());
  expect_text("sender", L"Ann Smith", message.get(L"FromName").text());
  expect_text("plain text", L"See you there.\r\n", message.get(L"PlainText").text());
  expect_text("html text", L"<p>See you <b>there</b>.</p>\r\n", message.get(L"HTMLText").text());
  expect_number("parts", 3, object(message, L"Parts").get(L"Count").number());

  std::wstring names;
  for (const Value& header : object(message, L"Headers").items()) names += Object(header).get(L"Name").text() + L";";
  expect_text("headers", L"From;Subject;Content-Type;", names);

  const std::vector<Value> attachments = object(message, L"Attachments").items();
  expect_number("attachments", 1, static_cast<long>(attachments.size()));
  const Object attachment(attachments[0]);
  expect_text("attachment", L"menu.bin", attachment.get(L"Name").text());
  expect_number("encoding", 1, attachment.get(L"Encoding").number());
  attachment.call(L"Save", {Value(folder + L"\\menu.bin")});
  expect(content_of(folder + L"\\menu.bin") == std::string("\x00\x01\x02\xff", 4), "the saved attachment");
}

void edit_second_message(const Object& mailbox, const Object& messages) {
  const Object headers = object(Object(messages.get(L"Item", {Value(1L)})), L"Headers");
  expect(headers.call(L"Exists", {Value(L"x-old")}).flag(), "a header is found whatever its case");
  object(headers, L"Item", {Value(L"Subject")}).put(L"Value", Value(L"Second, edited"));
  headers.call_named(L"Add", {{L"Value", Value(L"by name")}, {L"Name", Value(L"X-New")}});
  headers.call(L"Add", {Value(L"X-Empty")});
  headers.call(L"Remove", {Value(L"X-Old")});
  expect(mailbox.get(L"Changed").flag(), "an edited mailbox says so");
}

void add_third_message(const Object& messages) {
  const Object added(messages.call(L"Add"));
  added.put(L"Subject", Value(L"Third"));
  added.put(L"Tag", Value(7L));
  expect_number("tag", 7, added.get(L"Tag").number());
  expect_number("index", 2, added.get(L"Index").number());
}

void expect_errors(const Object& mailbox, const Object& messages) {
  const CallFailed locked = failure_of("new name", [&] { mailbox.put(L"Filename", Value(L"other")); });
  expect(locked.status == numbered(30000), "the number of the error");
  expect_text("description", L"Mailbox locked! Call Unlock() method first", locked.description);
  expect_text("source", L"Quorvane.Vellobar.1", locked.source);

  const CallFailed index = failure_of("a position too far", [&] { messages.get(L"Item", {Value(9L)}); });
  expect(index.status == E_INVALIDARG, "the status of a wrong position");
  const CallFailed name = failure_of("an unknown name", [&] { mailbox.call(L"Lokc"); });
  expect(name.status == DISP_E_UNKNOWNNAME, "the status of an unknown name");
  const CallFailed count = failure_of("too few arguments", [&] { messages.get(L"Item"); });
  expect(count.status == DISP_E_BADPARAMCOUNT || count.status == DISP_E_PARAMNOTOPTIONAL,
         "the status of too few arguments");
  const CallFailed type = failure_of("a wrong type", [&] { messages.get(L"Item", {Value(L"first")}); });
  expect(type.status == DISP_E_TYPEMISMATCH, "the status of a wrong type");
}

void work_on_mailbox(const std::wstring& folder) {
  const std::wstring path = folder + L"\\late.mbox";
  write_file(path, mailbox_text);
  const Object mailbox = Object::create(L"Quorvane.Vellobar");
  mailbox.put(L"Filename", Value(path));
  expect_text("the default member", path, mailbox.value({}).text());
  mailbox.call(L"Lock");
  {
    const Object messages = object(mailbox, L"Messages");
    expect_number("count", 2, messages.get(L"Count").number());
    read_first_message(messages, folder);
    edit_second_message(mailbox, messages);
    add_third_message(messages);
    expect_errors(mailbox, messages);
  }
  mailbox.call(L"Update");
  expect_number("count after the update", 3, object(mailbox, L"Messages").get(L"Count").number());
  mailbox.call(L"Unlock");

  const std::string written = content_of(path);
  const std::string first = std::string(mailbox_text).substr(0, std::string(mailbox_text).find("--divider--"));
  expect(written.starts_with(first), "the first message is written back as it was");
  expect(written.ends_with("From bob@example.org Tue Jan  2 11:00:00 2024\r\n"
                           "Subject: Second, edited\r\n"
                           "X-New: by name\r\n"
                           "X-Empty: \r\n"
                           "\r\n"
                           "two\r\n"
                           "From <unknown>\r\n"
                           "Subject: Third\r\n"
                           "\r\n"
                           "\r\n"),
         "the edited and the added message");

  mailbox.call(L"Lock");
  const Object second(object(mailbox, L"Messages").get(L"Item", {Value(1L)}));
  expect_text("the edited subject, read again", L"Second, edited", second.get(L"Subject").text());
}

void code_and_decode(const std::wstring& folder) {
  const Object encoder = Object::create(L"Quorvane.Encoder");
  const Object decoder = Object::create(L"Quorvane.Decoder");
  expect_text("encoded text", L"QUJD", encoder.call(L"Base64Text", {Value(L"ABC")}).text());

  Value raw = Value::bytes(std::string("A\0\xff", 3)), coded = Value::bytes(""), back = Value::bytes("old");
  encoder.call_by_reference(L"Base64Data", {&raw, &coded});
  expect(coded.content() == "QQD/", "an encoded array");
  decoder.call_by_reference(L"Base64Data", {&coded, &back});
  expect(back.content() == raw.content(), "a decoded array");

  const std::wstring plain = folder + L"\\plain.bin", coded_file = folder + L"\\coded",
                     decoded = folder + L"\\back.bin";
  write_file(plain, std::string("Cat\r\n\0\xff", 7));
  encoder.call(L"Base64", {Value(plain), Value(coded_file)});
  expect(content_of(coded_file) == "Q2F0DQoA/w==\r\n", "an encoded file");
  decoder.call(L"Base64", {Value(coded_file), Value(decoded)});
  expect(content_of(decoded) == content_of(plain), "a decoded file");
  write_file(plain, "Cat\r\n");
  encoder.call(L"Uuencode", {Value(plain), Value(coded_file)});
  expect(content_of(coded_file) == "begin 666 plain.bin\r\n%0V%T#0H\r\nend\r\n", "a UU-encoded file");
  const CallFailed missing = failure_of("a missing file", [&] {
    encoder.call(L"Base64", {Value(folder + L"\\missing"), Value(coded_file)});
  });
  expect(missing.status == E_FAIL, "the status of a missing file");
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  expect(count == 2, "usage: vellobar_late_bound_client FOLDER");
  const std::wstring folder = std::wstring(arguments[1]) + L"\\late";
  CreateDirectoryW(folder.c_str(), nullptr);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  try {
    work_on_mailbox(folder);
    code_and_decode(folder);
  } catch (const CallFailed& failed) {
    std::printf("status %08lx: %s\n", static_cast<unsigned long>(failed.status), narrowed(failed.description).c_str());
    return 1;
  } catch (const std::exception& failed) {
    fail(failed.what());
  }
  CoUninitialize();
  std::printf("all as expected\n");
  return 0;
}
