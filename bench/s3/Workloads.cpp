#include "s3/Workloads.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <utility>

namespace bench {
namespace {

constexpr auto target = "target";  ///< what is written, in the store and in the space; new for each turn
constexpr auto source = "source";  ///< what is read from the store

std::vector<Client> clientsOfOneObject(const Bench& bench) {
  return {ourLibrary(bench), ourCommand(bench), curl(bench, 1), rclone(bench, "rclone", {})};
}

std::vector<Client> clientsOfMany(const Bench& bench) {
  const auto jobs = std::to_string(bench.jobs);
  return {ourLibrary(bench), ourCommand(bench), curl(bench, bench.jobs), rclone(bench, "rclone", {}),
          rclone(bench, "rclone, " + jobs + " at once", {"--transfers", jobs, "--checkers", jobs})};
}

std::string folderOf(const Bench& bench) { return bench.space.path() + "/small"; }
std::string targetOf(const Bench& bench) { return bench.space.path() + "/" + target; }

// --- What comes out ---

void requireAll(const Bench& bench, const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folderOf(bench)))
    requireSame(entry.path(), folder + "/" + entry.path().filename().string());
}

/// Reads back what was put.
void requireStored(const Bench& bench, const std::string& path, const std::string& key) {
  const auto copy = bench.space.path() + "/copy";
  bench.store.item(key).copyFile(bench.store.file(copy), foundation::storage::provider::ReplacementPolicy::Overwrite);
  requireSame(path, copy);
  std::filesystem::remove(copy);
}

void requireStoredAll(const Bench& bench) {
  const auto copy = bench.space.path() + "/copy";
  ourLibrary(bench).getAll(std::string(target) + "/all", copy);
  requireAll(bench, copy);
  std::filesystem::remove_all(copy);
}

// --- Workloads ---

/// A turn of each client, with the requests that it took in the last round.
/// @param run    what is timed
/// @param check  throws where it was not done
Entrant entrant(const Bench& bench, const Client& client, std::function<void()> run, std::function<void()> check) {
  const auto requests = std::make_shared<std::string>();
  return {.name = client.name,
          .run = [run = std::move(run)](std::size_t) { run(); },
          .check =
              [&bench, requests, check = std::move(check)](std::size_t) {
                *requests = bench.store.requests();
                check();
              },
          .remark = [requests] { return *requests; },
          .isPeer = !client.isOurs};
}

/// A workload of which each turn writes what is not there yet, in the store or in the space.
Workload newWorkload(const Bench& bench, std::string title, Unit unit, double amount) {
  return {.title = std::move(title), .unit = unit, .amount = amount, .settle = [&bench] {
            bench.space.emptyFolder(target);
            bench.store.clear(target);
            bench.store.item(target).createFolder();
            bench.store.requests();
          }};
}

std::string mebibytes(std::uint64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; }

Workload puttingBig(const Bench& bench) {
  auto workload =
      newWorkload(bench, "put-big: one object of " + mebibytes(bench.big), Unit::Bytes, static_cast<double>(bench.big));
  const auto path = bigFile(bench.space, bench.big);
  const auto key = std::string(target) + "/big";
  for (const auto& client : clientsOfOneObject(bench))
    workload.entrants.push_back(entrant(
        bench, client, [=] { client.put(path, key); }, [&bench, path, key] { requireStored(bench, path, key); }));
  return workload;
}

Workload gettingBig(const Bench& bench) {
  auto workload =
      newWorkload(bench, "get-big: one object of " + mebibytes(bench.big), Unit::Bytes, static_cast<double>(bench.big));
  const auto path = bigFile(bench.space, bench.big);
  const auto copy = targetOf(bench) + "/big";
  ourLibrary(bench).put(path, "big");
  for (const auto& client : clientsOfOneObject(bench))
    workload.entrants.push_back(entrant(
        bench, client, [=] { client.get("big", copy); }, [path, copy] { requireSame(path, copy); }));
  return workload;
}

Workload puttingSmall(const Bench& bench) {
  auto workload = newWorkload(bench, "put-small: " + std::to_string(bench.files) + " objects of 4 KiB", Unit::Items,
                              static_cast<double>(bench.files));
  smallFiles(bench.space, bench.files);
  for (const auto& client : clientsOfMany(bench))
    workload.entrants.push_back(entrant(
        bench, client, [=, &bench] { client.putAll(folderOf(bench), std::string(target) + "/all"); },
        [&bench] { requireStoredAll(bench); }));
  return workload;
}

/// Has the small objects in the store.
void makeSource(const Bench& bench) {
  smallFiles(bench.space, bench.files);
  bench.store.clear(source);
  ourLibrary(bench).putAll(folderOf(bench), source);
}

Workload gettingSmall(const Bench& bench) {
  auto workload = newWorkload(bench, "get-small: " + std::to_string(bench.files) + " objects of 4 KiB", Unit::Items,
                              static_cast<double>(bench.files));
  makeSource(bench);
  for (const auto& client : clientsOfMany(bench))
    workload.entrants.push_back(entrant(
        bench, client, [=, &bench] { client.getAll(source, targetOf(bench) + "/all"); },
        [&bench] { requireAll(bench, targetOf(bench) + "/all"); }));
  return workload;
}

Workload listing(const Bench& bench) {
  auto workload = newWorkload(bench, "list: " + std::to_string(bench.files) + " objects with their sizes", Unit::Items,
                              static_cast<double>(bench.files));
  makeSource(bench);
  const auto found = std::make_shared<std::size_t>();
  for (const auto& client : clientsOfOneObject(bench))
    workload.entrants.push_back(entrant(
        bench, client, [=] { *found = client.list(source); },
        [&bench, found] {
          if (*found < bench.files || *found > bench.files + 1)  // some count what stands for the folder
            throw std::runtime_error("listed are " + std::to_string(*found));
        }));
  return workload;
}

}  // namespace

std::vector<Offer> objectWorkloads(const Bench& bench) {
  return {{"put-big", [&bench] { return puttingBig(bench); }},
          {"get-big", [&bench] { return gettingBig(bench); }},
          {"put-small", [&bench] { return puttingSmall(bench); }},
          {"get-small", [&bench] { return gettingSmall(bench); }},
          {"list", [&bench] { return listing(bench); }}};
}

}  // namespace bench
