#pragma once

#include "disk/Data.h"
#include "disk/Selection.h"

#include <string>
#include <vector>

namespace bench {

/// Where it is worked.
struct Place {
  const Space& space;
  std::string title;  ///< such as "on disk"
  bool isMemory = false;
};

// What there is to measure. A place must outlive what is offered for it. A workload's check throws
// `std::runtime_error` where a peer's result is not what it should be.

std::vector<Offer> listings(const Place& place, const Scale& scale);
std::vector<Offer> copies(const Place& place, const Scale& scale);
std::vector<Offer> replacements(const Place& place, const Scale& scale);
std::vector<Offer> streams(const Place& place, const Scale& scale);
std::vector<Offer> removals(const Place& place, const Scale& scale);

}  // namespace bench
