// Zips by public operations: written, and read by other programs, and the other way round.

#include "support/PlacedArchive.h"
#include "support/ZipBuilder.h"

#include <foundation/storage/backend/local/LocalProviderFactory.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/Exception.h>
#include <foundation/storage/provider/LocalPath.h>
#include <foundation/storage/testing/FaultyProvider.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <gtest/gtest.h>
#include <support/ProgramFolder.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace foundation::storage::backend::archive {
namespace {

using namespace provider;
using boost::posix_time::time_from_string;
using testing::wholeContent;
using Contents = std::map<std::string, std::string>;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// Bytes that no compression shortens, always the same.
std::string noise(std::size_t count) {
  std::string bytes;
  for (std::uint64_t seed = count + 1; bytes.size() < count; bytes += static_cast<char>(seed >> 56))
    seed = seed * 6364136223846793005u + 1442695040888963407u;
  return bytes;
}

std::string mixed(std::size_t pieces) {
  std::string bytes;
  for (std::size_t piece = 0; piece < pieces; ++piece)
    bytes += noise(piece * 1000 % 70'000) + std::string(piece * 7919 % 400'000, 'm');
  return bytes;
}

void put(const StorageItem& file, const std::string& bytes) {
  const auto stream = file.openStream({});
  for (std::size_t at = 0; at < bytes.size();)
    at += static_cast<std::size_t>(stream->write(bytes.data() + at, static_cast<std::int64_t>(bytes.size() - at)));
  stream->close();
}

template <class Action>
std::optional<ErrorCode> codeOf(const Action& action) {
  try {
    action();
  } catch (const Exception& failure) {
    return failure.getErrorCode();
  } catch (const ByteStreamFailure& failure) {
    return failure.getErrorCode();
  }
  return std::nullopt;
}

class ZipWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const auto* program : {"zip", "unzip", "7z", "python3"})
      if (!testing::ProgramFolder::has(program))
        GTEST_SKIP() << program << " is not installed";
  }

  StorageItem container(const std::string& name) const { return {store_, fl::i18n::to_ustring(name)}; }

  /// The root of a zip, with a provider of its own.
  static StorageItem open(const StorageItem& file) {
    return {ArchiveProviderFactory(ArchiveFormat::Zip).buildProvider(file),
            StorageIRI(u"zip", file.getLocation(), u"/")};
  }
  StorageItem open(const std::string& name) const { return open(container(name)); }
  static StorageItem at(const StorageItem& root, const std::string& path) { return {root, fl::i18n::to_ustring(path)}; }

  std::string python(const std::string& script) const {
    return folder.run("PYTHONIOENCODING=utf-8:surrogateescape python3 - <<'END'\n" + script + "\nEND");
  }
  /// Unpacks with other programs, each into a folder of its own.
  void unpack(const std::string& name) const {
    folder.run("export LC_ALL=C.UTF-8; rm -rf unzip 7z python; unzip -q -d unzip " + name + "; 7z x -o7z " + name);
    python("import zipfile; zipfile.ZipFile('" + name + "').extractall('python')");
  }
  /// The names of all entries in order, as unzip lists them.
  std::string names(const std::string& name) const { return folder.run("LC_ALL=C.UTF-8 unzip -Z1 " + name); }

  const testing::ProgramFolder folder;
  const std::shared_ptr<testing::Faults> faults = std::make_shared<testing::Faults>();

 private:
  const StorageIRI storeLocation_ = toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(folder.path())));
  const StorageItem store_{
      std::make_shared<testing::FaultyProvider>(local::LocalProviderFactory().buildProvider(storeLocation_), faults),
      storeLocation_};
};

TEST_F(ZipWriterTest, WritesWhatOthersRead) {
  const Contents files = {{"empty", ""},
                          {"one", "1"},
                          {"sub/\xC3\xA4\xE2\x82\xAC \xF0\x9F\x98\x80.txt", "umlaut"},
                          {"100% #?&;%20 b", "percent"},
                          {"noise-1", noise(mebibyte - 1)},
                          {"noise", noise(mebibyte)},
                          {"noise+1", noise(mebibyte + 1)},
                          {"large noise", noise(3 * mebibyte)},
                          {"text-1", std::string(mebibyte - 1, 't')},
                          {"text+1", std::string(mebibyte + 1, 't')},
                          {"zeros", std::string(20 * mebibyte, '\0')},
                          {"mixed", mixed(60)},
                          {"noise, then text", noise(mebibyte) + std::string(2 * mebibyte, 't')}};
  const std::string latin = "latin-\xE4";
  {
    const auto root = open("a.zip");
    root.createFolder();
    at(root, "sub").createFolder();
    at(root, "kept/empty folder").createFolderRecursive();
    for (const auto& [name, content] : files)
      put(at(root, name), content);
    put(at(root, latin), "bytes");
    at(root, "one").setWritable(false);
    root.flushFilesystem();
    for (const auto& [name, content] : files)
      EXPECT_TRUE(wholeContent(at(root, name)) == content) << name;
  }
  EXPECT_LT(folder.content("a.zip").size(), 12 * mebibyte);
  folder.run("unzip -tq a.zip; 7z t a.zip");
  unpack("a.zip");
  for (const std::string program : {"unzip/", "7z/", "python/"})
    for (const auto& [name, content] : files)
      EXPECT_TRUE(folder.content(program + name) == content) << program << name;
  EXPECT_EQ(folder.content("unzip/" + latin), "bytes");
  EXPECT_EQ(folder.run("stat -c '%a %F' unzip/one unzip/zeros unzip/kept/empty*"),
            "444 regular file\n644 regular file\n755 directory\n");
  const auto root = open("a.zip");
  for (const auto& [name, content] : files)
    EXPECT_TRUE(wholeContent(at(root, name)) == content) << name;
  EXPECT_EQ(wholeContent(at(root, latin)), "bytes");
}

TEST_F(ZipWriterTest, ReadsWhatOthersWrite) {
  const Contents files = {
      {"empty", ""}, {"one", "1"}, {"noise", noise(300'000)}, {"mixed", mixed(10)}, {"d/\xC3\xA4", "umlaut"}};
  for (const auto& [name, content] : files)
    folder.put("in/" + name, content);
  const std::pair<std::string, std::optional<ErrorCode>> cases[] = {
      {"zip -qr ../a.zip .", {}},
      {"zip -qr0 ../a.zip .", {}},
      {"zip -qrZ bzip2 ../a.zip .", {}},
      {"zip -qr - . | cat > ../a.zip", {}},
      {"python3 -c 'import zipfile as z, sys; [z.ZipFile(\"../a.zip\", \"a\", z.ZIP_DEFLATED).write(n) "
       "for n in [\"empty\", \"one\", \"noise\", \"mixed\", \"d/\xC3\xA4\"]]'",
       {}},
      {"7z a -mm=LZMA ../a.zip .", {}},
      {"7z a -mm=PPMd ../a.zip .", {}},
      {"7z a -mm=BZip2 ../a.zip .", {}},
      {"7z a -mm=Deflate64 ../a.zip .", ErrorCode::UnsupportedOperation},
      {"zip -qrP pass ../a.zip .", ErrorCode::UnsupportedOperation},
      {"7z a -ppass -mem=AES256 ../a.zip .", ErrorCode::UnsupportedOperation},
  };
  for (const auto& [command, refusal] : cases) {
    SCOPED_TRACE(command);
    folder.run("export LC_ALL=C.UTF-8; rm -f a.zip; cd in; " + command);
    const auto root = open("a.zip");
    for (const auto& [name, content] : files) {
      SCOPED_TRACE(name);
      EXPECT_EQ(at(root, name).getFileAttributes().getSize(), content.size());
      if (refusal && name == "mixed") {
        EXPECT_EQ(codeOf([file = at(root, name)] { wholeContent(file); }), refusal);
      } else if (!refusal) {
        const auto stream = at(root, name).openReadOnlyStream();
        for (const auto from : {content.size(), content.size() / 2, content.size() / 3}) {
          stream->seek(static_cast<std::int64_t>(from), std::ios_base::beg);
          char byte = 0;
          EXPECT_EQ(stream->read(&byte, 1), from < content.size() ? 1 : -1);
          EXPECT_EQ(byte, from < content.size() ? content[from] : '\0');
        }
        EXPECT_TRUE(wholeContent(at(root, name)) == content);
      }
    }
  }
}

TEST_F(ZipWriterTest, KeepsTimes) {
  // As set, and as others tell it; unzip knows only what 32 bits hold.
  struct Case {
    const char* time;
    const char* told;
  };
  const Case cases[] = {{"1601-01-01 00:00:00.000001", ""},
                        {"1901-12-14 00:00:00", "1901-12-14 00:00:00"},
                        {"1969-12-31 23:59:59.999999", "1969-12-31 23:59:59"},
                        {"1979-05-06 07:08:09", "1979-05-06 07:08:09"},
                        {"2024-02-29 12:34:57.789012", "2024-02-29 12:34:57"},
                        {"2039-01-02 03:04:05.5", "2039-01-02 03:04:05"},
                        {"2107-12-31 23:59:59", "2107-12-31 23:59:59"},
                        {"9999-12-31 23:59:59.999999", ""}};
  {
    const auto root = open("a.zip");
    root.createFolder();
    for (std::size_t i = 0; i < std::size(cases); ++i) {
      put(at(root, std::to_string(i)), "x");
      at(root, std::to_string(i)).setLastModified(time_from_string(cases[i].time));
    }
    at(root, "folder").createFolder();
    at(root, "folder").setLastModified(time_from_string(cases[4].time));
  }  // written by letting go of it
  const auto told = folder.run("TZ=UTC 7z l -slt a.zip");
  const auto root = open("a.zip");
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(at(root, std::to_string(i)).getFileAttributes().getLastModified(), time_from_string(cases[i].time));
    EXPECT_NE(told.find(std::string("Modified = ") + cases[i].told), told.npos) << cases[i].time << "\n" << told;
  }
  EXPECT_EQ(at(root, "folder").getFolderAttributes().getLastModified(), time_from_string(cases[4].time));
  EXPECT_EQ(folder.run("unzip -q a.zip -d out; cd out; TZ=UTC stat -c %Y 3 4 folder"),
            "294822489\n1709210097\n1709210097\n");
}

/// All that a zip holds but descriptors and zip64 fields, as Python finds it.
constexpr const char* describe = R"(
import hashlib, struct, sys, zipfile
def fields(extra):
    kept = b''
    while len(extra) >= 4:
        size = 4 + struct.unpack_from('<H', extra, 2)[0]
        kept += b'' if extra[:2] == b'\1\0' else extra[:size]
        extra = extra[size:]
    return kept
def describe(name, left_out):
    zip, file = zipfile.ZipFile(name), open(name, 'rb')
    lines = [zip.comment, file.read(min(i.header_offset for i in zip.infolist()))]
    for i in zip.infolist():
        if i.filename in left_out: continue
        file.seek(i.header_offset)
        head = file.read(30)
        name, local = (file.read(count) for count in struct.unpack('<HH', head[26:]))
        bits = i.flag_bits if i.flag_bits & 1 else i.flag_bits & ~8
        lines.append((i.filename, name, hashlib.sha1(file.read(i.compress_size)).hexdigest(), i.comment,
                      fields(i.extra), fields(local), i.CRC, i.file_size, i.compress_type, bits, head[10:14],
                      i.date_time, i.external_attr, i.internal_attr, i.create_system, i.create_version))
    return lines
)";

TEST_F(ZipWriterTest, TakesOverWhatWasNotChanged) {
  const std::map<std::string, std::string> made = {
      {"zip.zip",
       "mkdir t; echo text > t/a; ln -s a t/link; printf 'of a\n\n' | zip -qrcy zip.zip t; printf all | zip -qz "
       "zip.zip"},
      {"sfx.zip", "echo x > x; zip -q x.zip x; (printf '#!/bin/sh\nexit 1\n'; cat x.zip) > sfx.zip"},
      {"adjusted.zip",
       "printf stub > adjusted.zip; python3 -c 'import zipfile; "
       "zipfile.ZipFile(\"adjusted.zip\", \"a\").write(\"x\")'"},
      {"stream.zip", "seq 1000 | zip -q - - > stream.zip"},
      {"seven.zip", "seq 1000 > n; 7z a -mm=LZMA seven.zip n; 7z a -mm=BZip2 seven.zip x; 7z a -mm=PPMd seven.zip t"},
      {"secret.zip",
       "zip -qP pass secret.zip n; printf hush | zip -qP pass secret.zip -; "
       "7z a -ppass -mem=AES256 secret.zip x"},
  };
  for (const std::string name : {"zip.zip", "sfx.zip", "adjusted.zip", "stream.zip", "seven.zip", "secret.zip"})
    folder.run(made.at(name));
  const auto extra = testing::word(0x4321) + testing::word(3) + "abc";
  folder.put("unknown.zip", testing::zip({{.name = "odd", .content = "odd bytes", .method = 200, .extra = extra},
                                          {.name = "../hidden", .content = "stays"}},
                                         {.comment = std::string(65'000, 'c')}));
  for (const std::string name :
       {"zip.zip", "sfx.zip", "adjusted.zip", "stream.zip", "seven.zip", "secret.zip", "unknown.zip"}) {
    SCOPED_TRACE(name);
    folder.run("cp " + name + " old.zip");
    put(at(open(name), "new.txt"), "new");
    EXPECT_EQ(python(describe + ("old, new = describe('old.zip', []), describe('" + name +
                                 "', ['new.txt'])\n"
                                 "for a, b in zip(old, new):\n  if a != b: print(a, b, sep='\\n')\n"
                                 "print(len(old) == len(new))")),
              "True\n");
    EXPECT_EQ(folder.run("unzip -p " + name + " new.txt"), "new");
  }
  folder.run("sh ./sfx.zip && exit 1; for i in zip sfx adjusted stream seven; do 7z t $i.zip; done");
  const auto secrets = open("secret.zip");
  at(secrets, "-").moveFile(at(secrets, "moved").getLocation(), ReplacementPolicy::Preserve);
  at(secrets, "moved").setLastModified(time_from_string("2001-02-03 04:05:06"));
  at(secrets, "x").moveFile(at(secrets, "AES").getLocation(), ReplacementPolicy::Preserve);
  secrets.flushFilesystem();
  EXPECT_EQ(folder.run("unzip -P pass -p secret.zip moved; 7z x -so -ppass secret.zip AES; 7z t -ppass secret.zip >&-"),
            "hushx\n");
  EXPECT_EQ(folder.run("unzip -P pass -p secret.zip n"), folder.content("n"));
}

TEST_F(ZipWriterTest, ChangesWhatIsStored) {
  folder.run(R"(
    mkdir -p t/a t/only; cd t; echo b > a/b; echo c > a/c; echo d > d; echo gone > gone; echo last > only/last
    zip -qrX ../a.zip a/b a/c d gone only/last; zip -qrX ../whole.zip .)");
  for (const std::string name : {"a.zip", "whole.zip"}) {
    SCOPED_TRACE(name);
    const auto root = open(name);
    at(root, "a").moveFolder(at(root, "\xC3\xA4").getLocation(), ReplacementPolicy::Preserve);
    at(root, "d").copyFile(at(root, "copy"), ReplacementPolicy::Preserve);
    at(root, "d").moveFile(at(root, "\xC3\xA4/d").getLocation(), ReplacementPolicy::Preserve);
    at(root, "gone").removeFile();
    at(root, "only/last").removeFile();
    put(at(root, "\xC3\xA4/c"), "replaced\n");
    root.flushFilesystem();
    // And on, with the archive that was written.
    at(root, "copy").moveFile(at(root, "\xC3\xA4/b").getLocation(), ReplacementPolicy::Overwrite);
    put(at(root, "new"), "new\n");
    root.flushFilesystem();
    unpack(name);
    for (const std::string program : {"unzip", "7z", "python"})
      EXPECT_EQ(folder.run("cd " + program + "; find . | LC_ALL=C sort; cat \xC3\xA4/*"),
                ".\n./new\n./only\n./\xC3\xA4\n./\xC3\xA4/b\n./\xC3\xA4/c\n./\xC3\xA4/d\nd\nreplaced\nd\n");
    EXPECT_EQ(wholeContent(at(open(name), "\xC3\xA4/b")), "d\n");
    root.shutdownProvider();
  }
  const auto root = open("a.zip");
  for (const std::string name : {"\xC3\xA4", "only"})
    at(root, name).removeFolderRecursively();
  at(root, "new").removeFile();
  root.flushFilesystem();
  EXPECT_EQ(python("import zipfile; print(zipfile.ZipFile('a.zip').namelist())"), "[]\n");
  EXPECT_FALSE(open("a.zip").listAll(u"*")->hasNext());
}

TEST_F(ZipWriterTest, WritesMoreEntriesThan16BitsCount) {
  constexpr std::size_t count = 66'000;
  {
    const auto root = open("a.zip");
    root.createFolder();
    for (std::size_t i = 0; i < count; ++i)
      at(root, std::to_string(i)).createFile();
    root.flushFilesystem();
  }
  EXPECT_EQ(folder.run("unzip -Z1 a.zip | wc -l"), std::to_string(count) + "\n");
  EXPECT_EQ(python("import zipfile; print(len(set(zipfile.ZipFile('a.zip').namelist())))"),
            std::to_string(count) + "\n");
  EXPECT_NE(folder.run("7z l a.zip").find(std::to_string(count) + " files"), std::string::npos);
  const auto root = open("a.zip");
  at(root, "0").removeFile();
  root.flushFilesystem();
  EXPECT_EQ(folder.run("unzip -Z1 a.zip | head -1; unzip -Z1 a.zip | wc -l"), "1\n" + std::to_string(count - 1) + "\n");
}

TEST_F(ZipWriterTest, LeavesTheOldArchiveWhereWritingFails) {
  folder.put("old", noise(400'000));
  folder.run("zip -q old.zip old; echo other > other; zip -q old.zip other");
  const auto old = folder.content("old.zip");
  std::size_t failed = 0;
  for (std::size_t call = 1; failed + 1 == call; ++call) {
    SCOPED_TRACE(call);
    folder.put("a.zip", old);
    const auto root = open("a.zip");
    put(at(root, "new"), noise(300'000));
    at(root, "other").removeFile();
    faults->clear();
    faults->failAny(call, ErrorCode::NoSpaceLeft);
    const auto code = codeOf([&] { root.flushFilesystem(); });
    failed += faults->countFailures();
    // What fails once the new archive is in its place is no failure to write it; but the store is flushed then, too.
    const bool isFlush = faults->calls().back().starts_with("Flush");
    const bool isOld = folder.content("a.zip") == old;
    EXPECT_TRUE(code ? isOld || isFlush : !isOld);
    EXPECT_EQ(code.value_or(ErrorCode::NoSpaceLeft), ErrorCode::NoSpaceLeft);
    faults->clear();
    EXPECT_EQ(codeOf([&] { root.flushFilesystem(); }), std::nullopt);
    // Nothing is in the way of what comes next, either.
    put(at(root, "later"), "later");
    EXPECT_EQ(codeOf([&] { root.flushFilesystem(); }), std::nullopt);
    EXPECT_EQ(names("a.zip"), "old\nnew\nlater\n");
    EXPECT_EQ(wholeContent(at(root, "new")), noise(300'000));
    folder.run("unzip -tq a.zip");
  }
  EXPECT_GT(failed, 10u);
}

TEST_F(ZipWriterTest, NamesTheEntryThatCannotBeTakenOver) {
  folder.put("a.zip", testing::zip({{.name = "good", .content = "good"},
                                    {.name = "sub/bad", .content = "bad", .localSignature = 0}}));
  const auto old = folder.content("a.zip");
  const auto root = open("a.zip");
  put(at(root, "new"), "new");
  try {
    root.flushFilesystem();
    ADD_FAILURE() << "damage was taken over";
  } catch (const Exception& failure) {
    EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError);
    const auto info = failure.getAllExceptionContexts().at(0).getExceptionContextInfo();
    EXPECT_TRUE(info && info->getProviderMessage().starts_with(u"\"sub/bad\": "));
  }
  EXPECT_EQ(folder.content("a.zip"), old);
  at(root, "sub/bad").removeFile();
  root.flushFilesystem();
  EXPECT_EQ(names("a.zip"), "good\nnew\nsub/\n");
}

TEST_F(ZipWriterTest, DoesNotReplaceWhatOthersHaveWritten) {
  folder.run("echo one > one; zip -q a.zip one; zip -q other.zip one; echo two > two; zip -q other.zip two");
  const auto root = open("a.zip");
  put(at(root, "new"), "new");
  folder.run("mv other.zip a.zip");
  const auto others = folder.content("a.zip");
  EXPECT_EQ(codeOf([&] { root.flushFilesystem(); }), ErrorCode::ResourceInUse);
  EXPECT_EQ(folder.content("a.zip"), others);
  EXPECT_EQ(wholeContent(at(root, "new")), "new");
}

TEST_F(ZipWriterTest, WritesNestedArchivesOutwards) {
  {
    const auto outer = open("outer.zip");
    outer.createFolder();
    put(at(outer, "beside"), "beside");
    const auto inner = open(at(outer, "inner.zip"));
    inner.createFolder();
    put(at(inner, "deep"), mixed(20));
    inner.flushFilesystem();
    EXPECT_EQ(folder.run("unzip -p outer.zip inner.zip > in.zip; unzip -Z1 outer.zip; unzip -Z1 in.zip"),
              "beside\ninner.zip\ndeep\n");
    EXPECT_TRUE(folder.run("unzip -p in.zip deep") == mixed(20));
    put(at(inner, "second"), "2");
    at(inner, "deep").moveFile(at(inner, "moved").getLocation(), ReplacementPolicy::Preserve);
  }
  folder.run("unzip -p outer.zip inner.zip > in.zip");
  EXPECT_EQ(names("in.zip"), "moved\nsecond\n");
  EXPECT_TRUE(wholeContent(at(open(at(open("outer.zip"), "inner.zip")), "moved")) == mixed(20));
}

}  // namespace
}  // namespace foundation::storage::backend::archive
