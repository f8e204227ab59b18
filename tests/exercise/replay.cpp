// The fuzzer's corpus: replays it, and moves it between the fuzzer's folder of inputs and the one file that the
// repository keeps. A record of that file is the exercise's name, a 0, the number of bytes (two, low one first) and the
// bytes: so inputs stay with their exercise when others come.
//
//   exercise_replay CORPUS                 runs all inputs
//   exercise_replay --pack DIR CORPUS      the folder into the file
//   exercise_replay --unpack CORPUS DIR    the file into the folder
#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "exercise/crash.h"
#include "exercise/input.h"

using namespace exercise;

namespace {

using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void give(const std::string& what) {
  std::perror(what.c_str());
  std::exit(2);
}

Bytes read(const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "rb");
  if (!file) give(path);
  Bytes bytes;
  for (int c; (c = std::fgetc(file)) != EOF;) bytes.push_back(static_cast<std::uint8_t>(c));
  std::fclose(file);
  return bytes;
}

void write(const std::string& path, const Bytes& bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file) != 0) give(path);
}

struct Input {
  const Entry* entry;
  Bytes bytes;
};

std::vector<Input> readCorpus(const std::string& path) {
  const Bytes file = read(path);
  std::vector<Input> inputs;
  std::size_t at = 0;
  while (at < file.size()) {
    const auto end = std::find(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), 0);
    const std::string name(file.begin() + static_cast<std::ptrdiff_t>(at), end);
    at = static_cast<std::size_t>(end - file.begin()) + 1;
    const std::size_t size = at + 2 <= file.size() ? file[at] + 256U * file[at + 1] : file.size();
    at += 2;
    const auto entry =
        std::find_if(entries().begin(), entries().end(), [&](const Entry& each) { return name == each.name; });
    if (at + size > file.size() || entry == entries().end()) {
      std::fprintf(stderr, "%s: no corpus, or one of an exercise that is gone: %s\n", path.c_str(), name.c_str());
      std::exit(2);
    }
    inputs.push_back({&*entry, Bytes(file.begin() + static_cast<std::ptrdiff_t>(at),
                                     file.begin() + static_cast<std::ptrdiff_t>(at + size))});
    at += size;
  }
  return inputs;
}

void pack(const std::string& folder, const std::string& corpus) {
  DIR* const directory = opendir(folder.c_str());
  if (!directory) give(folder);
  std::vector<std::string> names;
  while (const dirent* const each = readdir(directory))
    if (each->d_name[0] != '.') names.push_back(each->d_name);
  closedir(directory);
  std::vector<Bytes> records;
  for (const std::string& name : names) {
    const Bytes input = read(folder + "/" + name);
    Draw draw(input.data(), input.size());
    const char* const exercised = entries()[draw.choice(static_cast<std::uint32_t>(entries().size()))].name;
    Bytes record(exercised, exercised + std::strlen(exercised) + 1);
    const std::size_t size = input.size() > 2 ? std::min<std::size_t>(input.size() - 2, 65535) : 0;
    record.push_back(static_cast<std::uint8_t>(size % 256));
    record.push_back(static_cast<std::uint8_t>(size / 256));
    if (size) record.insert(record.end(), input.begin() + 2, input.begin() + 2 + static_cast<std::ptrdiff_t>(size));
    records.push_back(record);
  }
  std::sort(records.begin(), records.end());
  Bytes file;
  for (const Bytes& record : records) file.insert(file.end(), record.begin(), record.end());
  write(corpus, file);
  std::printf("%zu inputs, %zu bytes\n", records.size(), file.size());
}

void unpack(const std::string& corpus, const std::string& folder) {
  int number = 0;
  for (const Input& input : readCorpus(corpus)) {
    const auto index = static_cast<std::size_t>(input.entry - entries().data());
    Bytes bytes = {static_cast<std::uint8_t>(index / 256), static_cast<std::uint8_t>(index % 256)};
    bytes.insert(bytes.end(), input.bytes.begin(), input.bytes.end());
    char name[32];
    std::snprintf(name, sizeof name, "/kept-%06d", number++);
    write(folder + name, bytes);
  }
}

int replay(const std::string& corpus) {
  tellCrashes();
  int faults = 0, number = 0;
  const std::vector<Input> inputs = readCorpus(corpus);
  for (const Input& input : inputs) {
    nowRuns(input.entry->name, "input", number++);
    const Outcome outcome = runInput(*input.entry, Draw(input.bytes.data(), input.bytes.size()));
    if (outcome.fault.empty()) continue;
    std::printf("%s: %s\n", input.entry->name, outcome.fault.c_str());
    ++faults;
  }
  std::printf("%zu inputs, %d faults\n", inputs.size(), faults);
  return faults == 0 && !inputs.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return replay(argv[1]);
  if (argc == 4 && !std::strcmp(argv[1], "--pack")) return pack(argv[2], argv[3]), 0;
  if (argc == 4 && !std::strcmp(argv[1], "--unpack")) return unpack(argv[2], argv[3]), 0;
  std::fprintf(stderr, "usage: %s CORPUS | --pack DIR CORPUS | --unpack CORPUS DIR\n", argv[0]);
  return 2;
}
