#pragma once

#include <foundation/core/Export.h>

#include <boost/property_tree/ptree.hpp>

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace foundation::storage::backend::support {

/// Reads the tree that a provider is configured with, one option after the other, and refuses what is left:
///
///     Options options(tree);
///     const auto capacity = options.takeBytes("capacity");
///     options.requireNoMore();
///     capacity_ = capacity.value_or(unlimited);   // only now, so that a refused tree changes nothing
class FOUNDATION_EXPORT Options {
 public:
  /// @param tree  the options by name, as `IConfigurableProvider::configure` gets them
  explicit Options(boost::property_tree::ptree tree);
  ~Options();

  /// A number of bytes: decimal digits. Nothing where the option is not given. Throws `InvalidOptionException` for any
  /// other value, for an option that has options of its own, and for one that is given twice.
  std::optional<std::uint64_t> takeBytes(const std::string& key);
  /// Any other number; as `takeBytes`.
  std::optional<std::uint64_t> takeNumber(const std::string& key);
  /// A number of milliseconds, no more than 24 days' (2^31 - 1); otherwise as `takeBytes`.
  std::optional<std::chrono::milliseconds> takeDuration(const std::string& key);
  /// "true" or "false"; otherwise as `takeBytes`.
  std::optional<bool> takeFlag(const std::string& key);
  /// Any text, in UTF-8; otherwise as `takeBytes`.
  std::optional<std::string> takeText(const std::string& key);

  /// Throws `InvalidOptionException` where the tree holds an option that was not taken.
  void requireNoMore() const;

 private:
  boost::property_tree::ptree tree_;
  std::set<std::string> taken_;
};

}  // namespace foundation::storage::backend::support
