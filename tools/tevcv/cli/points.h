// Positions and sizes on the command line, written X,Y.
#pragma once

#include <charconv>
#include <string>
#include <vector>

#include "cli/command.h"

namespace cli {

// An option of `count` numbers with commas between, such as --from 10,20. It stays empty where it is not given. `form`
// stands in the help and in messages.
template <class T>
CLI::Option& tuple(Command& command, const std::string& name, std::vector<T>& values, int count,
                   const std::string& form, const std::string& text) {
  CLI::Option& option = *command.app().add_option_function<std::string>(
      name,
      [&values, name, count, form](const std::string& given) {
        values.clear();
        const char *at = given.data(), *const end = at + given.size();
        for (int i = 0; i < count; ++i) {
          T value{};
          const auto [next, error] = std::from_chars(at, end, value);
          const bool last = i + 1 == count;
          if (error != std::errc() || (last ? next != end : next == end || *next != ','))
            throw CLI::ValidationError(name, given + " is not " + form);
          values.push_back(value);
          at = last ? next : next + 1;
        }
      },
      text);
  option.type_name(form);
  return option;
}

}  // namespace cli
