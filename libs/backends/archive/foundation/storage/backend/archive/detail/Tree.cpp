#include <foundation/storage/backend/archive/detail/Tree.h>

#include <foundation/storage/backend/archive/detail/Fault.h>

#include <fl/i18n/Convert.h>

#include <array>
#include <string_view>

namespace foundation::storage::backend::archive::detail {

namespace {

/// As many as Linux follows; see path_resolution(7).
constexpr int mostLinks = 40;

/// The content of a link's entry; none where it cannot be read, or is longer than any path.
std::optional<std::string> readTarget(const StoredArchive& archive, std::size_t number) {
  std::array<char, 4096> buffer{};
  std::string target;
  try {
    const auto reader = archive.open(number);
    while (const auto got = reader->read(buffer.data(), buffer.size())) {
      target.append(buffer.data(), got);
      if (target.size() >= buffer.size())
        return std::nullopt;
    }
  } catch (const Fault&) {
    return std::nullopt;  // a broken link, whatever breaks it
  }
  return target;
}

/// Puts the names of a link's target on top of those that are still to be walked.
void pushNames(Names& rest, std::string_view target) {
  Names names;
  while (!target.empty()) {
    const auto end = target.find('/');
    const auto part = target.substr(0, end);
    target.remove_prefix(end == target.npos ? target.size() : end + 1);
    if (!part.empty() && part != ".")
      names.push_back(fl::i18n::to_ustring(part));
  }
  rest.insert(rest.end(), names.rbegin(), names.rend());
}

bool leadsOut(const Node& link) { return !link.target || link.target->starts_with('/'); }

}  // namespace

Tree::Tree(const StoredArchive& archive, const boost::posix_time::ptime& time, const Limits& limits)
    : time_(time), limits_(limits) {
  root_.lastModified = time;
  for (std::size_t number = 0; number < archive.entries().size(); ++number)
    add(archive, number);
}

void Tree::add(const StoredArchive& archive, std::size_t number) {
  const auto& entry = archive.entries()[number];
  auto names = parseEntryName(entry.name);
  auto* folder = names ? makeFolders(*names, number) : nullptr;
  if (folder == nullptr) {
    hidden_.push_back(number);
    return;
  }
  const bool isFolder = entry.kind == EntryKind::Folder;
  auto& node = makeNode(*folder, names->back(), entry.kind, number);
  if (node->isFolder() != isFolder) {
    hidden_.push_back(number);
    return;
  }
  if (!isFolder) {
    node = std::make_unique<Node>(entry.kind);
    node->arrival = number;
  }
  fill(*node, archive, number);
}

/// What a folder has under a name; where that is nothing, a new node.
std::unique_ptr<Node>& Tree::makeNode(Node& folder, const std::u16string& name, EntryKind kind, std::size_t number) {
  auto& children = folder.children;
  // Most archives are in the order of their names: what comes next belongs at the end, or is what came last.
  const bool isLast = children.empty() || children.rbegin()->first < name;
  const auto behind = isLast ? children.end() : children.lower_bound(name);
  if (!isLast && behind->first == name)
    return behind->second;
  // A short archive can have names that imply many folders.
  if (nodes_ == limits_.entries)
    throw Fault(provider::ErrorCode::FileTooLarge, "the names of the archive's entries imply more folders than the " +
                                                       std::to_string(limits_.entries) +
                                                       " entries that the option max-entries allows");
  ++nodes_;
  auto node = std::make_unique<Node>(kind);
  node->lastModified = time_;
  node->arrival = number;
  return children.emplace_hint(behind, name, std::move(node))->second;
}

/// The folder that holds the last name; null where something else is on the way.
Node* Tree::makeFolders(const Names& names, std::size_t number) {
  auto* folder = &root_;
  for (auto name = names.begin(); name + 1 != names.end(); ++name) {
    auto& child = makeNode(*folder, *name, EntryKind::Folder, number);
    if (!child->isFolder())
      return nullptr;
    folder = child.get();
  }
  return folder;
}

void Tree::fill(Node& node, const StoredArchive& archive, std::size_t number) const {
  const auto& entry = archive.entries()[number];
  node.entry = number;
  node.permissions = entry.permissions;
  node.lastModified = entry.lastModified.is_special() ? time_ : entry.lastModified;
  if (entry.kind == EntryKind::File) {
    node.source = entry.hardLinkTo.value_or(number);
    node.size = archive.entries()[*node.source].size;
  } else if (entry.kind == EntryKind::Link) {
    node.target = entry.linkTarget ? entry.linkTarget : readTarget(archive, number);
  }
}

bool Tree::hides(const Names& names, EntryKind kind) const {
  const auto* node = &root_;
  for (const auto& name : names) {
    if (!node->isFolder())
      return true;
    const auto child = node->children.find(name);
    if (child == node->children.end())
      return false;
    node = child->second.get();
  }
  return node->isFolder() != (kind == EntryKind::Folder);
}

Tree::Found Tree::find(const Names& names, AtEnd atEnd) const {
  Names rest(names.rbegin(), names.rend());
  std::vector<Node*> folders{const_cast<Node*>(&root_)};
  Found found{folders.back()};
  for (int links = 0; !rest.empty();) {
    const auto name = std::move(rest.back());
    rest.pop_back();
    if (name == u"..") {
      if (folders.size() == 1)
        return {.obstacle = Obstacle::Outside};
      folders.pop_back();
      found = {folders.back()};
      continue;
    }
    auto& folder = *folders.back();
    const auto child = folder.children.find(name);
    if (child == folder.children.end())
      return rest.empty() ? Found{nullptr, &folder, name, Obstacle::None, std::move(folders)}
                          : Found{.obstacle = Obstacle::Missing};
    auto& node = *child->second;
    if (node.kind == EntryKind::Link && (!rest.empty() || atEnd == AtEnd::FollowLink)) {
      if (leadsOut(node))
        return {.obstacle = Obstacle::Outside};
      if (node.target->empty())
        return {.obstacle = Obstacle::Missing};
      if (++links > mostLinks)
        return {.obstacle = Obstacle::LinkLoop};
      pushNames(rest, *node.target);
      found = {&folder};
      continue;
    }
    found = {&node, &folder, name};
    if (node.isFolder())
      folders.push_back(&node);
    else if (!rest.empty())
      return {.obstacle = Obstacle::File};
  }
  found.way = std::move(folders);
  return found;
}

}  // namespace foundation::storage::backend::archive::detail
