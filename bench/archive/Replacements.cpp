#include "archive/Entrants.h"
#include "archive/HandZip.h"
#include "archive/Ours.h"
#include "disk/Descriptor.h"

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace bench {
namespace {

/// The library has no way to take compressed entries over.
constexpr auto pythonReplace = R"(
import os, sys, zipfile
path, name = sys.argv[1:]
with zipfile.ZipFile(path) as old, zipfile.ZipFile(path + ".new", "w") as new:
    for entry in old.infolist():
        if entry.filename != name:
            new.writestr(entry, old.read(entry))
    new.write(name, compress_type=zipfile.ZIP_DEFLATED)
os.replace(path + ".new", path))";

constexpr auto entryName = "small.txt";

/// Makes a copy and puts it in the place of the archive: what is least for a file that is to be replaced whole.
void replaceByHand(const std::string& path) {
  const auto scratch = path + ".copy";
  {
    const Descriptor from(path, O_RDONLY);
    const Descriptor to(scratch, O_WRONLY | O_CREAT | O_TRUNC);
    std::string block(64 * 1024, '\0');
    ssize_t got = 0;
    while ((got = read(from.get(), block.data(), block.size())) > 0)
      check(write(to.get(), block.data(), static_cast<std::size_t>(got)) == got, scratch);
    check(got == 0, path);
  }
  std::filesystem::rename(scratch, path);
}

/// The new content of the entry, another one each time.
class NextContent {
 public:
  explicit NextContent(std::string folder) : folder_(std::move(folder)) {}

  void draw() {
    content_ = std::string(4096, static_cast<char>('a' + number_++ % 26));
    writeFile(file(), content_);
  }
  const std::string& folder() const { return folder_; }
  std::string file() const { return folder_ + "/" + entryName; }
  const std::string& content() const { return content_; }

  void requireIn(const std::string& path) const {
    const auto archive = fileBytes(path);
    if (contentOf(archive, entryOf(archive, entryName)) != content_)
      throw std::runtime_error("the entry was not replaced");
  }

 private:
  std::string folder_;
  std::string content_;
  std::size_t number_ = 0;
};

Workload replacing(const Bench& bench) {
  const auto path = largeZip(bench.space, bench.amounts.large, true).path;
  const auto next = std::make_shared<NextContent>(bench.space.emptyFolder("next"));
  Workload workload{
      .title = "replace: one entry of 4 KiB of a zip with " + std::to_string(bench.amounts.large) + " entries of 1 MiB",
      .unit = Unit::Runs,
      .amount = 1};
  workload.settle = [next, &bench] {
    next->draw();
    bench.space.settle();
  };
  const auto check = [next, path](const std::string&) { next->requireIn(path); };
  workload.entrants = {
      {.name = "ours",
       .run = [next,
               path](std::size_t) { ourReplace(ourArchive(path, ArchiveFormat::Zip), entryName, next->content()); },
       .check = [check](std::size_t) { check(""); }},
      {.name = "limit", .run = [path](std::size_t) { replaceByHand(path); }}};
  addProgram(workload, "fstore put",
             {.words = {bench.fstore, "put", locationIn("zip", path, entryName)}, .input = next->file()}, check);
  addProgram(workload, "zip", {.words = {"zip", "-q", path, entryName}, .folder = next->folder()}, check);
  addProgram(workload, "python, deflating all anew",
             {.words = {"python3", "-c", pythonReplace, path, entryName}, .folder = next->folder()}, check);
  return workload;
}

}  // namespace

std::vector<Offer> entryReplacements(const Bench& bench) {
  return {{"replace", [&bench] { return replacing(bench); }}};
}

}  // namespace bench
