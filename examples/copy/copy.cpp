// Copies a file to another place, in the same store or another, and tells its progress on standard error.
// Ctrl-C ends the copy, and leaves the destination as it was.
//
//     copy file:///home/ann/film.mkv zip:file:///media/disk/films.zip!/film.mkv

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <limits>

namespace provider = foundation::storage::provider;

namespace {

volatile std::sig_atomic_t isInterrupted = 0;

// [copy]
/// @return whether the copy was completed
bool copy(const provider::StorageItem& from, const provider::StorageItem& to) {
  const auto known = from.getFileAttributes();
  const auto size = known.hasSizeAttribute() ? known.getSize() : std::numeric_limits<std::uint64_t>::max();
  const auto progress = [size, copied = std::uint64_t(0)]() mutable {  // called after each block of 4 MiB
    copied = std::min(size, copied + 4 * 1024 * 1024);
    std::cerr << copied << " bytes are copied\n";
    return isInterrupted ? provider::InterruptSignal::Abort : provider::InterruptSignal::Continue;
  };
  const auto status = from.copyFile(to, {.replacementPolicy = provider::ReplacementPolicy::Overwrite,
                                         .transactionPolicy = provider::TransactionPolicy::Atomic,
                                         .interruptCallback = progress});
  to.flushFilesystem();  // an archive is written now; elsewhere nothing is left to do
  return status == provider::TransactionStatus::Completed;
}
// [copy]

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3)
    throw std::invalid_argument("what, and where to? copy FILE NEW-FILE");
  std::signal(SIGINT, [](int) { isInterrupted = 1; });
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  const auto from = registry.item(fl::i18n::to_ustring(argv[1]));
  const auto to = registry.item(fl::i18n::to_ustring(argv[2]));
  return copy(from, to) ? 0 : 130;
} catch (const provider::Exception& failure) {
  std::cerr << "copy: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "copy: " << failure.what() << '\n';
  return 1;
}
