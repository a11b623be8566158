#include <foundation/storage/backend/archive/detail/Archive.h>

#include <fl/i18n/Case.h>
#include <foundation/storage/backend/archive/detail/Commit.h>
#include <foundation/storage/backend/archive/detail/Failure.h>
#include <foundation/storage/backend/archive/detail/Format.h>
#include <foundation/storage/backend/archive/detail/StagedStream.h>
#include <foundation/storage/backend/archive/detail/StoredStream.h>
#include <foundation/storage/backend/support/Log.h>
#include <foundation/storage/backend/support/PathNames.h>
#include <foundation/storage/backend/support/VisitBelow.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <numeric>
#include <sstream>
#include <utility>

namespace foundation::storage::backend::archive::detail {

using provider::ErrorCode;
using provider::ExistenceTypeExtended;
using provider::FileAttributes;
using provider::FolderAttributes;
using provider::FolderEntry;
using provider::ReplacementPolicy;
using provider::StorageIRI;
using provider::StorageItem;

namespace {

bool isHidden(const std::u16string& name) { return name.starts_with(u'.'); }

std::u16string nameOf(const Place& place) { return place.names.empty() ? std::u16string() : place.names.back(); }

bool is(const Node& node, FileOrFolder what) { return node.isFolder() == (what == FileOrFolder::Folder); }

std::optional<std::uint64_t> sizeOf(const Node& node) {
  if (node.staged)
    return node.staged->size();
  return node.kind == EntryKind::File ? node.size : std::nullopt;
}

FileAttributes attributesOfFile(const std::u16string& name, const Node& node) {
  FileAttributes attributes(sizeOf(node), node.time(), node.isWritable());
  return attributes.withHiddenAttribute(isHidden(name)).withSymlinkStatusAttribute(node.kind == EntryKind::Link);
}

FolderAttributes attributesOfFolder(const std::u16string& name, const Node& node) {
  FolderAttributes attributes(node.lastModified, node.isWritable());
  return attributes.withHiddenAttribute(isHidden(name));
}

/// Whether an entry lies below another one, at any depth.
bool isBelow(const Place& place, const Place& folder) {
  return place.names.size() > folder.names.size() &&
         std::equal(folder.names.begin(), folder.names.end(), place.names.begin());
}

provider::Exception obstacleAt(const StorageIRI& location, Tree::Obstacle obstacle) {
  switch (obstacle) {
    case Tree::Obstacle::File:
      return refusal(ErrorCode::InvalidLocation, location, u"The path leads through a file");
    case Tree::Obstacle::Outside:
      return refusal(ErrorCode::InvalidLocation, location, u"A link leads out of the archive");
    case Tree::Obstacle::LinkLoop:
      return refusal(ErrorCode::InvalidLocation, location, u"Too many links follow each other");
    default:
      return refusal(ErrorCode::ResourceNotFound, location, u"There is no folder that could hold it");
  }
}

/// Schemes are the same in upper and lower case (RFC 3986, section 3.1).
bool hasScheme(const StorageIRI& location, const std::u16string& scheme) {
  return fl::i18n::detail::transform(location.getScheme(), fl::i18n::to_lower()) == scheme;
}

void touch(Node& folder) {
  folder.lastModified = now();
  folder.hasNewTime = true;
}

std::size_t depthOf(const StorageIRI& location) {
  return location.hasInnerIRI() ? 1 + depthOf(location.getInnerIRI()) : 0;
}

std::unique_ptr<Node> newFolder() {
  auto node = std::make_unique<Node>(EntryKind::Folder);
  node->isCreated = true;
  node->lastModified = now();
  return node;
}

std::unique_ptr<Node> newFile() {
  auto node = std::make_unique<Node>(EntryKind::File);
  node->staged = std::make_shared<StagedContent>();
  return node;
}

using Items = support::EntryTree::Items;

/// Entries in the order of the archive, in which they are read fastest, each behind the folder that holds it.
/// @param arrivals  of the items; none of them came before the folder that holds it
Items inOrder(Items items, const std::vector<std::size_t>& arrivals) {
  std::vector<std::size_t> order(items.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t left, std::size_t right) { return arrivals[left] < arrivals[right]; });
  std::vector<std::size_t> places(items.size());
  Items ordered;
  ordered.reserve(items.size());
  for (const auto index : order) {
    auto& [entry, folder] = items[index];
    places[index] = ordered.size();
    ordered.push_back({std::move(entry), folder == support::EntryTree::none ? folder : places[folder]});
  }
  return ordered;
}

/// An archive that is to be made.
class NoEntries final : public StoredArchive {
 public:
  const std::vector<Entry>& entries() const override { return entries_; }
  std::unique_ptr<ContentReader> open(std::size_t /*number*/) const override {
    throw damage("the archive holds nothing");
  }

 private:
  std::vector<Entry> entries_;
};

}  // namespace

Archive::Archive(ArchiveFormat format, provider::StorageItem container, StorageIRI root)
    : format_(format), item_(std::move(container)), root_(std::move(root)) {}

Archive::~Archive() {
  try {
    if (isChanged_) {
      commit();
      item_.flushFilesystem();
    }
  } catch (...) {
    support::logCaughtFailure("Changes of an archive could not be written, and are lost.");
  }
}

void Archive::requireHere(const StorageIRI& location) const {
  const auto container = location.getInnerIRI();
  // Most are spelled as the archive was opened; what is not may still lead to the same file, by a link for example.
  const bool isSpelledAlike = container == item_.getLocation() || container == root_.getInnerIRI();
  const auto isSame = [&] { return StorageItem(item_, container).getCanonicalLocation() == root_.getInnerIRI(); };
  if (hasScheme(location, root_.getScheme()) && (isSpelledAlike || at(location, isSame)))
    return;
  throw refusal(ErrorCode::InvalidLocation, location, u"This is a place in another archive");
}

bool Archive::isWritten() const { return detail::isWritten(format_); }

void Archive::requireWritten(const StorageIRI& location) const {
  if (!isWritten())
    throw refusal(ErrorCode::ReadOnlyProvider, location, u"Archives of this format are not written");
}

void Archive::configure(const Configuration& configuration) {
  const std::scoped_lock lock(mutex_);
  configuration_ = configuration;
  if (!isChanged_)
    forget();
}

// --- Reading the archive ---

void Archive::requireNesting() const {
  if (depthOf(root_) > configuration_.limits.nesting)
    throw Fault(ErrorCode::InvalidLocation,
                "the archive lies in more archives than the option max-nesting allows, which is " +
                    std::to_string(configuration_.limits.nesting));
}

/// @return whether there is an archive
bool Archive::load() const {
  if (tree_)
    return true;
  requireNesting();
  container_ = std::make_shared<Container>(item_);
  const auto stamp = container_->stamp();
  if (!stamp) {
    if (item_.folderExists())
      throw Fault(ErrorCode::InvalidLocation, "this is a folder, and no archive");
    return false;
  }
  auto stored = readArchive(format_, container_, configuration_.limits);
  auto tree = std::make_unique<Tree>(*stored, stamp->lastModified, configuration_.limits);
  stored_ = std::move(stored);
  tree_ = std::move(tree);
  stamp_ = stamp;
  return true;
}

void Archive::forget() const {
  tree_.reset();
  stored_.reset();
  stamp_.reset();
  isStampKnown_ = true;
  container_.reset();
}

std::shared_lock<std::shared_mutex> Archive::lockToLook() const {
  std::shared_lock lock(mutex_);
  for (bool isThere = true; !tree_ && isThere;) {
    lock.unlock();
    {
      const std::scoped_lock exclusive(mutex_);
      isThere = at(root_, [&] { return load(); });
    }
    lock.lock();
  }
  return lock;
}

void Archive::noticeReplacement() const {
  std::optional<Container::Stamp> known;
  {
    const std::shared_lock lock(mutex_);
    if (!tree_ || isChanged_)
      return;
    known = isStampKnown_ ? stamp_ : std::nullopt;
  }
  if (at(root_, [&] { return Container(item_).stamp(); }) == known)
    return;
  const std::scoped_lock lock(mutex_);
  if (!isChanged_ && (stamp_ == known || !isStampKnown_))
    forget();
}

void Archive::requireThere(const StorageIRI& location) const {
  if (!tree_)
    throw refusal(ErrorCode::ResourceNotFound, location, u"There is no such archive");
}

std::unique_lock<std::shared_mutex> Archive::lockToChange(const StorageIRI& location) {
  requireWritten(location);
  std::unique_lock lock(mutex_);
  at(root_, [&] { return load(); });
  return lock;
}

// --- Finding ---

Node* Archive::find(const Place& place, AtEnd atEnd) const {
  return tree_ ? tree_->find(place.names, atEnd).node : nullptr;
}

Node& Archive::require(const Place& place, AtEnd atEnd) const {
  requireThere(place.location);
  const auto found = tree_->find(place.names, atEnd);
  if (found.obstacle != Tree::Obstacle::None)
    throw obstacleAt(place.location, found.obstacle);
  if (found.node == nullptr)
    throw refusal(ErrorCode::ResourceNotFound, place.location, u"Nothing is there");
  return *found.node;
}

Node& Archive::require(const Place& place, AtEnd atEnd, FileOrFolder what) const {
  auto& node = require(place, atEnd);
  if (!is(node, what))
    throw refusal(ErrorCode::InvalidLocation, place.location,
                  what == FileOrFolder::File ? u"This is a folder" : u"This is a file");
  return node;
}

Tree::Found Archive::requireSpot(const Place& place, AtEnd atEnd) const {
  requireThere(place.location);
  auto found = tree_->find(place.names, atEnd);
  if (found.obstacle != Tree::Obstacle::None)
    throw obstacleAt(place.location, found.obstacle);
  if (found.folder == nullptr)
    throw refusal(ErrorCode::InvalidLocation, place.location, u"The root of an archive stays what it is");
  return found;
}

Tree::Found Archive::requireWritableSpot(const Place& place, AtEnd atEnd) const {
  auto found = requireSpot(place, atEnd);
  if (!found.folder->isWritable())
    throw refusal(ErrorCode::PermissionDenied, place.location, u"The folder that holds it is not writable");
  return found;
}

// --- Looking ---

ExistenceTypeExtended Archive::existence(const Place& place) const {
  const auto lock = lockToLook();
  const auto* node = find(place, AtEnd::KeepLink);
  if (node == nullptr)
    return ExistenceTypeExtended::None;
  switch (node->kind) {
    case EntryKind::File:
      return ExistenceTypeExtended::RegularFile;
    case EntryKind::Folder:
      return ExistenceTypeExtended::RegularFolder;
    case EntryKind::Special:
      return ExistenceTypeExtended::SpecialFile;
    case EntryKind::Link:
      break;
  }
  const auto* target = find(place, AtEnd::FollowLink);
  if (target == nullptr)
    return ExistenceTypeExtended::BrokenSymlink;
  return target->isFolder() ? ExistenceTypeExtended::SymlinkToFolder : ExistenceTypeExtended::SymlinkToFile;
}

FileAttributes Archive::fileAttributes(const Place& place) const {
  noticeReplacement();
  const auto lock = lockToLook();
  auto attributes = attributesOfFile(nameOf(place), require(place, AtEnd::FollowLink, FileOrFolder::File));
  return attributes.withSymlinkStatusAttribute(require(place, AtEnd::KeepLink).kind == EntryKind::Link);
}

FolderAttributes Archive::folderAttributes(const Place& place) const {
  const auto lock = lockToLook();
  auto attributes = attributesOfFolder(nameOf(place), require(place, AtEnd::FollowLink, FileOrFolder::Folder));
  return attributes.withSymlinkStatusAttribute(require(place, AtEnd::KeepLink).kind == EntryKind::Link);
}

provider::ProviderStorageInfo Archive::storageInfo(const Place& place) const {
  const auto lock = lockToLook();
  require(place, AtEnd::KeepLink);
  return at(place.location, [&] {
    const auto stamp = Container(item_).stamp();
    return provider::ProviderStorageInfo().withSpaceOccupied(stamp ? stamp->size : 0);
  });
}

/// What a link leads to, null for a broken one; else the node itself.
const Node* Archive::target(const Names& names) const { return tree_->find(names, AtEnd::FollowLink).node; }

FolderEntry Archive::entryOf(const Names& folder, const std::u16string& path, const std::u16string& name,
                             const Node& node, const support::ListingScope& scope) const {
  const auto* shown = &node;
  if (node.kind == EntryKind::Link) {
    auto names = folder;
    for (auto& below : support::pathNames(path))
      names.push_back(std::move(below));
    if (const auto* found = target(names))
      shown = found;
  }
  if (!scope.givesAttributes)
    return {name, shown->isFolder() ? FolderEntry::EntryType::Folder : FolderEntry::EntryType::File};
  const bool isLink = node.kind == EntryKind::Link;
  if (shown->isFolder())
    return {name, attributesOfFolder(name, *shown).withSymlinkStatusAttribute(isLink)};
  return {name, attributesOfFile(name, *shown).withSymlinkStatusAttribute(isLink)};
}

support::EntryTree::Items Archive::list(const Place& place, const support::ListingScope& scope) const {
  noticeReplacement();
  const auto lock = lockToLook();
  const auto& listed = require(place, AtEnd::FollowLink, FileOrFolder::Folder);
  Items items;
  std::vector<std::size_t> arrivals;
  std::vector<std::size_t> folders{support::EntryTree::none};  // on the way to what is visited
  support::visitBelow(listed, scope.isRecursive,
                      [&](const auto& path, const auto& name, const Node& node, std::size_t depth) {
                        auto entry = entryOf(place.names, path, name, node, scope);
                        if (!scope.includes(entry.isFile() ? FileOrFolder::File : FileOrFolder::Folder))
                          return;
                        folders.resize(depth + 1);
                        const auto folder = folders.back();
                        const auto before = folder == support::EntryTree::none ? 0 : arrivals[folder];
                        arrivals.push_back(std::max(node.arrival, before));
                        items.push_back({std::move(entry), folder});
                        folders.push_back(items.size() - 1);
                      });
  return inOrder(std::move(items), arrivals);
}

Archive::Content Archive::contentOf(const Node& node) const {
  return {node.staged, stored_, node.source.value_or(0), node.size, node.permissions};
}

/// A file with content.
Node& Archive::requireFile(const Place& place) const {
  auto& node = require(place, AtEnd::FollowLink, FileOrFolder::File);
  if (node.kind != EntryKind::File)
    throw refusal(ErrorCode::UnsupportedOperation, place.location, u"This is a device or a pipe, and has no content");
  return node;
}

Archive::Content Archive::content(const Place& place) const {
  const auto lock = lockToLook();
  return contentOf(requireFile(place));
}

std::unique_ptr<provider::ByteStream> Archive::read(const Place& place) const {
  // Opened with the lock, so that it is the file that the archive was read from.
  const auto lock = lockToLook();
  const auto content = contentOf(requireFile(place));
  if (content.staged)
    return std::make_unique<StagedStream>(content.staged, place.location);
  return at(place.location, [&] {
    return std::make_unique<StoredStream>(content.stored, content.number, content.size, place.location);
  });
}

std::u16string Archive::identity(const Place& place) const {
  const auto lock = lockToLook();
  std::ostringstream text;
  text << "archive:" << this << ":" << &require(place, AtEnd::FollowLink, FileOrFolder::File);
  return fl::i18n::to_ustring(text.str());
}

// --- Changing ---

void Archive::finishChange(const StorageIRI& location) {
  commitChange(location);
  flushOutwards(location);
}

void Archive::commitChange(const StorageIRI& location) {
  isChanged_ = true;
  if (configuration_.commit == CommitTime::OnChange)
    at(location, [&] { commit(); });
}

void Archive::flushOutwards(const StorageIRI& location) {
  if (configuration_.commit == CommitTime::OnChange)
    at(location, [&] { item_.flushFilesystem(); });
}

Node& Archive::insert(const Place& place, std::unique_ptr<Node> node, AtEnd atEnd) {
  if (find(place, atEnd) != nullptr)
    throw refusal(ErrorCode::ResourceAlreadyExists, place.location, u"Something is there already");
  const auto spot = requireWritableSpot(place, atEnd);
  auto& inserted = *node;
  spot.folder->children.insert_or_assign(spot.name, std::move(node));
  touch(*spot.folder);
  return inserted;
}

void Archive::createFile(const Place& place) {
  const auto lock = lockToChange(place.location);
  insert(place, newFile(), AtEnd::KeepLink);
  finishChange(place.location);
}

void Archive::createFolder(const Place& place) {
  const auto lock = lockToChange(place.location);
  if (!tree_ && place.names.empty())
    begin();
  else
    insert(place, newFolder(), AtEnd::KeepLink);
  finishChange(place.location);
}

void Archive::begin() {
  stored_ = std::make_shared<NoEntries>();
  tree_ = std::make_unique<Tree>(*stored_, now(), configuration_.limits);
}

void Archive::createFolders(const Place& place) {
  const auto lock = lockToChange(place.location);
  if (find(place, AtEnd::KeepLink) != nullptr)
    throw refusal(ErrorCode::ResourceAlreadyExists, place.location, u"Something is there already");
  if (!tree_)
    begin();
  isChanged_ = true;
  Place folder{place.location, {}};
  for (const auto& name : place.names) {
    folder.names.push_back(name);
    if (find(folder, AtEnd::FollowLink) == nullptr)
      insert(folder, newFolder(), AtEnd::KeepLink);
  }
  finishChange(place.location);
}

void Archive::remove(const Place& place, FileOrFolder what) {
  const auto lock = lockToChange(place.location);
  if (!require(place, AtEnd::KeepLink, what).children.empty())
    throw refusal(ErrorCode::FolderNotEmpty, place.location, u"The folder is not empty");
  const auto spot = requireWritableSpot(place, AtEnd::KeepLink);
  spot.folder->children.erase(spot.name);
  touch(*spot.folder);
  finishChange(place.location);
}

void Archive::removeRecursively(const Place& place) {
  const auto lock = lockToChange(place.location);
  const auto& folder = require(place, AtEnd::KeepLink, FileOrFolder::Folder);
  const auto spot = requireWritableSpot(place, AtEnd::KeepLink);
  bool isRemovable = folder.isWritable() || folder.children.empty();
  support::visitBelow(folder, true, [&](const auto&, const auto&, const Node& node, std::size_t) {
    isRemovable = isRemovable && (node.isWritable() || node.children.empty());
  });
  if (!isRemovable)
    throw refusal(ErrorCode::PermissionDenied, place.location, u"A folder in it that is not empty is not writable");
  spot.folder->children.erase(spot.name);
  touch(*spot.folder);
  finishChange(place.location);
}

void Archive::requireMoveDestination(const Node& moved, const Tree::Found& to, const Place& destination,
                                     ReplacementPolicy policy) const {
  if (to.node == nullptr)
    return;
  if (preservesExisting(policy))
    throw refusal(ErrorCode::ResourceAlreadyExists, destination.location, u"Something is there already");
  if (to.node->isFolder() != moved.isFolder())
    throw refusal(ErrorCode::InvalidLocation, destination.location,
                  to.node->isFolder() ? u"This is a folder" : u"This is a file");
  if (!to.node->children.empty())
    throw refusal(ErrorCode::FolderNotEmpty, destination.location, u"The folder is not empty");
}

void Archive::move(const Place& source, const Place& destination, ReplacementPolicy policy, FileOrFolder what) {
  const auto lock = lockToChange(source.location);
  const auto& moved = require(source, AtEnd::KeepLink, what);
  if (isBelow(destination, source) || source.names.empty())
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A folder cannot be moved into itself");
  const auto to = requireSpot(destination, AtEnd::KeepLink);
  if (to.node == &moved) {
    if (preservesExisting(policy))
      throw refusal(ErrorCode::ResourceAlreadyExists, destination.location, u"This is the source itself");
    return;
  }
  // A link, too, can lead into the folder.
  if (std::find(to.way.begin(), to.way.end(), &moved) != to.way.end())
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A folder cannot be moved into itself");
  requireMoveDestination(moved, to, destination, policy);
  const auto from = requireWritableSpot(source, AtEnd::KeepLink);
  requireWritableSpot(destination, AtEnd::KeepLink);
  auto newName = to.name;  // before anything changes: this may be short of memory
  auto entry = from.folder->children.extract(from.name);
  to.folder->children.erase(newName);
  entry.key() = std::move(newName);
  to.folder->children.insert(std::move(entry));
  touch(*from.folder);
  touch(*to.folder);
  finishChange(source.location);
}

void Archive::setLastModified(const Place& place, const boost::posix_time::ptime& time) {
  const auto lock = lockToChange(place.location);
  auto& node = require(place, AtEnd::FollowLink);
  node.lastModified = time;
  node.hasNewTime = true;
  node.isCreated = node.isFolder();
  if (node.staged)
    node.staged->setLastModified(time);
  finishChange(place.location);
}

void Archive::setWritable(const Place& place, bool writable) {
  const auto lock = lockToChange(place.location);
  auto& node = require(place, AtEnd::FollowLink);
  constexpr std::uint32_t everybody = 0222;
  constexpr std::uint32_t owner = 0200;
  node.permissions = writable ? node.permissions | owner : node.permissions & ~everybody;
  node.hasNewPermissions = true;
  node.isCreated = node.isFolder();
  finishChange(place.location);
}

/// Makes the content of a file one that can be written to.
void Archive::stage(Node& node, const StorageIRI& location, provider::ByteStreamTruncate truncate) {
  const bool keeps = truncate == provider::ByteStreamTruncate::PreserveExisting;
  if (node.staged && !keeps)
    node.staged->resize(0);
  if (node.staged)
    return;
  auto content = std::make_shared<StagedContent>();
  if (keeps)
    at(location, [&] {
      std::array<char, 64 * 1024> buffer{};
      const auto reader = stored_->open(*node.source);
      while (const auto got = reader->read(buffer.data(), buffer.size()))
        content->write(std::nullopt, buffer.data(), got);
      content->setLastModified(node.lastModified);
    });
  node.staged = std::move(content);
  node.source.reset();
}

std::unique_ptr<StagedContent::Writing> Archive::beginWriting(const Place& place, provider::ByteStreamCreate create,
                                                              provider::ByteStreamTruncate truncate) {
  const auto lock = lockToChange(place.location);
  if (create == provider::ByteStreamCreate::Create && find(place, AtEnd::FollowLink) == nullptr) {
    auto writing = std::make_unique<StagedContent::Writing>(insert(place, newFile(), AtEnd::FollowLink).staged);
    finishChange(place.location);
    return writing;
  }
  auto& node = requireFile(place);
  if (!node.isWritable())
    throw refusal(ErrorCode::PermissionDenied, place.location, u"The file is not writable");
  stage(node, place.location, truncate);
  isChanged_ = true;
  return std::make_unique<StagedContent::Writing>(node.staged);
}

Tree::Found Archive::requireReplaceable(const Place& place, ReplacementPolicy policy, const Place* source) const {
  auto found = requireSpot(place, AtEnd::FollowLink);
  if (found.node == nullptr)
    return requireWritableSpot(place, AtEnd::FollowLink);
  if (preservesExisting(policy))
    throw refusal(ErrorCode::ResourceAlreadyExists, place.location, u"Something is there already");
  if (found.node->isFolder())
    throw refusal(ErrorCode::InvalidLocation, place.location, u"This is a folder");
  if (source != nullptr && find(*source, AtEnd::FollowLink) == found.node)
    throw refusal(ErrorCode::InvalidLocation, place.location, u"A file cannot be copied onto itself");
  if (!found.node->isWritable())
    throw refusal(ErrorCode::PermissionDenied, place.location, u"The file is not writable");
  return found;
}

void Archive::requireCanPut(const Place& destination, ReplacementPolicy policy, const Place* source) const {
  requireWritten(destination.location);
  const auto lock = lockToLook();
  requireReplaceable(destination, policy, source);
}

void Archive::put(const Content& copy, const Place& destination, ReplacementPolicy policy, const Place* source) {
  const auto lock = lockToChange(destination.location);
  const auto spot = requireReplaceable(destination, policy, source);
  auto node = std::make_unique<Node>(EntryKind::File);
  node->lastModified = now();
  node->permissions = spot.node != nullptr ? spot.node->permissions : copy.permissions;
  node->staged = copy.staged;
  if (!copy.staged) {
    // The archive may have been written meanwhile: then its entries have other numbers.
    if (copy.stored != stored_)
      throw refusal(ErrorCode::ResourceInUse, destination.location, u"The archive was written during the copy");
    node->entry = node->source = copy.number;
    node->size = copy.size;
    node->hasNewTime = node->hasNewPermissions = true;
  }
  replace(spot, std::move(node), destination.location);
}

/// As a whole or not at all: where the archive could not be written, what was there is there again.
void Archive::replace(const Tree::Found& spot, std::unique_ptr<Node> node, const StorageIRI& location) {
  auto& present = spot.folder->children[spot.name];
  std::swap(present, node);
  touch(*spot.folder);
  try {
    commitChange(location);
  } catch (...) {
    std::swap(present, node);
    if (!present)
      spot.folder->children.erase(spot.name);
    throw;
  }
  flushOutwards(location);
}

void Archive::noteWritten(const StorageIRI& location) {
  const auto lock = lockToChange(location);
  if (tree_)
    finishChange(location);
}

// --- The stored archive ---

void Archive::requireUnchangedByOthers() const {
  if (isStampKnown_ && Container(item_).stamp() != stamp_)
    throw Fault(ErrorCode::ResourceInUse, "somebody else has changed the archive since it was read");
}

void Archive::commit() {
  requireUnchangedByOthers();
  Commit commit(*tree_, stored_);
  const auto written = std::make_shared<Container>(item_);
  try {
    commit.write(format_, written, configuration_.limits);
  } catch (...) {
    // The store may have done it all the same: the answer was lost, or something else failed afterwards.
    if (!isReplacedBy(commit))
      throw;
    support::logCaughtFailure("A store has replaced an archive, and said that it failed.");
  }
  isChanged_ = commit.adopt();
  stored_ = commit.written();
  if (container_)
    container_->retire();
  container_ = written;
  rememberStamp();
}

bool Archive::isReplacedBy(const Commit& commit) const noexcept {
  if (!commit.written() || !isStampKnown_)
    return false;
  try {
    const auto stamp = Container(item_).stamp();
    return stamp && stamp != stamp_ && stamp->size == commit.size();
  } catch (...) {
    return false;  // whoever cannot know reports what failed
  }
}

/// The archive is written, whatever becomes of this: where the store does not tell, the next commit cannot compare.
void Archive::rememberStamp() noexcept {
  isStampKnown_ = false;
  try {
    stamp_ = container_->stamp();
    isStampKnown_ = true;
  } catch (...) {
    support::logCaughtFailure("The store does not tell when an archive was written.");
  }
}

void Archive::flush() {
  const std::scoped_lock lock(mutex_);
  at(root_, [&] {
    if (isChanged_)
      commit();
    item_.flushFilesystem();
  });
}

void Archive::invalidate() {
  const std::scoped_lock lock(mutex_);
  if (!isChanged_)
    forget();
}

void Archive::close() {
  flush();
  invalidate();
}

}  // namespace foundation::storage::backend::archive::detail
