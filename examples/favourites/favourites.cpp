// Prints a file by its name among favourites, which may be in any stores.
//
//     favourites favourite:///hosts file:///etc/hosts zip:file:///home/ann/letters.zip!/may.txt

#include "Favourites.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <array>
#include <iostream>

namespace example {

// [factory]
/// All locations of the scheme are in one store.
class FavouritesFactory final : public PhysicalProviderFactory {
 public:
  explicit FavouritesFactory(Favourites::Files files) : files_(std::move(files)) {}

 private:
  std::shared_ptr<IProvider> doBuildProvider(const StorageIRI&) const override {
    return std::make_shared<Favourites>(files_);
  }
  StorageIRI doGetKey(const StorageIRI& location) const override { return StorageIRI(location, u"/"); }

  Favourites::Files files_;
};
// [factory]

}  // namespace example

int main(int argc, char** argv) try {
  auto registry = foundation::storage::registry::makeDefaultRegistry();
  example::Favourites::Files files;
  for (int index = 2; index < argc; ++index) {
    const auto file = registry.item(fl::i18n::to_ustring(argv[index]));
    files.emplace(file.getName(), file);
  }
  // [register]
  registry.addPhysical(u"favourite", std::make_shared<example::FavouritesFactory>(std::move(files)));
  // [register]
  const auto stream = registry.item(fl::i18n::to_ustring(argc > 1 ? argv[1] : "favourite:///")).openReadOnlyStream();
  std::array<char, 64 * 1024> block;
  for (std::int64_t count; (count = stream->read(block.data(), std::ssize(block))) > 0;)
    std::cout.write(block.data(), count);
  return std::cout.flush() ? 0 : 1;
} catch (const example::Exception& failure) {
  std::cerr << "favourites: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "favourites: " << failure.what() << '\n';
  return 1;
}
