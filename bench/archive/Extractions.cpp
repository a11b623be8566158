#include "archive/Entrants.h"
#include "archive/HandZip.h"
#include "archive/LibArchive.h"
#include "archive/Ours.h"

namespace bench {
namespace {

constexpr auto pythonZip = R"(
import sys, zipfile
with zipfile.ZipFile(sys.argv[1]) as archive:
    for entry in archive.infolist():
        sys.stdout.buffer.write(archive.read(entry)))";

constexpr auto pythonTar = R"(
import sys, tarfile
with tarfile.open(sys.argv[1]) as archive:
    for entry in archive:
        sys.stdout.buffer.write(archive.extractfile(entry).read()))";

std::string handContents(const std::string& path) {
  const auto archive = fileBytes(path);
  std::string all;
  for (const auto& entry : entriesOf(archive))
    all += contentOf(archive, entry);
  return all;
}

/// @param format  of ours
Workload extracting(const Bench& bench, const Sample& sample, const std::string& kind, ArchiveFormat format) {
  const auto& [path, name, expected] = sample;
  Workload workload{.title = "extract: " + std::to_string(bench.amounts.extracted) + " entries of 0 to 8 KiB of a " +
                             kind + ", in its order, to memory",
                    .amount = static_cast<double>(bench.amounts.extracted)};
  workload.entrants = {giving(
      "ours", [path = path, format] { return ourContents(ourArchive(path, format)); }, expected)};
  const bool isZip = format == ArchiveFormat::Zip;
  // What is least for a compressed tar is what the library does for it.
  if (isZip)
    workload.entrants.push_back(giving(
        "limit", [path = path] { return handContents(path); }, expected));
  workload.entrants.push_back(giving(
      isZip ? "libarchive" : "limit", [path = path] { return libArchiveContents(path); }, expected));
  if (isZip)
    addProgram(workload, "unzip -p", {{"unzip", "-p", path}}, expected);
  else
    addProgram(workload, "tar -xOf", {{"tar", "-xOf", path}}, expected);
  addProgram(workload, "bsdtar -xOf", {{"bsdtar", "-xOf", path}}, expected);
  addProgram(workload, "python", {{"python3", "-c", isZip ? pythonZip : pythonTar, path}}, expected);
  return workload;
}

}  // namespace

std::vector<Offer> extractions(const Bench& bench) {
  const auto zip = [&bench] {
    return extracting(bench, smallEntriesZip(bench.space, bench.amounts.extracted), "zip", ArchiveFormat::Zip);
  };
  const auto tar = [&bench] {
    return extracting(bench, smallEntriesTarGz(bench.space, bench.amounts.extracted), "tar.gz", ArchiveFormat::Tar);
  };
  return {{"extract-zip", zip}, {"extract-targz", tar}};
}

}  // namespace bench
