#include "Listing.h"

#include "Arguments.h"
#include "Output.h"
#include "Report.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/Exception.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <sstream>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

/// A line of a listing, and what it is sorted by.
struct Line {
  std::u16string name;
  std::string text;
};

std::string timeText(const boost::posix_time::ptime& time) {
  if (time.is_special())
    return "-                  ";
  const auto date = time.date().year_month_day();
  const auto clock = time.time_of_day();
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(date.year),
                static_cast<int>(date.month), static_cast<int>(date.day), static_cast<int>(clock.hours()),
                static_cast<int>(clock.minutes()), static_cast<int>(clock.seconds()));
  return text;
}

std::string nameText(const std::u16string& name) {
  const auto bytes = fl::i18n::to_string(name);
  return Output::isTerminal() ? printable(bytes) : bytes;
}

/// Type, link, writable, size, time and name.
template <class Attributes>
std::string detailedText(char type, const std::optional<Attributes>& attributes, const std::string& size,
                         const std::u16string& name) {
  std::string text(1, type);
  text.push_back(attributes && attributes->isSymlink() ? 'l' : '-');
  text.push_back(attributes && attributes->isWritable() ? 'w' : '-');
  text.append(size.size() < 14 ? 14 - size.size() : 1, ' ').append(size).append(" ");
  text.append(attributes ? timeText(attributes->getLastModified()) : "?                  ");
  return text.append(" ").append(nameText(name));
}

std::string detailedText(const FolderEntry& entry) {
  if (!entry.isFile())
    return detailedText('d', entry.getFolderAttributes(), "-", entry.getName());
  const auto& attributes = entry.getFileAttributes();
  const bool sizeIsKnown = attributes && attributes->hasSizeAttribute();
  return detailedText('-', attributes, sizeIsKnown ? std::to_string(attributes->getSize()) : "?", entry.getName());
}

bool isHidden(const FolderEntry& entry) {
  if (entry.getFileAttributes())
    return entry.getFileAttributes()->isHidden();
  if (entry.getFolderAttributes())
    return entry.getFolderAttributes()->isHidden();
  return entry.getName().starts_with(u'.');
}

void print(Output& output, Line& line) {
  line.text.push_back('\n');
  output.write(line.text);
}

Line lineOf(const FolderEntry& entry, const ListOptions& options) {
  return {entry.getName(), options.withDetails ? detailedText(entry) : nameText(entry.getName())};
}

void listFolder(const StorageItem& folder, const ListOptions& options, Output& output) {
  std::vector<Line> lines;
  const auto entries = options.withDetails ? folder.listAll(u"") : folder.listAllNamesOnly(u"");
  while (entries->hasNext() && !output.hasFailed()) {
    entries->next();
    const auto entry = entries->current();
    if (isHidden(entry) && !options.withHidden)
      continue;
    auto line = lineOf(entry, options);
    if (options.unsorted)
      print(output, line);
    else
      lines.push_back(std::move(line));
  }
  std::sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.name < b.name; });
  for (auto& line : lines)
    print(output, line);
}

void listOne(const StorageItem& item, const ListOptions& options, Output& output) {
  if (item.exists() != ExistenceType::AsFile)
    return listFolder(item, options, output);
  auto line = lineOf(FolderEntry(item.getName(), item.getFileAttributes()), options);
  print(output, line);
}

template <class Attributes>
std::string attributesText(const Attributes& attributes) {
  const auto yesOrNo = [](bool value) { return value ? "yes" : "no"; };
  std::ostringstream text;
  text << "Modified: " << timeText(attributes.getLastModified()) << " UTC\n"
       << "Writable: " << yesOrNo(attributes.isWritable()) << "\n"
       << "Hidden:   " << yesOrNo(attributes.isHidden()) << "\n"
       << "Link:     " << yesOrNo(attributes.isSymlink()) << "\n";
  return text.str();
}

std::string description(const StorageItem& item) {
  const auto type = item.existsExtended();
  if (type == ExistenceTypeExtended::None)
    item.getFileAttributes();  // fails, and says why
  std::ostringstream text;
  text << "Location: " << item.getLocation() << "\nType:     " << type << "\n";
  if (type == ExistenceTypeExtended::BrokenSymlink)
    return text.str();
  if (item.folderExists()) {
    text << attributesText(item.getFolderAttributes());
  } else {
    const auto attributes = item.getFileAttributes();
    if (attributes.hasSizeAttribute())
      text << "Size:     " << attributes.getSize() << " bytes\n";
    text << attributesText(attributes);
  }
  return text.str();
}

}  // namespace

int list(const std::vector<std::string>& arguments, const ListOptions& options) {
  Report report("ls");
  Output output;
  for (const auto& argument : arguments)
    report.attempt(argument, [&] { listOne(itemFor(argument), options, output); });
  output.finish(report);
  return report.exitCode();
}

int describe(const std::vector<std::string>& arguments) {
  Report report("stat");
  Output output;
  for (const auto& argument : arguments)
    report.attempt(argument, [&] { output.write(description(itemFor(argument))); });
  output.finish(report);
  return report.exitCode();
}

}  // namespace fstore
