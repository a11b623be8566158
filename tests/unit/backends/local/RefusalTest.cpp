// Bad input: each operation names the location and the reason.

#include "ReplacedCalls.h"
#include "TemporaryFolder.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <cerrno>
#include <functional>
#include <thread>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

using Operation = std::function<void(const StorageItem&)>;

class RefusalTest : public LocalTest {};

TEST_F(RefusalTest, EveryOperationNamesTheLocationAndTheReason) {
  put("file", "content");
  fs::create_directory(native("folder"));
  fs::create_symlink("nowhere", native("dangling"));
  fs::create_symlink("loop", native("loop"));
  fs::create_directory_symlink("folder", native("to-folder"));
  fs::create_symlink("no/where", native("to-nowhere"));
  ASSERT_EQ(mkfifo(native("pipe").c_str(), 0600), 0);
  const std::u16string longName(300, u'n');
  const std::u16string deepPath = [] {
    std::u16string text;
    for (int i = 0; i < 2500; ++i)
      text += u"d/";
    return text + u"end";
  }();

  const Operation read = [](const StorageItem& item) { item.openReadOnlyStream(); };
  const Operation write = [](const StorageItem& item) { item.openStream({}); };
  const Operation replace = [](const StorageItem& item) { item.openTransactionalStream({}); };
  const Operation list = [](const StorageItem& item) { item.listAll(u""); };
  const Operation size = [](const StorageItem& item) { item.getFileAttributes(); };
  const Operation time = [](const StorageItem& item) { item.getFolderAttributes(); };
  const Operation makeFile = [](const StorageItem& item) { item.createFile(); };
  const Operation makeFolder = [](const StorageItem& item) { item.createFolder(); };
  const Operation removeFile = [](const StorageItem& item) { item.removeFile(); };
  const struct {
    std::u16string name;
    std::vector<Operation> operations;
    ErrorCode code;
  } cases[] = {
      {u"missing", {read, list, size, time, removeFile}, ErrorCode::ResourceNotFound},
      {u"no/where", {write, makeFile, makeFolder}, ErrorCode::ResourceNotFound},
      {u"dangling", {read, list, size, time}, ErrorCode::ResourceNotFound},
      {u"folder", {read, write, replace, size, removeFile}, ErrorCode::InvalidLocation},
      {u"file", {list, time}, ErrorCode::InvalidLocation},
      {u"file/below",
       {read, write, replace, list, size, time, makeFile, makeFolder, removeFile},
       ErrorCode::InvalidLocation},
      {longName,
       {read, write, replace, list, size, time, makeFile, makeFolder, removeFile},
       ErrorCode::InvalidLocation},
      {deepPath,
       {read, write, replace, list, size, time, makeFile, makeFolder, removeFile},
       ErrorCode::ResourceNotFound},
      {u"loop", {read, write, replace, list, size, time}, ErrorCode::InvalidLocation},
      {u"to-folder", {write, replace}, ErrorCode::InvalidLocation},
      {u"to-nowhere", {write, replace}, ErrorCode::ResourceNotFound},
      {u"pipe", {read, write, replace}, ErrorCode::InvalidLocation},
      {std::u16string(u"a\0b", 3),
       {read, write, replace, list, size, makeFile, makeFolder},
       ErrorCode::InvalidLocation},
  };
  for (const auto& row : cases)
    for (std::size_t i = 0; i < row.operations.size(); ++i) {
      SCOPED_TRACE(fl::i18n::to_string(row.name.substr(0, 40)) + ", operation " + std::to_string(i));
      const auto item = child(row.name);
      EXPECT_EQ(codeThrownAt(item, [&] { row.operations[i](item); }), row.code);
    }
  EXPECT_EQ(content("file"), "content");
  EXPECT_EQ(std::distance(fs::directory_iterator(path), {}), 7);
}

TEST_F(RefusalTest, TellsWhatTheSystemSaid) {
  try {
    child(u"missing").removeFile();
    FAIL();
  } catch (const Exception& failure) {
    const auto context = failure.topExceptionContext();
    ASSERT_TRUE(context.has_value());
    EXPECT_EQ(context->getExceptionContextKey(), u"unlink");
    const auto info = context->getExceptionContextInfo();
    ASSERT_TRUE(info.has_value());
    EXPECT_EQ(info->getProviderMessage(), u"No such file or directory");
    EXPECT_EQ(info->getResponseErrorCode(), u"2");
    EXPECT_EQ(info->getAdditionalInformation().at(u"name"), u"ENOENT");
  }
}

TEST_F(RefusalTest, TellsWhatMayBeDoneAboutIt) {
  const std::pair<ErrorCode, std::vector<int>> cases[] = {
      {ErrorCode::ResourceNotFound, {ENOENT}},
      {ErrorCode::ResourceAlreadyExists, {EEXIST}},
      {ErrorCode::PermissionDenied, {EACCES, EPERM}},
      {ErrorCode::ReadOnlyProvider, {EROFS}},
      {ErrorCode::InvalidLocation, {ENOTDIR, EISDIR, ENAMETOOLONG, ELOOP, EINVAL}},
      {ErrorCode::NoSpaceLeft, {ENOSPC, EDQUOT}},
      {ErrorCode::FileTooLarge, {EFBIG, EOVERFLOW}},
      {ErrorCode::ResourceInUse, {EBUSY, ETXTBSY, EAGAIN}},
      {ErrorCode::UnsupportedOperation, {ENOSYS, EOPNOTSUPP}},
      {ErrorCode::IOError, {EIO, ESTALE, EMLINK}},
      {ErrorCode::InternalError, {EMFILE, ENFILE, ENOMEM}},
      {ErrorCode::Unknown, {EXFULL}},
  };
  static int error;
  auto calls = detail::realSystemCalls;
  calls.mkdirat = [](int, const char*, mode_t) noexcept {
    errno = error;
    return -1;
  };
  const ReplacedCalls failing(calls);
  for (const auto& row : cases)
    for (const int each : row.second) {
      SCOPED_TRACE(strerrorname_np(each));
      error = each;
      EXPECT_EQ(codeThrownAt(child(u"new"), [&] { child(u"new").createFolder(); }), row.first);
    }
}

TEST_F(RefusalTest, SetsNoTimeThatIsNotKept) {
  put("file", "content");
  const auto file = child(u"file");
  const auto before = file.getFileAttributes().getLastModified();
  const boost::posix_time::ptime none, past(boost::gregorian::date(2020, 1, 1));
  EXPECT_EQ(codeThrownAt(file, [&] { file.setLastModified(none); }), ErrorCode::UnsupportedOperation);
  auto calls = detail::realSystemCalls;
  calls.utimensat = [](int, const char*, const timespec*, int) noexcept { return 0; };
  {
    const ReplacedCalls forgetful(calls);
    EXPECT_EQ(codeThrownAt(file, [&] { file.setLastModified(past); }), ErrorCode::UnsupportedOperation);
  }
  EXPECT_EQ(file.getFileAttributes().getLastModified(), before);
}

TEST_F(RefusalTest, RespectsPermissions) {
  fs::create_directory(native("closed"));
  put("closed/file", "secret");
  put("locked", "secret");
  ASSERT_EQ(chmod(native("closed").c_str(), 0), 0);
  ASSERT_EQ(chmod(native("locked").c_str(), 0), 0);
  ASSERT_EQ(chmod(path.c_str(), 0555), 0);
  {
    const WithoutPrivileges user;
    const struct {
      const char16_t* name;
      Operation operation;
    } cases[] = {
        {u"locked", [](const StorageItem& item) { item.openReadOnlyStream(); }},
        {u"locked", [](const StorageItem& item) { item.openStream({}); }},
        {u"locked", [](const StorageItem& item) { item.removeFile(); }},
        {u"closed", [](const StorageItem& item) { item.listAll(u""); }},
        {u"closed/file", [](const StorageItem& item) { item.fileExists(); }},
        {u"closed/file", [](const StorageItem& item) { item.getFileAttributes(); }},
        {u"new", [](const StorageItem& item) { item.createFile(); }},
        {u"new", [](const StorageItem& item) { item.createFolder(); }},
    };
    for (const auto& row : cases) {
      SCOPED_TRACE(fl::i18n::to_string(row.name));
      const auto item = child(row.name);
      EXPECT_EQ(codeThrownAt(item, [&] { row.operation(item); }), ErrorCode::PermissionDenied);
    }
  }
  chmod(path.c_str(), 0755);
  chmod(native("closed").c_str(), 0755);
}

TEST_F(RefusalTest, ServesOnlyPathsOfThisMachine) {
  const LocalProviderFactory factory;
  for (const auto* text : {u"http://example.org/a", u"file://server/share", u"zip:file:///a.zip!/b", u"file://",
                           u"file:///a?b", u"file:///a#b", u"file://ann@/a", u"file://:80/a", u"file:////server/a"}) {
    SCOPED_TRACE(fl::i18n::to_string(text));
    const StorageIRI foreign(text);
    EXPECT_EQ(codeThrownAt(foreign, [&] { factory.buildProvider(foreign); }), ErrorCode::InvalidLocation);
    EXPECT_EQ(codeThrownAt(foreign, [&] { StorageItem(folder, foreign).createFile(); }), ErrorCode::InvalidLocation);
  }
  const auto drive = toStorageIRI(u"file", fl::filesystem::upath(u"C:/a"));
  EXPECT_EQ(codeThrownAt(drive, [&] { StorageItem(folder, drive).createFile(); }), ErrorCode::InvalidLocation);
}

TEST_F(RefusalTest, DoesNotWaitForTheOtherEndOfAPipe) {
  ASSERT_EQ(mkfifo(native("pipe").c_str(), 0600), 0);
  // With both ends open neither open(2) would fail by itself.
  const int end = open(native("pipe").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(end, 0);
  const auto pipe = child(u"pipe");
  EXPECT_EQ(codeThrownAt(pipe, [&] { pipe.openReadOnlyStream(); }), ErrorCode::InvalidLocation);
  EXPECT_EQ(codeThrownAt(pipe, [&] { pipe.openStream({}); }), ErrorCode::InvalidLocation);
  close(end);
  // Whoever waits to write must not be let in only to find nobody there: the pipe is not even opened.
  const int reader = open(native("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_THROW(pipe.openStream({}), ByteStreamOpenFailure);
  char byte = 0;
  EXPECT_EQ(read(reader, &byte, 1), 0);  // no writer has been there
  close(reader);
}

}  // namespace
}  // namespace foundation::storage::backend::local
