#pragma once

#include <foundation/storage/provider/ErrorCode.h>
#include <foundation/storage/provider/StorageItem.h>
#include <foundation/storage/testing/Conformance.h>

#include <gtest/gtest.h>

#include <functional>
#include <ios>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::testing::detail {

using provider::ByteStreamAccess;
using provider::ByteStreamAppend;
using provider::ByteStreamCreate;
using provider::ByteStreamOpenOptions;
using provider::ByteStreamTruncate;
using provider::ErrorCode;
using provider::ReplacementPolicy;
using provider::StorageItem;

/// Ways to open a stream.
inline constexpr ByteStreamOpenOptions replacing{.access = ByteStreamAccess::WriteOnly,
                                                 .create = ByteStreamCreate::Create,
                                                 .truncate = ByteStreamTruncate::TruncateExisting,
                                                 .append = ByteStreamAppend::Overwrite};
inline constexpr ByteStreamOpenOptions patching{.access = ByteStreamAccess::ReadWrite,
                                                .create = ByteStreamCreate::Create,
                                                .truncate = ByteStreamTruncate::PreserveExisting,
                                                .append = ByteStreamAppend::Overwrite};
inline constexpr ByteStreamOpenOptions appending{.access = ByteStreamAccess::WriteOnly,
                                                 .create = ByteStreamCreate::Create,
                                                 .truncate = ByteStreamTruncate::PreserveExisting,
                                                 .append = ByteStreamAppend::Append};

/// Beyond what stores and copies handle in one piece.
inline constexpr std::size_t severalBlocks = 9 * 1024 * 1024 + 7;

/// The folder that one check works in.
class Store {
 public:
  explicit Store(const BackEnd& backEnd) : backEnd_(backEnd), place_(backEnd.makeEmptyFolder()) {}

  const StorageItem& folder() const { return *place_; }
  /// @param path  relative to the folder, with '/'
  StorageItem item(const std::u16string& path) const { return {folder(), path}; }
  bool can(Capability capability) const { return backEnd_.capabilities.contains(capability); }

  /// Makes the folder hold that, in place of what it held.
  void fill(const Contents& contents);
  /// Goes over to a store that takes no more than that.
  void limit(std::uint64_t bytes) { place_ = backEnd_.makeSmallFolder(bytes); }
  /// Lets go of the store: of its provider, unless somebody else holds it.
  void release() { place_.reset(); }
  /// Another folder, apart from this one, perhaps served by another provider.
  Place other() const { return backEnd_.makeEmptyFolder(); }

  std::string content(const std::u16string& path) const;
  /// The names in a folder, in order; of this one unless told.
  std::vector<std::u16string> names(const std::u16string& path = {}) const;

 private:
  const BackEnd& backEnd_;
  Place place_;
};

using Names = std::vector<std::u16string>;

/// All that a stream still gives.
std::string readAll(provider::ByteStream& stream);
/// Writes all, in as many calls as it takes.
template <class Stream>
void writeAll(Stream& stream, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = stream.write(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    ASSERT_GT(written, 0) << "a write has to take a byte at least, or to throw";
    ASSERT_LE(written, static_cast<std::int64_t>(bytes.size()));
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}
void put(const StorageItem& file, std::string_view bytes);
std::string contentOf(const StorageItem& file);
/// What a listing holds, in order.
Names namesIn(provider::IProvider::Listing listing);
/// Bytes in which every position can be told from its neighbours.
std::string sample(std::size_t size);

/// Whether `action` fails with that code, by an `Exception` with the location of `at`.
::testing::AssertionResult refuses(ErrorCode code, const StorageItem& at, const std::function<void()>& action);
/// The same for what works through streams: by such an `Exception`, or by a stream's failure with a context.
::testing::AssertionResult refusesStream(ErrorCode code, const StorageItem& at, const std::function<void()>& action);

/// Whether `action` fails with a failure of a stream.
::testing::AssertionResult failsAsStream(const std::function<void()>& action);

}  // namespace foundation::storage::testing::detail
