#include <foundation/storage/backend/archive/detail/library/HardLinks.h>

#include <algorithm>

namespace foundation::storage::backend::archive::detail::library {

std::string plainName(std::string_view name) {
  std::string result;
  while (!name.empty()) {
    const auto length = std::min(name.find('/'), name.size());
    const auto part = name.substr(0, length);
    name.remove_prefix(std::min(length + 1, name.size()));
    if (part.empty() || part == ".")
      continue;
    if (!result.empty())
      result += '/';
    result += part;
  }
  return result;
}

void becomeLinkTo(Entry& link, const Entry& content, std::size_t number) {
  link.kind = content.kind;
  link.isEncrypted = content.isEncrypted;
  link.linkTarget = content.linkTarget;
  link.size = content.size;
  if (link.kind == EntryKind::File)
    link.hardLinkTo = number;
}

std::optional<std::size_t> contentOf(const SharedContent& shared, std::size_t number) {
  std::optional<std::size_t> content = number;
  for (auto found = shared.find(number); found != shared.end(); found = content ? shared.find(*content) : shared.end())
    content = found->second;
  return content;
}

SharedContent resolve(std::vector<Entry>& entries, const std::vector<HardLink>& links) {
  SharedContent shared;
  if (links.empty())
    return shared;
  std::unordered_map<std::string, std::size_t> last;
  auto link = links.begin();
  for (std::size_t number = 0; number < entries.size(); ++number) {
    if (link != links.end() && link->number == number) {
      const auto found = last.find(plainName(link->target));
      auto target = found != last.end() ? contentOf(shared, found->second) : std::nullopt;
      if (target && entries[*target].kind == EntryKind::Folder)
        target.reset();
      if (!link->hasContent)
        shared[number] = target;
      else if (link->givesContent && target && entries[*target].size == 0u)
        shared[*target] = number;
      if (!link->hasContent && target)
        becomeLinkTo(entries[number], entries[*target], *target);
      ++link;
    }
    last[plainName(entries[number].name)] = number;
  }
  for (const auto& [number, target] : shared)
    entries[number].size = target ? entries[*contentOf(shared, number)].size : std::nullopt;
  return shared;
}

}  // namespace foundation::storage::backend::archive::detail::library
