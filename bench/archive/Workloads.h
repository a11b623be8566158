#pragma once

#include "archive/Data.h"
#include "disk/Selection.h"

#include <string>
#include <vector>

namespace bench {

/// Where and with what it is worked.
struct Bench {
  const Space& space;
  Amounts amounts;
  std::string fstore;  ///< the path of our command; empty where there is none
};

// What there is to measure. `bench` must outlive what is offered for it. A workload's check throws
// `std::runtime_error` where a peer's result is not what it should be. Programs that are not installed are left out.

std::vector<Offer> archiveListings(const Bench& bench);
std::vector<Offer> entryReads(const Bench& bench);
std::vector<Offer> extractions(const Bench& bench);
std::vector<Offer> entryReplacements(const Bench& bench);
std::vector<Offer> nestedReads(const Bench& bench);

}  // namespace bench
