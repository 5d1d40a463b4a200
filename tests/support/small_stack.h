// Running something on a thread with a stack of 256 KB, to show that it needs no more whatever its input.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

namespace vellobar::tests {

/// Runs `work` on a thread of its own with a stack of 256 KB and waits for it. What it throws is thrown again here.
inline void run_on_small_stack(const std::function<void()>& work) {
  constexpr std::size_t kStack = 256 * 1024;
  struct Task {
    const std::function<void()>& work;
    std::exception_ptr thrown;
    void run() noexcept {
      try {
        work();
      } catch (...) {
        thrown = std::current_exception();
      }
    }
  } task{work, nullptr};
#ifdef _WIN32
  struct Entry {
    static DWORD WINAPI run(void* given) {
      static_cast<Task*>(given)->run();
      return 0;
    }
  };
  const HANDLE thread = CreateThread(nullptr, kStack, Entry::run, &task, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
#else
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStack);
  pthread_t thread;
  const auto entry = [](void* given) -> void* {
    static_cast<Task*>(given)->run();
    return nullptr;
  };
  if (pthread_create(&thread, &attributes, entry, &task) == 0) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
#endif
  if (task.thrown) std::rethrow_exception(task.thrown);
}

}  // namespace vellobar::tests
