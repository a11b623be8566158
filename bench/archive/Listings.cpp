#include "archive/Entrants.h"
#include "archive/HandZip.h"
#include "archive/LibArchive.h"
#include "archive/Ours.h"

#ifdef BENCH_HAS_GIO
#include <gio/gio.h>
#endif

#include <memory>
#include <stdexcept>
#include <string_view>

namespace bench {
namespace {

Tally handTally(const std::string& path) {
  Tally tally;
  for (const auto& entry : entriesOf(fileBytes(path))) {
    ++tally.entries;
    tally.nameLength += entry.name.size();
    tally.bytes += entry.size;
  }
  return tally;
}

Entrant counting(std::string name, std::function<Tally()> run, const Tally& expected) {
  const auto found = std::make_shared<Tally>();
  return {.name = std::move(name),
          .run = [found, run = std::move(run)](std::size_t) { *found = run(); },
          .check =
              [found, expected](std::size_t) {
                if (*found != expected)
                  throw std::runtime_error("the listing is not what lies in the archive");
              }};
}

std::size_t occurrences(const std::string& text, std::string_view word) {
  std::size_t count = 0;
  for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at + word.size()))
    ++count;
  return count;
}

/// Whether GIO would go into archives: its back end for them is a daemon of the desktop session.
std::string gioNote() {
#ifdef BENCH_HAS_GIO
  for (const auto* const* scheme = g_vfs_get_supported_uri_schemes(g_vfs_get_default()); *scheme != nullptr; ++scheme)
    if (std::string_view(*scheme) == "archive")
      return "GIO has its back end for archives here, which is not measured: a daemon has to mount each archive";
#endif
  return "GIO has no back end for archives here: it comes with the daemons of a desktop session";
}

constexpr auto pythonList = R"(
import sys, zipfile
with zipfile.ZipFile(sys.argv[1]) as archive:
    sys.stdout.writelines("%d %s\n" % (entry.file_size, entry.filename) for entry in archive.infolist()))";

}  // namespace

std::vector<Offer> archiveListings(const Bench& bench) {
  const auto build = [&bench] {
    const auto entries = bench.amounts.listed;
    const auto path = listedZip(bench.space, entries);
    const auto expected = listedTally(entries);
    Workload workload{.title = "list: names and sizes of " + std::to_string(entries) + " entries of a zip",
                      .amount = static_cast<double>(entries)};
    workload.entrants = {counting(
                             "ours", [path] { return tallyOf(ourArchive(path, ArchiveFormat::Zip)); }, expected),
                         counting(
                             "limit", [path] { return handTally(path); }, expected),
                         counting(
                             "libarchive", [path] { return libArchiveTally(path); }, expected)};
    const auto check = [entries](const std::string& output) {
      if (occurrences(output, "picture-") != entries)
        throw std::runtime_error("the listing is not what lies in the archive");
    };
    addProgram(workload, "fstore ls -l -U", {{bench.fstore, "ls", "-l", "-U", locationIn("zip", path, "")}}, check);
    addProgram(workload, "unzip -l", {{"unzip", "-ql", path}}, [entries](const std::string& output) {
      if (occurrences(output, " picture-") != entries)
        throw std::runtime_error("the listing is not what lies in the archive");
    });
    addProgram(workload, "bsdtar -tvf", {{"bsdtar", "-tvf", path}}, check);
    addProgram(workload, "python", {{"python3", "-c", pythonList, path}}, check);
    workload.notes.push_back(gioNote());
    return workload;
  };
  return {{"list", build}};
}

}  // namespace bench
