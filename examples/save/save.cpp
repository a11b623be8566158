// Saves standard input as a file that appears whole or not at all. Told how many bytes there should be, it saves
// nothing where fewer or more arrive. That is for pipes: a program that fails ends them like one that is done.
//
//     save file:///home/ann/letter.txt < letter.txt
//     fetch-letter | save file:///home/ann/letter.txt 1204

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <iostream>
#include <string>
#include <vector>

namespace provider = foundation::storage::provider;

namespace {

// [save]
/// @param size  how many bytes there should be; -1 where nobody knows
void save(std::istream& in, const provider::StorageItem& file, std::int64_t size) {
  const auto stream = file.openTransactionalStream({});
  std::int64_t total = 0;
  for (std::vector<char> block(64 * 1024); in;) {
    in.read(block.data(), std::ssize(block));
    for (std::int64_t done = 0; done < in.gcount();)  // a stream may take less than it is given
      done += stream->write(block.data() + done, in.gcount() - done);
    total += in.gcount();
  }
  if (in.bad() || (size >= 0 && total != size))
    throw std::runtime_error("the input has another size, or broke off: nothing is saved");
  stream->close(provider::StreamClosePolicy::Commit);  // a stream that is dropped without it publishes nothing
}
// [save]

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2)
    throw std::invalid_argument("which file? save LOCATION [SIZE]");
  std::ios::sync_with_stdio(false);  // otherwise std::cin takes a failure to read for the end
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  const auto file = registry.item(fl::i18n::to_ustring(argv[1]));
  save(std::cin, file, argc > 2 ? std::stoll(argv[2]) : -1);
  file.flushFilesystem();  // an archive is written now; elsewhere nothing is left to do
} catch (const provider::Exception& failure) {
  std::cerr << "save: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "save: " << failure.what() << '\n';
  return 1;
}
