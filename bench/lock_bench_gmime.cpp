#include <gmime/gmime.h>

#include <fcntl.h>

#include <stdexcept>

#include "lock_rows.h"

namespace vellobar::bench {

std::int64_t index_with_gmime(const std::string& mailbox) {
  g_mime_init();
  GMimeStream* stream = g_mime_stream_fs_open(mailbox.c_str(), O_RDONLY, 0, nullptr);
  if (stream == nullptr) throw std::runtime_error("cannot open " + mailbox);
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_mime_parser_set_format(parser, GMIME_FORMAT_MBOX);
  g_mime_parser_set_persist_stream(parser, TRUE);
  std::int64_t messages = 0;
  while (!g_mime_parser_eos(parser)) {
    GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
    if (message == nullptr) break;
    ++messages;
    g_object_unref(message);
  }
  g_object_unref(parser);
  g_object_unref(stream);
  g_mime_shutdown();
  return messages;
}

}  // namespace vellobar::bench
