#pragma once

#include <foundation/core/Export.h>

#include <cstdint>
#include <iosfwd>

namespace foundation::storage::provider {

/// Whether a stream may be read as well as written. (For reading alone there is `IProvider::openReadOnlyStream`.)
enum class ByteStreamAccess : std::int32_t { WriteOnly = 0, ReadWrite = 1 };

/// What to do where the file is missing: create it in its folder, which must exist, or fail with
/// `ErrorCode::ResourceNotFound`.
enum class ByteStreamCreate : std::int32_t { Create = 0, NeverCreate = 1 };

/// What to do with the content of an existing file.
enum class ByteStreamTruncate : std::int32_t { TruncateExisting = 0, PreserveExisting = 1 };

/// Where writes go: always to the end, whatever `ByteStream::seek` says, or to the position of the stream, which
/// begins at 0.
enum class ByteStreamAppend : std::int32_t { Append = 0, Overwrite = 1 };

/// How a stream is to be opened:
///
///     provider->openStream(log, {.create = ByteStreamCreate::Create,
///                                .truncate = ByteStreamTruncate::PreserveExisting});
///
/// The default writes a file anew: write-only, created or emptied, appending.
struct ByteStreamOpenOptions {
  /// As the type says.
  /// @{
  ByteStreamAccess access = ByteStreamAccess::WriteOnly;
  ByteStreamCreate create = ByteStreamCreate::Create;
  ByteStreamTruncate truncate = ByteStreamTruncate::TruncateExisting;
  ByteStreamAppend append = ByteStreamAppend::Append;
  /// @}
};

/// Each writes its type and value, such as "ByteStreamAccess::WriteOnly"; every number but 0 counts as 1.
/// @{
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ByteStreamAccess& access);
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ByteStreamCreate& create);
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ByteStreamTruncate& truncate);
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ByteStreamAppend& append);
/// @}

/// Writes "ByteStreamOpenOptions: {ByteStreamAccess::WriteOnly, ...}" with all four values.
FOUNDATION_EXPORT std::ostream& operator<<(std::ostream& out, const ByteStreamOpenOptions& options);

}  // namespace foundation::storage::provider
