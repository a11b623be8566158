// Prints what is added, modified and removed in a folder: that many changes (at least one), or without a number until
// Ctrl-C.
//
//     watch file:///home/ann 10

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LogText.h>
#include <foundation/storage/registry/DefaultRegistry.h>

#include <boost/property_tree/ptree.hpp>

#include <algorithm>
#include <future>
#include <iostream>
#include <limits>

namespace provider = foundation::storage::provider;
using foundation::storage::events::Kind;

// [watch]
void watch(const provider::StorageItem& folder, long left) {
  std::promise<void> finished;
  // Runs on a thread of the store's, one call at a time.
  const auto print = [&](const Kind& kind, const auto&, const provider::StorageIRI& place, const auto&, const auto&) {
    if (left == 0)
      return;
    const char* const texts[] = {"", "gone", "added", "modified", "removed"};
    std::cout << texts[static_cast<int>(kind)] << ' ' << place << std::endl;
    left = kind == Kind::WatchedFolderRemoved ? 0 : left - 1;
    if (left == 0)
      finished.set_value();
  };
  const std::vector kinds{Kind::WatchedFolderRemoved, Kind::EntryAdded, Kind::EntryModified, Kind::EntryRemoved};
  try {
    folder.publishFolderEvents(print, kinds, provider::RecursiveFileWatching::DirectOnly);
  } catch (const provider::ChangeEventsNotSupportedException&) {  // then the folder is looked at, once a second
    folder.startChangePollingMechanism(print, kinds, std::chrono::seconds(1),
                                       provider::RecursiveChangePolling::DirectOnly);
  }
  std::cerr << "watching " << folder.getLocation() << std::endl;
  finished.get_future().wait();
  folder.stopPublishingFolderEvents();  // both wait for a call under way
  folder.stopChangePollingMechanism();
}
// [watch]

int main(int argc, char** argv) try {
  const auto registry = foundation::storage::registry::makeDefaultRegistry();
  const auto folder = registry.item(fl::i18n::to_ustring(argc > 1 ? argv[1] : "file:///"));
  watch(folder, argc > 2 ? std::max(1L, std::stol(argv[2])) : std::numeric_limits<long>::max());
} catch (const provider::Exception& failure) {
  std::cerr << "watch: " << toLogText(failure.getStorageIRI()) << ": " << failure.getErrorCode() << '\n';
  return 1;
} catch (const std::exception& failure) {
  std::cerr << "watch: " << failure.what() << '\n';
  return 1;
}
