#pragma once

#include <foundation/storage/backend/archive/ArchiveFormat.h>
#include <foundation/storage/backend/archive/detail/ArchiveWriter.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/StoredArchive.h>

#include <memory>

namespace foundation::storage::backend::archive::detail {

class Container;
class Output;

/// Whether archives of that format can be written.
bool isWritten(ArchiveFormat format);

/// Reads what a container holds; a container of no bytes holds no entries. Throws `Fault`, and what the container's
/// streams throw.
std::shared_ptr<const StoredArchive> readArchive(ArchiveFormat format, const std::shared_ptr<Container>& container,
                                                 const Limits& limits);

/// Begins to write an archive that is to replace `old`. Throws the same.
/// @param format     one that is written
/// @param container  what the new archive will be read from
/// @param old        null where there is none yet
/// @param output     lives longer than the writer
std::unique_ptr<ArchiveWriter> beginArchive(ArchiveFormat format, const std::shared_ptr<Container>& container,
                                            const Limits& limits, std::shared_ptr<const StoredArchive> old,
                                            Output& output);

}  // namespace foundation::storage::backend::archive::detail
