// tevcv: the library on picture files, from the shell.
#include "cli/command.h"

int main(int argc, char** argv) {
  cli::Program program;
  return program.run({argv + 1, argv + argc});
}
