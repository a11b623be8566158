// Streams, attributes and copies: what happens to the bytes of files.

#include "TemporaryFolder.h"

#include <boost/date_time/posix_time/time_parsers.hpp>

#include <array>
#include <sstream>
#include <thread>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

std::string readAll(ByteStream& stream) {
  std::string bytes;
  char buffer[777];
  for (;;) {
    const auto got = stream.read(buffer, sizeof buffer);
    if (got <= 0)
      return bytes;
    bytes.append(buffer, static_cast<std::size_t>(got));
  }
}

void writeAll(ByteStream& stream, const std::string& bytes) {
  ASSERT_EQ(stream.write(bytes.data(), static_cast<std::int64_t>(bytes.size())),
            static_cast<std::int64_t>(bytes.size()));
}

/// What a stream opened with `options` should leave behind after "XY" was written to it, and what it
/// should read from the beginning then, by the meaning of the options alone.
struct Expected {
  bool opens;
  std::string content;
};

Expected expectedOf(const ByteStreamOpenOptions& options, bool exists) {
  if (!exists && options.create == ByteStreamCreate::NeverCreate)
    return {false, ""};
  const std::string before = exists && options.truncate == ByteStreamTruncate::PreserveExisting ? "12345" : "";
  if (options.append == ByteStreamAppend::Append)
    return {true, before + "XY"};
  return {true, "XY" + (before.size() > 2 ? before.substr(2) : "")};
}

class ContentTest : public LocalTest {};

TEST_F(ContentTest, HonoursEveryCombinationOfOpenOptions) {
  for (int bits = 0; bits < 32; ++bits) {
    const ByteStreamOpenOptions options{.access = ByteStreamAccess(bits & 1),
                                        .create = ByteStreamCreate(bits >> 1 & 1),
                                        .truncate = ByteStreamTruncate(bits >> 2 & 1),
                                        .append = ByteStreamAppend(bits >> 3 & 1)};
    const bool exists = (bits & 16) != 0;
    std::ostringstream description;
    description << options << (exists ? " on a file" : " on nothing");
    SCOPED_TRACE(description.str());
    std::filesystem::remove(native("file"));
    if (exists)
      put("file", "12345");
    const auto expected = expectedOf(options, exists);
    const auto file = child(u"file");
    if (!expected.opens) {
      EXPECT_EQ(codeThrownAt(file, [&] { file.openStream(options); }), ErrorCode::ResourceNotFound);
      EXPECT_FALSE(file.fileExists());
      continue;
    }
    const auto stream = file.openStream(options);
    writeAll(*stream, "XY");
    EXPECT_EQ(stream->seek(0, std::ios_base::beg), std::streampos(0));
    const bool readable = options.access == ByteStreamAccess::ReadWrite;
    EXPECT_EQ(readAll(*stream), readable ? expected.content : "");
    stream->close();
    EXPECT_EQ(content("file"), expected.content);
  }
}

TEST_F(ContentTest, SeeksFromAllOriginsAndLeavesGapsOfZeros) {
  const auto stream =
      child(u"file").openStream({.access = ByteStreamAccess::ReadWrite, .append = ByteStreamAppend::Overwrite});
  writeAll(*stream, "0123456789");
  EXPECT_EQ(stream->seek(-3, std::ios_base::end), std::streampos(7));
  EXPECT_EQ(stream->seek(-2, std::ios_base::cur), std::streampos(5));
  EXPECT_EQ(readAll(*stream), "56789");
  EXPECT_EQ(stream->seek(12, std::ios_base::beg), std::streampos(12));
  writeAll(*stream, "x");
  EXPECT_THROW(stream->seek(-1, std::ios_base::beg), ByteStreamSeekFailure);
  EXPECT_THROW(stream->seek(0, 7), ByteStreamSeekFailure);
  stream->close();
  EXPECT_EQ(content("file"), std::string("0123456789\0\0x", 13));
}

TEST_F(ContentTest, ReachesBeyondFourGigabytes) {
  constexpr std::int64_t far = 5LL * 1024 * 1024 * 1024;
  const auto file = child(u"big");
  const auto stream = file.openStream({.append = ByteStreamAppend::Overwrite});
  EXPECT_EQ(stream->seek(far, std::ios_base::beg), std::streampos(far));
  writeAll(*stream, "end");
  stream->close();
  EXPECT_EQ(file.getFileAttributes().getSize(), static_cast<std::uint64_t>(far) + 3);
  const auto reader = file.openReadOnlyStream();
  reader->seek(far, std::ios_base::beg);
  EXPECT_EQ(readAll(*reader), "end");
}

TEST_F(ContentTest, EndsOnceAndThenFails) {
  const auto stream = child(u"file").openStream({.access = ByteStreamAccess::ReadWrite});
  stream->close();
  EXPECT_NO_THROW(stream->close());
  char byte = 0;
  EXPECT_EQ(codeThrownAt(child(u"file"), [&] { stream->read(&byte, 1); }), ErrorCode::IOError);
  EXPECT_THROW(stream->write(&byte, 1), ByteStreamWriteFailure);
  EXPECT_THROW(stream->seek(0, 0), ByteStreamSeekFailure);
}

TEST_F(ContentTest, KeepsToTheDirectionsThatAStreamWasOpenedFor) {
  put("file", "content");
  char byte = 0;
  EXPECT_EQ(child(u"file").openStream({.truncate = ByteStreamTruncate::PreserveExisting})->read(&byte, 1), -1);
  EXPECT_THROW(child(u"file").openReadOnlyStream()->write("x", 1), ByteStreamWriteFailure);
  EXPECT_EQ(content("file"), "content");
}

TEST_F(ContentTest, ReportsAFullDisk) {
  const StorageItem full(folder, StorageIRI(u"file:///dev/full"));
  const auto stream = full.openStream({.create = ByteStreamCreate::NeverCreate});
  EXPECT_EQ(codeThrownAt(full, [&] { stream->write("x", 1); }), ErrorCode::NoSpaceLeft);
}

TEST_F(ContentTest, AsksForCostlyAttributesOnDemandAndOnce) {
  put("file", "12345");
  const auto attributes = child(u"file").getFileAttributes();
  EXPECT_EQ(attributes.getSize(), 5u);
  EXPECT_FALSE(attributes.isHidden());
  // Had the flags been found out with the rest, they would tell of the file that was there then.
  std::filesystem::remove(native("file"));
  std::filesystem::create_symlink("nowhere", native("file"));
  EXPECT_FALSE(attributes.isWritable());
  EXPECT_TRUE(attributes.isSymlink());
  std::filesystem::remove(native("file"));
  put("file", "");
  EXPECT_FALSE(attributes.isWritable());
  EXPECT_TRUE(attributes.isSymlink());
}

TEST_F(ContentTest, TellsTimesToTheMicrosecond) {
  put("file", "");
  std::filesystem::create_directory(native(".folder"));
  using boost::posix_time::time_from_string;
  const struct {
    timespec time;
    boost::posix_time::ptime expected;
  } cases[] = {
      {{0, 0}, time_from_string("1970-01-01 00:00:00")},
      {{1700000000, 123456789}, time_from_string("2023-11-14 22:13:20.123456")},
      {{-1, 999999000}, time_from_string("1969-12-31 23:59:59.999999")},
      {{4102444800, 0}, time_from_string("2100-01-01 00:00:00")},
  };
  for (const auto& row : cases) {
    const timespec times[] = {row.time, row.time};
    ASSERT_EQ(utimensat(AT_FDCWD, native("file").c_str(), times, 0), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, native(".folder").c_str(), times, 0), 0);
    EXPECT_EQ(child(u"file").getFileAttributes().getLastModified(), row.expected);
    EXPECT_EQ(child(u".folder").getFolderAttributes().getLastModified(), row.expected);
  }
  EXPECT_TRUE(child(u".folder").getFolderAttributes().isHidden());
}

TEST_F(ContentTest, TellsWhatMayBeWritten) {
  put("file", "");
  ASSERT_EQ(chmod(native("file").c_str(), 0444), 0);
  ASSERT_EQ(chmod(path.c_str(), 0555), 0);
  const WithoutPrivileges user;
  EXPECT_FALSE(child(u"file").getFileAttributes().isWritable());
  EXPECT_FALSE(folder.getFolderAttributes().isWritable());
}

TEST_F(ContentTest, CopiesWholeFilesOfAllSizes) {
  for (const std::size_t size : {0u, 1u, 4096u, 1000003u}) {
    SCOPED_TRACE(size);
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; ++i)
      bytes[i] = static_cast<char>(i * 31 + i / 251);
    put("source", bytes);
    put("destination", "what was there before, and longer than the shortest source");
    child(u"source").copyFile(child(u"destination"), ReplacementPolicy::Overwrite);
    EXPECT_EQ(content("destination"), bytes);
  }
}

TEST_F(ContentTest, CopiesFilesWhoseSizeTheSystemDoesNotTell) {
  const StorageItem version(folder, StorageIRI(u"file:///proc/version"));
  version.copyFile(child(u"copy"), ReplacementPolicy::Preserve);
  EXPECT_TRUE(content("copy").starts_with("Linux version"));
}

TEST_F(ContentTest, NeverDestroysTheSourceOfACopy) {
  put("file", "content");
  std::filesystem::create_symlink("file", native("link"));
  std::filesystem::create_hard_link(native("file"), native("other"));
  for (const auto* name : {u"file", u"link", u"other"})
    EXPECT_EQ(codeThrownAt(child(name), [&] { child(u"file").copyFile(child(name), ReplacementPolicy::Overwrite); }),
              ErrorCode::InvalidLocation);
  for (const auto policy : {ReplacementPolicy::Preserve, ReplacementPolicy::NoClobber})
    EXPECT_THROW(child(u"file").copyFile(child(u"link"), policy), Exception);
  EXPECT_EQ(content("file"), "content");
}

TEST_F(ContentTest, CopiesTheModeLessTheUmask) {
  put("file", "secret");
  for (const auto& [mode, mask, expected] : {std::array<mode_t, 3>{0700, 022, 0700}, {0777, 027, 0750}}) {
    ASSERT_EQ(chmod(native("file").c_str(), mode), 0);
    const mode_t outer = umask(mask);
    child(u"file").copyFile(child(u"copy"), ReplacementPolicy::Preserve);
    umask(outer);
    struct stat status;
    ASSERT_EQ(stat(native("copy").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, expected);
    std::filesystem::remove(native("copy"));
  }
}

TEST_F(ContentTest, IsNotCopiedOntoItselfThroughStreams) {
  const std::string bytes(5 * 1024 * 1024, 'x');
  put("file", bytes);
  std::filesystem::create_symlink("file", native("link"));
  std::filesystem::create_hard_link(native("file"), native("other"));
  const CopyFileOptions watched{.replacementPolicy = ReplacementPolicy::Overwrite,
                                .interruptCallback = [] { return InterruptSignal::Continue; }};
  for (const auto* name : {u"file", u"link", u"other"}) {
    EXPECT_EQ(codeThrownAt(child(name), [&] { child(u"file").copyFile(child(name), watched); }),
              ErrorCode::InvalidLocation);
    const StorageItem elsewhere(LocalProviderFactory().buildProvider(location), child(name).getLocation());
    EXPECT_EQ(codeThrownAt(elsewhere, [&] { child(u"file").copyFile(elsewhere, ReplacementPolicy::Overwrite); }),
              ErrorCode::InvalidLocation);
    const StorageItem shouted(folder, StorageIRI(u"FILE" + child(name).getLocation().toString().substr(4)));
    EXPECT_EQ(codeThrownAt(shouted, [&] { child(u"file").copyFile(shouted, watched); }), ErrorCode::InvalidLocation);
  }
  EXPECT_EQ(content("file"), bytes);
}

TEST_F(ContentTest, IsCutAndGrownInPlace) {
  put("file", "0123456789");
  ASSERT_EQ(chmod(native("file").c_str(), 0600), 0);
  std::filesystem::create_symlink("file", native("link"));
  std::filesystem::create_hard_link(native("file"), native("other"));
  child(u"link").truncateToSize(4);
  EXPECT_EQ(content("other"), "0123");
  child(u"other").truncateToSize(6);
  EXPECT_EQ(content("file"), std::string("0123\0\0", 6));
  EXPECT_TRUE(std::filesystem::is_symlink(native("link")));
  EXPECT_EQ(codeThrownAt(child(u"missing"), [&] { child(u"missing").truncateToSize(0); }), ErrorCode::ResourceNotFound);
  EXPECT_EQ(codeThrownAt(child(u"file"), [&] { child(u"file").truncateToSize(~std::uint64_t{0}); }),
            ErrorCode::FileTooLarge);
}

TEST_F(ContentTest, ServesManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 8; ++number)
    threads.emplace_back([this, number] {
      const auto mine = child(fl::i18n::to_ustring("folder" + std::to_string(number)));
      mine.createFolder();
      for (int i = 0; i < 50; ++i) {
        const StorageItem file(mine, fl::i18n::to_ustring(std::to_string(i)));
        const auto stream = file.openStream({});
        writeAll(*stream, std::to_string(number));
        stream->close();
        StorageItem(mine, u"0").copyFile(StorageItem(mine, u"copy"), ReplacementPolicy::Overwrite);
      }
    });
  for (auto& thread : threads)
    thread.join();
  for (int number = 0; number < 8; ++number)
    EXPECT_EQ(content("folder" + std::to_string(number) + "/copy"), std::to_string(number));
}

}  // namespace
}  // namespace foundation::storage::backend::local
