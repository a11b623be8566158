// Every operation, with every one of its system calls failing once in every usual way: a typed error or the full
// result, old or new content, no descriptor kept, no scratch file left.

#include "FaultySystem.h"
#include "TemporaryFolder.h"

#include <foundation/storage/provider/ScratchFiles.h>
#include <foundation/storage/provider/TransactionalStream.h>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/property_tree/ptree.hpp>

#include <algorithm>
#include <functional>
#include <sys/xattr.h>
#include <vector>

namespace foundation::storage::backend::local {
namespace {

namespace fs = std::filesystem;

constexpr auto over = ReplacementPolicy::Overwrite;
constexpr int errors[] = {EIO, ENOSPC, EMFILE, EACCES, EINTR};

enum class Target { Untouched, OldOrNew, Any };

/// An operation in a folder that holds `target` ("old"), `source` ("new"), `sparse`, `link`, `tree/sub/file` and, in
/// `tree`, a link and a pipe.
struct Operation {
  const char* name;
  std::function<void(const StorageItem& folder)> run;
  Target target = Target::Untouched;  ///< what a failure may leave of `target`
};

StorageItem in(const StorageItem& folder, const std::u16string& name) { return {folder, name}; }

std::string readAll(const StorageItem& item) {
  const auto stream = item.openReadOnlyStream();
  std::string bytes;
  char buffer[4096];
  for (auto got = stream->read(buffer, sizeof buffer); got > 0; got = stream->read(buffer, sizeof buffer))
    bytes.append(buffer, static_cast<std::size_t>(got));
  stream->close();
  return bytes;
}

void walk(IFolderEntryIterator& listing) {
  while (listing.hasNext()) {
    listing.next();
    const auto entry = listing.current();
    if (entry.getFileAttributes())
      entry.getFileAttributes()->isWritable();
  }
}

void writeAll(ByteStream& stream) {
  EXPECT_EQ(stream.write("new", 3), 3);
  stream.close();
}

void replaceTarget(const StorageItem& folder) {
  const auto transaction = in(folder, u"target").openTransactionalStream({});
  EXPECT_EQ(transaction->write("new", 3), 3);
  transaction->close(StreamClosePolicy::Commit);
}

void copyAtomically(const StorageItem& folder, const std::u16string& source) {
  const CopyFileOptions options{ReplacementPolicy::Overwrite, TransactionPolicy::Atomic, {}};
  EXPECT_EQ(in(folder, source).copyFile(in(folder, u"target"), options), TransactionStatus::Completed);
}

/// A folder on another file system, if there is one.
std::string elsewhere;

StorageIRI locationOf(const std::string& path) {
  return toStorageIRI(u"file", fl::filesystem::upath(fl::i18n::to_ustring(path)));
}

const std::vector<Operation>& operations() {
  using I = const StorageItem&;
  static const std::vector<Operation> all{
      {"createFile",
       [](I f) {
         in(f, u"made").createFile();
         EXPECT_TRUE(in(f, u"made").fileExists());
       }},
      {"createFolder", [](I f) { in(f, u"made").createFolder(); }},
      {"createFolderRecursive", [](I f) { in(in(f, u"made"), u"below").createFolderRecursive(); }},
      {"exists", [](I f) { EXPECT_EQ(in(f, u"target").exists(), ExistenceType::AsFile); }},
      {"existsExtended", [](I f) { EXPECT_EQ(in(f, u"link").existsExtended(), ExistenceTypeExtended::SymlinkToFile); }},
      {"attributes", [](I f) { EXPECT_EQ(in(f, u"target").getFileAttributes().getSize(), 3U); }},
      {"extendedAttributes", [](I f) { in(f, u"target").getExtendedAttributes(); }},
      {"read", [](I f) { EXPECT_EQ(readAll(in(f, u"target")), "old"); }},
      {"write", [](I f) { writeAll(*in(f, u"target").openStream({})); }, Target::Any},
      {"replace", replaceTarget, Target::OldOrNew},
      {"list", [](I f) { walk(*f.listAll(u"*")); }},
      {"listRecursively", [](I f) { walk(*f.listAllRecursive(u"")); }},
      {"removeFile", [](I f) { in(f, u"source").removeFile(); }},
      {"removeFolderRecursively", [](I f) { in(f, u"tree").removeFolderRecursively(); }},
      {"moveFile", [](I f) { in(f, u"source").moveFile(in(f, u"target").getLocation(), over); }, Target::OldOrNew},
      {"moveFolder", [](I f) { in(f, u"tree").moveFolder(in(f, u"moved").getLocation(), over); }},
      {"moveFileAcross", [](I f) { in(f, u"source").moveFile(locationOf(elsewhere + "/a"), over); }},
      {"moveFolderAcross", [](I f) { in(f, u"tree").moveFolder(locationOf(elsewhere + "/b"), over); }},
      {"copy", [](I f) { in(f, u"source").copyFile(in(f, u"target"), ReplacementPolicy::Overwrite); }, Target::Any},
      {"copySparse",
       [](I f) {
         in(f, u"sparse").copyFile(in(f, u"made"), over);
         EXPECT_EQ(in(f, u"made").getFileAttributes().getSize(), std::uint64_t{1} << 20);
       }},
      {"copyAtomically", [](I f) { copyAtomically(f, u"source"); }, Target::OldOrNew},
      {"truncate",
       [](I f) {
         in(f, u"target").truncateToSize(1);
         EXPECT_EQ(in(f, u"target").getFileAttributes().getSize(), 1U);
       },
       Target::Any},
      {"setLastModified",
       [](I f) { in(f, u"target").setLastModified(boost::posix_time::ptime(boost::gregorian::date(2020, 1, 1))); }},
      {"setWritable", [](I f) { in(f, u"target").setWritable(true); }},
      {"storageInfo", [](I f) { EXPECT_GT(f.getProviderStorageInfo().getStorageCapacity(), 0U); }},
      {"canonical", [](I f) { EXPECT_EQ(in(f, u"link").getCanonicalLocation().getName(), u"target"); }},
  };
  return all;
}

/// System calls that read and write no more than two bytes each.
detail::SystemCalls shortCalls() {
  auto calls = detail::realSystemCalls;
  calls.read = [](int file, void* buffer, std::size_t size) noexcept {
    return detail::realSystemCalls.read(file, buffer, std::min<std::size_t>(size, 2));
  };
  calls.write = [](int file, const void* buffer, std::size_t size) noexcept {
    return detail::realSystemCalls.write(file, buffer, std::min<std::size_t>(size, 2));
  };
  calls.copyFileRange = [](int from, int to, std::size_t size) noexcept {
    return detail::realSystemCalls.copyFileRange(from, to, std::min<std::size_t>(size, 2));
  };
  return calls;
}

/// The three views that operations can have of the file system.
enum class View { Whole, Confined, Walked };

/// The other file system is not in the folder that a confined provider serves.
std::vector<Operation> operationsIn(View view) {
  auto all = operations();
  if (view != View::Whole || elsewhere.empty())
    std::erase_if(all, [](const Operation& operation) { return std::string(operation.name).ends_with("Across"); });
  return all;
}

class FaultTest : public LocalTest, public testing::WithParamInterface<View> {
 protected:
  void fill() {
    for (const auto& entry : fs::directory_iterator(path))
      fs::remove_all(entry.path());
    if (!elsewhere.empty())
      for (const auto* moved : {"/a", "/b"})
        fs::remove_all(elsewhere + moved);
    put("target", "old");
    put("source", "new");
    put("sparse", "x");
    fs::resize_file(native("sparse"), 1 << 20);
    fs::create_symlink("target", native("link"));
    fs::create_directories(native("tree/sub"));
    put("tree/sub/file", "x");
    fs::create_symlink("sub", native("tree/link"));
    ASSERT_EQ(mkfifo(native("tree/pipe").c_str(), 0600), 0);
    setxattr(native("target").c_str(), "user.test", "kept", 4, 0);  // where the file system can
  }

  FaultTest() { elsewhere = makeFolderElsewhere(path); }
  ~FaultTest() override {
    if (!elsewhere.empty())
      fs::remove_all(elsewhere);
  }

  void configure(View view) const {
    auto calls = detail::realSystemCalls;
    if (view == View::Walked)
      calls.openBeneath = [](int, const char*, int, mode_t, std::uint64_t) noexcept {
        errno = ENOSYS;
        return -1;
      };
    const ReplacedCalls replaced(calls);
    boost::property_tree::ptree options;
    options.put("durable", "true");
    if (view != View::Whole)
      options.put("root", path);
    folder.configure(options);
  }

  static std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
  }

  std::vector<std::string> scratchFiles() const {
    std::vector<std::string> found;
    for (const auto& parent : {path, elsewhere.empty() ? path : elsewhere})
      for (const auto& entry : fs::directory_iterator(parent))
        if (isScratchName(fl::i18n::to_ustring(entry.path().filename().string())))
          found.push_back(entry.path().string());
    return found;
  }

  /// @return whether it succeeded
  static bool runWithTypedErrors(const Operation& operation, const StorageItem& where) {
    try {
      operation.run(where);
      return true;
    } catch (const Exception& failure) {
      EXPECT_NE(failure.getErrorCode(), ErrorCode::Unknown);
      EXPECT_TRUE(failure.topExceptionContext());
    } catch (const ByteStreamFailure& failure) {
      EXPECT_NE(failure.getErrorCode(), ErrorCode::Unknown);
    }
    return false;
  }

  void expectSound(const Operation& operation) const {
    const auto now = content("target");
    const bool isSound =
        now == "old" || operation.target == Target::Any || (operation.target == Target::OldOrNew && now == "new");
    EXPECT_TRUE(isSound) << now;
    const bool isRemoval = std::string(operation.name).starts_with("remove");
    EXPECT_TRUE(isRemoval || fs::exists(native("tree/sub/file")) || fs::exists(native("moved/sub/file")) ||
                fs::exists(elsewhere + "/b/sub/file"));
    EXPECT_TRUE(isRemoval || now == "new" || fs::exists(native("source")) || fs::exists(elsewhere + "/a"));
    EXPECT_EQ(scratchFiles(), std::vector<std::string>());
  }

  /// @return whether there is such a call
  bool failOnce(const Operation& operation, int index, int error) {
    fill();
    const auto before = openDescriptors();
    bool hasFailed = false;
    bool succeeded = false;
    {
      const FaultySystem faulty(index, error);
      succeeded = runWithTypedErrors(operation, folder);
      hasFailed = faulty.hasFailed();
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(hasFailed || succeeded);
    expectSound(operation);
    return hasFailed;
  }
};

TEST_P(FaultTest, EachCallOfEachOperation) {
  configure(GetParam());
  for (const auto& operation : operationsIn(GetParam()))
    for (const int error : errors)
      for (int index = 0;; ++index) {
        SCOPED_TRACE(std::string(operation.name) + ", call " + std::to_string(index) + ", " + strerrorname_np(error));
        if (!failOnce(operation, index, error))
          break;
        ASSERT_FALSE(HasFailure());
        ASSERT_LT(index, 1000);
      }
}

TEST_P(FaultTest, ShortReadsAndWrites) {
  configure(GetParam());
  for (const auto& operation : operationsIn(GetParam())) {
    SCOPED_TRACE(operation.name);
    fill();
    const ReplacedCalls replaced(shortCalls());
    EXPECT_TRUE(runWithTypedErrors(operation, folder));
    expectSound(operation);
  }
}

std::string nameOf(const testing::TestParamInfo<View>& parameter) {
  constexpr const char* names[] = {"Whole", "Confined", "Walked"};
  return names[static_cast<int>(parameter.param)];
}

INSTANTIATE_TEST_SUITE_P(Views, FaultTest, testing::Values(View::Whole, View::Confined, View::Walked), nameOf);

}  // namespace
}  // namespace foundation::storage::backend::local
