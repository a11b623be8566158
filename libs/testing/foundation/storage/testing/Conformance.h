#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/StorageItem.h>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// Tests that every back end has to pass: what the contract says of each operation, checked through
/// `StorageItem`, and needing nothing of the back end but a store to work in.
///
///     int main(int argc, char** argv) {
///       using namespace foundation::storage::testing;
///       return runConformance(argc, argv, {{.name = "Mine", .makeEmptyFolder = makeFolder, .capabilities = {...}}});
///     }
///
/// Each check is one GoogleTest test, named BackEnd/Group.Check. What a back end cannot do it does not declare
/// among its capabilities; the kit then checks that it says so with the right error. What it does otherwise
/// than the contract says, it lists as a deviation, with the reason.
namespace foundation::storage::testing {

using provider::Capabilities;
using provider::Capability;

/// What a folder holds: the content of files by path, with '/'; a path that ends in '/' is a folder.
using Contents = std::map<std::u16string, std::string>;

/// A folder for one check. The kit releases it when the check is over: a deleter can clean up.
using Place = std::shared_ptr<const provider::StorageItem>;

/// A back end and what can be expected of it.
struct BackEnd {
  std::string name;  ///< of letters and digits; begins the tests' names
  /// Makes an empty folder in a working store, apart from all others that exist.
  std::function<Place()> makeEmptyFolder;
  /// What the store can do; all else is checked to be refused.
  Capabilities capabilities;
  /// The reason for each check that is not to be run, by its name as "Group.Check".
  std::map<std::string, std::string> deviations = {};
  /// Makes a folder that holds `contents`; for stores that the kit cannot write to.
  std::function<Place(const Contents& contents)> makeFolderWith = {};
  /// Makes an empty folder in a store that takes that many bytes of content and no more.
  std::function<Place(std::uint64_t bytes)> makeSmallFolder = {};
};

/// Registers the checks for a back end with GoogleTest; to be called between `testing::InitGoogleTest` and
/// `RUN_ALL_TESTS`. Throws `std::invalid_argument` where the back end is not described in full, or a deviation names
/// no check.
FOUNDATION_EXPORT void registerConformance(const BackEnd& backEnd);

/// Writes a table in Markdown: what each back end can do, how many checks it is put to, and the deviations.
FOUNDATION_EXPORT void writeCapabilities(std::ostream& out, const std::vector<BackEnd>& backEnds);

/// The `main` of a conformance program: runs the checks for all back ends, and writes the table after a run of
/// all. The argument `--capabilities` writes only the table.
/// @return the program's exit code
FOUNDATION_EXPORT int runConformance(int argc, char** argv, const std::vector<BackEnd>& backEnds);

}  // namespace foundation::storage::testing
