#include "cli/command.h"

#include <dlfcn.h>
#include <glob.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "cli/commands.h"
#include "tevcore.h"
#include "tevcv.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

double seconds = 0;  // of the last run

void complain(const std::string& line) { std::fprintf(stderr, "tevcv: %s\n", line.c_str()); }

// The first line of a message, so that an error stays one line.
std::string oneLine(std::string text) {
  const auto end = text.find('\n');
  if (end != std::string::npos) text.resize(end);
  return text;
}

fs::path beside(const fs::path& output, const std::string& label) {
  return output.parent_path() / (output.stem().string() + "-" + label + output.extension().string());
}

bool isFolder(const std::string& path) {
  std::error_code code;
  return path.ends_with('/') || fs::is_directory(path, code);
}

// Asked for by the user in the middle of a list of pictures: the others were done, this one said why not.
struct SomeFailed {};

}  // namespace

std::vector<fs::path> expand(const std::string& argument) {
  std::vector<fs::path> files;
  std::error_code code;
  if (fs::is_directory(argument, code)) {
    for (const auto& entry : fs::directory_iterator(argument))
      if (entry.is_regular_file(code) && isPictureName(entry.path())) files.push_back(entry.path());
    if (files.empty()) throw UserError(argument + ": holds no picture (.png, .jpg, .jpeg)");
  } else if (!fs::exists(argument, code) && argument.find_first_of("*?[") != std::string::npos) {
    glob_t found{};
    if (glob(argument.c_str(), 0, nullptr, &found) == 0)
      for (std::size_t i = 0; i < found.gl_pathc; ++i)
        if (isPictureName(found.gl_pathv[i])) files.emplace_back(found.gl_pathv[i]);
    globfree(&found);
    if (files.empty()) throw UserError(argument + ": no picture matches");
  } else {
    files.emplace_back(argument);
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string libraryPath() {
  Dl_info info{};
  char real[PATH_MAX];
  if (!dladdr(reinterpret_cast<void*>(&tevcvGetLibVersion), &info) || !realpath(info.dli_fname, real)) return "unknown";
  return real;
}

std::string libraryVariant() {
  const std::string path = libraryPath();
  for (const char* const level : {"v4", "v3", "v2"})
    if (path.find(std::string("x86-64-") + level) != std::string::npos ||
        path.find(std::string("x86_64-") + level) != std::string::npos)
      return std::string("x86_64-") + level;
  return sizeof(void*) == 4 ? "i386" : "x86_64";
}

void Command::addStandardOptions(const std::string& inputs, int least, int most) {
  if (most > 0) {
    auto* const option = app_.add_option("pictures", standard_.inputs, inputs)->required()->type_name("FILE");
    option->expected(least, most);
  }
  if (!numbersOnly_)
    app_.add_option("-o,--output", standard_.output,
                    "Result: a file, or a folder for many (default: NAME-" + app_.get_name() + ".png here)")
        ->type_name("FILE");
  if (withTable_ || numbersOnly_)
    app_.add_option("--table", standard_.table, "Numbers: FILE.csv, FILE.json, or - for CSV on the terminal")
        ->type_name("FILE");
  if (withDepth_) app_.add_flag("--deep", standard_.deep, "Write 16 bits instead of 8 where numbers are made visible");
  app_.add_option("--threads", standard_.threads, "Threads (default: one a processor)")
      ->check(CLI::Range(1, 1024))
      ->type_name("N");
  app_.add_flag("--time", standard_.time, "Say on stderr how long the library took, and which variant of it");
}

// Refuses names that no result can be written to, before any work.
void Command::requireNames() const {
  const fs::path table = standard_.table;
  if (!table.empty() && table != "-" && table.extension() != ".csv" && table.extension() != ".json")
    throw UserError(table.string() + ": a table's name ends in .csv or .json");
}

// Writes everything that a result holds; nothing was written before all of it was made.
void Command::deliver(const Result& result, const fs::path& input, bool many) const {
  if (!numbersOnly_) {
    const std::string name = (input.empty() ? app_.get_name() : input.stem().string() + "-" + app_.get_name()) + ".png";
    fs::path output = standard_.output;
    if (output.empty()) {
      output = name;
    } else if (many || isFolder(standard_.output)) {
      fs::create_directories(output);
      output /= many && !input.empty() ? input.stem().string() + ".png" : name;
    }
    for (const auto& [label, picture] : result.others) writePicture(beside(output, label), picture);
    if (result.picture.size().width > 0) writePicture(output, result.picture);
  }
  if (!result.table.empty() && (numbersOnly_ || !standard_.table.empty())) {
    const fs::path file = standard_.table.empty() ? "-" : standard_.table;
    writeText(file, file.extension() == ".json" ? result.table.json() : result.table.csv());
  }
  seconds += result.seconds;
  if (standard_.time)
    std::fprintf(stderr, "%s: %.2f ms in %s\n", input.empty() ? app_.get_name().c_str() : input.c_str(),
                 result.seconds * 1e3, libraryVariant().c_str());
}

void Command::finish(CLI::App& app, std::function<void()> work) {
  app.callback([this, work = std::move(work)] {
    int before = 1;
    tevGetNumThreads(&before);
    requireNames();
    if (standard_.threads > 0) tevSetNumThreads(standard_.threads);
    struct Restore {
      int count;
      ~Restore() { tevSetNumThreads(count); }
    } const restore{before};
    work();
  });
}

void Command::eachPicture(std::function<void(const Picture&, Result&)> work) {
  addStandardOptions("Pictures (PNG, JPEG), folders of them, or quoted globs", 1, INT_MAX / 2);
  finish(app_, [this, work = std::move(work)] {
    std::vector<fs::path> files;
    for (const std::string& input : standard_.inputs)
      for (const fs::path& file : expand(input)) files.push_back(file);
    const bool many = files.size() > 1;
    if (many && !standard_.output.empty() && !isFolder(standard_.output) && isPictureName(standard_.output))
      throw UserError(standard_.output + ": many pictures need a folder as output");
    Progress progress(app_.get_name(), static_cast<int>(files.size()));
    bool failed = false;
    Table all;  // of all pictures, with a column that names them
    for (const fs::path& file : files) {
      try {
        const Picture picture = readPicture(file);
        Result result = fresh();
        work(picture, result);
        if (many && !result.table.empty()) {
          if (all.empty()) {
            all.columns = result.table.columns;
            all.columns.insert(all.columns.begin(), "picture");
          }
          for (auto& row : result.table.rows) {
            row.insert(row.begin(), Cell(file.string()));
            all.rows.push_back(std::move(row));
          }
          result.table = {};
        }
        deliver(result, file, many);
      } catch (const UserError& error) {
        if (!many) throw;
        complain(app_.get_name() + ": " + oneLine(error.what()));
        failed = true;
      }
      progress.step();
    }
    if (!all.empty()) {
      Result tables;
      tables.table = std::move(all);
      const fs::path file = standard_.table.empty() ? "-" : standard_.table;
      if (numbersOnly_ || !standard_.table.empty())
        writeText(file, file.extension() == ".json" ? tables.table.json() : tables.table.csv());
    }
    if (failed) throw SomeFailed{};
  });
}

void Command::twoPictures(std::function<void(const Picture&, const Picture&, Result&)> work) {
  addStandardOptions("Two pictures (PNG, JPEG)", 2, 2);
  finish(app_, [this, work = std::move(work)] {
    const Picture first = readPicture(standard_.inputs[0]), second = readPicture(standard_.inputs[1]);
    Result result = fresh();
    work(first, second, result);
    deliver(result, standard_.inputs[0], false);
  });
}

void Command::sequence(std::function<void(const std::vector<Picture>&, Result&)> work, int least) {
  addStandardOptions("The frames in order: pictures, folders of them, or quoted globs", 1, INT_MAX / 2);
  finish(app_, [this, least, work = std::move(work)] {
    std::vector<Picture> frames;
    for (const std::string& input : standard_.inputs)
      for (const fs::path& file : expand(input)) {
        frames.push_back(readPicture(file));
        requireSameSize(frames.front(), frames.back());
      }
    if (static_cast<int>(frames.size()) < least)
      throw UserError(standard_.inputs.front() + ": at least " + std::to_string(least) + " pictures are needed");
    Result result = fresh();
    work(frames, result);
    deliver(result, standard_.inputs.front(), false);
  });
}

void Command::alone(std::function<void(Result&)> work) {
  addStandardOptions("", 0, 0);
  finish(app_, [this, work = std::move(work)] {
    Result result = fresh();
    work(result);
    deliver(result, {}, false);
  });
}

Program::Program()
    : app_("Image analysis on picture files. `tevcv COMMAND --help` shows a line that works as it stands.", "tevcv") {
  app_.require_subcommand(1);
  app_.set_version_flag("--version", std::string("tevcv 5.2, ") + tevcvGetLibVersion()->libraryName);
  addCommands(*this);
}

Command& Program::command(const std::string& name, const std::string& group, const std::string& text,
                          const std::string& example) {
  CLI::App* const app = app_.add_subcommand(name, text);
  app->group(group)->footer("Example:\n  " + example);
  standards_.push_back(std::make_unique<StandardOptions>());
  commands_.push_back(std::make_unique<Command>(*app, *standards_.back()));
  return *commands_.back();
}

int Program::run(std::vector<std::string> arguments) {
  seconds = 0;
  const std::string name = arguments.empty() ? "" : arguments.front() + ": ";
  std::reverse(arguments.begin(), arguments.end());  // the order in which the parser takes a vector
  try {
    app_.parse(std::move(arguments));
    return 0;
  } catch (const CLI::Success& success) {  // --help, --version
    return app_.exit(success);
  } catch (const CLI::ParseError& error) {
    complain((app_.get_subcommands().empty() ? "" : name) + oneLine(error.what()));
  } catch (const UserError& error) {
    complain(name + oneLine(error.what()));
  } catch (const SomeFailed&) {
  } catch (const fs::filesystem_error& error) {
    complain(name + error.path1().string() + ": " + error.code().message());
  } catch (const LibraryError& error) {
    complain(name + error.what());
    return 1;
  } catch (const Failure& error) {
    complain(name + error.what());
    return 1;
  } catch (const std::bad_alloc&) {
    complain(name + "not enough memory");
    return 1;
  }
  return 2;
}

double Program::lastSeconds() { return seconds; }

}  // namespace cli
