#pragma once

#include <foundation/storage/backend/s3/detail/client/Client.h>
#include <foundation/storage/backend/s3/detail/stream/Limits.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/StorageIRI.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

/// Streams over objects.
namespace foundation::storage::backend::s3::detail::stream {

/// An object that a stream is opened on.
struct Target {
  client::Client client;
  std::string key;
  provider::StorageIRI location;  ///< for failures
};

/// Reads an object: one request where it is small, else pieces, read ahead in parallel while the position moves on in
/// order, and more of them the longer it does. The object must stay what it was when the first piece was read.
/// Opens by reading the first piece; throws `client::StoreFailure` where there is nothing.
std::unique_ptr<provider::ByteStream> openReading(Target target);

/// What becomes of the content that is there.
struct WriteMode {
  /// The object whose content goes before what is written; nothing: begins empty.
  std::optional<client::ObjectInfo> kept = {};
  client::Existing existing = client::Existing::Replace;
  /// Called before the object is published, each time that it is tried; what it throws, closing throws.
  std::function<void()> mayPublish = {};
};

/// Writes an object in order, in one request below the part size, else as an upload in parallel parts. It shows when
/// the stream is closed, and not before; a stream destroyed before that leaves everything as it was, and no upload.
/// What was written can neither be read nor changed: `read` gives the end, as of a stream that was not opened for
/// reading, and any `seek` that moves refuses with `UnsupportedOperation`. Sends nothing before there is a part to
/// send. A failure of a part shows in the next `write`, or in `close`; then nothing but closing is left. Where content
/// is kept and nothing is written, the object stays what it is.
/// @param published  called once when the object is there
std::unique_ptr<provider::ByteStream> openWriting(Target target, WriteMode mode, std::function<void()> published = {});

/// The same as a transaction: it shows when it is committed; where that fails, it can be tried again, or aborted. After
/// a failure of `write` it can be aborted only.
std::unique_ptr<provider::TransactionalStream> openTransaction(Target target, WriteMode mode,
                                                               std::function<void()> published = {});

/// Copies an object on the server, in one request or by parts, so that the destination is untouched or whole.
/// @param source  what `sourceKey` was found to be; the copy fails with `ResourceInUse` where it has changed since
/// @param proceed  asked before each part, and 20 times a second while waiting, by this thread; false ends it
/// @return false where it was ended. A store that has begun a copy in one request may finish it all the same.
bool copyObject(const client::Client& client, const std::string& sourceKey, const client::ObjectInfo& source,
                const std::string& key, const std::function<bool()>& proceed = {}, const Limits& limits = {});

/// Cuts an object off, or fills it up with zeros, on the server as far as it goes; in one step for whoever reads.
/// @param object  what it was found to be; fails with `ResourceInUse` where content that is kept has changed since
void resizeObject(const Target& target, const client::ObjectInfo& object, std::uint64_t newSize,
                  const Limits& limits = {});

}  // namespace foundation::storage::backend::s3::detail::stream
