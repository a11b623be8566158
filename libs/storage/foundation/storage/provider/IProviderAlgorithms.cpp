// The operations that a back end inherits ready made, built out of its own primitives.

#include <fl/i18n/Case.h>
#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamDevice.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/FailureConversion.h>
#include <foundation/storage/provider/IProvider.h>
#include <foundation/storage/provider/detail/SelfCopy.h>

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <array>
#include <deque>

namespace foundation::storage::provider {
namespace {

constexpr std::uint64_t truncationChunk = 0x20000;

/// Copies until the end of the data.
void copyAll(const GenericByteStreamDevice<ByteStream>& source, const GenericByteStreamDevice<ByteStream>& sink) {
  std::array<char, 4096> buffer;
  for (;;) {
    const auto got = source.read(buffer.data(), buffer.size());
    if (got <= 0)
      return;
    for (std::int64_t done = 0; done < got;) {
      const auto written = sink.write(buffer.data() + done, got - done);
      if (written <= 0)
        throw ByteStreamWriteFailure("A stream took no more bytes.", ErrorCode::IOError);
      done += written;
    }
  }
}

/// Provides the bytes from `offset` on; the chunk is zero when it gets it.
using ChunkFiller = std::function<void(std::vector<char>& chunk, std::uint64_t offset)>;

/// Writes `count` bytes in chunks. After a short write the next chunk begins where that ended. A stream
/// that answers -1 ends the writing.
void writeChunks(ByteStream& target, const ChunkFiller& fill, std::uint64_t count) {
  for (std::uint64_t done = 0; done < count;) {
    std::vector<char> chunk(static_cast<std::size_t>(std::min(count - done, truncationChunk)));
    fill(chunk, done);
    const auto written = target.write(chunk.data(), static_cast<std::int64_t>(chunk.size()));
    if (written == -1)
      return;
    if (written == 0)
      throw ByteStreamWriteFailure("A stream took no more bytes.", ErrorCode::IOError);
    done += static_cast<std::uint64_t>(written);
  }
}

/// Fills a whole chunk from `source`.
void readWhole(ByteStream& source, std::vector<char>& chunk) {
  for (std::size_t filled = 0; filled < chunk.size();) {
    const auto got = source.read(chunk.data() + filled, static_cast<std::int64_t>(chunk.size() - filled));
    if (got <= 0)
      throw ByteStreamReadFailure("The file ended before the size it is to be cut to.", ErrorCode::IOError);
    filled += static_cast<std::size_t>(got);
  }
}

}  // namespace

void IProvider::doCopyFile(const StorageIRI& source, const StorageIRI& destination,
                           const ReplacementPolicy& policy) const {
  const bool exists = doFileExists(destination);
  if (exists && preservesExisting(policy))
    throw Exception(ErrorCode::ResourceAlreadyExists, destination);
  if (exists && detail::areOneFile(*this, source, *this, destination))
    throw detail::selfCopyRefusal(destination);
  auto input = doOpenReadOnlyStream(source);
  auto output = doOpenStream(destination, {.access = ByteStreamAccess::ReadWrite,
                                           .create = ByteStreamCreate::Create,
                                           .truncate = ByteStreamTruncate::TruncateExisting,
                                           .append = ByteStreamAppend::Overwrite});
  try {
    const GenericByteStreamDevice<ByteStream> from(input);
    const GenericByteStreamDevice<ByteStream> to(output);
    copyAll(from, to);
    to.close();
    from.close();
  } catch (const ByteStreamFailure& failure) {
    throw toException(failure, source);
  }
}

void IProvider::doCreateFolderRecursive(const StorageIRI& location) const {
  if (!location.hasParent() || !location.hasPath())
    throw Exception(doFolderExists(location) ? ErrorCode::ResourceAlreadyExists : ErrorCode::ResourceNotFound,
                    location);
  std::deque<StorageIRI> missing{location};
  while (!doFolderExists(missing.front().getParent())) {
    missing.push_front(missing.front().getParent());
    if (!missing.front().hasParent())
      throw Exception(ErrorCode::ResourceNotFound, missing.front());
  }
  for (const auto& folder : missing) {
    try {
      doCreateFolder(folder);
    } catch (const Exception& failure) {
      // Somebody else may be creating the same ancestors.
      const bool isAncestor = &folder != &missing.back();
      if (!isAncestor || failure.getErrorCode() != ErrorCode::ResourceAlreadyExists || !doFolderExists(folder))
        throw;
    }
  }
}

ExistenceType IProvider::doExists(const StorageIRI& location) const {
  if (doFileExists(location))
    return ExistenceType::AsFile;
  return doFolderExists(location) ? ExistenceType::AsFolder : ExistenceType::AsNeither;
}

ExistenceTypeExtended IProvider::doExistsExtended(const StorageIRI& location) const {
  if (doFileExists(location))
    return ExistenceTypeExtended::RegularFile;
  return doFolderExists(location) ? ExistenceTypeExtended::RegularFolder : ExistenceTypeExtended::None;
}

void IProvider::doTruncateToSize(const StorageIRI& location, std::uint64_t newSize) const {
  try {
    const auto size = doGetFileAttributes(location).getSize();
    if (newSize > size)
      expandFile(location, size, newSize);
    else if (newSize < size)
      shrinkFile(location, newSize);
  } catch (const Exception& failure) {
    throw Exception(failure.getErrorCode(), location);
  }
}

void IProvider::expandFile(const StorageIRI& location, std::uint64_t oldSize, std::uint64_t newSize) const {
  const auto stream = doOpenStream(location, {.access = ByteStreamAccess::WriteOnly,
                                              .create = ByteStreamCreate::NeverCreate,
                                              .truncate = ByteStreamTruncate::PreserveExisting,
                                              .append = ByteStreamAppend::Append});
  writeChunks(
      *stream, [](std::vector<char>&, std::uint64_t) {}, newSize - oldSize);
  stream->close();
}

void IProvider::shrinkFile(const StorageIRI& location, std::uint64_t newSize) const {
  const auto source = doOpenReadOnlyStream(location);
  const auto suffix = boost::uuids::to_string(boost::uuids::random_generator()());
  const StorageIRI scratch(location.toString() + fl::i18n::to_ustring(suffix));
  if (scratch.getPath() == location.getPath())  // the text ends in a query, which names no other file
    throw Exception(ErrorCode::InvalidLocation, location);
  const auto target = doOpenStream(scratch, {.access = ByteStreamAccess::WriteOnly,
                                             .create = ByteStreamCreate::Create,
                                             .truncate = ByteStreamTruncate::TruncateExisting,
                                             .append = ByteStreamAppend::Overwrite});
  std::uint64_t position = 0;
  const auto readChunk = [&](std::vector<char>& chunk, std::uint64_t offset) {
    if (offset != position)
      source->seek(static_cast<std::int64_t>(offset), std::ios_base::beg);
    readWhole(*source, chunk);
    position = offset + chunk.size();
  };
  writeChunks(*target, readChunk, newSize);
  target->close();
  source->close();
  doMoveFile(scratch, location, ReplacementPolicy::Overwrite);
}

PathComparator IProvider::doGetPathComparator(const StorageIRI&) const {
  return [](const std::u16string& a, const std::u16string& b, CaseModifier modifier) {
    if (modifier != CaseModifier::InSensitive)
      return a == b;
    const fl::i18n::to_lower lower;
    return fl::i18n::detail::transform(a, lower) == fl::i18n::detail::transform(b, lower);
  };
}

}  // namespace foundation::storage::provider
