// How the program fails: one clear line, exit status 2 for what the user can mend, 1 for what he cannot.
#pragma once

#include <stdexcept>
#include <string>

#include "tevcv/types.h"

namespace cli {

// A missing file, a picture that does not suit, an option out of range: the line is for the user.
struct UserError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A status that no input should bring about.
struct LibraryError : std::runtime_error {
  LibraryError(const char* function, TevStatus status)
      : std::runtime_error(std::string(function) + " returned status " + std::to_string(status)) {}
};

// Passes warnings on, throws on errors. Use through TEV_CHECK, which knows the function's name.
inline TevStatus check(const char* function, TevStatus status) {
  if (status < 0) throw LibraryError(function, status);
  return status;
}

// Anything else that the user cannot mend.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace cli

// TEV_CHECK(teviCanny_16s8u_C1R, arguments...): calls a function of the library and throws on an error status.
#define TEV_CHECK(function, ...) cli::check(#function, function(__VA_ARGS__))
