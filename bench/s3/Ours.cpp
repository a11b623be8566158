#include "s3/Clients.h"

#include <foundation/storage/provider/IProvider.h>

#include <algorithm>
#include <atomic>
#include <future>

namespace bench {
namespace {

using namespace foundation::storage;

std::vector<std::u16string> namesIn(const provider::StorageItem& folder) {
  std::vector<std::u16string> names;
  for (const auto entries = folder.listAllNamesOnly(u""); entries->hasNext();) {
    entries->next();
    names.push_back(entries->current().getName());
  }
  return names;
}

/// Calls `work` with each number below `count`, on so many threads.
void forEach(std::size_t count, std::size_t threads, const std::function<void(std::size_t number)>& work) {
  std::atomic<std::size_t> next = 0;
  std::vector<std::future<void>> all;
  for (std::size_t thread = 0; thread < threads; ++thread)
    all.push_back(std::async(std::launch::async, [&] {
      for (auto number = next++; number < count; number = next++)
        work(number);
    }));
  for (auto& one : all)
    one.get();
}

void copy(const provider::StorageItem& from, const provider::StorageItem& to) {
  from.copyFile(to, provider::ReplacementPolicy::Overwrite);
}

std::size_t countEntries(const provider::StorageItem& folder) {
  std::size_t count = 0;
  for (const auto entries = folder.listAll(u""); entries->hasNext(); entries->next())
    ++count;
  return count;
}

}  // namespace

Client ourLibrary(const Bench& bench) {
  auto& store = bench.store;
  return {.name = "ours",
          .isOurs = true,
          .put = [&](const auto& path, const auto& key) { copy(store.file(path), store.item(key)); },
          .get = [&](const auto& key, const auto& path) { copy(store.item(key), store.file(path)); },
          .putAll =
              [&](const auto& folder, const auto& key) {
                const auto place = store.item(key);
                place.createFolder();
                const auto source = store.file(folder);
                const auto names = namesIn(source);
                forEach(names.size(), bench.jobs, [&](std::size_t number) {
                  copy({source, names[number]}, {place, names[number]});
                });
              },
          .getAll =
              [&](const auto& key, const auto& folder) {
                const auto place = store.item(key);
                const auto target = store.file(folder);
                target.createFolder();
                const auto names = namesIn(place);
                forEach(names.size(), bench.jobs, [&](std::size_t number) {
                  copy({place, names[number]}, {target, names[number]});
                });
              },
          .list = [&](const auto& key) { return countEntries(store.item(key)); }};
}

Client ourCommand(const Bench& bench) {
  const auto options = bench.space.path() + "/options.info";
  writeFile(options,
            "s3 {\n  endpoint \"" + bench.store.endpoint() + "\"\n  region \"" + bench.store.region() + "\"\n}\n");
  const auto run = [&bench, options](std::vector<std::string> words) {
    words.insert(words.begin(), {bench.fstore, "-c", options});
    return outputOf({words});
  };
  const auto copy = [&bench, run](const std::string& from, const std::string& to) {
    run({"cp", "-j", std::to_string(bench.jobs), from, to});
  };
  auto& store = bench.store;
  return {.name = "fstore",
          .isOurs = true,
          .put = [&store, copy](const auto& path, const auto& key) { copy(path, store.location(key)); },
          .get = [&store, copy](const auto& key, const auto& path) { copy(store.location(key), path); },
          .putAll = [&store, copy](const auto& folder, const auto& key) { copy(folder, store.location(key)); },
          .getAll = [&store, copy](const auto& key, const auto& folder) { copy(store.location(key), folder); },
          .list =
              [&store, run](const auto& key) {
                const auto lines = run({"ls", "-l", store.location(key)});
                return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
              }};
}

}  // namespace bench
