#include "archive/Data.h"

#include "archive/Process.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace bench {
namespace {

/// Begins every script. `write` keeps what is to come out again beside the archive.
constexpr auto prelude = R"(
import io, random, sys, tarfile, zipfile
path, entries, deflated = sys.argv[1], int(sys.argv[2]), sys.argv[3] == "deflated"
draw = random.Random(1)
letters = bytes(range(64)) * 4
def some(size):  # of which three quarters are left when it is deflated
    return draw.randbytes(size).translate(letters)
def write(suffix, content):
    with open(path + suffix, "wb") as file:
        file.write(content)
STORED, DEFLATED = zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED
)";

constexpr auto listedScript = R"(
with zipfile.ZipFile(path, "w") as archive:
    for number in range(entries):
        archive.writestr("picture-%06d.jpeg" % number, bytes(number % 100))
)";

constexpr auto largeScript = R"(
with zipfile.ZipFile(path, "w") as archive:
    for number in range(entries):
        content = some(1 << 20)
        archive.writestr("film-%04d.mpeg" % number, content, DEFLATED if number % 2 else STORED)
        if number >= entries - 2:
            write(".deflated" if number % 2 else ".stored", content)
    archive.writestr("small.txt", some(4096))
)";

constexpr auto smallEntriesScript = R"(
contents = [some(draw.randrange(8192)) for number in range(entries)]
with zipfile.ZipFile(path + ".zip", "w", DEFLATED) as archive, tarfile.open(path + ".tar.gz", "w:gz") as tar:
    for number, content in enumerate(contents):
        name = "letter-%05d.txt" % number
        archive.writestr(name, content)
        entry = tarfile.TarInfo(name)
        entry.size = len(content)
        tar.addfile(entry, io.BytesIO(content))
write(".all", b"".join(contents))
)";

constexpr auto nestedScript = R"(
inner = io.BytesIO()
with zipfile.ZipFile(inner, "w", DEFLATED) as archive:
    for number in range(entries):
        content = some(1 << 20)
        archive.writestr("film-%04d.mpeg" % number, content)
with zipfile.ZipFile(path, "w", DEFLATED if deflated else STORED) as archive:
    archive.writestr("inner.zip", inner.getvalue())
write(".content", content)
)";

void make(const char* script, const std::string& path, std::size_t entries, bool isDeflated = false) {
  outputOf({.words = {"python3", "-c", std::string(prelude) + script, path, std::to_string(entries),
                      isDeflated ? "deflated" : "stored"}});
}

std::string contentOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw std::runtime_error(path + " was not made");
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string numbered(const std::string& prefix, std::size_t digits, std::size_t number, const std::string& suffix) {
  auto text = std::to_string(number);
  return prefix + std::string(digits - text.size(), '0') + text + suffix;
}

Sample smallEntries(const Space& space, std::size_t entries, const std::string& suffix) {
  const auto path = space.path() + "/letters";
  if (!std::filesystem::exists(path + ".all"))
    make(smallEntriesScript, path, entries);
  return {path + suffix, "", contentOfFile(path + ".all")};
}

}  // namespace

Amounts smallAmounts() { return {.listed = 1'000, .large = 16, .extracted = 100, .nested = 4}; }

std::string listedZip(const Space& space, std::size_t entries) {
  auto path = space.path() + "/pictures.zip";
  if (!std::filesystem::exists(path))
    make(listedScript, path, entries);
  return path;
}

Tally listedTally(std::size_t entries) {
  Tally tally{.entries = entries};
  for (std::size_t number = 0; number < entries; ++number) {
    tally.nameLength += numbered("picture-", 6, number, ".jpeg").size();
    tally.bytes += number % 100;
  }
  return tally;
}

Sample largeZip(const Space& space, std::size_t entries, bool isDeflated) {
  const auto path = space.path() + "/films.zip";
  if (!std::filesystem::exists(path))
    make(largeScript, path, entries);
  return {path, numbered("film-", 4, entries - (isDeflated ? 1 : 2), ".mpeg"),
          contentOfFile(path + (isDeflated ? ".deflated" : ".stored"))};
}

Sample smallEntriesZip(const Space& space, std::size_t entries) { return smallEntries(space, entries, ".zip"); }
Sample smallEntriesTarGz(const Space& space, std::size_t entries) { return smallEntries(space, entries, ".tar.gz"); }

Sample nestedZip(const Space& space, std::size_t entries, bool isDeflated) {
  const auto path = space.path() + (isDeflated ? "/nested-deflated.zip" : "/nested-stored.zip");
  if (!std::filesystem::exists(path))
    make(nestedScript, path, entries, isDeflated);
  return {path, numbered("film-", 4, entries - 1, ".mpeg"), contentOfFile(path + ".content")};
}

}  // namespace bench
