// Archives: ours, the bare work by hand, and the peers, side by side.

#include "archive/Entrants.h"

#include <CLI/CLI.hpp>
#include <archive.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iterator>
#include <utility>

namespace {

using namespace bench;

struct Options {
  std::string data = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/var/tmp";
  /// It is built beside this program.
  std::string fstore = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "fstore";
  Selection selection;
  bool isSmall = false;
};

void declare(CLI::App& app, Options& options) {
  app.add_option("--data", options.data, "Folder on the disk to measure; a temporary one is made in it")
      ->envname("FOUNDATION_BENCH_DATA")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--fstore", options.fstore, "Our command")->capture_default_str();
  declare(app, options.selection);
  app.add_flag("--small", options.isSmall, "A hundredth of the work, to see whether all works");
}

std::vector<Offer> allOf(const Bench& bench) {
  std::vector<Offer> offers;
  for (const auto group : {archiveListings, entryReads, extractions, entryReplacements, nestedReads}) {
    auto more = group(bench);
    std::move(more.begin(), more.end(), std::back_inserter(offers));
  }
  return offers;
}

/// The first line of what each peer says of itself.
void printVersions() {
  std::printf("%s\n", archive_version_details());
  for (const Command& command :
       {Command{{"unzip", "-v"}}, Command{{"bsdtar", "--version"}}, Command{{"python3", "--version"}}})
    if (isInstalled(command.words.front())) {
      const auto output = outputOf(command);
      std::printf("%s\n", output.substr(0, output.find('\n')).c_str());
    }
}

void run(const Options& options) {
  if (!isInstalled("python3"))
    throw std::runtime_error("python3 makes the archives, and is not here");
  const Space space(std::filesystem::absolute(options.data));
  const Bench bench{space, options.isSmall ? smallAmounts() : Amounts{}, options.fstore};
  std::printf("Data in %s; %zu rounds after one to warm up, so that what is read is in the page cache.\n",
              options.data.c_str(), options.selection.rounds);
  std::printf("What bears the name of a program is measured from its start to its end.\n");
  printVersions();
  std::printf("\n");
  measure(allOf(bench), options.selection);
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  CLI::App app("Archives, beside the peers");
  declare(app, options);
  CLI11_PARSE(app, count, arguments);
  try {
    bench::catchInterrupts();
    run(options);
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench-archive: %s\n", failure.what());
    return 1;
  }
}
