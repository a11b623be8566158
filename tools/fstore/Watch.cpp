#include <fstore/EventQueue.h>
#include <fstore/Refusal.h>
#include <fstore/Text.h>
#include <fstore/Watch.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ChangeEventsNotSupportedException.h>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace fstore {

namespace provider = foundation::storage::provider;
using foundation::storage::events::EntryType;
using foundation::storage::events::Kind;
using provider::RecursiveChangePolling;
using provider::RecursiveFileWatching;
using provider::StorageItem;

namespace {

const std::vector<Kind> allKinds{Kind::WatchedFolderModified, Kind::WatchedFolderRemoved, Kind::EntryAdded,
                                 Kind::EntryModified, Kind::EntryRemoved};
const std::vector<Kind> kindsForFiles{Kind::WatchedFolderRemoved, Kind::EntryAdded, Kind::EntryModified,
                                      Kind::EntryRemoved};

const char* nameOf(Kind kind) {
  switch (kind) {
    case Kind::WatchedFolderModified:
      return "folder-modified";
    case Kind::WatchedFolderRemoved:
      return "folder-removed";
    case Kind::EntryAdded:
      return "added";
    case Kind::EntryModified:
      return "modified";
    case Kind::EntryRemoved:
      return "removed";
  }
  return "changed";
}

const char* nameOf(EntryType type) { return type == EntryType::File ? "file" : "folder"; }

std::string textOf(const Event& event) {
  return std::string(nameOf(event.kind)) + " " + nameOf(event.type) + " " + printable(event.subject.toString()) + "\n";
}

std::string jsonOf(const Event& event) {
  const nlohmann::ordered_json line{{"event", nameOf(event.kind)},
                                    {"type", nameOf(event.type)},
                                    {"location", fl::i18n::to_string(event.subject.toString())},
                                    {"watched", fl::i18n::to_string(event.watched.toString())}};
  return line.dump() + "\n";
}

/// Watching, as long as the object lives.
class Subscription {
 public:
  Subscription(const StorageItem& item, const provider::ChangeCallback& callback, const WatchOptions& options)
      : watched_(item.fileExists() ? item.getParent() : item) {
    if (!options.period && subscribe(item, callback, options))
      return;
    isPolled_ = true;
    const bool isWholeTree = options.isRecursive && watched_ == item;
    watched_.startChangePollingMechanism(
        callback, allKinds, options.period.value_or(std::chrono::seconds(1)),
        isWholeTree ? RecursiveChangePolling::Recursive : RecursiveChangePolling::DirectOnly);
  }
  ~Subscription() {
    try {
      if (isPolled_)
        watched_.stopChangePollingMechanism();
      else
        watched_.stopPublishingFolderEvents();
    } catch (const std::exception&) {  // the program ends, and all watching with it
    }
  }
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

 private:
  /// @return false where the store has no events of its own
  bool subscribe(const StorageItem& item, const provider::ChangeCallback& callback, const WatchOptions& options) const {
    try {
      if (watched_ == item)
        item.publishFolderEvents(
            callback, allKinds,
            options.isRecursive ? RecursiveFileWatching::Recursive : RecursiveFileWatching::DirectOnly);
      else
        item.publishFileEvents(callback, kindsForFiles);
      return true;
    } catch (const provider::ChangeEventsNotSupportedException&) {
      return false;
    }
  }

  StorageItem watched_;
  bool isPolled_ = false;
};

void print(const Session& session, const std::vector<Event>& events, Format format) {
  for (const auto& event : events)
    session.output.write(format == Format::Json ? jsonOf(event) : textOf(event));
  session.output.flush();
}

bool isGone(const std::vector<Event>& events) {
  return std::any_of(events.begin(), events.end(),
                     [](const Event& event) { return event.kind == Kind::WatchedFolderRemoved; });
}

/// Of a file, whose folder is what is really looked at when a store is polled, only its own events. They spell its
/// name in one way, whatever the argument's.
void keepOnly(const StorageItem& file, std::vector<Event>& events) {
  const StorageItem entry(file.getParent(), file.getName());
  std::erase_if(events, [&](const Event& event) {
    return event.subject != entry.getLocation() && event.subject != file.getLocation();
  });
}

}  // namespace

void watch(const Session& session, const std::string& argument, const WatchOptions& options) {
  EventQueue queue;
  const auto item = session.open(argument);
  if (!item)
    return;
  session.report.attempt(item->getLocation(), [&] {
    const bool isFile = item->fileExists();
    const Subscription subscription(*item, queue.callback(), options);
    for (auto events = queue.next(); !events.empty(); events = queue.next()) {
      const bool ends = isGone(events);
      if (isFile)
        keepOnly(*item, events);
      print(session, events, options.format);
      if (ends)
        throw refusal(provider::ErrorCode::ResourceNotFound, item->getLocation(), u"The watched folder is gone");
    }
  });
}

}  // namespace fstore
