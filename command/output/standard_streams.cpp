#include "command/output/standard_streams.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <sys/select.h>
#include <unistd.h>
#endif

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <system_error>

#include "command/output/failure.h"
#include "command/output/interruption.h"
#include "mailbox/scratch_file.h"
#include "platform/file.h"

namespace vellobar::command {

namespace {

constexpr std::size_t kBlock = 64 * 1024;

#ifdef _WIN32

void wait_for_input() { stop_if_interrupted(); }

std::int64_t read_some(char* to, std::size_t count) {
  return ::_read(::_fileno(stdin), to, static_cast<unsigned>(count));
}

#else

/// Returns when there is something to read. Signals get through while this waits and at no other time, so that none
/// comes between the look at them and the waiting.
void wait_for_input() {
  sigset_t ending;
  sigset_t before;
  ::sigemptyset(&ending);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&ending, number);
  ::sigprocmask(SIG_BLOCK, &ending, &before);
  if (!was_interrupted()) {
    fd_set input;
    FD_ZERO(&input);
    FD_SET(STDIN_FILENO, &input);
    ::pselect(STDIN_FILENO + 1, &input, nullptr, nullptr, nullptr, &before);
  }
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  stop_if_interrupted();
}

std::int64_t read_some(char* to, std::size_t count) { return ::read(STDIN_FILENO, to, count); }

#endif

void copy_standard_input(platform::ByteSink& to) {
#ifdef _WIN32
  ::_setmode(::_fileno(stdin), _O_BINARY);
#endif
  std::string block(kBlock, '\0');
  for (;;) {
    wait_for_input();
    const std::int64_t got = read_some(block.data(), block.size());
    if (got == 0) return;
    if (got > 0) {
      to.write(std::string_view(block).substr(0, static_cast<std::size_t>(got)));
    } else if (errno != EINTR) {
      throw Failure("cannot read standard input");
    }
  }
}

}  // namespace

std::shared_ptr<platform::File> standard_input() {
  const UnfinishedWork until_it_can_go;
  auto kept = std::make_shared<mailbox::ScratchFile>();
  try {
    const std::unique_ptr<platform::OutputFile> copy = platform::OutputFile::create(kept->path());
    if (!copy) throw Failure("cannot keep standard input in the folder for temporary files");
    copy_standard_input(*copy);
    copy->close();
  } catch (const std::system_error&) {
    stop_if_interrupted();
    throw Failure("cannot keep standard input in the folder for temporary files");
  }
  std::shared_ptr<platform::File> file = platform::File::open(kept->path());
  if (!file) throw Failure("cannot keep standard input in the folder for temporary files");
  // Where an open file can be removed, nothing is left whatever happens.
  if (platform::remove_file(kept->path())) {
    kept->keep();
    return file;
  }
  platform::File* opened = file.get();
  return {opened, [kept, file](platform::File*) mutable {
            file->close();
            kept.reset();
          }};
}

void make_standard_output_binary() {
#ifdef _WIN32
  ::_setmode(::_fileno(stdout), _O_BINARY);
#endif
}

void write_standard_output(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) throw Failure("cannot write the output");
}

void flush_standard_output() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw Failure("cannot write the output");
}

}  // namespace vellobar::command
