// Files and folders on local disk: ours, the system calls by hand, and the peers, side by side.

#include "disk/Workloads.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>

namespace {

using namespace bench;

struct Options {
  std::string data = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/var/tmp";
  std::string memory = "/dev/shm";
  Selection selection;
  bool isSmall = false;
};

void declare(CLI::App& app, Options& options) {
  app.add_option("--data", options.data, "Folder on the disk to measure; a temporary one is made in it")
      ->envname("FOUNDATION_BENCH_DATA")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--memory", options.memory, "Folder on a tmpfs, for what is measured there")->capture_default_str();
  declare(app, options.selection);
  app.add_flag("--small", options.isSmall, "A hundredth of the work, to see whether all works");
}

void append(std::vector<Offer>& offers, std::vector<Offer> more) {
  std::move(more.begin(), more.end(), std::back_inserter(offers));
}

std::vector<Offer> allOf(const Place& disk, const std::optional<Place>& memory, const Scale& scale) {
  auto offers = listings(disk, scale);
  for (const auto group : {copies, replacements, streams, removals}) {
    append(offers, group(disk, scale));
    if (memory && group != removals)
      append(offers, group(*memory, scale));
  }
  return offers;
}

void run(const Options& options) {
  const auto scale = options.isSmall ? smallScale() : Scale{};
  const Space onDisk(options.data);
  const bool hasMemory = isMemory(options.memory, 2 * scale.big);
  const std::optional<Space> inMemory = hasMemory ? std::optional<Space>(std::in_place, options.memory) : std::nullopt;
  const Place disk{onDisk, "on disk"};
  const auto memory = inMemory ? std::optional<Place>({*inMemory, "in memory", true}) : std::nullopt;
  std::printf("Data in %s; %zu rounds after one to warm up, so that what is read is in the page cache.\n",
              options.data.c_str(), options.selection.rounds);
  if (!hasMemory)
    std::printf("%s is no tmpfs with room for it; nothing is measured in memory.\n", options.memory.c_str());
  std::printf("\n");
  measure(allOf(disk, memory, scale), options.selection);
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  CLI::App app("Files and folders on local disk, beside the peers");
  declare(app, options);
  CLI11_PARSE(app, count, arguments);
  try {
    bench::catchInterrupts();
    run(options);
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench-disk: %s\n", failure.what());
    return 1;
  }
}
