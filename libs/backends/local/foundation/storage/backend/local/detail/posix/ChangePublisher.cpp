#include <foundation/storage/backend/local/detail/posix/ChangePublisher.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/support/Log.h>

#include <boost/property_tree/ptree.hpp>

#include <utility>

namespace foundation::storage::backend::local::detail {

using events::EntryType;
using events::Kind;
using provider::StorageIRI;

namespace {

constexpr unsigned bitOf(Kind kind) { return 1u << static_cast<unsigned>(kind); }

unsigned bitsOf(const ChangePublisher::Kinds& kinds) {
  unsigned bits = 0;
  for (const auto kind : kinds)
    bits |= bitOf(kind);
  return bits;
}

}  // namespace

ChangePublisher::ChangePublisher(StorageIRI watched, provider::ChangeCallback callback, const Kinds& kinds)
    : watched_(std::move(watched)), callback_(std::move(callback)), kinds_(bitsOf(kinds)) {}

ChangePublisher::ChangePublisher(StorageIRI watched, StorageIRI entry, provider::ChangeCallback callback,
                                 const Kinds& kinds)
    : watched_(std::move(watched)),
      onlyEntry_(std::move(entry)),
      callback_(std::move(callback)),
      kinds_(bitsOf(kinds)) {}

bool ChangePublisher::wants(Kind kind) const noexcept { return (kinds_ & bitOf(kind)) != 0; }

bool ChangePublisher::wantsEntries() const noexcept {
  return (kinds_ & (bitOf(Kind::EntryAdded) | bitOf(Kind::EntryModified) | bitOf(Kind::EntryRemoved))) != 0;
}

void ChangePublisher::publish(Kind kind) const {
  if (wants(kind))
    call(kind, watched_, EntryType::Folder);
}

void ChangePublisher::publish(Kind kind, const std::string& path, EntryType type) const {
  if (wants(kind))
    call(kind, onlyEntry_ ? *onlyEntry_ : StorageIRI(watched_, fl::i18n::to_ustring(path)), type);
}

void ChangePublisher::call(Kind kind, const StorageIRI& subject, EntryType type) const {
  try {
    callback_(kind, watched_, subject, type, {});
  } catch (...) {
    support::logCaughtFailure("Error in checking for changes.");
  }
}

}  // namespace foundation::storage::backend::local::detail
