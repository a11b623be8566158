// Object stores: ours, and the clients that one would otherwise start, on the same store.

#include "s3/Workloads.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>

namespace {

using namespace bench;

struct Options {
  std::string data;
  /// It is built beside this program.
  std::string fstore = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "fstore";
  Selection selection{.rounds = 5};
  std::size_t jobs = 8;
  bool isSmall = false;
};

/// Where files are in memory, if there is room, so that it is not the disk that is measured.
std::string defaultFolder(const Options& options) {
  if (isMemory("/dev/shm", options.isSmall ? 64 << 20 : std::uint64_t{3} << 30))
    return "/dev/shm";
  return std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/var/tmp";
}

void declare(CLI::App& app, Options& options) {
  app.add_option("--data", options.data, "Folder to measure with; a temporary one is made in it")
      ->envname("FOUNDATION_BENCH_DATA")
      ->check(CLI::ExistingDirectory);
  app.add_option("--fstore", options.fstore, "Our command")->capture_default_str();
  app.add_option("--jobs", options.jobs, "Files at once")->check(CLI::PositiveNumber)->capture_default_str();
  declare(app, options.selection);
  app.add_flag("--small", options.isSmall, "A hundredth of the work, to see whether all works");
}

/// The first line of what each peer says of itself.
void printVersions() {
  for (const Command& command : {Command{{"curl", "--version"}}, Command{{"rclone", "version"}}}) {
    if (!isInstalled(command.words.front()))
      throw std::runtime_error(command.words.front() + " is not here");
    const auto output = outputOf(command);
    std::printf("%s\n", output.substr(0, output.find('\n')).c_str());
  }
}

void run(const Options& options) {
  const Space space(options.data.empty() ? defaultFolder(options) : std::filesystem::absolute(options.data).string());
  Store store;
  const Bench bench{space,
                    store,
                    options.fstore,
                    options.jobs,
                    options.isSmall ? std::size_t{200} : std::size_t{10'000},
                    std::uint64_t{options.isSmall ? 20u : 512u} << 20};
  std::printf("Data in %s; %zu rounds after one to warm up. Beside each client stand the requests of its last round.\n",
              space.path().c_str(), options.selection.rounds);
  printVersions();
  std::printf("\n");
  measure(objectWorkloads(bench), options.selection);
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  CLI::App app("Object stores, beside the peers");
  declare(app, options);
  CLI11_PARSE(app, count, arguments);
  try {
    bench::catchInterrupts();
    run(options);
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench-s3: %s\n", failure.what());
    return 1;
  }
}
