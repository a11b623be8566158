// Archives that other programs made, read through libarchive.

#include "LibraryTest.h"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace foundation::storage::backend::archive::detail::library {
namespace {

using boost::posix_time::time_from_string;

class LibraryArchiveTest : public LibraryTest {
 protected:
  void putTree() const {
    for (const auto& [name, bytes] : tree)
      folder.put("tree/" + name, bytes);
  }

  const std::map<std::string, std::string> tree = {
      {"a.txt", "hello"}, {"docs/deep/b.bin", noise(300'000)}, {"docs/empty", ""}, {"docs/\xC3\xA4 %#.txt", "umlaut"}};
};

TEST_F(LibraryArchiveTest, ReadsWhatOtherProgramsWrote) {
  struct Case {
    const char* program;
    const char* name;
    const char* script;  ///< run in the tree
    ArchiveFormat format;
  };
  const Case cases[] = {
      {"tar", "plain.tar", "tar -cf ../plain.tar .", ArchiveFormat::Tar},
      {"tar", "v7.tar", "tar -cf ../v7.tar --format=v7 *", ArchiveFormat::Tar},
      {"tar", "oldgnu.tar", "tar -cf ../oldgnu.tar --format=oldgnu .", ArchiveFormat::Tar},
      {"tar", "ustar.tar", "tar -cf ../ustar.tar --format=ustar .", ArchiveFormat::Tar},
      {"tar", "posix.tar", "tar -cf ../posix.tar --format=posix .", ArchiveFormat::Any},
      {"gzip", "a.tar.gz", "tar -cf - . | gzip > ../a.tar.gz", ArchiveFormat::Tar},
      {"gzip", "two.tar.gz", "tar -cf - . | gzip -1 | gzip > ../two.tar.gz", ArchiveFormat::Tar},
      {"bzip2", "a.tar.bz2", "tar -cf - . | bzip2 > ../a.tar.bz2", ArchiveFormat::Tar},
      {"xz", "a.tar.xz", "tar -cf - . | xz > ../a.tar.xz", ArchiveFormat::Tar},
      {"xz", "a.tar.lzma", "tar -cf - . | xz --format=lzma > ../a.tar.lzma", ArchiveFormat::Tar},
      {"zstd", "a.tar.zst", "tar -cf - . | zstd -q > ../a.tar.zst", ArchiveFormat::Any},
      {"lz4", "a.tar.lz4", "tar -cf - . | lz4 -q > ../a.tar.lz4", ArchiveFormat::Tar},
      {"bsdtar", "a.tar.Z", "bsdtar -cZf ../a.tar.Z .", ArchiveFormat::Tar},
      {"bsdtar", "bsd.7z", "bsdtar -cf ../bsd.7z --format=7zip .", ArchiveFormat::SevenZip},
      {"7z", "a.7z", "7z a ../a.7z . >/dev/null", ArchiveFormat::SevenZip},
      {"7z", "solid.7z", "7z a -ms=on -mx=9 ../solid.7z . >/dev/null", ArchiveFormat::Any},
      {"bsdtar", "newc.cpio", "bsdtar -cf ../newc.cpio --format=newc .", ArchiveFormat::Any},
      {"bsdtar", "odc.cpio", "bsdtar -cf ../odc.cpio --format=odc .", ArchiveFormat::Any},
      {"bsdtar", "a.cpio.gz", "bsdtar -czf ../a.cpio.gz --format=newc .", ArchiveFormat::Any},
      {"bsdtar", "a.xar", "bsdtar -cf ../a.xar --format=xar .", ArchiveFormat::Any},
      {"bsdtar", "a.iso", "bsdtar -cf ../a.iso --format=iso9660 .", ArchiveFormat::Any},
  };
  putTree();
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    if (!testing::ProgramFolder::has(test.program))
      continue;
    folder.run("cd tree; export LC_ALL=C.UTF-8; " + std::string(test.script));
    const auto archive = read(test.name, test.format);
    EXPECT_EQ(filesIn(*archive), tree);
    EXPECT_EQ(contentOf(*archive, "docs/deep/b.bin"), tree.at("docs/deep/b.bin"));
    EXPECT_EQ(entryOf(*archive, "docs/deep").kind, EntryKind::Folder);
    EXPECT_EQ(entryOf(*archive, "docs/deep/b.bin").size, 300'000u);
  }
}

}  // namespace
}  // namespace foundation::storage::backend::archive::detail::library
