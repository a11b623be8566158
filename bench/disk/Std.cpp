// The standard library: <filesystem>, <fstream>, and stdio on a line of its own.

#include "disk/Peer.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

namespace bench {
namespace {

namespace fs = std::filesystem;

Tally listNames(const std::string& folder) {
  Tally tally;
  for (const auto& entry : fs::directory_iterator(folder)) {
    ++tally.entries;
    tally.nameLength += entry.path().filename().native().size();
  }
  return tally;
}

Tally listAttributes(const std::string& folder) {
  using namespace std::chrono;
  Tally tally;
  for (const auto& entry : fs::directory_iterator(folder)) {
    ++tally.entries;
    tally.nameLength += entry.path().filename().native().size();
    if (entry.is_regular_file())
      ++tally.files;
    tally.bytes += entry.file_size();
    tally.modified += floor<seconds>(file_clock::to_sys(entry.last_write_time())).time_since_epoch().count();
  }
  return tally;
}

Tally walk(const std::string& folder) {
  Tally tally;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    ++tally.entries;
    if (!entry.is_directory())
      ++tally.files;
  }
  return tally;
}

Peer::Job copier(const Paths& from, const Paths& to) {
  using FsPaths = std::vector<fs::path>;
  return [from = FsPaths(from.begin(), from.end()), to = FsPaths(to.begin(), to.end())](std::size_t number) {
    fs::copy_file(from[number], to[number]);
  };
}

std::size_t readAll(const std::string& path, char* buffer, std::size_t block) {
  std::ifstream file(path, std::ios::binary);
  std::size_t total = 0;
  do {
    file.read(buffer, static_cast<std::streamsize>(block));
    total += static_cast<std::size_t>(file.gcount());
  } while (file);
  return total;
}

std::size_t readByStdio(const std::string& path, char* buffer, std::size_t block) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  std::size_t total = 0;
  for (std::size_t got; file && (got = std::fread(buffer, 1, block, file.get())) > 0;)
    total += got;
  return total;
}

const bool added = add({.name = "std",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier,
                        .read = readAll,
                        .removeTree = [](const std::string& folder) { fs::remove_all(folder); }}) &&
                   add({.name = "fread", .read = readByStdio});

}  // namespace
}  // namespace bench
