#include <fstore/Facts.h>
#include <fstore/Time.h>

#include <fl/i18n/Convert.h>

#include <nlohmann/json.hpp>

#include <exception>
#include <string_view>
#include <utility>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ExistenceTypeExtended;
using provider::FolderEntry;
using provider::StorageItem;

namespace {

/// Asks whichever attributes the entry has.
template <class Question>
std::optional<bool> ask(const FolderEntry& entry, const Question& question) {
  try {
    if (const auto& file = entry.getFileAttributes())
      return question(*file);
    if (const auto& folder = entry.getFolderAttributes())
      return question(*folder);
  } catch (const std::exception&) {  // as good as no answer
  }
  return std::nullopt;
}

/// Whether it can be written in UTF-8: each surrogate has its partner.
bool isText(std::u16string_view name) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool isLeading = name[i] >= 0xD800 && name[i] < 0xDC00;
    const bool isPair = isLeading && i + 1 < name.size() && name[i + 1] >= 0xDC00 && name[i + 1] < 0xE000;
    if (isPair)
      ++i;
    else if (name[i] >= 0xD800 && name[i] < 0xE000)
      return false;
  }
  return true;
}

template <class Value>
nlohmann::ordered_json orNull(const std::optional<Value>& value) {
  return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}

}  // namespace

std::optional<bool> isLink(const FolderEntry& entry) {
  return ask(entry, [](const auto& attributes) { return attributes.isSymlink(); });
}

std::optional<bool> isWritable(const FolderEntry& entry) {
  return ask(entry, [](const auto& attributes) { return attributes.isWritable(); });
}

bool isHidden(const FolderEntry& entry) {
  return ask(entry, [](const auto& attributes) { return attributes.isHidden(); })
      .value_or(entry.getName().starts_with(u'.'));
}

std::optional<std::uint64_t> sizeOf(const FolderEntry& entry) {
  const auto& file = entry.getFileAttributes();
  return file && file->hasSizeAttribute() ? std::optional(file->getSize()) : std::nullopt;
}

boost::posix_time::ptime lastModified(const FolderEntry& entry) {
  if (const auto& file = entry.getFileAttributes())
    return file->getLastModified();
  const auto& folder = entry.getFolderAttributes();
  return folder ? folder->getLastModified() : boost::posix_time::not_a_date_time;
}

FolderEntry entryOf(const StorageItem& item, std::u16string name) {
  switch (item.existsExtended()) {
    case ExistenceTypeExtended::RegularFolder:
    case ExistenceTypeExtended::SymlinkToFolder:
      return {std::move(name), item.getFolderAttributes()};
    case ExistenceTypeExtended::BrokenSymlink: {
      const std::function<bool()> unknown = []() -> bool { throw std::exception(); };
      return {std::move(name), provider::FileAttributes(std::nullopt, boost::posix_time::not_a_date_time, unknown)
                                   .withSymlinkStatusAttribute(true)
                                   .withHiddenAttribute(unknown)};
    }
    default:
      return {std::move(name), item.getFileAttributes()};
  }
}

nlohmann::ordered_json toJson(const StorageItem& item, const FolderEntry& entry) {
  const auto name = item.getName();
  return {{"location", fl::i18n::to_string(item.getLocation().toString())},
          {"name", orNull(isText(name) ? std::optional(fl::i18n::to_string(name)) : std::nullopt)},
          {"type", entry.isFile() ? "file" : "folder"},
          {"symlink", orNull(isLink(entry))},
          {"size", orNull(sizeOf(entry))},
          {"modified", orNull(isoText(lastModified(entry)))},
          {"writable", orNull(isWritable(entry))},
          {"hidden", isHidden(entry)}};
}

}  // namespace fstore
