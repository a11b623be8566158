// Copying 10,000 files of 4 KiB: by one provider, and through the streams between two, whose buffer of 4 MiB
// must cost a small file nothing. "faults" are the pages that the system had to hand out for one copy.

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/backend/memory/MemoryProviderFactory.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/StorageItem.h>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace foundation::storage;
using provider::StorageItem;

constexpr std::size_t fileCount = 10'000;
const std::string content(4096, 'x');

/// A folder on disk with the files in "from", and "to" to copy them to; removed at the end.
class Disk {
 public:
  Disk() {
    if (mkdtemp(path_.data()) == nullptr)
      throw std::runtime_error("no temporary folder");
    std::filesystem::create_directory(path_ + "/from");
    for (std::size_t number = 0; number < fileCount; ++number)
      write(path("from", number));
  }
  ~Disk() { std::filesystem::remove_all(path_); }

  void empty() const {
    std::filesystem::remove_all(path_ + "/to");
    std::filesystem::create_directory(path_ + "/to");
  }
  std::string path(const char* folder, std::size_t number) const {
    return path_ + "/" + folder + "/" + std::to_string(number);
  }

 private:
  static void write(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0666);
    if (::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()) || close(file) != 0)
      throw std::runtime_error("cannot write " + path);
  }

  std::string path_ = (std::filesystem::temp_directory_path() / "foundation-bench-XXXXXX").string();
};

long pageFaults() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

/// @param prepare  before each round, not timed
/// @param copy     copies the file of that number
template <class Prepare, class Copy>
void measure(benchmark::State& state, const Prepare& prepare, const Copy& copy) {
  long faults = 0;
  for (auto _ : state) {
    state.PauseTiming();
    prepare();
    const long before = pageFaults();
    state.ResumeTiming();
    for (std::size_t number = 0; number < fileCount; ++number)
      copy(number);
    state.PauseTiming();
    faults += pageFaults() - before;
    state.ResumeTiming();
  }
  const auto copies = static_cast<double>(state.iterations()) * static_cast<double>(fileCount);
  state.counters["per_copy"] = benchmark::Counter(copies, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  state.counters["faults"] = static_cast<double>(faults) / copies;
}

void copyByHand(const std::string& from, const std::string& to) {
  const int input = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  const int output = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  ssize_t copied = 0;
  do
    copied = copy_file_range(input, nullptr, output, nullptr, 1 << 30, 0);
  while (copied > 0);
  if (copied == -1 || close(input) != 0 || close(output) != 0)
    throw std::runtime_error("cannot copy " + from);
}

StorageItem onDisk(const std::string& path) {
  static const auto provider = backend::local::LocalProviderFactory().buildProvider(provider::StorageIRI(u"file:///"));
  return {provider, provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)))};
}

std::vector<std::u16string> numbers() {
  std::vector<std::u16string> names;
  for (std::size_t number = 0; number < fileCount; ++number)
    names.push_back(fl::i18n::to_ustring(std::to_string(number)));
  return names;
}

StorageItem memoryStore() {
  const provider::StorageIRI root(u"memory:///");
  return {backend::memory::MemoryProviderFactory().buildProvider(root), root};
}

void memoryToMemory(benchmark::State& state, bool betweenStores) {
  const auto names = numbers();
  const auto from = memoryStore();
  for (const auto& name : names)
    StorageItem(from, name).openStream({})->write(content.data(), static_cast<std::int64_t>(content.size()));
  auto to = memoryStore();
  const auto prepare = [&] {
    to = betweenStores ? memoryStore() : StorageItem(from, u"to");
    if (!betweenStores) {
      if (to.folderExists())
        to.removeFolderRecursively();
      to.createFolder();
    }
  };
  measure(state, prepare, [&](std::size_t number) {
    StorageItem(from, names[number]).copyFile(StorageItem(to, names[number]), provider::ReplacementPolicy::Overwrite);
  });
}

template <class Copy>
void fileToFile(benchmark::State& state, const Copy& copy) {
  const Disk disk;
  measure(
      state, [&] { disk.empty(); },
      [&](std::size_t number) { copy(disk.path("from", number), disk.path("to", number)); });
}

void byStreams(const std::string& from, const std::string& to) {
  const provider::CopyFileOptions asking{provider::ReplacementPolicy::Overwrite, provider::TransactionPolicy::NonAtomic,
                                         [] { return provider::InterruptSignal::Continue; }};
  onDisk(from).copyFile(onDisk(to), asking);
}

BENCHMARK_CAPTURE(memoryToMemory, one_store, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(memoryToMemory, two_stores_through_streams, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fileToFile, limit_copy_file_range, copyByHand)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fileToFile, std_filesystem, [](const std::string& from, const std::string& to) {
  std::filesystem::copy_file(from, to);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fileToFile, ours, [](const std::string& from, const std::string& to) {
  onDisk(from).copyFile(onDisk(to), provider::ReplacementPolicy::Overwrite);
})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fileToFile, ours_through_streams, byStreams)->Unit(benchmark::kMillisecond);

}  // namespace
