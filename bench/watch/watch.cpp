// One pass over a folder of 100,000 files in which nothing has changed, beside the system calls that it cannot do
// without; and what a watched entry holds in memory.

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/events/SingleFolderChangePoller.h>

#include <benchmark/benchmark.h>
#include <boost/property_tree/ptree.hpp>

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace foundation::storage;
using events::Kind;
using provider::SingleFolderChangePoller;

constexpr int fileCount = 100'000;

/// A folder with many files; removed at the end.
class Folder {
 public:
  Folder() {
    if (mkdtemp(path_.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    for (int number = 0; number < fileCount; ++number) {
      char name[32];
      std::snprintf(name, sizeof name, "/picture-%06d.jpeg", number);
      if (const int file = open((path_ + name).c_str(), O_WRONLY | O_CREAT, 0666); file == -1 || close(file) != 0)
        throw std::runtime_error("cannot make files");
    }
  }
  ~Folder() { std::filesystem::remove_all(path_); }

  const std::string& path() const { return path_; }

 private:
  std::string path_ = (std::filesystem::temp_directory_path() / "foundation-bench-XXXXXX").string();
};

const Folder& folder() {
  static const Folder made;
  return made;
}

void perEntry(benchmark::State& state) {
  state.counters["per_entry"] = benchmark::Counter(static_cast<double>(state.iterations()) * fileCount,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// getdents64 and statx for every entry, and no more.
void limit(benchmark::State& state) {
  folder();
  std::vector<char> buffer(64 * 1024);
  for (auto _ : state) {
    const int opened = open(folder().path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    long count = 0;
    for (long got; (got = syscall(SYS_getdents64, opened, buffer.data(), buffer.size())) > 0;)
      for (long at = 0; at < got;) {
        const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
        struct statx status;
        if (entry->d_name[0] != '.' &&
            statx(opened, entry->d_name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) == 0)
          ++count;
        at += entry->d_reclen;
      }
    close(opened);
    if (count != fileCount)
      state.SkipWithError("not all files were seen");
  }
  perEntry(state);
}

/// A poller of all kinds over the local back end.
class Watched {
 public:
  Watched() { poller_.buildInitialSnapshot(); }

  void check() const { poller_.checkForChanges(); }
  int events() const { return events_; }

 private:
  const provider::StorageIRI location_ =
      provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(folder().path())));
  const std::shared_ptr<provider::IProvider> store_ = backend::local::LocalProviderFactory().buildProvider(location_);
  int events_ = 0;
  SingleFolderChangePoller poller_{location_,
                                   [this](const auto&...) { ++events_; },
                                   [this](const provider::StorageIRI& at) { return store_->listAll(at, {}); },
                                   [this](const provider::StorageIRI& at) { return store_->getFileAttributes(at); },
                                   [this](const provider::StorageIRI& at) { return store_->getFolderAttributes(at); },
                                   {Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded,
                                    Kind::EntryModified, Kind::EntryRemoved},
                                   provider::RecursiveChangePolling::DirectOnly};
};

void idlePass(benchmark::State& state) {
  const Watched watched;
  for (auto _ : state)
    watched.check();
  if (watched.events() != 0)
    state.SkipWithError("an idle folder had events");
  perEntry(state);
}

std::size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void heapPerEntry(benchmark::State& state) {
  folder();
  for (auto _ : state) {
    const auto before = heapInUse();
    const Watched watched;
    watched.check();
    state.counters["bytes_per_entry"] = static_cast<double>(heapInUse() - before) / fileCount;
  }
}

BENCHMARK(limit)->Name("idle-pass/limit")->Unit(benchmark::kMillisecond);
BENCHMARK(idlePass)->Name("idle-pass/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(heapPerEntry)->Name("heap/ours")->Iterations(1);

}  // namespace
