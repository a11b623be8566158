#pragma once

#include "laws/Violation.h"
#include "support/PlacedArchive.h"

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace foundation::laws {

using storage::provider::ErrorCode;
using storage::provider::ExistenceType;
using storage::provider::ExistenceTypeExtended;
using storage::provider::FolderEntry;
using storage::provider::StorageIRI;
using storage::provider::StorageItem;
using storage::testing::PlacedArchive;

/// How much of an archive is looked at.
struct ArchiveBounds {
  std::size_t files = 64;                        ///< that are read
  std::size_t folders = 64;                      ///< that are listed by themselves
  std::uint64_t bytes = std::uint64_t{4} << 20;  ///< of each file
};

struct SeenEntry {
  std::u16string path;
  ExistenceTypeExtended kind = ExistenceTypeExtended::None;
  std::optional<ErrorCode> failure = {};  ///< of looking at it or reading it
  std::string content = {};               ///< as far as it was read
  bool isWhole = false;                   ///< whether that is all of it

  bool operator==(const SeenEntry&) const = default;
};

/// What an archive shows to somebody who looks at everything.
struct SeenArchive {
  std::optional<ErrorCode> refusal = {};  ///< of the listing
  std::vector<SeenEntry> entries = {};    ///< by their paths

  bool operator==(const SeenArchive&) const = default;
};

inline bool isLink(ExistenceTypeExtended kind) {
  return kind == ExistenceTypeExtended::SymlinkToFile || kind == ExistenceTypeExtended::SymlinkToFolder ||
         kind == ExistenceTypeExtended::BrokenSymlink;
}

/// A failure says what it is about, and why.
/// @return where it says that it was
template <class Failure>
std::u16string checkArchiveFailure(const Failure& failure, const StorageIRI& location) {
  for (const auto& context : failure.getAllExceptionContexts()) {
    const auto info = context.getExceptionContextInfo();
    if (context.getExceptionContextKey() != u"archive" || !info)
      continue;
    require(!info->getProviderMessage().empty(), "a failure says why", location.toString());
    const auto details = info->getAdditionalInformation();
    const auto told = details.find(u"location");
    require(told != details.end(), "a failure says where", location.toString());
    return told->second;
  }
  throw Violation("a failure has the archive's context", location.toString());
}

/// What an operation at `location` failed with, if it did.
struct ArchiveFailure {
  ErrorCode code;
  std::u16string location;
};

template <class Action>
std::optional<ArchiveFailure> archiveFailure(const StorageIRI& location, const Action& action) {
  try {
    action();
    return std::nullopt;
  } catch (const storage::provider::Exception& failure) {
    const auto told = checkArchiveFailure(failure, location);
    require(failure.getStorageIRI().toString() == told, "a failure is where its context says", told);
    return ArchiveFailure{failure.getErrorCode(), told};
  } catch (const storage::provider::ByteStreamFailure& failure) {
    return ArchiveFailure{failure.getErrorCode(), checkArchiveFailure(failure, location)};
  }
}

/// The code of the failure that `action` throws, if it throws one, which has to be about `location`.
template <class Action>
std::optional<ErrorCode> archiveFailureAt(const StorageIRI& location, const Action& action) {
  const auto failure = archiveFailure(location, action);
  if (!failure)
    return std::nullopt;
  require(failure->location == location.toString(), "a failure carries its location",
          location.toString() + u", not " + failure->location);
  return failure->code;
}

inline std::vector<FolderEntry> listed(storage::provider::IProvider::Listing entries) {
  std::vector<FolderEntry> all;
  while (entries->hasNext()) {
    entries->next();
    all.push_back(entries->current());
  }
  return all;
}

inline void checkArchivePath(std::u16string_view path) {
  require(path.find(u'\0') == std::u16string_view::npos, "no name holds a NUL", path);
  for (std::size_t begin = 0; begin <= path.size();) {
    const auto end = std::min(path.find(u'/', begin), path.size());
    const auto name = path.substr(begin, end - begin);
    require(!name.empty() && name != u"." && name != u"..", "every part of a path is a name", path);
    begin = end + 1;
  }
}

/// Reads on from where the stream is.
/// @return whether that was up to the end
inline bool readOn(storage::provider::ByteStream& stream, std::uint64_t most, std::string& content) {
  std::string buffer(std::size_t{64} << 10, '\0');
  while (content.size() <= most) {
    const auto count = stream.read(buffer.data(), static_cast<std::int64_t>(buffer.size()));
    if (count <= 0)
      return true;
    content.append(buffer, 0, static_cast<std::size_t>(count));
  }
  return false;
}

/// What was read once can be read again, from the middle.
inline void checkSeeking(storage::provider::ByteStream& stream, const std::string& content,
                         const StorageIRI& location) {
  const auto middle = content.size() / 2;
  require(stream.seek(static_cast<std::int64_t>(middle), std::ios_base::beg) == static_cast<std::streamoff>(middle),
          "seeking leads there", location.toString());
  std::string rest;
  readOn(stream, content.size(), rest);
  require(rest == content.substr(middle), "reading twice gives the same", location.toString());
}

inline void readEntry(const StorageItem& item, const ArchiveBounds& bounds, SeenEntry& seen) {
  seen.failure = archiveFailureAt(item.getLocation(), [&] {
    const auto stream = item.openReadOnlyStream();
    seen.isWhole = readOn(*stream, bounds.bytes, seen.content);
  });
  if (!seen.isWhole || isLink(seen.kind))
    return;
  const auto attributes = item.getFileAttributes();
  require(!attributes.hasSizeAttribute() || attributes.getSize() == seen.content.size(), "a file has the size it tells",
          item.getLocation().toString());
  checkSeeking(*item.openReadOnlyStream(), seen.content, item.getLocation());
}

/// What is listed exists as what it is listed.
inline SeenEntry seenEntry(const StorageItem& item, const FolderEntry& entry) {
  SeenEntry seen{.path = entry.getName()};
  checkArchivePath(seen.path);
  const auto& text = item.getLocation().toString();
  seen.failure = archiveFailureAt(item.getLocation(), [&] {
    seen.kind = item.existsExtended();
    const auto exists = item.exists();
    require(seen.kind != ExistenceTypeExtended::None, "what is listed exists", text);
    require((seen.kind == ExistenceTypeExtended::BrokenSymlink) == (exists == ExistenceType::AsNeither),
            "what is listed exists, unless it is a broken link", text);
    require(exists == ExistenceType::AsNeither || entry.isFile() == (exists == ExistenceType::AsFile),
            "what is listed as a file is a file", text);
  });
  return seen;
}

/// A folder's own listing is what the whole listing has of it.
inline void checkFolderListing(const StorageItem& root, const std::u16string& folder, const SeenArchive& archive) {
  std::vector<std::u16string> expected;
  const auto prefix = folder.empty() ? folder : folder + u"/";
  for (const auto& entry : archive.entries)
    if (entry.path.starts_with(prefix) && entry.path.find(u'/', prefix.size()) == std::u16string::npos)
      expected.push_back(entry.path);
  std::vector<std::u16string> found;
  for (const auto& entry : listed(StorageItem(root, folder).listAll(u"")))
    found.push_back(prefix + entry.getName());
  std::sort(found.begin(), found.end());
  require(found == expected, "a folder's listing is its part of the whole one", folder);
}

/// Lists and reads all of an archive. Throws `Violation` where it breaks a law, and whatever its provider throws
/// that is no failure of a provider or stream.
inline SeenArchive seenArchive(const StorageItem& root, const ArchiveBounds& bounds = {}) {
  SeenArchive archive;
  std::vector<FolderEntry> entries;
  archive.refusal = archiveFailureAt(root.getLocation(), [&] { entries = listed(root.listAllRecursive(u"")); });
  if (archive.refusal)
    return archive;
  std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.getName() < b.getName(); });
  std::size_t filesRead = 0;
  for (const auto& entry : entries) {
    const StorageItem item(root, entry.getName());
    auto seen = seenEntry(item, entry);
    require(archive.entries.empty() || archive.entries.back().path != seen.path, "no path is listed twice", seen.path);
    if (!seen.failure && entry.isFile() && ++filesRead <= bounds.files)
      readEntry(item, bounds, seen);
    archive.entries.push_back(std::move(seen));
  }
  checkFolderListing(root, u"", archive);
  std::size_t foldersListed = 0;
  for (const auto& entry : archive.entries)
    if (entry.kind == ExistenceTypeExtended::RegularFolder && ++foldersListed <= bounds.folders)
      checkFolderListing(root, entry.path, archive);
  return archive;
}

/// A name that is not in an archive yet.
inline std::u16string freshName(const SeenArchive& archive) {
  std::u16string name = u"new";
  const auto isTaken = [&] {
    return std::any_of(archive.entries.begin(), archive.entries.end(),
                       [&](const auto& seen) { return seen.path == name; });
  };
  while (isTaken())
    name += u"+";
  return name;
}

/// Everything that could be read before can be read now, and there is nothing else but the new file.
inline void checkRewritten(const SeenArchive& before, const SeenArchive& after, const std::u16string& newName) {
  require(!after.refusal, "what was written can be listed", newName);
  require(after.entries.size() == before.entries.size() + 1, "writing adds the new file alone", newName);
  auto old = before.entries.begin();
  for (const auto& seen : after.entries) {
    if (seen.path == newName)
      continue;
    require(seen.path == old->path, "writing keeps all paths", seen.path);
    require(old->failure || seen.kind == old->kind, "writing keeps what an entry is", seen.path);
    require(!old->isWhole || (seen.isWhole && seen.content == old->content), "writing keeps what can be read",
            seen.path);
    ++old;
  }
}

/// Whether it is about an archive as a whole, or about something that is in it.
inline bool isWithin(const ArchiveFailure& failure, const StorageIRI& root) {
  return failure.location.starts_with(root.toString());
}

/// A change is written with all that was there, or fails and leaves the archive's bytes alone.
inline void checkChanging(const PlacedArchive& archive, const SeenArchive& before, const ArchiveBounds& bounds) {
  const auto bytes = archive.bytes();
  const auto name = freshName(before);
  const StorageItem file(archive.root(), name);
  const auto refusal = archiveFailure(file.getLocation(), [&] {
    const auto stream = file.openStream({});
    require(stream->write("new", 3) == 3, "a stream takes what it is given", name);
    stream->close();
  });
  require(!before.refusal || refusal, "an archive that cannot be read is not changed", name);
  const auto root = archive.root().getLocation();
  const auto failure = refusal ? refusal : archiveFailure(root, [&] { archive.root().flushFilesystem(); });
  require(!failure || isWithin(*failure, root), "a change fails at the archive or in it", name);
  if (!failure) {
    const auto again = archive.placedAnew();
    SeenEntry seen;
    readEntry(StorageItem(again.root(), name), bounds, seen);
    require(seen.isWhole && seen.content == "new", "the new file is there", name);
    checkRewritten(before, seenArchive(again.root(), bounds), name);
    return;
  }
  require(archive.bytes() == bytes, "a change that fails leaves the archive as it was", name);
}

/// What holds for whatever claims to be an archive.
inline void checkArchive(storage::testing::ArchiveFormat format, const std::string& bytes,
                         const storage::testing::ArchiveLimits& limits, const ArchiveBounds& bounds = {}) {
  using storage::testing::ArchiveFormat;
  const PlacedArchive archive(format, bytes, limits);
  const auto seen = seenArchive(archive.root(), bounds);
  require(archive.bytes() == bytes, "reading changes nothing", archive.root().getLocation().toString());
  if (format == ArchiveFormat::Zip || format == ArchiveFormat::Tar)
    checkChanging(archive, seen, bounds);
}

}  // namespace foundation::laws
