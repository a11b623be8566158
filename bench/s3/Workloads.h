#pragma once

#include "disk/Selection.h"
#include "s3/Clients.h"

#include <vector>

namespace bench {

/// What there is to measure. `bench` must outlive it. A workload's check throws `std::runtime_error` where a client's
/// result is not what it should be. Clients that are not installed are left out.
std::vector<Offer> objectWorkloads(const Bench& bench);

}  // namespace bench
