#include <fstore/Facts.h>
#include <fstore/Find.h>
#include <fstore/JsonArray.h>
#include <fstore/Size.h>
#include <fstore/Text.h>
#include <fstore/Time.h>
#include <fstore/TreeWalk.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/support/Wildcard.h>

#include <nlohmann/json.hpp>

namespace fstore {

using boost::posix_time::ptime;
namespace provider = foundation::storage::provider;
using foundation::storage::backend::support::Wildcard;
using provider::CaseModifier;
using provider::FolderEntry;
using provider::StorageItem;

namespace {

EntryKind kindOf(const FolderEntry& entry) {
  if (isLink(entry).value_or(false))
    return EntryKind::Link;
  return entry.isFile() ? EntryKind::File : EntryKind::Folder;
}

bool fits(const SizeBound& bound, std::uint64_t size) {
  switch (bound.relation) {
    case SizeBound::Relation::Above:
      return size > bound.size;
    case SizeBound::Relation::Below:
      return size < bound.size;
    default:
      return size == bound.size;
  }
}

/// The time that `text` says, or when what is at that location was changed; none, once that is reported, where it is
/// neither.
std::optional<ptime> momentOf(const std::string& text, const Session& session) {
  auto time = parseTime(text);
  if (!time)
    session.forEach({text}, [&](const StorageItem& item, const std::string&) {
      time = lastModified(entryOf(item, item.getName()));
    });
  return time;
}

class Finder {
 public:
  Finder(const Session& session, JsonArray& json, const std::string& argument, const FindOptions& options,
         const std::optional<ptime>& newer)
      : session_(session), json_(json), argument_(argument), options_(options), newer_(newer) {}

  void run(const StorageItem& root) {
    const bool isCaseSensitive = root.getFilenameSensitivity().isCaseSensitive;
    if (options_.name)
      wildcard_.emplace(fl::i18n::to_ustring(*options_.name),
                        isCaseSensitive ? CaseModifier::Sensitive : CaseModifier::InSensitive);
    const auto entry = entryOf(root, root.getName());
    offer(root, entry, u"");
    // "link/" means what the link leads to.
    if (!entry.isFile() && (!isLink(entry).value_or(false) || argument_.ends_with('/')))
      TreeWalk(
          session_.report, [](const FolderEntry&) { return true; }, options_.maxDepth,
          [&](const TreeWalk::Place& place) { offer(place.item, place.entry, place.path); })
          .run(root);
  }

 private:
  bool selects(const StorageItem& item, const FolderEntry& entry) const {
    if (wildcard_ && !wildcard_->matches(item.getName()))
      return false;
    if (options_.kind && kindOf(entry) != *options_.kind)
      return false;
    const auto size = sizeOf(entry);
    if (options_.size && !(size && fits(*options_.size, *size)))
      return false;
    // A time that is not known is not later than any.
    const auto modified = lastModified(entry);
    return !newer_ || (!modified.is_special() && modified > *newer_);
  }

  void offer(const StorageItem& item, const FolderEntry& entry, std::u16string_view path) {
    if (!selects(item, entry))
      return;
    if (json_.isWritten())
      json_.add(toJson(item, entry));
    else
      session_.output.write(lineOf(item, path) + "\n");
  }

  std::string lineOf(const StorageItem& item, std::u16string_view path) const {
    if (isLocationText(argument_))
      return printable(item.getLocation().toString());
    auto whole = fl::i18n::to_ustring(argument_);
    if (!path.empty())
      whole.append(whole.ends_with(u'/') ? u"" : u"/").append(path);
    return shown(whole, session_.output);
  }

  const Session& session_;
  JsonArray& json_;
  const std::string& argument_;
  const FindOptions& options_;
  std::optional<ptime> newer_;
  std::optional<Wildcard> wildcard_;
};

}  // namespace

std::optional<SizeBound> parseSizeBound(std::string_view text) {
  auto relation = SizeBound::Relation::Equal;
  if (text.starts_with('+'))
    relation = SizeBound::Relation::Above;
  else if (text.starts_with('-'))
    relation = SizeBound::Relation::Below;
  if (relation != SizeBound::Relation::Equal)
    text.remove_prefix(1);
  const auto size = parseSize(text);
  return size ? std::optional(SizeBound{relation, *size}) : std::nullopt;
}

void find(const Session& session, const std::string& argument, const FindOptions& options) {
  JsonArray json(session.output, options.format);
  const auto newer = options.newer ? momentOf(*options.newer, session) : std::nullopt;
  if (newer || !options.newer)
    session.forEach({argument}, [&](const StorageItem& root, const std::string&) {
      Finder(session, json, argument, options, newer).run(root);
    });
  json.end();
}

}  // namespace fstore
