#include "archive/Entrants.h"
#include "archive/HandZip.h"
#include "archive/LibArchive.h"
#include "archive/Ours.h"

namespace bench {
namespace {

constexpr auto pythonRead = R"(
import sys, zipfile
with zipfile.ZipFile(sys.argv[1]) as archive:
    sys.stdout.buffer.write(archive.read(sys.argv[2])))";

Workload reading(const Bench& bench, bool isDeflated) {
  const auto sample = largeZip(bench.space, bench.amounts.large, isDeflated);
  const auto& [path, name, expected] = sample;
  Workload workload{.title = std::string("read: one ") + (isDeflated ? "deflated" : "stored") +
                             " entry of 1 MiB at the end of a zip of " + std::to_string(bench.amounts.large),
                    .unit = Unit::Runs,
                    .amount = 1};
  workload.entrants = {
      giving(
          "ours", [sample] { return ourContent(ourArchive(sample.path, ArchiveFormat::Zip), sample.name); }, expected),
      giving(
          "ours, opened before",
          [archive = ourArchive(path, ArchiveFormat::Zip), sample] { return ourContent(archive, sample.name); },
          expected),
      giving(
          "limit",
          [sample] {
            const auto archive = fileBytes(sample.path);
            return contentOf(archive, entryOf(archive, sample.name));
          },
          expected),
      giving(
          "libarchive", [sample] { return libArchiveContent(sample.path, sample.name); }, expected)};
  addProgram(workload, "fstore cat", {{bench.fstore, "cat", locationIn("zip", path, name)}}, expected);
  addProgram(workload, "unzip -p", {{"unzip", "-p", path, name}}, expected);
  addProgram(workload, "bsdtar -xOf", {{"bsdtar", "-xOf", path, name}}, expected);
  addProgram(workload, "python", {{"python3", "-c", pythonRead, path, name}}, expected);
  return workload;
}

}  // namespace

std::vector<Offer> entryReads(const Bench& bench) {
  return {{"read-stored", [&bench] { return reading(bench, false); }},
          {"read-deflated", [&bench] { return reading(bench, true); }}};
}

}  // namespace bench
