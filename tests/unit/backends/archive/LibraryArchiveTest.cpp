// Archives that other programs made, read through libarchive.

#include "LibraryTest.h"

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/testing/Together.h>

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

TEST_F(LibraryArchiveTest, TellsWhatATarSays) {
  folder.run(R"(
    export LC_ALL=C.UTF-8 TZ=UTC
    mkdir sub; echo one > sub/first; chmod 4751 sub/first; touch -d '2021-03-04 05:06:07.123456789' sub/first
    ln -s ../else/where link; ln sub/first second; ln second third; mkfifo pipe; touch -d '1965-01-02 03:04:05.25' old
    chmod 1700 sub
    tar -cf a.tar --format=posix sub link second third pipe old)");
  const auto archive = read("a.tar");
  const auto& first = entryOf(*archive, "sub/first");
  EXPECT_EQ(first.lastModified, time_from_string("2021-03-04 05:06:07.123456"));
  EXPECT_EQ(first.permissions, 04751u);
  EXPECT_EQ(first.size, 4u);
  EXPECT_EQ(entryOf(*archive, "old").lastModified, time_from_string("1965-01-02 03:04:05.25"));
  EXPECT_EQ(entryOf(*archive, "sub").permissions, 01700u);
  EXPECT_EQ(entryOf(*archive, "pipe").kind, EntryKind::Special);
  EXPECT_EQ(entryOf(*archive, "link").kind, EntryKind::Link);
  EXPECT_EQ(entryOf(*archive, "link").linkTarget, "../else/where");
  for (const auto* name : {"second", "third"}) {
    EXPECT_EQ(entryOf(*archive, name).hardLinkTo, numberOf(*archive, "sub/first")) << name;
    EXPECT_EQ(entryOf(*archive, name).size, 4u) << name;
    EXPECT_EQ(contentOf(*archive, name), "one\n") << name;
    EXPECT_EQ(contentOf(*archive->open(numberOf(*archive, name))), "one\n") << name;
  }
}

TEST_F(LibraryArchiveTest, KeepsTheBytesOfNames) {
  const std::string names[] = {
      "latin-\xE4\xF6",      "composed-\xC3\xA4",      "decomposed-a\xCC\x88",
      "kelvin-\xE2\x84\xAA", "surrogate-\xED\xA0\x80", "line\nfeed",
      "back\\slash",         std::string(255, 'n'),    std::string(120, 'd') + "/" + std::string(200, 'f'),
      "\xEF\xBB\xBFmark",    "overlong-\xC0\xAF"};
  folder.run("mkdir t");
  for (const auto& name : names)
    folder.put("t/" + name, name);
  for (const std::string format : {"gnu", "posix", "oldgnu"}) {
    SCOPED_TRACE(format);
    folder.run("LC_ALL=C tar -C t -czf " + format + ".tgz --format=" + format + " .");
    const auto archive = read(format + ".tgz");
    for (const auto& name : names)
      EXPECT_EQ(contentOf(*archive, name), name);
  }
  folder.run(R"(python3 -c '
import tarfile, io, os
with tarfile.open("python.tar", "w", format=tarfile.PAX_FORMAT, encoding="utf-8", errors="surrogateescape") as tar:
    for name in os.listdir(b"t"):
        if os.path.isfile(b"t/" + name):
            tar.add(os.fsdecode(b"t/" + name), os.fsdecode(name))
')");
  const auto archive = read("python.tar", ArchiveFormat::Any);
  for (const auto& name : names) {
    if (name.find('/') == std::string::npos) {
      EXPECT_EQ(contentOf(*archive, name), name);
    }
  }
}

TEST_F(LibraryArchiveTest, FillsHolesWithZeros) {
  Limits limits;
  limits.ratio = 1'000'000'000;
  folder.run(R"(
    truncate -s 3M begin; printf end >> begin
    printf begin > end; truncate -s 2000001 end
    truncate -s 100K all
    printf x > huge; truncate -s 5G huge; printf y >> huge)");
  const std::map<std::string, std::string> small = {{"begin", std::string(3 << 20, '\0') + "end"},
                                                    {"end", "begin" + std::string(2'000'001 - 5, '\0')},
                                                    {"all", std::string(100 << 10, '\0')}};
  for (const std::string way : {"--format=gnu", "--format=posix --sparse-version=1.0",
                                "--format=posix --sparse-version=0.0", "-z --format=posix --sparse-version=0.1"}) {
    SCOPED_TRACE(way);
    folder.run("tar -cSf a.tar " + way + " begin end all; tar -cSf huge.tar " + way + " huge");
    const auto archive = read("a.tar", ArchiveFormat::Tar, limits);
    EXPECT_EQ(filesIn(*archive), small);
    const auto huge = read("huge.tar");
    EXPECT_EQ(huge->entries().at(0).size, (std::uint64_t{5} << 30) + 1);
    const auto reader = huge->open(0);
    EXPECT_EQ(faultOf([&] { contentOf(*reader); }), ErrorCode::FileTooLarge);
  }
}

TEST_F(LibraryArchiveTest, FollowsHardLinksWhereverTheirContentIs) {
  folder.run(R"(
    mkdir t; cd t; echo text > a; ln a b; ln a c; ln -s a s; ln s l
    bsdtar -cf ../newc.cpio --format=newc a b c
    bsdtar -cf ../odc.cpio --format=odc a b c
    bsdtar -cf ../a.iso --format=iso9660 a b c
    bsdtar -cf ../a.xar --format=xar a b c
    tar -cf ../a.tar ./a ./b ./c ./s ./l)");
  for (const auto* name : {"newc.cpio", "odc.cpio", "a.iso", "a.xar", "a.tar"}) {
    SCOPED_TRACE(name);
    const auto archive = read(name, ArchiveFormat::Any);
    for (const auto* file : {"a", "b", "c"}) {
      EXPECT_EQ(contentOf(*archive, file), "text\n") << file;
      EXPECT_EQ(entryOf(*archive, file).size, 5u) << file;
    }
  }
  const auto archive = read("a.tar");
  const auto& link = entryOf(*archive, "l");
  EXPECT_EQ(link.kind, EntryKind::Link);
  EXPECT_EQ(link.linkTarget, "a");
}

TEST_F(LibraryArchiveTest, LeadsNowhereByAHardLinkWithoutTarget) {
  folder.run(R"(
    echo one > a; ln a b; tar -cf a.tar a b; tar --delete -f a.tar a
    python3 -c '
import tarfile, io
def add(tar, name, text=None, link=None):
    info = tarfile.TarInfo(name)
    if link is None:
        info.size = len(text)
        tar.addfile(info, io.BytesIO(text))
    else:
        info.type = tarfile.LNKTYPE
        info.linkname = link
        tar.addfile(info)
with tarfile.open("b.tar", "w") as tar:
    add(tar, "self", link="self")
    add(tar, "later", link="file")
    add(tar, "file", b"1")
    add(tar, "link", link="file")
    add(tar, "file", b"22")
    add(tar, "link2", link="link")
    add(tar, "link3", link="file")
')");
  const auto cut = read("a.tar");
  EXPECT_EQ(cut->entries().at(0).kind, EntryKind::File);
  EXPECT_EQ(cut->entries().at(0).hardLinkTo, std::nullopt);
  EXPECT_EQ(faultOf([&] { cut->open(0); }), ErrorCode::IOError);
  const auto made = read("b.tar");
  EXPECT_EQ(faultOf([&] { made->open(0); }), ErrorCode::IOError);
  EXPECT_EQ(faultOf([&] { made->open(1); }), ErrorCode::IOError);
  EXPECT_EQ(contentOf(*made, "link"), "1");
  EXPECT_EQ(contentOf(*made, "link2"), "1");
  EXPECT_EQ(contentOf(*made, "link3"), "22");
}
TEST_F(LibraryArchiveTest, GoesThroughACompressedTarOnce) {
  constexpr std::size_t count = 60;
  for (std::size_t i = 0; i < count; ++i)
    folder.put("t/" + std::to_string(100 + i), noise(20'000, i));
  folder.run("tar -C t --sort=name -czf a.tgz .");
  const auto size = folder.content("a.tgz").size();
  const auto archive = read("a.tgz");
  countReads(8192);
  std::size_t files = 0;
  for (std::size_t i = 0; i < archive->entries().size(); ++i)
    files += contentOf(*archive, i) == noise(20'000, files) ? 1u : 0u;
  EXPECT_EQ(files, count);
  // Twice that would be a second pass.
  EXPECT_LT(faults->countCalls(Operation::Read) * 8192, size + size / 2);

  // Two who read side by side have a cursor each, and what is given back is taken up by who comes later.
  countReads(8192);
  for (std::size_t i = 1; i < 20; ++i) {
    const auto one = archive->open(i);
    const auto other = archive->open(i + 30);
    EXPECT_EQ(contentOf(*other), noise(20'000, i + 29));
    EXPECT_EQ(contentOf(*one), noise(20'000, i - 1));
  }
  EXPECT_LT(faults->countCalls(Operation::Read) * 8192, 3 * size);
}

TEST_F(LibraryArchiveTest, GivesManyThreadsTheirOwn) {
  constexpr std::size_t count = 12;
  for (std::size_t i = 0; i < count; ++i)
    folder.put("t/" + std::to_string(100 + i), noise(50'000, i));
  folder.run("tar -C t --sort=name -cf a.tar .; gzip -k a.tar");
  for (const auto* name : {"a.tar", "a.tar.gz"}) {
    const auto archive = read(name);
    testing::together(4, [&](std::size_t thread) {
      for (std::size_t i = 0; i < count; ++i) {
        const auto file = (i * (thread + 1)) % count;
        EXPECT_TRUE(contentOf(*archive, file + 1) == noise(50'000, file)) << file;
      }
    });
  }
}

TEST_F(LibraryArchiveTest, ReadsArLibraries) {
  folder.run("echo one > a.txt; echo two > 'a long name, longer than 16'; ar rcS a.a *long* a.txt");
  const auto archive = read("a.a", ArchiveFormat::Any);
  EXPECT_EQ(contentOf(*archive, "a.txt"), "one\n");
  EXPECT_EQ(contentOf(*archive, "a long name, longer than 16"), "two\n");
}

TEST_F(LibraryArchiveTest, ReadsAPlainTarWhereItLies) {
  constexpr std::size_t count = 40;
  constexpr std::size_t length = 600'001;
  for (std::size_t i = 0; i < count; ++i)
    folder.put("t/" + std::to_string(100 + i) + std::string(i % 2 == 0 ? 0 : 150, 'x'), noise(length, i));
  for (const std::string format : {"gnu", "posix"}) {
    SCOPED_TRACE(format);
    folder.run("tar -C t --sort=name --format=" + format + " -cf a.tar .");
    countReads(4096);
    const auto archive = read("a.tar");
    // 16 KiB of each header and what lies behind it.
    EXPECT_LT(faults->countCalls(Operation::Read), 5 * (count + 2));
    countReads(4096);
    const auto last = archive->open(count);
    char bytes[10];
    ASSERT_TRUE(last->isSeekable());
    ASSERT_TRUE(last->seek(length - 5));
    EXPECT_EQ(last->read(bytes, 10), 5u);
    EXPECT_EQ(std::string(bytes, 5), noise(length, count - 1).substr(length - 5));
    EXPECT_EQ(last->read(bytes, 10), 0u);
    EXPECT_FALSE(last->seek(length + 1));
    ASSERT_TRUE(last->seek(0));
    EXPECT_EQ(contentOf(*last, 400'000), noise(length, count - 1));
    EXPECT_LT(faults->countCalls(Operation::Read), length / 4096 + 20);
    for (const auto number : {count / 2, std::size_t{1}, count / 2 + 1})
      EXPECT_EQ(contentOf(*archive, number), noise(length, number - 1)) << number;
  }
}

TEST_F(LibraryArchiveTest, RefusesWhatIsDamagedOrNoArchive) {
  putTree();
  folder.run(R"(
    : > empty
    tar -cf whole.tar tree; gzip -k whole.tar; xz -k whole.tar; tar -cf many.tar tree tree tree
    head -c 200000 whole.tar > cut.tar
    head -c 200000 whole.tar.gz > cut.tar.gz
    head -c 200000 whole.tar.xz > cut.tar.xz
    head -c 1000 whole.tar > stub.tar
    (cat whole.tar | head -c 600; printf X; tail -c +602 whole.tar) > bent.tar
    (head -c 1100 whole.tar.xz; printf XXXXXXXX; tail -c +1109 whole.tar.xz) > bent.tar.xz
    head -c 10000 /dev/zero > zeros.7z
    printf 'a line of text\n' > text
    printf '#mtree\n./etc type=dir\n./passwd type=file contents=/etc/passwd\n' > some.mtree
    printf '#!/bin/sh\ngzip -d' > script
    printf 'LZIP\001\014' > some.lz; head -c 600 whole.tar.gz >> some.lz
    (printf 'begin 644 a.tar\n'; printf '#0V%%T\n`\nend\n') > some.uu
    printf 'LRZI\000\006' > some.lrz; head -c 600 whole.tar.gz >> some.lrz
    cp whole.tar.gz some.raw)");
  for (const auto* name : {"cut.tar", "cut.tar.gz", "cut.tar.xz", "stub.tar", "bent.tar", "bent.tar.xz", "text",
                           "script", "some.mtree", "some.lz", "some.uu", "some.lrz"}) {
    EXPECT_EQ(faultOf([&] { read(name); }), ErrorCode::IOError) << name;
    EXPECT_EQ(faultOf([&] { read(name, ArchiveFormat::Any); }), ErrorCode::IOError) << name;
  }
  for (const auto* name : {"whole.tar", "zeros.7z", "text"})
    EXPECT_EQ(faultOf([&] { read(name, ArchiveFormat::SevenZip); }), ErrorCode::IOError) << name;
  for (const auto format : {ArchiveFormat::Tar, ArchiveFormat::SevenZip, ArchiveFormat::Any})
    EXPECT_TRUE(read("empty", format)->entries().empty());
}

TEST_F(LibraryArchiveTest, RefusesWhatIsEncrypted) {
  putTree();
  folder.run(R"(
    7z a -psecret content.7z tree > /dev/null
    7z a -psecret -mhe=on names.7z tree > /dev/null)");
  const auto archive = read("content.7z", ArchiveFormat::SevenZip);
  EXPECT_TRUE(entryOf(*archive, "tree/a.txt").isEncrypted);
  EXPECT_EQ(faultOf([&] { archive->open(numberOf(*archive, "tree/a.txt")); }), ErrorCode::UnsupportedOperation);
  EXPECT_EQ(faultOf([&] { read("names.7z", ArchiveFormat::Any); }), ErrorCode::UnsupportedOperation);
}

TEST_F(LibraryArchiveTest, KeepsToItsLimits) {
  folder.run(R"(
    mkdir t; for i in 1 2 3 4; do : > t/$i; done; tar -C t -cf five.tar .
    head -c 20000000 /dev/zero > zeros; tar -czf bomb.tar.gz zeros t; tar -cf - zeros t | bzip2 > bomb.tar.bz2
    tar -cf - zeros t | zstd -q > bomb.tar.zst; gzip -c bomb.tar.gz > bomb.tar.gz.gz
    7z a bomb.7z zeros > /dev/null; head -c 900000 /dev/zero > few; tar -czf few.tgz few)");
  Limits limits;
  limits.entries = 5;
  EXPECT_EQ(read("five.tar", ArchiveFormat::Tar, limits)->entries().size(), 5u);
  limits.entries = 4;
  EXPECT_EQ(faultOf([&] { read("five.tar", ArchiveFormat::Tar, limits); }), ErrorCode::FileTooLarge);
  for (const auto* name : {"bomb.tar.gz", "bomb.tar.bz2", "bomb.tar.zst", "bomb.tar.gz.gz"})
    EXPECT_EQ(faultOf([&] { read(name); }), ErrorCode::FileTooLarge) << name;
  const auto bomb = read("bomb.7z", ArchiveFormat::SevenZip);
  EXPECT_EQ(faultOf([&] { contentOf(*bomb, "zeros"); }), ErrorCode::FileTooLarge);
  EXPECT_EQ(contentOf(*read("few.tgz"), "few"), std::string(900'000, '\0'));

  limits = {};
  limits.ratio = 100'000;
  const auto allowed = read("bomb.tar.gz", ArchiveFormat::Tar, limits);
  EXPECT_EQ(contentOf(*allowed, "zeros").size(), 20'000'000u);
  limits.totalSize = 1000;
  const auto small = read("bomb.tar.gz", ArchiveFormat::Tar, limits);
  EXPECT_EQ(faultOf([&] { contentOf(*small, "zeros"); }), ErrorCode::FileTooLarge);
}

TEST_F(LibraryArchiveTest, NoticesThatTheArchiveHasChanged) {
  folder.run("echo one > a; echo two > b; tar -cf a.tar a; tar -cf b.tar b; cp a.tar c.tar; gzip -k a.tar b.tar");
  const auto plain = read("a.tar");
  const auto packed = read("a.tar.gz");
  folder.run("cp b.tar a.tar; cp b.tar.gz a.tar.gz");
  EXPECT_EQ(faultOf([&] { plain->open(0); }), ErrorCode::IOError);
  EXPECT_EQ(faultOf([&] { packed->open(0); }), ErrorCode::IOError);
  folder.run("cp c.tar a.tar");
  EXPECT_EQ(contentOf(*plain, 0), "one\n");
}

TEST_F(LibraryArchiveTest, PassesOnWhatTheStreamThrows) {
  putTree();
  folder.run("tar -czf a.tgz tree; tar -cf a.tar tree; 7z a a.7z tree > /dev/null");
  // The code of what reading everything throws while one call to the stream fails.
  const auto codeThrown = [&](const char* name, Operation operation, std::size_t call) -> std::optional<ErrorCode> {
    countReads(50'000);
    faults->fail(operation, call, ErrorCode::PermissionDenied);
    try {
      filesIn(*read(name, ArchiveFormat::Any));
    } catch (const provider::ByteStreamFailure& failure) {
      return failure.getErrorCode();
    }
    return std::nullopt;
  };
  for (const auto* name : {"a.tgz", "a.tar", "a.7z"}) {
    for (const auto operation : {Operation::Read, Operation::Seek}) {
      std::size_t call = 1;
      while (codeThrown(name, operation, call) == ErrorCode::PermissionDenied) {
        EXPECT_EQ(faults->countOpenStreams(), 0u);
        ++call;
      }
      EXPECT_GT(call, 1u) << name;
      EXPECT_EQ(faults->countFailures(), 0u) << name << " hides failure " << call;
    }
  }
}

}  // namespace
}  // namespace foundation::storage::backend::archive::detail::library
