#include "cli/seeds.h"

#include "cli/element.h"

namespace cli {

void seedsOption(Command& command, std::vector<TevPoint>& seeds, const std::string& text) {
  command.app()
      .add_option_function<std::vector<std::string>>(
          "--seed",
          [&seeds](const std::vector<std::string>& given) {
            for (const std::string& one : given) {
              TevPoint seed{};
              if (!parsePair(one, ',', seed.x, seed.y)) throw CLI::ValidationError("--seed", one + " is not X,Y");
              seeds.push_back(seed);
            }
          },
          text)
      ->type_name("X,Y")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
}

void requireInside(const Picture& picture, TevPoint seed) {
  const TevSize roi = picture.size();
  if (seed.x < 0 || seed.y < 0 || seed.x >= roi.width || seed.y >= roi.height)
    throw UserError("--seed: " + std::to_string(seed.x) + "," + std::to_string(seed.y) + " is outside of " +
                    picture.name + ", which is " + std::to_string(roi.width) + " x " + std::to_string(roi.height));
}

}  // namespace cli
