// All subcommands, one source each in commands/.
#pragma once

#include "cli/command.h"

namespace cli {

void edges(Program& program);
void frames(Program& program);
void info(Program& program);
void sample(Program& program);

inline void addCommands(Program& program) {
  for (auto* const add : {edges, frames, info, sample}) add(program);
}

}  // namespace cli
