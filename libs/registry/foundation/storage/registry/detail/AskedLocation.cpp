#include <foundation/storage/registry/detail/AskedLocation.h>

#include <foundation/storage/registry/detail/Names.h>

#include <boost/property_tree/ptree.hpp>

namespace foundation::storage::registry::detail {

using provider::StorageIRI;

namespace {

std::u16string writtenPrefix(const StorageIRI& asked, const std::u16string& prefix) {
  const auto scheme = asked.getScheme();
  const auto plus = scheme.find(u'+');
  if (plus == std::u16string::npos || plus + 1 == scheme.size() ||
      comparableName(std::u16string_view(scheme).substr(0, plus)) != prefix)
    throw provider::Exception(provider::ErrorCode::InvalidLocation, asked);
  return scheme.substr(0, plus + 1);
}

}  // namespace

AskedLocation::AskedLocation(const StorageIRI& asked, const std::u16string& prefix)
    : asked_(asked), prefix_(writtenPrefix(asked, prefix)), inner_(asked.toString().substr(prefix_.size())) {}

StorageIRI AskedLocation::outer(const StorageIRI& inner) const {
  return inner == inner_ ? asked_ : StorageIRI(prefix_ + inner.toString());
}

provider::ChangeCallback AskedLocation::translating(const provider::ChangeCallback& callback) const {
  return [asked = *this, callback](const events::Kind& kind, const StorageIRI& watched, const StorageIRI& subject,
                                   const events::EntryType& type, const boost::property_tree::ptree& details) {
    callback(kind, asked.outer(watched), asked.outer(subject), type, details);
  };
}

}  // namespace foundation::storage::registry::detail
