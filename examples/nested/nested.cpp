// Prints a file that is in an archive, or in an archive in an archive, without unpacking anything to the side.
//
//     nested zip:tar:file:///home/ann/old.tar.gz!/letters.zip!/may.txt

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <array>
#include <iostream>

namespace provider = foundation::storage::provider;

// [print]
void print(const provider::StorageItem& file) {
  const auto stream = file.openReadOnlyStream();
  std::array<char, 64 * 1024> block;
  for (std::int64_t count; (count = stream->read(block.data(), std::ssize(block))) > 0;)
    std::cout.write(block.data(), count);
}
// [print]

int main(int argc, char** argv) try {
  if (argc != 2)
    throw std::invalid_argument("which file? nested LOCATION");
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  print(registry.item(fl::i18n::to_ustring(argv[1])));
  return std::cout.flush() ? 0 : 1;
} catch (const provider::Exception& failure) {
  std::cerr << "nested: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "nested: " << failure.what() << '\n';
  return 1;
}
