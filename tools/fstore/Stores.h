#pragma once

#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/registry/ProviderRegistry.h>

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace fstore {

/// An argument names no location.
class ArgumentFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whether an argument is the text of a location, and no path.
bool isLocationText(std::string_view argument);

/// All stores that the command can reach.
class Stores {
 public:
  /// @param configuration  the path of a file with the stores' options, in Boost's INFO format (.info) or JSON (.json)
  /// Throws `ArgumentFailure` where it cannot be read, or says what it cannot say.
  explicit Stores(const std::optional<std::string>& configuration);

  /// The item that an argument names. One that begins with a scheme (RFC 3986, section 3.1) and ':' is
  /// the text of a location, or a `ContainerPath`; any other is a path of the local file system, made absolute
  /// against the current folder and otherwise kept: its "..", too, since what lies above a link is for the system
  /// to say. (A path that looks like a location is written "./a:b".)
  ///
  /// Throws `ArgumentFailure` where it is neither, `Exception` with `UnsupportedOperation` where no store serves the
  /// scheme, and what the store itself refuses.
  foundation::storage::provider::StorageItem open(const std::string& argument) const;

  /// The names that can stand in a scheme, and what stands behind them.
  std::vector<foundation::storage::registry::Registration> registrations() const { return registry_.registrations(); }

 private:
  foundation::storage::provider::StorageIRI locate(const std::string& argument) const;

  foundation::storage::registry::ProviderRegistry registry_;
  std::set<std::string> containers_;  ///< schemes, in lower case
};

}  // namespace fstore
