#include "locations/Workloads.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/StorageIRI.h>

namespace bench {
namespace {

using foundation::storage::provider::StorageIRI;

struct Ours {
  static std::u16string text(const Spelling& spelling) { return fl::i18n::to_ustring(spelling.shown); }
  static std::u16string name(const std::string& name) { return fl::i18n::to_ustring(name); }
  static StorageIRI parse(const std::u16string& text) { return StorageIRI(text); }
  static std::size_t read(const StorageIRI& value) { return value.getPath().size() + value.getName().size(); }
  static StorageIRI folder() { return StorageIRI(fl::i18n::to_ustring(folderText)); }
  static StorageIRI child(const StorageIRI& folder, const std::u16string& name) { return {folder, name}; }
  static bool equal(const StorageIRI& a, const StorageIRI& b) { return a == b; }
  static std::size_t hash(const StorageIRI& value) { return value.hashValue(); }
  static bool less(const StorageIRI& a, const StorageIRI& b) { return a < b; }
};

const bool added = add<Ours>("ours");

}  // namespace
}  // namespace bench
