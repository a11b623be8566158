#include "disk/Selection.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

namespace bench {
namespace {

bool isWanted(const Selection& selection, const Offer& offer) {
  return selection.only.empty() || std::any_of(selection.only.begin(), selection.only.end(),
                                               [&](const std::string& name) { return offer.name.starts_with(name); });
}

Workload chosen(const Selection& selection, const Offer& offer) {
  auto workload = offer.build();
  const auto isUnwanted = [&](const Entrant& entrant) {
    return std::find(selection.peers.begin(), selection.peers.end(), entrant.name) == selection.peers.end();
  };
  if (!selection.peers.empty())
    std::erase_if(workload.entrants, isUnwanted);
  return workload;
}

/// Says in a failure's text where it was.
void measureByName(const Selection& selection, const Offer& offer) {
  try {
    measure(chosen(selection, offer), selection.rounds);
  } catch (const std::exception& failure) {
    throw std::runtime_error(offer.name + ": " + failure.what());
  }
}

}  // namespace

void declare(CLI::App& app, Selection& selection) {
  app.add_option("--rounds", selection.rounds, "How often each workload is done")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  app.add_option("--only", selection.only, "Only the workloads whose names begin with one of these");
  app.add_option("--peers", selection.peers, "Only these, such as ours and limit: to trace or to profile them");
}

void measure(const std::vector<Offer>& offers, const Selection& selection) {
  std::size_t count = 0;
  for (const auto& offer : offers)
    if (isWanted(selection, offer)) {
      measureByName(selection, offer);
      ++count;
    }
  if (count == 0)
    throw std::runtime_error("there is no such workload");
}

}  // namespace bench
