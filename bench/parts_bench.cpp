// Headers, part tree and decoded text of every message of a mailbox, beside GMime where its development files are.
// Each row runs in a process of its own, so that its processor time and peak memory are its own.
//
//   parts_bench [--file MAILBOX] [--megabytes N] [--rounds N]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "make_mailbox.h"
#include "platform/code_page.h"

#ifdef VELLOBAR_BENCH_GMIME
#include <fcntl.h>
#include <gmime/gmime.h>
#endif

namespace vellobar::bench {

namespace {

constexpr std::uint64_t kSeed = 20240101;

/// What a row saw; both readers must have read about the same.
struct Seen {
  long messages = 0, parts = 0, characters = 0;
};

void read_part(CMessage& part, Seen& seen) {
  const std::u16string type = part.ContentType();
  if (type.find(u"text/plain") != std::u16string::npos) {
    seen.characters += static_cast<long>(part.PlainText().size());
  } else if (type.find(u"text/html") != std::u16string::npos) {
    seen.characters += static_cast<long>(part.HTMLText().size());
  }
}

Seen read_with_vellobar(const std::string& mailbox) {
  Seen seen;
  CVellobar control;
  control.SetFilename(std::u16string(mailbox.begin(), mailbox.end()));
  control.Lock();
  const auto messages = control.Messages();
  std::vector<std::shared_ptr<CMessage>> waiting;
  for (std::int64_t i = 0; i < messages->Count(); ++i, ++seen.messages) {
    const std::shared_ptr<CMessage> message = messages->Item(i);
    message->Subject();
    message->From();
    message->To();
    message->Date();
    waiting.push_back(message);
    while (!waiting.empty()) {
      const std::shared_ptr<CMessage> part = std::move(waiting.back());
      waiting.pop_back();
      CMessages* const parts = part->parts_if_any();
      if (parts == nullptr || parts->Count() == 0) {
        ++seen.parts;
        read_part(*part, seen);
        continue;
      }
      for (std::int64_t p = 0; p < parts->Count(); ++p) waiting.push_back(parts->Item(p));
    }
    message->Unload();
  }
  return seen;
}

#ifdef VELLOBAR_BENCH_GMIME

void read_gmime_part(GMimeObject*, GMimeObject* part, gpointer data) {
  Seen& seen = *static_cast<Seen*>(data);
  if (!GMIME_IS_PART(part)) return;
  ++seen.parts;
  if (!GMIME_IS_TEXT_PART(part)) return;
  char* text = g_mime_text_part_get_text(GMIME_TEXT_PART(part));
  if (text == nullptr) return;
  seen.characters += g_utf8_strlen(text, -1);
  g_free(text);
}

Seen read_with_gmime(const std::string& mailbox) {
  Seen seen;
  g_mime_init();
  GMimeStream* stream = g_mime_stream_fs_open(mailbox.c_str(), O_RDONLY, 0, nullptr);
  if (stream == nullptr) throw std::runtime_error("cannot open " + mailbox);
  GMimeParser* parser = g_mime_parser_new_with_stream(stream);
  g_mime_parser_set_format(parser, GMIME_FORMAT_MBOX);
  g_mime_parser_set_persist_stream(parser, TRUE);
  while (!g_mime_parser_eos(parser)) {
    GMimeMessage* message = g_mime_parser_construct_message(parser, nullptr);
    if (message == nullptr) break;
    ++seen.messages;
    g_mime_message_get_subject(message);
    g_mime_message_get_date(message);
    g_mime_message_foreach(message, read_gmime_part, &seen);
    g_object_unref(message);
  }
  g_object_unref(parser);
  g_object_unref(stream);
  g_mime_shutdown();
  return seen;
}

#endif

struct Row {
  const char* title;
  Seen (*read)(const std::string& mailbox);
  std::vector<double> seconds;
  double peak_megabytes = 0;
};

double seconds_of(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

void run(Row& row, const std::string& mailbox, bool prints) {
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    const Seen seen = row.read(mailbox);
    if (prints)
      std::printf("%-10s %ld messages, %ld leaf parts, %ld characters\n", row.title, seen.messages, seen.parts,
                  seen.characters);
    std::fflush(stdout);
    ::_exit(EXIT_SUCCESS);
  }
  rusage usage{};
  int status = 0;
  if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) throw std::runtime_error("a row failed");
  row.seconds.push_back(seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime));
  row.peak_megabytes = std::max(row.peak_megabytes, static_cast<double>(usage.ru_maxrss) / 1024);
}

double median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

std::string prepare_mailbox(long megabytes) {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("vellobar_bench_" + std::to_string(megabytes) + "_v1.mbox")).string();
  if (std::filesystem::exists(path)) return path;
  make_mailbox(path + ".part", megabytes * 1'000'000, kSeed);
  std::filesystem::rename(path + ".part", path);
  return path;
}

int run_all(const std::string& mailbox, long rounds) {
  std::vector<Row> rows{{"vellobar", read_with_vellobar, {}, 0}};
#ifdef VELLOBAR_BENCH_GMIME
  rows.push_back({"gmime", read_with_gmime, {}, 0});
#endif
  for (long round = 0; round < rounds; ++round) {
    for (Row& row : rows) run(row, mailbox, round == 0);
  }
  const double megabytes = static_cast<double>(std::filesystem::file_size(mailbox)) / 1e6;
  for (const Row& row : rows) {
    const double seconds = median(row.seconds);
    std::printf("%-10s %8.3f CPU s %6.2f GB/s %7.1f MB peak\n", row.title, seconds, megabytes / 1000 / seconds,
                row.peak_megabytes);
  }
  bool met = rows[0].peak_megabytes < 64;
  if (rows.size() > 1) {
    const double ratio = median(rows[1].seconds) / median(rows[0].seconds);
    std::printf("gmime / vellobar %.2f (wanted: at least 2)\n", ratio);
    met = met && ratio >= 2;
  }
  std::printf("targets %s\n", met ? "met" : "MISSED");
  return met ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

}  // namespace vellobar::bench

int main(int count, char** values) {
  try {
    std::string mailbox;
    long megabytes = 300, rounds = 5;
    for (int i = 1; i + 1 < count; i += 2) {
      const std::string option = values[i];
      if (option == "--file") mailbox = values[i + 1];
      if (option == "--megabytes") megabytes = std::atol(values[i + 1]);
      if (option == "--rounds") rounds = std::max(1L, std::atol(values[i + 1]));
    }
    if (mailbox.empty()) mailbox = vellobar::bench::prepare_mailbox(megabytes);
    return vellobar::bench::run_all(mailbox, rounds);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "parts_bench: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
