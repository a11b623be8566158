#include <fstore/Facts.h>
#include <fstore/JsonArray.h>
#include <fstore/Status.h>
#include <fstore/Text.h>

#include <nlohmann/json.hpp>

#include <optional>
#include <sstream>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ExistenceTypeExtended;
using provider::FolderEntry;
using provider::StorageItem;

namespace {

std::string nameOf(ExistenceTypeExtended type) {
  std::ostringstream text;
  text << type;
  return text.str();
}

std::string answer(const std::optional<bool>& known) { return known ? (*known ? "yes" : "no") : "?"; }

std::string linesOf(const FolderEntry& entry, ExistenceTypeExtended type) {
  const bool isKnown = type != ExistenceTypeExtended::BrokenSymlink;
  const auto size = sizeOf(entry);
  return "Type:     " + nameOf(type) + "\nSize:     " +
         (size             ? std::to_string(*size)
          : entry.isFile() ? "?"
                           : "-") +
         "\nModified: " + timeText(lastModified(entry)) + "\nWritable: " + answer(isWritable(entry)) +
         "\nHidden:   " + (isKnown ? answer(isHidden(entry)) : "?") + "\nSymlink:  " + answer(isLink(entry)) + "\n";
}

}  // namespace

void printStatus(const Session& session, const std::vector<std::string>& arguments, Format format) {
  JsonArray json(session.output, format);
  bool hasPrinted = false;
  session.forEach(arguments, [&](const StorageItem& item, const std::string&) {
    const auto type = item.existsExtended();
    const auto entry = entryOf(item, item.getName());
    if (json.isWritten()) {
      auto element = toJson(item, entry);
      element["existence"] = nameOf(type);
      return json.add(element);
    }
    session.output.write(std::exchange(hasPrinted, true) ? "\n" : "");
    session.output.write("Location: " + printable(item.getLocation().toString()) + "\n" + linesOf(entry, type));
  });
  json.end();
}

}  // namespace fstore
