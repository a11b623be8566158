// Tars written through libarchive, and read by other programs.

#include "LibraryTest.h"

#include <foundation/storage/backend/archive/detail/library/TarWriter.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/ByteStreamOpenOptions.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <functional>
#include <unistd.h>
#include <utility>

namespace foundation::storage::backend::archive::detail::library {
namespace {

using boost::posix_time::time_from_string;
using provider::StreamClosePolicy;

/// Content of a new entry, in pieces.
class Text final : public ContentReader {
 public:
  explicit Text(std::string bytes) : bytes_(std::move(bytes)) {}

  std::size_t read(char* buffer, std::size_t count) override {
    const auto got = bytes_.copy(buffer, std::min<std::size_t>(count, 70'000), position_);
    position_ += got;
    return got;
  }

 private:
  const std::string bytes_;
  std::size_t position_ = 0;
};

class TarWriterTest : public LibraryTest {
 protected:
  using Write = std::function<void(ArchiveWriter&)>;

  /// Writes a tar, in the place of `old` where there is one.
  /// @return what the writer says is in it now
  Archive write(const std::string& name, const Write& entries, const Archive& old = nullptr,
                const Limits& limits = {}) const {
    const auto file = container(name);
    const auto stream = file->item().openTransactionalStream({});
    Output output(*stream);
    const auto writer = beginTar(file, limits, old, output);
    entries(*writer);
    const auto written = writer->finish();
    stream->close(StreamClosePolicy::Commit);
    return written;
  }

  static Entry file(const std::string& name, const std::string& content) {
    Entry entry;
    entry.name = name;
    entry.size = content.size();
    entry.lastModified = time_from_string("2024-02-29 12:34:56.789012");
    return entry;
  }
  static void add(ArchiveWriter& writer, const std::string& name, const std::string& content) {
    Text text(content);
    writer.add(file(name, content), &text);
  }
  static void addFolder(ArchiveWriter& writer, const std::string& name) {
    auto entry = file(name, "");
    entry.kind = EntryKind::Folder;
    entry.permissions = 0750;
    entry.size.reset();
    writer.add(entry, nullptr);
  }
  static void takeAll(ArchiveWriter& writer, const StoredArchive& old) {
    for (std::size_t i = 0; i < old.entries().size(); ++i)
      writer.take({i, old.entries()[i].name});
  }

  /// All that is told of the entries, a line each.
  static std::vector<std::string> describe(const StoredArchive& archive) {
    std::vector<std::string> lines;
    for (const auto& entry : archive.entries())
      lines.push_back(entry.name + " " + std::to_string(static_cast<int>(entry.kind)) + " " +
                      std::to_string(entry.permissions) + " " + to_simple_string(entry.lastModified) + " " +
                      (entry.size ? std::to_string(*entry.size) : "-") + " " + entry.linkTarget.value_or("-") + " " +
                      (entry.hardLinkTo ? std::to_string(*entry.hardLinkTo) : "-"));
    return lines;
  }
  /// What the writer said must be what is there.
  void expectAsWritten(const StoredArchive& written, const std::string& name) const {
    const auto found = read(name);
    EXPECT_EQ(describe(written), describe(*found));
    EXPECT_EQ(filesIn(written), filesIn(*found));
  }
};

TEST_F(TarWriterTest, WritesWhatOthersRead) {
  const std::map<std::string, std::string> files = {
      {"a.txt", "hello"},
      {"empty", ""},
      {"sub/big", noise(300'000)},
      {"sub/\xC3\xA4 b.txt", "umlaut"},
      {std::string(150, 'd') + "/" + std::string(250, 'f'), "long"},
  };
  const std::map<std::string, std::string> first = {{"a.tar", "PaxHeader/"},
                                                    {"a.tar.gz", "\x1F\x8B"},
                                                    {"a.TGZ", "\x1F\x8B"},
                                                    {"a.tar.bz2", "BZh"},
                                                    {"a.tbz2", "BZh"},
                                                    {"a.tar.xz",
                                                     "\xFD"
                                                     "7zXZ"},
                                                    {"a.txz",
                                                     "\xFD"
                                                     "7zXZ"},
                                                    {"a.tar.zst", "\x28\xB5\x2F\xFD"},
                                                    {"gz", "PaxHeader/"},
                                                    {"a.tzst", "\x28\xB5\x2F\xFD"}};
  for (const auto& [name, begin] : first) {
    SCOPED_TRACE(name);
    const auto written = write(name, [&](ArchiveWriter& writer) {
      addFolder(writer, "sub/");
      for (const auto& [path, content] : files)
        add(writer, path, content);
    });
    EXPECT_EQ(folder.content(name).substr(0, begin.size()), begin);
    expectAsWritten(*written, name);
    EXPECT_EQ(filesIn(*written), files);
    EXPECT_EQ(entryOf(*read(name), "a.txt").lastModified, time_from_string("2024-02-29 12:34:56.789012"));
    for (const std::string program : {"tar -xf", "bsdtar -xf", "python3 -m tarfile -e"}) {
      SCOPED_TRACE(program);
      if (name.ends_with("zst") && program.starts_with("python"))
        continue;
      // Without a word, such as that something is not understood.
      EXPECT_EQ(folder.run("export LC_ALL=C.UTF-8; rm -rf out; mkdir out; cd out; " + program + " ../" + name), "");
      for (const auto& [path, content] : files)
        EXPECT_TRUE(folder.content("out/" + path) == content) << path;
      EXPECT_EQ(folder.run("cd out; TZ=UTC stat -c '%a %.3Y' a.txt; stat -c %a sub"), "644 1709210096.789\n750\n");
    }
  }
}

TEST_F(TarWriterTest, KeepsTheBytesOfNames) {
  const std::vector<std::string> names = {
      "latin-\xE4\xF6",
      "composed-\xC3\xA4",
      "decomposed-a\xCC\x88",
      "surrogate-\xED\xA0\x80",
      "line\nfeed",
      "back\\slash",
      "overlong-\xC0\xAF",
      std::string(300, 'n'),
      std::string(90, 'd') + "/" + std::string(60, 'e') + "\xFF/" + std::string(200, 'f')};
  const auto putAll = [&](ArchiveWriter& writer) {
    for (const auto& name : names)
      add(writer, name, name);
  };
  const auto written = write("a.tar", putAll);
  expectAsWritten(*written, "a.tar");
  // Once more, by taking them over.
  const auto old = read("a.tar");
  expectAsWritten(*write(
                      "b.tar", [&](ArchiveWriter& writer) { takeAll(writer, *old); }, old),
                  "b.tar");
  for (const auto* archive : {"a.tar", "b.tar"}) {
    EXPECT_EQ(filesIn(*read(archive)).size(), names.size());
    for (const auto& name : names)
      EXPECT_EQ(contentOf(*read(archive), name), name);
    // What their file system takes.
    folder.run("rm -rf out; mkdir out; LC_ALL=C tar -C out --exclude='nnnn*' -xf " + std::string(archive));
    folder.run("rm -rf py; mkdir py; python3 -c 'import tarfile; t = tarfile.open(\"" + std::string(archive) +
               "\", encoding=\"utf-8\"); t.extractall(\"py\", [m for m in t if not m.name.startswith(\"nnnn\")])'");
    for (const auto& name : names) {
      if (!name.starts_with("nnnn")) {
        EXPECT_EQ(folder.content("out/" + name), name);
        EXPECT_EQ(folder.content("py/" + name), name);
      }
    }
  }
}

TEST_F(TarWriterTest, TakesOverAllThatBelongsToAnEntry) {
  folder.run(R"sh(
    export LC_ALL=C.UTF-8
    mkdir -m 3755 t; cd t; echo one > a; chmod 4711 a; ln a hard; ln -s a soft; ln -s nowhere broken; mkfifo pipe
    touch -d '2021-03-04 05:06:07.123456789' a; touch -d '1965-01-02 03:04:05.25' old; touch -hd '2001-02-03' soft
    setfattr -n user.colour -v green a 2>/dev/null || true; printf x > s; truncate -s 3M s; printf y >> s
    mkdir -p long; cp --sparse=always s "long/$(printf 's%.0s' $(seq 150))"
    chown 4321:1234567 a || true; touch -d '2100-01-01' late
    cd ..; tar -cSf posix.tar --format=posix --sort=name --xattrs t; tar -cSf gnu.tar --format=gnu --sort=name t
    tar -czf ustar.tar.gz --format=ustar --sort=name --exclude='ss*' --exclude=old t
    printf x > huge; truncate -s 5G huge; printf y >> huge; tar -cSf huge.tar --format=posix huge
    tar -czSf posix.tar.gz --format=posix --sort=name --xattrs t)sh");
  // As GNU tar tells them.
  const auto told = [&](const std::string& name) {
    return folder.run("LC_ALL=C.UTF-8 TZ=UTC tar --numeric-owner --full-time --xattrs -tvvf " + name);
  };
  for (const std::string name : {"posix.tar", "gnu.tar", "ustar.tar.gz", "posix.tar.gz", "huge.tar"}) {
    SCOPED_TRACE(name);
    Limits limits;
    limits.ratio = 1'000'000'000;
    const auto old = read(name, ArchiveFormat::Tar, limits);
    const auto before = told(name);
    folder.run("cp " + name + " whole-" + name);
    const auto written = write(
        name, [&](ArchiveWriter& writer) { takeAll(writer, *old); }, old, limits);
    EXPECT_EQ(told(name), before);
    EXPECT_EQ(describe(*written), describe(*old));
    EXPECT_EQ(describe(*written), describe(*read(name, ArchiveFormat::Tar, limits)));
    EXPECT_LT(folder.content(name).size(), name.ends_with("gz") ? 100'000u : 3'300'000u);
    if (name == "huge.tar")
      continue;
    folder.run("rm -rf out; mkdir out; tar -C out --xattrs -xf " + name + "; tar --xattrs -C out -df whole-" + name);
  }
}

TEST_F(TarWriterTest, NeverLeavesAHardLinkDangling) {
  // What is taken, under which name; what the links in the result then are: a number, or "file".
  struct Case {
    const char* description;
    std::vector<std::pair<std::string, std::string>> taken;
    std::vector<std::optional<std::size_t>> links;
  };
  const Case cases[] = {
      {"all", {{"a", "a"}, {"b", "b"}, {"c", "c"}}, {{}, 0, 0}},
      {"without what they share", {{"b", "b"}, {"c", "c"}}, {{}, 0}},
      {"what they share is moved", {{"a", "x/y"}, {"b", "b"}, {"c", "c"}}, {{}, 0, 0}},
      {"backwards", {{"c", "c"}, {"b", "b"}, {"a", "a"}}, {{}, 0, {}}},
      {"what they share is replaced", {{"a", "a"}, {"", "./a"}, {"b", "b"}, {"c", "c"}}, {{}, {}, {}, 2}},
      {"one takes the other's name", {{"a", "b"}, {"b", "a"}}, {{}, 0}},
      {"a copy of a link", {{"b", "b"}, {"b", "d"}}, {{}, 0}},
  };
  folder.run("echo shared > a; ln a b; ln a c; tar -cf old.tar a b c; gzip -k old.tar");
  for (const auto* name : {"old.tar", "old.tar.gz"}) {
    const auto old = read(name);
    for (const auto& test : cases) {
      SCOPED_TRACE(test.description);
      const auto written = write(
          "new.tar",
          [&](ArchiveWriter& writer) {
            for (const auto& [from, to] : test.taken)
              if (from.empty())
                add(writer, to, "other");
              else
                writer.take({numberOf(*old, from), to});
          },
          old);
      expectAsWritten(*written, "new.tar");
      for (std::size_t i = 0; i < test.taken.size(); ++i) {
        EXPECT_EQ(written->entries()[i].hardLinkTo, test.links[i]) << i;
        EXPECT_EQ(contentOf(*written, i), test.taken[i].first.empty() ? "other" : "shared\n") << i;
      }
      folder.run("rm -rf out; mkdir out; tar -C out -xf new.tar");
      for (const auto& [from, to] : test.taken)
        EXPECT_EQ(folder.content("out/" + to), contentOf(*written, to)) << to;
    }
  }
}

TEST_F(TarWriterTest, ChangesWhatIsTakenOver) {
  folder.run("mkdir t; echo one > t/a; ln -s a t/s; echo two > t/b; chown 42:43 t/b || true; tar -cf a.tar t");
  const auto old = read("a.tar");
  const auto time = time_from_string("1931-05-06 07:08:09.000001");
  const auto written = write(
      "a.tar",
      [&](ArchiveWriter& writer) {
        writer.take({numberOf(*old, "t"), "moved/"});
        writer.take({numberOf(*old, "t/b"), "moved/b", time, 0400});
        writer.take({numberOf(*old, "t/s"), "s", time});
        add(writer, "moved/new", "three");
      },
      old);
  expectAsWritten(*written, "a.tar");
  const auto archive = read("a.tar");
  EXPECT_EQ(entryOf(*archive, "moved/b").lastModified, time);
  EXPECT_EQ(entryOf(*archive, "moved/b").permissions, 0400u);
  EXPECT_EQ(entryOf(*archive, "s").lastModified, time);
  EXPECT_EQ(entryOf(*archive, "s").linkTarget, "a");
  EXPECT_EQ(filesIn(*archive), (std::map<std::string, std::string>{{"moved/b", "two\n"}, {"moved/new", "three"}}));
  if (geteuid() == 0) {
    EXPECT_NE(folder.run("tar --numeric-owner -tvf a.tar").find("42/43"), std::string::npos);
  }
}

TEST_F(TarWriterTest, KeepsTheCompressionOfWhatItReplaces) {
  folder.put("a", "content");
  folder.run(R"(
    tar -cf - a | xz > a.tar; tar -cf a.tar.gz a; tar -cf - a | gzip | bzip2 > two.tar; tar -cf - a | lz4 -q > b.tar
    bsdtar -cZf c.tar a; tar -cf - a | xz --format=lzma > d.tar; : > empty.tar.gz)");
  const std::map<std::string, std::string> commands = {{"a.tar", "xz -dc a.tar"},
                                                       {"a.tar.gz", "cat a.tar.gz"},
                                                       {"two.tar", "bzip2 -dc < two.tar | gzip -dc"},
                                                       {"b.tar", "lz4 -dc b.tar"},
                                                       {"c.tar", "gzip -dc < c.tar"},
                                                       {"d.tar", "xz --format=lzma -dc d.tar"},
                                                       {"empty.tar.gz", "gzip -dc empty.tar.gz"}};
  for (const auto& [name, command] : commands) {
    SCOPED_TRACE(name);
    const auto old = read(name);
    expectAsWritten(*write(
                        name,
                        [&](ArchiveWriter& writer) {
                          takeAll(writer, *old);
                          add(writer, "b", "more");
                        },
                        old),
                    name);
    EXPECT_EQ(folder.run(command + " | tar -t"), name.starts_with("empty") ? "b\n" : "a\nb\n");
  }
  // One that is left without entries is a whole one, too.
  const auto old = read("a.tar");
  EXPECT_TRUE(write(
                  "a.tar", [](ArchiveWriter&) {}, old)
                  ->entries()
                  .empty());
  EXPECT_EQ(folder.run("xz -dc a.tar | tar -t"), "");
  EXPECT_TRUE(read("a.tar")->entries().empty());
}

TEST_F(TarWriterTest, ReadsTheOldArchiveOnce) {
  for (std::size_t i = 0; i < 60; ++i)
    folder.put("t/" + std::to_string(100 + i), noise(20'000, i));
  folder.run("tar -C t --sort=name -czf a.tgz .");
  const auto size = folder.content("a.tgz").size();
  const auto old = read("a.tgz");
  countReads(8192);
  const auto written = write(
      "a.tgz",
      [&](ArchiveWriter& writer) {
        for (std::size_t i = 1; i < old->entries().size(); i += 3)
          writer.take({i, old->entries()[i].name});
      },
      old);
  EXPECT_LT(faults->countCalls(Operation::Read) * 8192, size + size / 2);
  EXPECT_EQ(written->entries().size(), 20u);
  expectAsWritten(*written, "a.tgz");
}

TEST_F(TarWriterTest, RefusesFilesThatAreTooLarge) {
  folder.run("truncate -s 5G huge; tar -cSf a.tar huge");
  Limits limits;
  limits.totalSize = std::uint64_t{4} << 30;
  const auto stream = item("b.tar").openTransactionalStream({});
  Output output(*stream);
  const auto writer = beginTar(container("b.tar"), limits, read("a.tar"), output);
  EXPECT_EQ(faultOf([&] { writer->take({0, "huge"}); }), ErrorCode::FileTooLarge);
}

TEST_F(TarWriterTest, FailsWithoutAnArchive) {
  folder.put("a.tar", "");
  const auto writeOne = [&](const Entry& entry, const std::string& content) {
    return faultOf([&] {
      write("a.tar", [&](ArchiveWriter& writer) {
        Text text(content);
        writer.add(entry, &text);
      });
    });
  };
  EXPECT_EQ(writeOne(file("a", "four"), "five5"), ErrorCode::IOError);
  EXPECT_EQ(writeOne(file("a", "four"), "3"), ErrorCode::IOError);
  auto unknown = file("a", "");
  unknown.size.reset();
  EXPECT_EQ(writeOne(unknown, "x"), ErrorCode::IOError);
  EXPECT_EQ(folder.content("a.tar"), "");

  // Half an entry in each compression; what it takes is given back.
  for (const auto* name : {"b.tar", "b.tar.gz", "b.tar.bz2", "b.tar.xz", "b.tar.zst", "b.tar.lz4", "b.tar.Z"}) {
    EXPECT_EQ(faultOf([&] {
                write(name, [&](ArchiveWriter& writer) {
                  auto entry = file("a", "");
                  entry.size = std::uint64_t{1} << 40;
                  Text text(noise(100'000));
                  writer.add(entry, &text);
                });
              }),
              ErrorCode::IOError);
    EXPECT_FALSE(item(name).fileExists());
  }

  for (std::size_t call = 1;; ++call) {
    faults->clear();
    faults->fail(Operation::Write, call, ErrorCode::NoSpaceLeft);
    std::optional<ErrorCode> code;
    try {
      write("a.tar", [&](ArchiveWriter& writer) { add(writer, "a", noise(600'000)); });
    } catch (const provider::ByteStreamFailure& failure) {
      code = failure.getErrorCode();
    }
    EXPECT_EQ(faults->countOpenStreams(), 0u);
    if (faults->countFailures() == 0) {
      EXPECT_GT(call, 2u);
      break;
    }
    EXPECT_EQ(code, ErrorCode::NoSpaceLeft);
    EXPECT_EQ(folder.content("a.tar"), "");
  }
  EXPECT_TRUE(contentOf(*read("a.tar"), "a") == noise(600'000));
}

}  // namespace
}  // namespace foundation::storage::backend::archive::detail::library
