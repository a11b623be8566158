#include "disk/Peer.h"

#include <boost/filesystem.hpp>

namespace bench {
namespace {

namespace fs = boost::filesystem;

Tally listNames(const std::string& folder) {
  Tally tally;
  for (const auto& entry : fs::directory_iterator(folder)) {
    ++tally.entries;
    tally.nameLength += entry.path().filename().native().size();
  }
  return tally;
}

Tally listAttributes(const std::string& folder) {
  Tally tally;
  for (const auto& entry : fs::directory_iterator(folder)) {
    ++tally.entries;
    tally.nameLength += entry.path().filename().native().size();
    if (entry.status().type() == fs::regular_file)
      ++tally.files;
    tally.bytes += fs::file_size(entry.path());
    tally.modified += fs::last_write_time(entry.path());
  }
  return tally;
}

Tally walk(const std::string& folder) {
  Tally tally;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    ++tally.entries;
    if (entry.status().type() != fs::directory_file)
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

const bool added = add({.name = "Boost.Filesystem",
                        .listNames = listNames,
                        .listAttributes = listAttributes,
                        .walk = walk,
                        .copy = copier,
                        .removeTree = [](const std::string& folder) { fs::remove_all(folder); },
                        .copySyncs = true});

}  // namespace
}  // namespace bench
