#include "archive/Ours.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/backend/archive/ArchiveProviderFactory.h>
#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/ByteStream.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <algorithm>

namespace bench {
namespace {

using namespace foundation::storage::provider;
using foundation::storage::backend::archive::ArchiveProviderFactory;
using foundation::storage::backend::local::LocalProviderFactory;

constexpr std::size_t blockSize = 256 * 1024;

void appendContent(const StorageItem& file, std::string& content) {
  const auto stream = file.openReadOnlyStream();
  for (;;) {
    const auto size = content.size();
    content.resize(size + blockSize);
    const auto got = stream->read(content.data() + size, blockSize);
    content.resize(size + static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
    if (got <= 0)
      return;
  }
}

}  // namespace

StorageItem ourArchive(const std::string& path, ArchiveFormat format) {
  const auto location = toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)));
  return ourArchive(StorageItem(LocalProviderFactory().buildProvider(location), location), format);
}

StorageItem ourArchive(const StorageItem& container, ArchiveFormat format) {
  const auto* scheme = format == ArchiveFormat::Tar ? u"tar" : u"zip";
  return {ArchiveProviderFactory(format).buildProvider(container), StorageIRI(scheme, container.getLocation(), u"/")};
}

Tally tallyOf(const StorageItem& archive) {
  Tally tally;
  for (const auto listing = archive.listAll(u""); listing->hasNext();) {
    listing->next();
    const auto entry = listing->current();
    ++tally.entries;
    tally.nameLength += entry.getName().size();
    if (const auto& attributes = entry.getFileAttributes())
      tally.bytes += attributes->getSize();
  }
  return tally;
}

std::string ourContent(const StorageItem& archive, const std::string& name) {
  std::string content;
  appendContent({archive, fl::i18n::to_ustring(name)}, content);
  return content;
}

std::string ourContents(const StorageItem& archive) {
  std::string content;
  for (const auto listing = archive.listAllNamesOnly(u""); listing->hasNext();) {
    listing->next();
    appendContent({archive, listing->current().getName()}, content);
  }
  return content;
}

void ourReplace(const StorageItem& archive, const std::string& name, const std::string& content) {
  const auto stream = StorageItem(archive, fl::i18n::to_ustring(name)).openTransactionalStream({});
  for (std::size_t done = 0; done < content.size();)
    done += static_cast<std::size_t>(
        stream->write(content.data() + done, static_cast<std::int64_t>(content.size() - done)));
  stream->close(StreamClosePolicy::Commit);
  archive.flushFilesystem();
}

}  // namespace bench
