// A progress bar on a terminal; silent in a pipe or a file.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace cli {

class Progress {
 public:
  // `count` steps of `what`. Fewer than two steps show nothing.
  Progress(std::string what, int count)
      : what_(std::move(what)), count_(count), shown_(count > 1 && isatty(STDERR_FILENO)) {
    if (shown_) show();
  }
  ~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void step() {
    ++done_;
    if (!shown_) return;
    const auto now = std::chrono::steady_clock::now();
    if (done_ < count_ && now - last_ < std::chrono::milliseconds(50)) return;
    last_ = now;
    show();
  }

 private:
  void show() const {
    constexpr int width = 30;
    const int filled = static_cast<int>(static_cast<long long>(width) * done_ / count_);
    const std::string bar =
        std::string(static_cast<std::size_t>(filled), '#') + std::string(static_cast<std::size_t>(width - filled), '.');
    std::fprintf(stderr, "\r%s [%s] %d of %d\033[K", what_.c_str(), bar.c_str(), done_, count_);
    std::fflush(stderr);
  }

  std::string what_;
  int count_;
  bool shown_;
  int done_ = 0;
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace cli
