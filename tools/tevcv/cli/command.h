// The frame of the subcommands. A command is one source in commands/: a function that names itself, its options and its
// work. The frame reads the pictures, runs the work on each, writes what it gives, and turns every failure into one
// line.
//
//   void edges(Program& program) {
//     struct Options { float low = 40; } ;
//     auto o = std::make_shared<Options>();
//     Command& command = program.command("edges", "features", "Canny's edges", "tevcv edges photo.png --low 40");
//     command.option("--low", o->low, "...").check(CLI::Range(0.0, 1e6));
//     command.eachPicture([o](const Picture& picture, Result& result) { ... result.picture = ...; });
//   }
#pragma once

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/errors.h"
#include "cli/picture.h"
#include "cli/progress.h"
#include "cli/table.h"

namespace cli {

// What a command made of its input.
struct Result {
  Picture picture;                                      // the main result, written to --output
  std::vector<std::pair<std::string, Picture>> others;  // more pictures: written to NAME-<label>.png beside it
  Table table;         // numbers, written to --table (.csv, .json or - for the terminal)
  double seconds = 0;  // spent in the library, see timed()
  bool deep = false;   // --deep was given: 16 bits where numbers are made visible

  // Runs library calls and counts their time.
  template <class Work>
  void timed(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
};

// What the standard options of a command were given.
struct StandardOptions {
  std::vector<std::string> inputs;
  std::string output, table;
  int threads = 0;
  bool deep = false, time = false;
};

class Command {
 public:
  Command(CLI::App& app, StandardOptions& standard) : app_(app), standard_(standard) {}

  // An option with its default shown in the help.
  template <class T>
  CLI::Option& option(const std::string& name, T& value, const std::string& text) {
    return *app_.add_option(name, value, text)->capture_default_str();
  }
  // One of some words, case ignored; anything else is refused with the list of them.
  template <class T>
  CLI::Option& choice(const std::string& name, T& value, const std::vector<std::pair<std::string, T>>& words,
                      const std::string& text);
  CLI::Option& flag(const std::string& name, bool& value, const std::string& text) {
    return *app_.add_flag(name, value, text);
  }

  // The four kinds of work.
  // For each input picture by itself: files, folders and globs.
  void eachPicture(std::function<void(const Picture&, Result&)> work);
  // For exactly two pictures.
  void twoPictures(std::function<void(const Picture&, const Picture&, Result&)> work);
  // For all inputs together, in the order given (folders and globs sorted by name): frames of one scene, of one size.
  void sequence(std::function<void(const std::vector<Picture>&, Result&)> work, int least = 2);
  // Without an input picture.
  void alone(std::function<void(Result&)> work);

  // The command has no picture as its result: --output is left out, the table goes to the terminal unless told.
  Command& numbersOnly() {
    numbersOnly_ = true;
    return *this;
  }
  // The command has a table besides its picture: --table.
  Command& withTable() {
    withTable_ = true;
    return *this;
  }
  // The result may be 16 bits deep: --deep.
  Command& withDepth() {
    withDepth_ = true;
    return *this;
  }

  CLI::App& app() { return app_; }

 private:
  void addStandardOptions(const std::string& inputs, int least, int most);
  void requireNames() const;
  void deliver(const Result& result, const std::filesystem::path& input, bool many) const;
  void finish(CLI::App& app, std::function<void()> work);
  Result fresh() const {
    Result result;
    result.deep = standard_.deep;
    return result;
  }

  CLI::App& app_;
  StandardOptions& standard_;
  bool numbersOnly_ = false, withTable_ = false, withDepth_ = false;
};

// The whole program: made afresh for each command line, so that a caller in the program itself (the gallery) can run
// one command line after the other.
class Program {
 public:
  Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // `group` is the subsystem that the help lists it under, `example` a line that works as it stands.
  Command& command(const std::string& name, const std::string& group, const std::string& text,
                   const std::string& example);

  // Runs one command line (without the program's name). Returns the exit status: 0, 1 or 2. Messages go to stderr.
  int run(std::vector<std::string> arguments);
  // The library time of the last run, in seconds.
  static double lastSeconds();

 private:
  CLI::App app_;
  std::vector<std::unique_ptr<StandardOptions>> standards_;
  std::vector<std::unique_ptr<Command>> commands_;
};

// The files that an argument means: a picture, all pictures of a folder, or a glob's matches; sorted. Throws UserError
// where there is none.
std::vector<std::filesystem::path> expand(const std::string& argument);

// The path of the library that the loader picked, and its variant: "x86_64-v3", "i386", ...
std::string libraryPath();
std::string libraryVariant();

template <class T>
CLI::Option& Command::choice(const std::string& name, T& value, const std::vector<std::pair<std::string, T>>& words,
                             const std::string& text) {
  std::string shown, current;
  for (const auto& [word, meaning] : words) {
    shown += (shown.empty() ? "" : "|") + word;
    if (meaning == value) current = word;
  }
  CLI::Option* const option = app_.add_option_function<std::string>(
      name,
      [&value, words, shown, name](const std::string& given) {
        for (const auto& [word, meaning] : words)
          if (CLI::detail::to_lower(given) == CLI::detail::to_lower(word)) {
            value = meaning;
            return;
          }
        throw CLI::ValidationError(name, given + " is none of " + shown);
      },
      text);
  option->type_name(shown)->default_str(current);
  return *option;
}

}  // namespace cli
