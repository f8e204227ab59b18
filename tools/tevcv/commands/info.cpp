// What the library is, and what a picture file holds.
#include "cli/command.h"
#include "tevcore.h"
#include "tevcv.h"

namespace cli {

void info(Program& program) {
  auto files = std::make_shared<std::vector<std::string>>();
  CLI::App& app =
      program.command("info", "general", "The library in use, or what picture files hold", "tevcv info photo.png")
          .app();
  app.add_option("pictures", *files, "Pictures (PNG, JPEG), folders of them, or quoted globs")->type_name("FILE");
  app.callback([files] {
    if (files->empty()) {
      int threads = 1;
      tevGetNumThreads(&threads);
      std::printf("%s, %s variant, %d threads, %s\n", tevcvGetLibVersion()->libraryName, libraryVariant().c_str(),
                  threads, libraryPath().c_str());
    }
    for (const std::string& argument : *files)
      for (const auto& file : expand(argument)) {
        const Picture picture = readPicture(file);
        std::printf("%s: %d x %d, %s, %d bits, checksum %s\n", file.c_str(), picture.size().width,
                    picture.size().height, picture.channels() == 3 ? "colour" : "grey", picture.deep() ? 16 : 8,
                    checksum(picture).c_str());
      }
  });
}

}  // namespace cli
