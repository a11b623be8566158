#include "disk/Workloads.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

const std::string name = "settings.json";

/// Differs from one turn to the next.
std::string content(std::size_t turn) { return std::string(smallFileSize, static_cast<char>('a' + turn % 26)); }

/// That the target was replaced, and that nothing else was left beside it.
void requireReplaced(const std::string& folder, std::size_t turn) {
  std::ifstream file(folder + "/" + name, std::ios::binary);
  const std::string found{std::istreambuf_iterator<char>(file), {}};
  const auto entries = std::filesystem::directory_iterator(folder);
  if (found != content(turn) || std::distance(begin(entries), end(entries)) != 1)
    throw std::runtime_error("the file in " + folder + " was not replaced, or something was left beside it");
}

Entrant entrant(const Peer& peer, const Peer::Replacer& replacer, const std::string& folder, std::size_t perTurn) {
  writeFile(folder + "/" + name, "at first");
  return {.name = peer.name,
          .run =
              [job = replacer(folder, name), perTurn](std::size_t turn) {
                const auto written = content(turn);
                for (std::size_t i = 0; i < perTurn; ++i)
                  job(written);
              },
          .check = [folder](std::size_t turn) { requireReplaced(folder, turn); }};
}

Workload replacing(const Place& place, std::string title, std::size_t count, std::size_t perTurn,
                   Peer::Replacer Peer::*replace) {
  Workload workload{.title = std::move(title), .amount = static_cast<double>(count), .turns = count / perTurn};
  for (const auto& peer : peers()) {
    if (!(peer.*replace))
      continue;
    const auto folder = place.space.emptyFolder("replaced-" + std::to_string(workload.entrants.size()));
    try {
      workload.entrants.push_back(entrant(peer, peer.*replace, folder, perTurn));
      workload.entrants.back().isApart = replace == &Peer::replace && peer.replaceSyncs;
    } catch (const Skipped& skipped) {
      workload.notes.push_back(peer.name + ": " + skipped.what());
    }
  }
  workload.settle = [&space = place.space] { space.settle(); };
  return workload;
}

}  // namespace

std::vector<Offer> replacements(const Place& place, const Scale& scale) {
  const auto replace = [&place, scale] {
    return replacing(place, "replace: 4 KiB, atomically, " + place.title, scale.replaced, 10, &Peer::replace);
  };
  const auto durably = [&place, scale] {
    return replacing(place, "replace-durably: the same with fsync", scale.replacedDurably, 2, &Peer::replaceDurably);
  };
  if (place.isMemory)
    return {{"replace-memory", replace}};
  return {{"replace", replace}, {"replace-durably", durably}};
}

}  // namespace bench
