// Copies files into an archive, and makes what is missing of it: the archive, and those that it is in.
//
//     pack zip:tar:file:///home/ann/old.tar.gz!/letters.zip!/ file:///home/ann/may.txt file:///home/ann/june.txt

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <iostream>

namespace provider = foundation::storage::provider;
using foundation::storage::registry::ProviderRegistry;

// [make]
/// Makes the archives that `place` is in, where they are missing, the outermost first.
void makeArchives(const ProviderRegistry& registry, const provider::StorageIRI& place) {
  if (!place.isOpaque())
    return;
  makeArchives(registry, place.getInnerIRI());
  const auto root = registry.item(provider::StorageIRI(place.getScheme(), place.getInnerIRI(), u"/"));
  if (!root.folderExists())
    root.createFolder();
}
// [make]

int main(int argc, char** argv) try {
  if (argc < 2)
    throw std::invalid_argument("into what? pack ARCHIVE FILE...");
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  // [pack]
  const auto folder = registry.item(fl::i18n::to_ustring(argv[1]));
  makeArchives(registry, folder.getLocation());
  for (int index = 2; index < argc; ++index) {
    const auto file = registry.item(fl::i18n::to_ustring(argv[index]));
    file.copyFile({folder, file.getName()}, provider::ReplacementPolicy::Overwrite);
  }
  folder.flushFilesystem();  // now the archives are written, once
  // [pack]
} catch (const provider::Exception& failure) {
  std::cerr << "pack: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "pack: " << failure.what() << '\n';
  return 1;
}
