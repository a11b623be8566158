#include "disk/Workloads.h"

#include <memory>
#include <stdexcept>

namespace bench {
namespace {

using Lister = std::function<Tally(const std::string&)>;

/// @param expected  what there is, in those parts that this kind of listing gives
Workload listing(std::string title, const std::string& folder, Lister Peer::*list, const Tally& expected) {
  Workload workload{.title = std::move(title), .amount = static_cast<double>(expected.entries)};
  for (const auto& peer : peers())
    if (const auto& lister = peer.*list) {
      const auto found = std::make_shared<Tally>();
      workload.entrants.push_back({.name = peer.name,
                                   .run = [found, lister, folder](std::size_t) { *found = lister(folder); },
                                   .check =
                                       [found, expected](std::size_t) {
                                         if (*found != expected)
                                           throw std::runtime_error("the listing is not what lies in the folder");
                                       }});
    }
  return workload;
}

std::string filesText(std::size_t files) { return std::to_string(files) + " files"; }

}  // namespace

std::vector<Offer> listings(const Place& place, const Scale& scale) {
  const auto names = [&place, scale] {
    const auto all = flatTally(scale.listed);
    return listing("list-names: " + filesText(scale.listed) + " of a folder", flatFolder(place.space, scale.listed),
                   &Peer::listNames, {.entries = all.entries, .nameLength = all.nameLength});
  };
  const auto attributes = [&place, scale] {
    return listing("list-attributes: the same with types, sizes and times", flatFolder(place.space, scale.listed),
                   &Peer::listAttributes, flatTally(scale.listed));
  };
  const auto walk = [&place, scale] {
    return listing("walk: " + filesText(scale.listed) + " in " + std::to_string(scale.folders) + " folders",
                   tree(place.space, scale.listed, scale.folders), &Peer::walk,
                   {.entries = scale.listed + scale.folders, .files = scale.listed});
  };
  return {{"list-names", names}, {"list-attributes", attributes}, {"walk", walk}};
}

}  // namespace bench
