#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/StorageIRI.h>

#include <string>

/// @file
/// Providers can be stacked: a filter is named before the scheme of what it filters, joined by '+', as in
/// "readonly+file:///a". All functions may be called by any number of threads.

namespace foundation::storage::provider {

/// What stands behind the last '+' of a scheme: "f1+f2+file" gives "file", "file" itself, "a+" nothing.
FOUNDATION_EXPORT std::u16string getPhysicalPartFromFilteringScheme(const std::u16string& scheme);

/// The same for a whole text: "f1+file:///a+b" gives "file:///a+b". Only a '+' before the first ':'
/// counts (any '+' where there is no ':').
FOUNDATION_EXPORT std::u16string getPhysicalURLFromFilteringURL(const std::u16string& url);

/// Whether two locations denote the same physical place, as far as their texts say.
///
/// Two locations in containers do where they are equal. Otherwise a location in a container stands for
/// the innermost container's own place, filters are stripped, and path (decoded), scheme and authority
/// have to be the same; an absent authority counts as an empty one. So "zip:file:///a.zip!/x",
/// "f+file:///a.zip" and "file:/a.zip" are equivalent.
/// Throws `network::IRISyntaxException` where a text does not parse once its filters are stripped.
FOUNDATION_EXPORT bool locationsAreEquivalent(const StorageIRI& a, const StorageIRI& b);

}  // namespace foundation::storage::provider
