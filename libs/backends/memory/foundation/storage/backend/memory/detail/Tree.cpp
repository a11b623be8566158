#include <foundation/storage/backend/memory/detail/Tree.h>

#include <foundation/storage/backend/memory/detail/Failure.h>
#include <foundation/storage/backend/support/VisitBelow.h>

#include <algorithm>
#include <mutex>
#include <utility>

namespace foundation::storage::backend::memory::detail {

using provider::ErrorCode;
using provider::FileAttributes;
using provider::FolderAttributes;
using provider::FolderEntry;
using provider::ReplacementPolicy;

namespace {

bool isHidden(const std::u16string& name) { return name.starts_with(u'.'); }

std::u16string nameOf(const Place& place) { return place.names.empty() ? std::u16string() : place.names.back(); }

bool isOfKind(const Node& node, Kind kind) { return node.isFolder() == (kind == Kind::Folder); }

FileAttributes attributesOfFile(const std::u16string& name, const Node& node) {
  FileAttributes attributes(node.content->size(), node.content->lastModified(), node.isWritable);
  return attributes.withHiddenAttribute(isHidden(name));
}

FolderAttributes attributesOfFolder(const std::u16string& name, const Node& node) {
  FolderAttributes attributes(node.lastModified, node.isWritable);
  return attributes.withHiddenAttribute(isHidden(name));
}

FolderEntry entryOf(const std::u16string& name, const Node& node, bool givesAttributes) {
  if (!givesAttributes)
    return {name, node.isFolder() ? FolderEntry::EntryType::Folder : FolderEntry::EntryType::File};
  return node.isFolder() ? FolderEntry(name, attributesOfFolder(name, node))
                         : FolderEntry(name, attributesOfFile(name, node));
}

/// Whether an entry lies below another one, at any depth.
bool isBelow(const Place& place, const Place& folder) {
  return place.names.size() > folder.names.size() &&
         std::equal(folder.names.begin(), folder.names.end(), place.names.begin());
}

}  // namespace

Tree::Tree() : root_(nullptr) {}

Node* Tree::find(const Place& place) const {
  const Node* node = &root_;
  for (const auto& name : place.names) {
    const auto child = node->children.find(name);
    if (child == node->children.end())
      return nullptr;
    node = child->second.get();
  }
  return const_cast<Node*>(node);
}

/// The entry, or the reason why there is none.
Node& Tree::require(const Place& place) const {
  if (auto* node = find(place))
    return *node;
  requireParent(place);
  throw refusal(ErrorCode::ResourceNotFound, place.location, u"Nothing is there");
}

Node& Tree::require(const Place& place, Kind kind) const {
  auto& node = require(place);
  if (!isOfKind(node, kind))
    throw refusal(ErrorCode::InvalidLocation, place.location,
                  kind == Kind::File ? u"This is a folder" : u"This is a file");
  return node;
}

Node& Tree::requireParent(const Place& place) const {
  if (place.names.empty())
    throw refusal(ErrorCode::InvalidLocation, place.location, u"The root of a store stays what it is");
  const Node* node = &root_;
  for (auto name = place.names.begin(); name != place.names.end() - 1; ++name) {
    const auto child = node->children.find(*name);
    if (child == node->children.end())
      throw refusal(ErrorCode::ResourceNotFound, place.location, u"There is no folder that could hold it");
    node = child->second.get();
    if (!node->isFolder())
      throw refusal(ErrorCode::InvalidLocation, place.location, u"The path leads through a file");
  }
  return const_cast<Node&>(*node);
}

Node& Tree::requireWritableParent(const Place& place) const {
  auto& parent = requireParent(place);
  if (!parent.isWritable)
    throw refusal(ErrorCode::PermissionDenied, place.location, u"The folder that holds it is not writable");
  return parent;
}

std::optional<Kind> Tree::kindOf(const Place& place) const {
  const std::shared_lock lock(mutex_);
  const auto* node = find(place);
  if (node == nullptr)
    return std::nullopt;
  return node->isFolder() ? Kind::Folder : Kind::File;
}

void Tree::insert(const Place& place, std::unique_ptr<Node> node) {
  if (find(place) != nullptr)
    throw refusal(ErrorCode::ResourceAlreadyExists, place.location, u"Something is there already");
  auto& parent = requireWritableParent(place);
  parent.children.emplace(place.names.back(), std::move(node));
  parent.lastModified = now();
}

void Tree::createFile(const Place& place) {
  const std::scoped_lock lock(mutex_);
  insert(place, std::make_unique<Node>(makeContent()));
}

void Tree::createFolder(const Place& place) {
  const std::scoped_lock lock(mutex_);
  insert(place, std::make_unique<Node>(nullptr));
}

void Tree::remove(const Place& place, Kind kind) {
  std::unique_ptr<Node> removed;  // destroyed without the lock
  const std::scoped_lock lock(mutex_);
  if (!require(place, kind).children.empty())
    throw refusal(ErrorCode::FolderNotEmpty, place.location, u"The folder is not empty");
  auto& parent = requireWritableParent(place);
  removed = std::move(parent.children.extract(nameOf(place)).mapped());
  parent.lastModified = now();
}

void Tree::removeRecursively(const Place& place) {
  std::unique_ptr<Node> removed;  // destroyed without the lock
  const std::scoped_lock lock(mutex_);
  const auto& folder = require(place, Kind::Folder);
  auto& parent = requireWritableParent(place);
  bool isRemovable = folder.isWritable || folder.children.empty();
  support::visitBelow(folder, true, [&](const auto&, const auto&, const Node& node, std::size_t) {
    isRemovable = isRemovable && (node.isWritable || node.children.empty());
  });
  if (!isRemovable)
    throw refusal(ErrorCode::PermissionDenied, place.location, u"A folder in it that is not empty is not writable");
  removed = std::move(parent.children.extract(nameOf(place)).mapped());
  parent.lastModified = now();
}

void Tree::requireMoveDestination(const Node& moved, const Place& destination, ReplacementPolicy policy) const {
  const auto* existing = find(destination);
  if (existing == nullptr || existing == &moved)
    return;
  if (preservesExisting(policy))
    throw refusal(ErrorCode::ResourceAlreadyExists, destination.location, u"Something is there already");
  if (existing->isFolder() != moved.isFolder())
    throw refusal(ErrorCode::InvalidLocation, destination.location,
                  existing->isFolder() ? u"This is a folder" : u"This is a file");
  if (!existing->children.empty())
    throw refusal(ErrorCode::FolderNotEmpty, destination.location, u"The folder is not empty");
}

void Tree::move(const Place& source, const Place& destination, ReplacementPolicy policy, Kind kind) {
  std::unique_ptr<Node> replaced;  // destroyed without the lock
  const std::scoped_lock lock(mutex_);
  const auto& moved = require(source, kind);
  if (isBelow(destination, source) || source.names.empty())
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A folder cannot be moved into itself");
  if (find(destination) == &moved) {
    if (preservesExisting(policy))
      throw refusal(ErrorCode::ResourceAlreadyExists, destination.location, u"This is the source itself");
    return;
  }
  requireMoveDestination(moved, destination, policy);
  auto& from = requireWritableParent(source);
  auto& to = requireWritableParent(destination);
  auto newName = nameOf(destination);  // before anything changes: this may be short of memory
  auto entry = from.children.extract(from.children.find(source.names.back()));
  if (auto existing = to.children.extract(newName))
    replaced = std::move(existing.mapped());
  entry.key() = std::move(newName);
  to.children.insert(std::move(entry));
  from.lastModified = to.lastModified = now();
}

FileAttributes Tree::fileAttributes(const Place& place) const {
  const std::shared_lock lock(mutex_);
  return attributesOfFile(nameOf(place), require(place, Kind::File));
}

FolderAttributes Tree::folderAttributes(const Place& place) const {
  const std::shared_lock lock(mutex_);
  return attributesOfFolder(nameOf(place), require(place, Kind::Folder));
}

void Tree::setLastModified(const Place& place, const boost::posix_time::ptime& time) {
  const std::scoped_lock lock(mutex_);
  auto& node = require(place);
  if (node.isFolder())
    node.lastModified = time;
  else
    node.content->setLastModified(time);
}

void Tree::setWritable(const Place& place, bool writable) {
  const std::scoped_lock lock(mutex_);
  require(place).isWritable = writable;
}

Tree::File Tree::file(const Place& place) const {
  const std::shared_lock lock(mutex_);
  const auto& node = require(place, Kind::File);
  return {node.content, node.isWritable};
}

std::shared_ptr<FileContent> Tree::fileForWriting(const Place& place, provider::ByteStreamCreate create,
                                                  provider::ByteStreamTruncate truncate) {
  const std::scoped_lock lock(mutex_);
  if (create == provider::ByteStreamCreate::Create && find(place) == nullptr)
    insert(place, std::make_unique<Node>(makeContent()));
  const auto& node = require(place, Kind::File);
  if (!node.isWritable)
    throw refusal(ErrorCode::PermissionDenied, place.location, u"The file is not writable");
  if (truncate == provider::ByteStreamTruncate::TruncateExisting)
    node.content->resize(0);
  return node.content;
}

void Tree::requireCanPut(const FileContent& source, const Place& destination, ReplacementPolicy policy) const {
  const std::shared_lock lock(mutex_);
  requireReplaceable(source, destination, policy);
}

void Tree::requireReplaceable(const FileContent& source, const Place& destination, ReplacementPolicy policy) const {
  const auto* existing = find(destination);
  if (existing == nullptr) {
    requireWritableParent(destination);
    return;
  }
  if (preservesExisting(policy))
    throw refusal(ErrorCode::ResourceAlreadyExists, destination.location, u"Something is there already");
  if (existing->isFolder())
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"This is a folder");
  if (existing->content.get() == &source)
    throw refusal(ErrorCode::InvalidLocation, destination.location, u"A file cannot be copied onto itself");
  if (!existing->isWritable)
    throw refusal(ErrorCode::PermissionDenied, destination.location, u"The file is not writable");
}

void Tree::put(const File& copy, const FileContent& source, const Place& destination, ReplacementPolicy policy) {
  auto node = std::make_unique<Node>(copy.content);  // and then what it replaces, destroyed without the lock
  node->isWritable = copy.isWritable;
  const std::scoped_lock lock(mutex_);
  requireReplaceable(source, destination, policy);
  auto& parent = requireParent(destination);
  std::swap(parent.children[nameOf(destination)], node);
  parent.lastModified = now();
}

support::EntryTree::Items Tree::list(const Place& place, const support::ListingScope& scope) const {
  const std::shared_lock lock(mutex_);
  support::EntryTree::Items items;
  std::vector<std::size_t> folders{support::EntryTree::none};  // on the way to what is visited
  const auto& listed = require(place, Kind::Folder);
  support::visitBelow(listed, scope.isRecursive,
                      [&](const auto&, const std::u16string& name, const Node& node, std::size_t depth) {
                        if (!scope.includes(node.isFolder() ? Kind::Folder : Kind::File))
                          return;
                        folders.resize(depth + 1);
                        items.push_back({entryOf(name, node, scope.givesAttributes), folders.back()});
                        folders.push_back(items.size() - 1);
                      });
  return items;
}

}  // namespace foundation::storage::backend::memory::detail
