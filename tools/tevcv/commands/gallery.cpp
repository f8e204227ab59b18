// A page that shows every subsystem at work: the lines of the cards are run here, by the program itself.
#include "gallery/cards.h"

#include "cli/command.h"
#include "gallery/page.h"
#include "gallery/small.h"
#include "tevcore.h"
#include "tevcv.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

struct Photo {
  const char* name;
  const char* drawn;  // what `sample` draws in its place
  int width, height;
};
constexpr Photo photos[] = {{"astronaut", "scene", 512, 512},
                            {"camera", "scene", 512, 384},
                            {"coins", "coins", 384, 303},
                            {"page", "page", 384, 191}};

// Where the pictures that lines name stand, as seen from the page.
class Names {
 public:
  void add(const std::string& name, const std::string& file) {
    replacements_.emplace_back("{" + name + "}", file);
    replacements_.emplace_back("{" + name + ":stem}", fs::path(file).stem().string());
    sizes_.emplace_back("{" + name + "@", readPicture(file).size());
  }

  std::string in(std::string text) const {
    for (const auto& [placeholder, file] : replacements_)
      for (auto at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at + file.size()))
        text.replace(at, placeholder.size(), file);
    for (const auto& [placeholder, size] : sizes_)
      for (auto at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder)) {
        int x = 0, y = 0;
        std::sscanf(text.c_str() + at + placeholder.size(), "%d,%d", &x, &y);
        text.replace(at, text.find('}', at) + 1 - at,
                     std::to_string(x * size.width / 100) + "," + std::to_string(y * size.height / 100));
      }
    return text;
  }
  std::vector<std::string> in(std::vector<std::string> texts) const {
    for (std::string& text : texts) text = in(text);
    return texts;
  }

 private:
  std::vector<std::pair<std::string, std::string>> replacements_;  // placeholder, text
  std::vector<std::pair<std::string, TevSize>> sizes_;             // beginning of a placeholder, the picture's size
};

std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> result(1);
  for (const char c : line)
    if (c == ' ')
      result.emplace_back();
    else
      result.back() += c;
  return result;
}

// Runs a line as the shell would, `tevcv` in front.
void runLine(const std::string& line) {
  std::vector<std::string> arguments = words(line);
  arguments.erase(arguments.begin());
  // Frames of another picture from an earlier run would join the sequence.
  if (arguments.back().ends_with('/')) fs::remove_all(arguments.back());
  Program program;
  if (program.run(arguments) != 0) throw Failure("this line failed: " + line);
}

// Copies unless it is the same file already.
void bring(const fs::path& from, const fs::path& to) {
  std::error_code code;
  if (fs::equivalent(from, to, code)) return;
  fs::create_directories(to.parent_path());
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, code);
  if (code) throw UserError(from.string() + ": " + code.message());
}

struct Options {
  std::string output = "out", photos, picture, docs;
};

struct InFolder {
  fs::path before = fs::current_path();
  explicit InFolder(const fs::path& folder) { fs::current_path(folder); }
  ~InFolder() {
    std::error_code code;
    fs::current_path(before, code);
  }
  InFolder(const InFolder&) = delete;
  InFolder& operator=(const InFolder&) = delete;
};

void make(const Options& options) {
  const auto absolute = [](const std::string& path) { return path.empty() ? fs::path() : fs::absolute(path); };
  const fs::path given = absolute(options.photos), own = absolute(options.picture), docs = absolute(options.docs);
  if (!own.empty()) readPicture(options.picture);  // says what is wrong with it before any work
  if (!given.empty() && !fs::is_directory(given)) throw UserError("--photos: " + options.photos + ": no such folder");
  PageFacts facts;
  facts.library = tevcvGetLibVersion()->libraryName;
  facts.variant = libraryVariant();
  tevGetNumThreads(&facts.threads);
  fs::create_directories(options.output);
  const InFolder in(options.output);
  fs::create_directories("results");

  Names names;
  for (const Photo& photo : photos) {
    const std::string file = std::string(photo.name) + ".png";
    if (!own.empty()) {
      std::string place = "photos/own" + own.extension().string();
      if (std::string_view(photo.name) == "astronaut") bring(own, place);
      names.add(photo.name, place);
      facts.own = true;
    } else if (const fs::path source = (given.empty() ? fs::path("photos") : given) / file; fs::exists(source)) {
      bring(source, "photos" / fs::path(file));
      names.add(photo.name, "photos/" + file);
    } else {
      fs::create_directories("drawn");
      runLine("tevcv sample --picture " + std::string(photo.drawn) + " --width " + std::to_string(photo.width) +
              " --height " + std::to_string(photo.height) + " -o drawn/" + file);
      names.add(photo.name, "drawn/" + file);
      facts.drawn = true;
    }
  }

  int count = 0;
  for (const Section& section : gallerySections()) count += static_cast<int>(section.cards.size());
  Progress progress("gallery", count);
  std::vector<ShownSection> shown;
  for (const Section& section : gallerySections()) {
    shown.push_back({&section, {}});
    for (Card card : section.cards) {
      card.lines = names.in(card.lines);
      card.inputs = names.in(card.inputs);
      card.results = names.in(card.results);
      for (const std::string& line : card.lines) runLine(line);
      const double seconds = Program::lastSeconds();
      shown.back().cards.push_back({std::move(card), seconds});
      progress.step();
    }
  }
  writeText("index.html", galleryPage(shown, facts));

  if (docs.empty()) return;
  fs::create_directories(docs);
  for (const Section& section : gallerySections())
    writeSmall((docs / (section.name + ".png")).string(), sideBySide(names.in(section.picture), 400));
  writeSmall((docs / "strip.png").string(), stripOf(names.in(galleryStrip()), 195));
}

}  // namespace

void gallery(Program& program) {
  auto o = std::make_shared<Options>();
  CLI::App& app =
      program.command("gallery", "general", "A page that shows every subsystem at work", "tevcv gallery -o out").app();
  app.add_option("-o,--output", o->output, "A folder for index.html and its pictures")
      ->type_name("FOLDER")
      ->capture_default_str();
  app.add_option("--photos", o->photos,
                 "A folder with astronaut.png, camera.png, coins.png and page.png; what is missing is drawn (default: "
                 "photos in the output)")
      ->type_name("FOLDER");
  app.add_option("--picture", o->picture, "Your own picture in place of every photograph")->type_name("FILE");
  app.add_option("--docs", o->docs, "Write the small pictures of the pages and the README there too")
      ->type_name("FOLDER");
  app.callback([o] { make(*o); });
}

}  // namespace cli
