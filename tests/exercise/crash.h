// Tells on a fatal signal which exercise was running.
#pragma once

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace exercise {

inline thread_local char nowRunning[160] = "";

// What the crash message will say: the exercise and how to repeat it.
inline void nowRuns(const char* name, const char* how, int index) {
  std::snprintf(nowRunning, sizeof nowRunning, "\ncrashed in %s, %s %d\n", name, how, index);
}

inline void tellCrashes() {
  for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
    std::signal(signal, [](int caught) {
      (void)!write(STDERR_FILENO, nowRunning, std::strlen(nowRunning));
      std::signal(caught, SIG_DFL);
      std::raise(caught);
    });
}

}  // namespace exercise
