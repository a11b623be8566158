#pragma once

#include "disk/Harness.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// A workload by its name for the command line; its files are made when it is built.
struct Offer {
  std::string name;
  std::function<Workload()> build;
};

/// What the command line chooses among the workloads and the peers.
struct Selection {
  std::size_t rounds = 7;
  std::vector<std::string> only;   ///< beginnings of names; all where there are none
  std::vector<std::string> peers;  ///< all where there are none
};

void declare(CLI::App& app, Selection& selection);

/// Measures what is selected. Throws what `measure` does, with the workload's name, and `std::runtime_error` where
/// nothing is.
void measure(const std::vector<Offer>& offers, const Selection& selection);

}  // namespace bench
