// Our back ends, what each can do, and the kit's checks over them.

#include "MemoryStore.h"
#include "support/Permissions.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/testing/Conformance.h>

#include <cstdlib>
#include <filesystem>
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

std::vector<BackEnd> ourBackEnds() {
  return {
      {.name = "Memory",
       .makeEmptyFolder = [] { return rootOf(makeMemoryProvider()); },
       .capabilities = backend::memory::MemoryProviderFactory::capabilities(),
       .makeSmallFolder = [](std::uint64_t bytes) { return rootOf(makeMemoryProvider(bytes)); }},
      {.name = "Local",
       .makeEmptyFolder = makeLocalFolder,
       .capabilities = backend::local::LocalProviderFactory::capabilities()},
  };
}

}  // namespace
}  // namespace foundation::storage::testing

int main(int argc, char** argv) {
  using namespace foundation::storage::testing;
  obeyPermissions();
  return runConformance(argc, argv, ourBackEnds());
}
