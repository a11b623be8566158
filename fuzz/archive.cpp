// A byte for the format, and the archive.

#include "laws/ArchiveLaws.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace foundation;
  using storage::testing::ArchiveFormat;
  if (size == 0)
    return 0;
  constexpr ArchiveFormat formats[] = {ArchiveFormat::Zip, ArchiveFormat::Tar, ArchiveFormat::SevenZip,
                                       ArchiveFormat::Any};
  const std::string bytes(static_cast<const char*>(static_cast<const void*>(data + 1)), size - 1);
  laws::checkArchive(formats[data[0] % std::size(formats)], bytes,
                     {{"max-entries", 1'000}, {"max-total-size", std::uint64_t{16} << 20}});
  return 0;
}
