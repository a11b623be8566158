#include "disk/Workloads.h"

#include <filesystem>
#include <stdexcept>

namespace bench {
namespace {

constexpr std::size_t filesPerFolder = 100;

/// What a peer would say once it is put to work.
std::string reasonToSkip(const Peer& peer, const std::string& folder) {
  try {
    makeTree(folder, 1, 1);
    peer.removeTree(folder);
    return {};
  } catch (const Skipped& skipped) {
    std::filesystem::remove_all(folder);
    return skipped.what();
  }
}

Workload removal(const Place& place, std::size_t files) {
  Workload workload{.title = "remove-tree: " + std::to_string(files) + " files in " +
                             std::to_string(files / filesPerFolder) + " folders",
                    .amount = static_cast<double>(files)};
  Paths folders;
  for (const auto& peer : peers()) {
    if (!peer.removeTree)
      continue;
    const auto folder = place.space.path() + "/removed-" + std::to_string(folders.size());
    if (const auto reason = reasonToSkip(peer, folder); !reason.empty()) {
      workload.notes.push_back(peer.name + ": " + reason);
      continue;
    }
    folders.push_back(folder);
    workload.entrants.push_back({.name = peer.name,
                                 .run = [folder, remove = peer.removeTree](std::size_t) { remove(folder); },
                                 .check =
                                     [folder](std::size_t) {
                                       if (std::filesystem::exists(folder))
                                         throw std::runtime_error("the tree is still there");
                                     }});
  }
  workload.prepare = [folders, files] {
    for (const auto& folder : folders)
      makeTree(folder, files, files / filesPerFolder);
  };
  workload.settle = [&space = place.space] { space.settle(); };
  return workload;
}

}  // namespace

std::vector<Offer> removals(const Place& place, const Scale& scale) {
  return {{"remove-tree", [&place, scale] { return removal(place, scale.copied); }}};
}

}  // namespace bench
