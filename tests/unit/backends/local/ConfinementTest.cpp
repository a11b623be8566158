// What leads out of the folder that a provider is confined to, by names, by links and by others who move things.
// Hard links and mounts are no ways out: whoever makes one puts into the folder what they lead to.

#include "ConfinedTree.h"

#include <foundation/storage/backend/support/InvalidOptionException.h>

#include <cerrno>
#include <exception>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace foundation::storage::backend::local {
namespace {

enum class Leads {
  Inside,     ///< nothing is refused as leading out
  OutByLink,  ///< the last name is a link that leads out, or to nothing there
  Out,        ///< before the last name, or without a link
  Nowhere,    ///< refused, one way or another
};

struct Layouts {
  Leads leads;
  std::string root;
  std::vector<std::string> ways;
};

std::string repeated(const std::string& part, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += part;
  return all;
}

/// Whatever an operation does where nothing stops it, it does to what the test has made: no layout leads to anything
/// else of the machine's.
/// @param own  the path of the test's folder, without '/' at the beginning
std::vector<Layouts> everyLayout(const std::string& own) {
  using enum Leads;
  return {
      {Nowhere, "root", words("root/.. root/folder/../.. root root//.")},
      {Out, "root",
       words("root/../outside/file root/../outside/area root/../outside/new root/./..//outside//file "
             "root/folder/../../outside/file root/folder/deep/../../../outside/area "
             "root/folder/../../root/file root/%2e%2e/outside/file root/..%2Foutside%2farea "
             "root/folder%2F..%2f../outside/new outside/file outside/area root-twin/file roo "
             "root/to-area/file root/to-area/new root/to-area/../file root/to-file/file "
             "root/up-area/deep/file root/up-area/./new root/to-root/file root/to-inside/file "
             "root/parent/outside/area root/parent/root/file root/self/../outside/file "
             "root/folder/up/../outside/area root/in/away/file root/chain/file root/back/file "
             "root/dangling/new root-twin/..")},
      {Out,
       "root",
       {"root/" + repeated("../", 60) + own + "/outside/file",
        "root/" + repeated("folder/../", 500) + "../outside/file", "../" + repeated("../", 30) + own + "/outside/new"}},
      {OutByLink, "root",
       words("root/to-file root/to-area root/to-area/ root/up-file root/up-area root/to-root root/to-inside "
             "root/parent root/chain root/back root/folder/away root/in/away root/dangling "
             "root/to-dangling")},
      {Inside, "root",
       words("root/file root/folder root//folder//file root/./folder/./file root/folder/. root/folder/deep/.. "
             "root/folder/../file root/in root/in/ root/in/. root/in/file root/in/../file root/in/up/file "
             "root/in-twice root/in-twice/../file root/folder/up/folder/file root/self/self/file root/loop "
             "root/loop/file root/dangling-in root/dangling-deep root/slashed root/slashed-file root/new "
             "root/new/new root/new/../file root/file/new root/file/.. root/file/. root/hard-link root/pipe "
             "root/socket root/%252e%252e root/.../new")},
      {Inside,
       "root",
       {"root/" + repeated("self/", 40) + "file", "root/" + repeated("self/", 41) + "file",
        "root/" + repeated("folder/../", 500) + "file", "root/" + repeated("n", 300)}},
      {Inside, "way", words("way/file root/folder root/dangling-in")},
      {Out, "way", words("way/../outside/file")},
      {OutByLink, "way", words("way/up-file")},
      {Inside, "root/", words("root/file")},
      {Inside, "root//", words("root/folder/file")},
      {Out, "root/", words("root-twin/file")},
      {Inside, "root/folder/..", words("root/folder/../file")},
      {Inside, "./root/folder//../", words("root/file")},
      {Out, "outside/../root", words("outside/file outside/../outside/file")},
      {Out, "root/folder", words("root/file root/folder/up/file")},
      {OutByLink, "root/folder", words("root/folder/up")},
      {Inside, "root/in", words("root/folder/deep/../file root/in/deep")},
  };
}

class ConfinementTest : public ConfinedTest {};

bool isDenied(const std::string& outcome) { return outcome.starts_with("ErrorCode::PermissionDenied"); }

void expectRefusal(Leads leads, AtLink atLink, const std::string& outcome) {
  const bool isFollowed = atLink == AtLink::Follows;
  if (leads == Leads::Nowhere || atLink == AtLink::NeverFails)
    return;
  EXPECT_EQ(isDenied(outcome), leads == Leads::Out || (leads == Leads::OutByLink && isFollowed)) << outcome;
}

TEST_F(ConfinementTest, NoWayLeadsOut) {
  const auto contentBefore = outsideContent();
  for (const auto& [leads, root, ways] : everyLayout(path.substr(1)))
    for (const auto& way : ways)
      for (const auto& operation : operations_) {
        SCOPED_TRACE(operation.name + " at " + way.substr(0, 60) + " of " + root);
        const auto byKernel = outcome({{"root", native(root)}}, way, operation, Guard::Kernel);
        expectRefusal(leads, operation.atLink, byKernel);
        EXPECT_EQ(byKernel, outcome({{"root", native(root)}}, way, operation, Guard::Walk));
      }
  EXPECT_EQ(outsideContent(), contentBefore);
}

/// Confined and not: links, which lead out here, lead nowhere, and only the whole file system has folders besides.
TEST_F(ConfinementTest, NoLinkIsFollowedWhereThatIsOff) {
  const auto ways = words(
      "root root/in root/in/ root/in/. root/in/file root/in/new root/in/../file root/folder/away root/up-file "
      "root/up-area root/up-area/file root/up-area/new root/up-area/../file root/to-file root/to-area/new "
      "root/dangling "
      "root/dangling/new root/to-dangling root/dangling-in root/loop root/chain root/chain/deep/file");
  for (const Options& options : {Options{}, Options{{"root", native("root")}}})
    for (const auto& way : ways)
      for (const auto& operation : operations_) {
        if (way == "root" && operation.name.find("remove") + operation.name.find("move") != 2 * std::string::npos)
          continue;  // nothing keeps the root itself in its place when the provider is not confined to it
        SCOPED_TRACE(operation.name + " at " + way + (options.empty() ? "" : " of root"));
        auto all = options;
        all["follow-links"] = "false";
        EXPECT_EQ(outcome(all, way, operation, Guard::Kernel), outcome(all, way, operation, Guard::Walk));
      }
}

TEST_F(ConfinementTest, LinksAreFilesWhereTheyAreNotFollowed) {
  makeRoot();
  for (const Options& options : {Options{}, Options{{"root", native("root")}}})
    for (const auto guard : guards) {
      auto all = options;
      all["follow-links"] = "false";
      const StorageItem root(configured(all, guard), at(native("root")));
      for (const auto* name : {u"in", u"up-area", u"up-file", u"dangling-in", u"loop"}) {
        const StorageItem link(root, name);
        EXPECT_EQ(link.exists(), ExistenceType::AsFile);
        EXPECT_EQ(link.existsExtended(), ExistenceTypeExtended::BrokenSymlink);
        EXPECT_TRUE(link.getFileAttributes().isSymlink());
        EXPECT_EQ(codeThrownAt(link, [&] { link.openReadOnlyStream(); }), ErrorCode::InvalidLocation);
        EXPECT_EQ(codeThrownAt(link, [&] { link.openTransactionalStream({}); }), ErrorCode::InvalidLocation);
        EXPECT_EQ(codeThrownAt(link, [&] { link.listAll(u""); }), ErrorCode::InvalidLocation);
        const auto listing = root.listAll(name);
        ASSERT_TRUE(listing->hasNext());
        listing->next();
        EXPECT_TRUE(listing->current().isFile() && listing->current().getFileAttributes()->isSymlink());
        const StorageItem behind(link, u"file");
        EXPECT_EQ(behind.exists(), ExistenceType::AsNeither);
        EXPECT_EQ(codeThrownAt(behind, [&] { behind.createFile(); }), ErrorCode::InvalidLocation);
      }
      EXPECT_EQ(codeThrownAt(StorageItem(root, u"in/deep"), [&] { StorageItem(root, u"in/deep").listAll(u""); }),
                ErrorCode::InvalidLocation);
    }
}

/// Even all there is can be confined to: absolute links are refused then, too.
TEST_F(ConfinementTest, TheWholeFileSystemCanBeTheRoot) {
  makeRoot();
  for (const auto guard : guards) {
    const auto provider = configured({{"root", "/"}}, guard);
    const auto item = [&](const std::string& name) { return StorageItem(provider, at(name)); };
    EXPECT_EQ(contentOf(*item(native("root/in/file")).openReadOnlyStream()), "inside");
    EXPECT_TRUE(item(native("root/up-file")).fileExists());
    EXPECT_EQ(item(native("root/in/deep")).getCanonicalLocation(), at(native("root/folder/deep")));
    EXPECT_EQ(item("/").exists(), ExistenceType::AsFolder);
    for (const auto& name :
         {native("root/to-file"), native("root/to-area"), std::string("/.."), std::string("/../dev")})
      EXPECT_EQ(codeThrownAt(item(name), [&] { item(name).exists(); }), ErrorCode::PermissionDenied);
  }
}

/// Those of proc(5) have texts like other links, but lead to open files.
TEST_F(ConfinementTest, MagicLinksLeadNowhere) {
  const detail::Descriptor file(::open(native("outside/file").c_str(), O_RDWR | O_CLOEXEC));
  const detail::Descriptor area(::open(native("outside/area").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::string process = "/proc/self";
  const auto ofArea = process + "/fd/" + std::to_string(area.get());
  for (const auto& way : {process + "/fd/" + std::to_string(file.get()), ofArea, ofArea + "/file", ofArea + "/new",
                          ofArea + "/deep", process + "/root" + native("outside/file")})
    for (const auto& operation : operations_)
      for (const auto guard : guards) {
        SCOPED_TRACE(operation.name + " at " + way);
        expectNothingSecret(told(operation, subjectAt(configured({{"root", process}}, guard), way, process + "/none")));
        EXPECT_EQ(outside(), outsideBefore_);
      }
}

/// A link whose text asks for a folder makes no file.
TEST_F(ConfinementTest, BothGuardsSayTheSameOfALinkToANewFolder) {
  makeRoot();
  fs::create_symlink("new/", native("root/to-new"));
  for (const auto guard : guards) {
    const StorageItem item(configured({{"root", native("root")}}, guard), at(native("root/to-new")));
    EXPECT_EQ(codeThrownAt(item, [&] { item.openStream({}); }), ErrorCode::InvalidLocation);
  }
}

/// Of the root itself a confined provider knows no name either.
TEST_F(ConfinementTest, EmptiesNoFolderThatItCannotRemove) {
  makeRoot();
  const auto before = seen("root", content);
  for (const Options& options : {Options{}, Options{{"root", native("root")}}})
    for (const auto& way : words("root/. root/folder/. root/in/. root/folder/deep/.. root/folder/deep/../. root")) {
      if (way == "root" && options.empty())
        continue;
      SCOPED_TRACE(way);
      const StorageItem item(configured(options, Guard::Kernel), at(native(way)));
      EXPECT_EQ(codeThrownAt(item, [&] { item.removeFolderRecursively(); }), ErrorCode::InvalidLocation);
      EXPECT_EQ(seen("root", content), before);
    }
}

TEST_F(ConfinementTest, RefusesOptionsAndKeepsTheOldOnes) {
  makeRoot();
  const std::string withNul = native("root") + std::string("\0er", 3);
  const std::pair<std::string, std::string> refused[] = {{"colour", "red"},
                                                         {"root", ""},
                                                         {"root", "relative/path"},
                                                         {"root", native("missing")},
                                                         {"root", withNul},
                                                         {"root", native("root/file")},
                                                         {"root", native("root/loop")},
                                                         {"root", native("root/dangling-in")},
                                                         {"follow-links", "yes"},
                                                         {"follow-links", ""},
                                                         {"durable", "1"},
                                                         {"hide-scratch-files", "TRUE"}};
  const auto provider = configured({{"root", native("root")}, {"follow-links", "false"}}, Guard::Kernel);
  const auto item = [&](const std::string& name) { return StorageItem(provider, at(native(name))); };
  for (const auto& [key, value] : refused) {
    SCOPED_TRACE(key + " " + value);
    Tree options;
    options.put(key, value);
    try {
      item("root").configure(options);
      ADD_FAILURE() << "it is taken";
    } catch (const support::InvalidOptionException& failure) {
      EXPECT_EQ(failure.getKey(), key);
    }
    EXPECT_EQ(codeThrownAt(item("outside/file"), [&] { item("outside/file").exists(); }), ErrorCode::PermissionDenied);
    EXPECT_EQ(item("root/in").existsExtended(), ExistenceTypeExtended::BrokenSymlink);
    EXPECT_EQ(item("root/file").exists(), ExistenceType::AsFile);
  }
}

TEST_F(ConfinementTest, SaysWhatIsWrongWhereNothingCanBeOpened) {
  auto calls = detail::realSystemCalls;
  calls.openat = [](int, const char*, int, mode_t) noexcept {
    errno = EMFILE;
    return -1;
  };
  for (const auto& options : {Options{{"follow-links", "false"}}, Options{{"root", path + "/"}}}) {
    const ReplacedCalls replaced(calls);
    Tree tree;
    tree.put(options.begin()->first, options.begin()->second);
    try {
      child(u"root").configure(tree);
      ADD_FAILURE() << "it is taken";
    } catch (const support::InvalidOptionException& failure) {
      EXPECT_EQ(failure.getKey(), "root");
      EXPECT_NE(std::string(failure.what()).find("/\" cannot be opened"), std::string::npos) << failure.what();
    }
  }
}

/// Runs in a process of its own, where it may mount. Ends that process.
template <class Action>
[[noreturn]] void runWhereMountsAreOwn(const std::string& from, const std::string& to, const Action& action) {
  constexpr int skipped = 77;
  const auto user = std::to_string(geteuid());
  if (unshare(CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) == -1)
    _exit(skipped);
  if (user != "0")
    std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == -1 ||
      mount(from.c_str(), to.c_str(), nullptr, MS_BIND, nullptr) == -1)
    _exit(skipped);
  try {
    action();
  } catch (const std::exception& failure) {
    ADD_FAILURE() << failure.what();
  }
  _exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST_F(ConfinementTest, WhatIsMountedInsideIsInside) {
  const auto verify = [this](Guard guard) {
    const auto provider = configured({{"root", native("root")}}, guard);
    const auto item = [&](const std::string& name) { return StorageItem(provider, at(native("root/" + name))); };
    EXPECT_EQ(contentOf(*item("other-folder/file").openReadOnlyStream()), "inside");
    EXPECT_EQ(contentOf(*item("other-folder/../file").openReadOnlyStream()), "inside");
    for (const auto* name : {"other-folder/out", "other-folder/../../outside/file"})
      EXPECT_EQ(codeThrownAt(item(name), [&] { item(name).exists(); }), ErrorCode::PermissionDenied);
    item("other-folder/file").moveFile(item("moved").getLocation(), ReplacementPolicy::Preserve);
    item("other-folder/out").moveFile(item("moved-out").getLocation(), ReplacementPolicy::Preserve);
    item("folder").moveFolder(item("other-folder/folder").getLocation(), ReplacementPolicy::Preserve);
    EXPECT_TRUE(fs::is_symlink(native("root/other-folder/folder/away")));
    EXPECT_EQ(outside(), outsideBefore_);
  };
  for (const auto guard : guards) {
    makeRoot();
    fs::create_symlink("../../outside/file", native("shared/out"));
    const auto child = fork();
    if (child == 0)
      runWhereMountsAreOwn(native("shared"), native("root/other-folder"), [&] { verify(guard); });
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77)
      GTEST_SKIP() << "nothing may be mounted here";
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
}

}  // namespace
}  // namespace foundation::storage::backend::local
