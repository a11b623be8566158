#pragma once

#include <foundation/storage/testing/Conformance.h>
#include <foundation/storage/testing/detail/Store.h>

#include <vector>

namespace foundation::storage::testing::detail {

/// One thing that a back end is held to.
struct Check {
  const char* name;
  void (*run)(Store& store);
  std::vector<Capability> needs = {};
  std::vector<Capability> lacks = {};  ///< for how a store refuses what it cannot do
};

struct CheckGroup {
  const char* name;
  std::vector<Capability> needs;  ///< of all its checks
  std::vector<Check> checks;
};

// Each in a source file of its own.
CheckGroup appendChecks();
CheckGroup attributeChecks();
CheckGroup changeEventChecks();
CheckGroup concurrencyChecks();
CheckGroup copyChecks();
CheckGroup createChecks();
CheckGroup existenceChecks();
CheckGroup hugeFileChecks();
CheckGroup listChecks();
CheckGroup locationChecks();
CheckGroup moveChecks();
CheckGroup nameChecks();
CheckGroup pollingChecks();
CheckGroup readChecks();
CheckGroup readOnlyChecks();
CheckGroup recursiveListChecks();
CheckGroup refusalChecks();
CheckGroup removeChecks();
CheckGroup seekChecks();
CheckGroup spaceChecks();
CheckGroup timeChecks();
CheckGroup transactionChecks();
CheckGroup truncateChecks();
CheckGroup wildcardChecks();
CheckGroup writableChecks();
CheckGroup writeChecks();

/// How a store answers that has no change events of its own.
void refuseChangeEvents(Store& store);

}  // namespace foundation::storage::testing::detail
