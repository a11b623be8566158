#include <fstore/Status.h>
#include <fstore/Text.h>

#include <exception>
#include <sstream>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ExistenceTypeExtended;
using provider::StorageItem;

namespace {

std::string nameOf(ExistenceTypeExtended type) {
  std::ostringstream text;
  text << type;
  return text.str();
}

/// Flags may be asked of the store only now, when the entry may be gone.
template <class Question>
std::string answer(const Question& question) {
  try {
    return question() ? "yes" : "no";
  } catch (const std::exception&) {
    return "?";
  }
}

template <class Attributes>
std::string lines(const Attributes& attributes, const std::string& size) {
  return "Size:     " + size + "\nModified: " + timeText(attributes.getLastModified()) +
         "\nWritable: " + answer([&] { return attributes.isWritable(); }) +
         "\nHidden:   " + answer([&] { return attributes.isHidden(); }) +
         "\nSymlink:  " + answer([&] { return attributes.isSymlink(); }) + "\n";
}

/// Throws the store's reason where nothing is there.
std::string attributeLines(const StorageItem& item, ExistenceTypeExtended type) {
  switch (type) {
    case ExistenceTypeExtended::RegularFolder:
    case ExistenceTypeExtended::SymlinkToFolder:
      return lines(item.getFolderAttributes(), "-");
    case ExistenceTypeExtended::BrokenSymlink:
      return "Size:     ?\nModified: ?\nWritable: ?\nHidden:   ?\nSymlink:  yes\n";
    default:
      const auto file = item.getFileAttributes();
      return lines(file, file.hasSizeAttribute() ? std::to_string(file.getSize()) : "?");
  }
}

}  // namespace

void printStatus(const Session& session, const std::vector<std::string>& arguments) {
  bool hasPrinted = false;
  session.forEach(arguments, [&](const StorageItem& item, const std::string&) {
    const auto type = item.existsExtended();
    const auto attributes = attributeLines(item, type);
    session.output.write(std::exchange(hasPrinted, true) ? "\n" : "");
    session.output.write("Location: " + printable(item.getLocation().toString()) + "\nType:     " + nameOf(type) +
                         "\n" + attributes);
  });
}

}  // namespace fstore
