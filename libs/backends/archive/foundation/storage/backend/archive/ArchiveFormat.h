#pragma once

#include <cstdint>

namespace foundation::storage::backend::archive {

/// What a factory takes a container for.
enum class ArchiveFormat : std::int32_t {
  Zip = 0,       ///< .zip and what is built like it (.jar, .docx, .epub); read and written
  Tar = 1,       ///< .tar, also compressed with gzip, bzip2, xz or zstd; read and written
  SevenZip = 2,  ///< .7z; read
  Any = 3,       ///< whatever it turns out to be, of these and cab, cpio, iso9660, lha, rar, xar and ar; read
};

}  // namespace foundation::storage::backend::archive
