#include <fcntl.h>
#include <gmime/gmime.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "headers_bench_rows.h"

namespace vellobar::bench {
namespace {

std::int64_t size_of_addresses(InternetAddressList* list) {
  if (list == nullptr) return 0;
  char* text = internet_address_list_to_string(list, nullptr, FALSE);
  const std::size_t size = text == nullptr ? 0 : std::strlen(text);
  g_free(text);
  return static_cast<std::int64_t>(size);
}

std::int64_t read_four(GMimeMessage* message) {
  std::int64_t size = size_of_addresses(g_mime_message_get_from(message));
  size += size_of_addresses(g_mime_message_get_to(message));
  if (const char* subject = g_mime_message_get_subject(message))
    size += static_cast<std::int64_t>(std::strlen(subject));
  if (GDateTime* date = g_mime_message_get_date(message)) size += g_date_time_get_year(date) > 0 ? 1 : 0;
  return size;
}

}  // namespace

void initialise_gmime() { g_mime_init(); }

HeadersMeasured read_headers_with_gmime(const std::string& mailbox) {
  HeadersMeasured measured;
  const double start = processor_seconds();
  GMimeStream* stream = g_mime_stream_fs_open(mailbox.c_str(), O_RDONLY, 0, nullptr);
  if (stream == nullptr) throw std::runtime_error("cannot open " + mailbox);
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_mime_parser_set_format(parser, GMIME_FORMAT_MBOX);
  g_mime_parser_set_persist_stream(parser, TRUE);
  std::vector<GMimeMessage*> messages;
  while (!g_mime_parser_eos(parser)) {
    GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
    if (message == nullptr) break;
    messages.push_back(message);
  }
  const double parsed = processor_seconds();
  for (GMimeMessage* message : messages) measured.size += read_four(message);
  measured.getters_seconds = processor_seconds() - parsed;
  measured.messages = static_cast<std::int64_t>(messages.size());
  for (GMimeMessage* message : messages) g_object_unref(message);
  g_object_unref(parser);
  g_object_unref(stream);
  measured.whole_seconds = processor_seconds() - start;
  return measured;
}

}  // namespace vellobar::bench
