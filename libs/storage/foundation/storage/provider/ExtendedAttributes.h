#pragma once

#include <foundation/core/Export.h>

#include <boost/any.hpp>

#include <map>
#include <string>

namespace foundation::storage::provider {

/// Further attributes of a file or folder by name, in the order of their names; which ones there are is
/// the provider's business.
class FOUNDATION_EXPORT ExtendedAttributes {
 public:
  /// Values by name.
  using Map = std::map<std::string, boost::any>;

  /// None.
  ExtendedAttributes() = default;
  /// Those given.
  explicit ExtendedAttributes(const Map& attributes) : attributes_(attributes) {}

  /// Whether there is one of that name.
  bool hasAttribute(const std::string& key) const { return attributes_.contains(key); }

  /// A copy of the value. Throws `std::out_of_range` where there is no such attribute and
  /// `boost::bad_any_cast` where it is of another type.
  template <class T>
  T getAttribute(const std::string& key) const {
    return boost::any_cast<T>(getAttribute(key));
  }

  /// Pairs of name and value, in the order of the names; valid until this object is changed or destroyed.
  /// @{
  Map::iterator begin() { return attributes_.begin(); }
  Map::iterator end() { return attributes_.end(); }
  Map::const_iterator begin() const { return attributes_.begin(); }
  Map::const_iterator end() const { return attributes_.end(); }
  /// @}

 private:
  boost::any getAttribute(const std::string& key) const;

  Map attributes_;
};

}  // namespace foundation::storage::provider
