#include <foundation/storage/backend/archive/detail/Format.h>

#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Output.h>
#include <foundation/storage/backend/archive/detail/library/LibraryArchive.h>
#include <foundation/storage/backend/archive/detail/library/TarWriter.h>
#include <foundation/storage/backend/archive/detail/zip/ZipArchive.h>
#include <foundation/storage/backend/archive/detail/zip/ZipWriter.h>

#include <array>
#include <string_view>
#include <utility>

namespace foundation::storage::backend::archive::detail {

namespace {

/// By its first bytes: those of an entry, or of the end of an empty one.
bool beginsLikeZip(Container& container) {
  std::array<char, 4> beginning{};
  auto input = container.open();
  if (input.size() < beginning.size())
    return false;
  input.readAll(0, beginning.data(), beginning.size());
  const std::string_view bytes(beginning.data(), beginning.size());
  return bytes == "PK\3\4" || bytes == "PK\5\6";
}

bool isEmpty(Container& container) { return container.open().size() == 0; }

}  // namespace

bool isWritten(ArchiveFormat format) { return format == ArchiveFormat::Zip || format == ArchiveFormat::Tar; }

std::shared_ptr<const StoredArchive> readArchive(ArchiveFormat format, const std::shared_ptr<Container>& container,
                                                 const Limits& limits) {
  if (format == ArchiveFormat::Zip && isEmpty(*container))
    return std::make_shared<zip::ZipArchive>(container, limits, zip::DirectoryEnd{}, std::string());
  if (format == ArchiveFormat::Zip || (format == ArchiveFormat::Any && beginsLikeZip(*container)))
    return zip::readZip(container, limits);
  return library::readLibraryArchive(format, container, limits);
}

std::unique_ptr<ArchiveWriter> beginArchive(ArchiveFormat format, const std::shared_ptr<Container>& container,
                                            const Limits& limits, std::shared_ptr<const StoredArchive> old,
                                            Output& output) {
  if (format == ArchiveFormat::Zip)
    return std::make_unique<zip::ZipWriter>(container, limits,
                                            std::dynamic_pointer_cast<const zip::ZipArchive>(std::move(old)), output);
  return library::beginTar(container, limits, std::move(old), output);
}

}  // namespace foundation::storage::backend::archive::detail
