#include "archive/Entrants.h"
#include "archive/HandZip.h"
#include "archive/Ours.h"

namespace bench {
namespace {

constexpr auto pythonNested = R"(
import sys, zipfile
with zipfile.ZipFile(sys.argv[1]) as outer, outer.open("inner.zip") as bytes, zipfile.ZipFile(bytes) as inner:
    sys.stdout.buffer.write(inner.read(sys.argv[2])))";

std::string ourNested(const Sample& sample) {
  const auto outer = ourArchive(sample.path, ArchiveFormat::Zip);
  return ourContent(ourArchive(StorageItem(outer, u"inner.zip"), ArchiveFormat::Zip), sample.name);
}

/// What is stored is read where it lies; what is deflated has to be inflated whole, since the directory is at the end.
std::string handNested(const Sample& sample) {
  const auto outer = fileBytes(sample.path);
  const auto entry = entryOf(outer, "inner.zip");
  const auto inner = entry.isDeflated ? memoryBytes(contentOf(outer, entry)) : storedBytes(outer, entry);
  return contentOf(inner, entryOf(inner, sample.name));
}

Workload reading(const Bench& bench, bool isDeflated) {
  const auto sample = nestedZip(bench.space, bench.amounts.nested, isDeflated);
  const auto& [path, name, expected] = sample;
  Workload workload{.title = "nested: one entry of 1 MiB at the end of a zip of " +
                             std::to_string(bench.amounts.nested) + ", " + (isDeflated ? "deflated" : "stored") +
                             " in a zip",
                    .unit = Unit::Runs,
                    .amount = 1};
  workload.entrants = {
      giving(
          "ours", [sample] { return ourNested(sample); }, expected),
      giving(
          isDeflated ? "by hand, in memory" : "limit", [sample] { return handNested(sample); }, expected)};
  addProgram(workload, "fstore cat", {{bench.fstore, "cat", "zip:" + locationIn("zip", path, "inner.zip!/" + name)}},
             expected);
  addProgram(workload, "python", {{"python3", "-c", pythonNested, path, name}}, expected);
  addProgram(
      workload, "unzip -p, twice",
      {{"sh", "-c", "unzip -p \"$1\" inner.zip > \"$1.inner\" && unzip -p \"$1.inner\" \"$2\"", "sh", path, name}},
      expected);
  addProgram(workload, "bsdtar -xOf, twice",
             {{"sh", "-c", "bsdtar -xOf \"$1\" inner.zip | bsdtar -xOf - \"$2\"", "sh", path, name}}, expected);
  return workload;
}

}  // namespace

std::vector<Offer> nestedReads(const Bench& bench) {
  return {{"nested-stored", [&bench] { return reading(bench, false); }},
          {"nested-deflated", [&bench] { return reading(bench, true); }}};
}

}  // namespace bench
