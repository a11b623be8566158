// Our back ends, what each can do, and the kit's checks over them; over an object store where the environment has one.

#include "ArchiveStore.h"
#include "MemoryStore.h"
#include "ObjectStore.h"
#include "Summary.h"
#include "support/Permissions.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/registry/DefaultRegistry.h>
#include <foundation/storage/testing/Conformance.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

namespace foundation::storage::testing {
namespace {

Place makeLocalFolder() {
  auto path = (std::filesystem::temp_directory_path() / "foundation-conformance-XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr)
    throw std::runtime_error("no temporary folder");
  const auto location = provider::toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)));
  const auto removeAll = [path](const provider::StorageItem* item) {
    delete item;
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  };
  return {new provider::StorageItem(backend::local::LocalProviderFactory().buildProvider(location), location),
          removeAll};
}

std::map<std::string, std::string> tooManyCommits() {
  return {{"List.TenThousandEntries", "the archive is written after each of the ten thousand"}};
}

BackEnd writableArchive(const std::string& name, ArchiveFormat format, const std::string& commit) {
  return {.name = name,
          .makeEmptyFolder = [=] { return makeArchive(format, commit); },
          .capabilities = ArchiveProviderFactory::capabilities(format),
          .deviations = commit == "on-change" ? tooManyCommits() : std::map<std::string, std::string>()};
}

BackEnd readOnlyArchive(const std::string& name, ArchiveFormat format) {
  const auto make = [=](const Contents& contents) { return makeArchiveOf(format, contents); };
  return {.name = name,
          .makeEmptyFolder = [=] { return make({}); },
          .capabilities = ArchiveProviderFactory::capabilities(format),
          .makeFolderWith = make};
}

std::vector<BackEnd> ourBackEnds() {
  return {
      {.name = "Memory",
       .makeEmptyFolder = [] { return rootOf(makeMemoryProvider()); },
       .capabilities = backend::memory::MemoryProviderFactory::capabilities(),
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makeMemoryProvider(bytes)); }},
      {.name = "Local",
       .makeEmptyFolder = makeLocalFolder,
       .capabilities = backend::local::LocalProviderFactory::capabilities()},
      writableArchive("Zip", ArchiveFormat::Zip, "on-flush"),
      // The same with every change written, and read from there.
      writableArchive("ZipOnChange", ArchiveFormat::Zip, "on-change"),
      writableArchive("Tar", ArchiveFormat::Tar, "on-flush"),
      writableArchive("TarOnChange", ArchiveFormat::Tar, "on-change"),
      readOnlyArchive("SevenZip", ArchiveFormat::SevenZip),
      readOnlyArchive("AnyArchive", ArchiveFormat::Any),
  };
}

}  // namespace
}  // namespace foundation::storage::testing

int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  if (argc == 2 && std::strcmp(argv[1], "--summary") == 0) {
    Summary(foundation::storage::registry::makeDefaultRegistry().registrations()).write(std::cout);
    return 0;
  }
  obeyPermissions();
  std::setlocale(LC_CTYPE, "C.UTF-8");  // libarchive, which makes archives here, converts names by it
  auto backEnds = ourBackEnds();
  // The table tells of it also where there is none to check.
  if (Engine::isThere() || (argc > 1 && std::strcmp(argv[1], "--capabilities") == 0))
    backEnds.push_back(objectStore("S3", &Engine::makeFolder));
  return runConformance(argc, argv, backEnds);
}
