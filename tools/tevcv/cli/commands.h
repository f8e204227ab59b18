// All subcommands, one source each in commands/.
#pragma once

#include "cli/command.h"

namespace cli {

void edges(Program& program);
void info(Program& program);

inline void addCommands(Program& program) {
  for (auto* const add : {edges, info}) add(program);
}

}  // namespace cli
