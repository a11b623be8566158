#include "disk/Workloads.h"

#include "disk/Descriptor.h"

#include <filesystem>
#include <memory>
#include <sys/stat.h>

namespace bench {
namespace {

constexpr std::size_t perTurn = 100;  ///< small files

Paths inFolder(const std::string& folder, const Paths& paths) {
  Paths moved;
  for (const auto& path : paths)
    moved.push_back(folder + path.substr(path.rfind('/')));
  return moved;
}

/// A folder for what each peer makes, by its place among the peers.
std::string ownFolder(const Space& space, std::size_t peer) { return space.path() + "/to-" + std::to_string(peer); }

/// Has each peer begin a round with an empty folder.
void emptyBeforehand(Workload& workload, const Space& space) {
  workload.prepare = [&space, count = workload.entrants.size()] {
    for (std::size_t peer = 0; peer < count; ++peer)
      space.emptyFolder("to-" + std::to_string(peer));
  };
  workload.settle = [&space] { space.settle(); };
}

/// Each turn's share of the files.
std::function<void(std::size_t)> inTurn(const Peer::Job& job) {
  return [job](std::size_t turn) {
    for (std::size_t number = turn * perTurn; number < (turn + 1) * perTurn; ++number)
      job(number);
  };
}

Workload smallCopies(const Place& place, const Scale& scale) {
  const auto from = smallFiles(place.space, scale.copied);
  Workload workload{.title = "copy-small: " + std::to_string(scale.copied) + " files of 4 KiB, " + place.title +
                             ", in turns of " + std::to_string(perTurn),
                    .amount = static_cast<double>(scale.copied),
                    .turns = scale.copied / perTurn};
  for (const auto& peer : peers()) {
    if (!peer.copy)
      continue;
    const auto to = inFolder(ownFolder(place.space, workload.entrants.size()), from);
    const auto compare = [from, to](std::size_t number) { requireSame(from[number], to[number]); };
    workload.entrants.push_back(
        {.name = peer.name, .run = inTurn(peer.copy(from, to)), .check = inTurn(compare), .isApart = peer.copySyncs});
  }
  emptyBeforehand(workload, place.space);
  return workload;
}

std::uint64_t allocated(const std::string& path) {
  struct stat status;
  check(stat(path.c_str(), &status) == 0, path);
  return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

/// A copy is removed at once, before its pages are written to the disk while another peer works.
Entrant oneCopy(const Peer& peer, const Peer::Copier& copier, const std::string& from, const std::string& to) {
  const auto size = std::make_shared<std::uint64_t>();
  return {.name = peer.name,
          .run = [job = copier({from}, {to})](std::size_t) { job(0); },
          .check =
              [from, to, size](std::size_t) {
                requireSame(from, to);
                *size = allocated(to);
                std::filesystem::remove(to);
              },
          .remark = [size] { return std::to_string(*size >> 20) + " MiB allocated"; },
          .isApart = peer.copySyncs};
}

Workload oneFile(const Place& place, std::string title, const std::string& from, Peer::Copier Peer::*copy) {
  Workload workload{
      .title = std::move(title), .unit = Unit::Bytes, .amount = static_cast<double>(std::filesystem::file_size(from))};
  for (const auto& peer : peers())
    if (const auto& copier = peer.*copy)
      workload.entrants.push_back(
          oneCopy(peer, copier, from, ownFolder(place.space, workload.entrants.size()) + "/copy"));
  emptyBeforehand(workload, place.space);
  return workload;
}

std::string mebibytes(std::uint64_t size) { return std::to_string(size >> 20) + " MiB"; }

}  // namespace

std::vector<Offer> copies(const Place& place, const Scale& scale) {
  if (place.isMemory)
    return {{"copy-small-memory", [&place, scale] { return smallCopies(place, scale); }}};
  const auto big = [&place, scale] {
    return oneFile(place, "copy-big: a file of " + mebibytes(scale.big), bigFile(place.space, scale.big), &Peer::copy);
  };
  const auto sparse = [&place, scale] {
    return oneFile(place, "copy-sparse: a file of " + mebibytes(scale.sparse) + ", 1 MiB of data in every 64 MiB",
                   sparseFile(place.space, scale.sparse), &Peer::copySparse);
  };
  return {{"copy-small", [&place, scale] { return smallCopies(place, scale); }},
          {"copy-big", big},
          {"copy-sparse", sparse}};
}

}  // namespace bench
