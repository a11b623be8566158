#pragma once

#include <foundation/storage/backend/archive/detail/ArchiveWriter.h>
#include <foundation/storage/backend/archive/detail/Container.h>
#include <foundation/storage/backend/archive/detail/Limits.h>
#include <foundation/storage/backend/archive/detail/Output.h>
#include <foundation/storage/backend/archive/detail/zip/Deflater.h>
#include <foundation/storage/backend/archive/detail/zip/ZipArchive.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::backend::archive::detail::zip {

/// Writes a zip. Entries that are taken over keep their compressed content, their comments and all extra fields;
/// new content is deflated where that makes it smaller by a twentieth at least, so that archives in archives can be
/// read where they lie.
class ZipWriter final : public ArchiveWriter {
 public:
  ZipWriter(std::shared_ptr<Container> container, const Limits& limits, std::shared_ptr<const ZipArchive> old,
            Output& output);

  void take(const Takeover& entry) override;
  void add(const Entry& entry, ContentReader* content) override;
  std::shared_ptr<const StoredArchive> finish() override;

 private:
  /// An entry that is being written.
  struct Fields {
    std::string name;
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t dosTime = 0;
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
    std::string localExtra;  ///< without zip64
    std::string extra;       ///< the same in the directory
    std::string comment;
    std::uint16_t versionMadeBy = 0;
    std::uint16_t internalAttributes = 0;
    std::uint32_t attributes = 0;
    std::uint64_t position = 0;  ///< of the local header
    bool hasLargeDescriptor = false;
  };

  static Fields fieldsOf(const Member& member);
  static Fields fieldsOf(const Entry& entry);
  static void rename(Fields& fields, const std::string& name);
  static void setTime(Fields& fields, const boost::posix_time::ptime& time, bool isEncrypted);
  static void setPermissions(Fields& fields, std::uint32_t permissions, bool isFolder);

  void copyPrefix();
  void copyContent(const Extent& extent);
  void addSmall(Fields& fields, ContentReader& content);
  void addLarge(Fields& fields, ContentReader& content);
  std::string deflated(std::string_view bytes);
  bool isWorthDeflating(ContentReader& content);
  bool wouldLookLikeBomb(const Fields& fields) const;
  void addDeflated(Fields& fields, ContentReader& content);
  void addStored(Fields& fields, ContentReader& content);

  void writeHeader(Fields& fields);
  void writeDescriptor(const Fields& fields);
  void addRecord(const Fields& fields);
  void writeEnd(const DirectoryEnd& end);

  const std::shared_ptr<Container> container_;
  const Limits limits_;
  const std::shared_ptr<const ZipArchive> old_;  ///< null where there is none
  Output& output_;
  std::optional<Input> input_;  ///< of the old archive
  std::string buffer_;
  Deflater deflater_;  ///< one for all: it takes longer to make than most entries to write
  std::string directory_;
  std::uint64_t count_ = 0;
};

}  // namespace foundation::storage::backend::archive::detail::zip
