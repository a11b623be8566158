#include "disk/Harness.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>
#include <random>
#include <stdexcept>
#include <system_error>

namespace bench {
namespace {

using Seconds = std::vector<double>;

std::atomic<bool> isInterrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

double median(Seconds values) {
  std::sort(values.begin(), values.end());
  const auto middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double timed(const Entrant& entrant, std::size_t turn) {
  if (isInterrupted)
    throw std::runtime_error("interrupted before its turn");
  const auto start = std::chrono::steady_clock::now();
  entrant.run(turn);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  if (entrant.check)
    entrant.check(turn);
  return took.count();
}

/// Says in a failure's text whose it was.
double timedByName(const Entrant& entrant, std::size_t turn) {
  try {
    return timed(entrant, turn);
  } catch (const std::exception& failure) {
    throw std::runtime_error(entrant.name + ": " + failure.what());
  }
}

/// All turns of the entrants that are apart, or of those that are not.
void doTurns(const Workload& workload, bool apart, std::mt19937& engine, Seconds& took) {
  std::vector<std::size_t> order;
  for (std::size_t index = 0; index < took.size(); ++index)
    if (workload.entrants[index].isApart == apart)
      order.push_back(index);
  const auto settle = [&workload](bool isDue) {
    if (isDue && workload.settle)
      workload.settle();
  };
  settle(!order.empty());
  for (std::size_t turn = 0; turn < workload.turns; ++turn) {
    std::shuffle(order.begin(), order.end(), engine);
    for (const auto index : order) {
      settle(workload.turns == 1);
      took[index] += timedByName(workload.entrants[index], turn);
    }
  }
}

/// One round.
/// @return what each entrant took
Seconds oneRound(const Workload& workload, std::mt19937& engine) {
  if (workload.prepare)
    workload.prepare();
  Seconds took(workload.entrants.size());
  doTurns(workload, false, engine, took);
  doTurns(workload, true, engine, took);
  return took;
}

/// How often the time of the limit in the same round; 0 without a limit.
double ratio(const Workload& workload, const std::vector<Seconds>& times, std::size_t index) {
  const auto limit = std::find_if(workload.entrants.begin(), workload.entrants.end(),
                                  [](const Entrant& entrant) { return entrant.name == "limit"; });
  if (limit == workload.entrants.end())
    return 0;
  const auto& limits = times[static_cast<std::size_t>(limit - workload.entrants.begin())];
  Seconds ratios;
  for (std::size_t round = 0; round < limits.size(); ++round)
    ratios.push_back(times[index][round] / limits[round]);
  return median(ratios);
}

const char* titleOf(Unit unit) {
  switch (unit) {
    case Unit::Items:
      return "ns each";
    case Unit::Bytes:
      return "GB/s";
    case Unit::Runs:
      return "ms each";
  }
  return "";
}

void printRow(const Workload& workload, const std::vector<Seconds>& times, std::size_t index) {
  const auto shown = [&](double seconds) {
    return workload.unit == Unit::Bytes ? workload.amount / seconds / 1e9
                                        : seconds * (workload.unit == Unit::Runs ? 1e3 : 1e9) / workload.amount;
  };
  const auto& entrant = workload.entrants[index];
  const int decimals = workload.unit == Unit::Items ? 0 : 2;
  std::printf("  %-28s %12.*f %12.*f", entrant.name.c_str(), decimals, shown(median(times[index])), decimals,
              shown(*std::min_element(times[index].begin(), times[index].end())));
  if (const double multiple = ratio(workload, times, index); multiple > 0)
    std::printf(" %9.2f", multiple);
  std::printf("%s%s%s\n", entrant.isApart ? "  syncs" : "", entrant.remark ? "  " : "",
              entrant.remark ? entrant.remark().c_str() : "");
}

/// The throughput of whoever is no peer, as a multiple of that of the best peer, where there is one.
void printComparison(const Workload& workload, const std::vector<Seconds>& times) {
  std::optional<std::size_t> best;
  for (std::size_t index = 0; index < times.size(); ++index)
    if (workload.entrants[index].isPeer && (!best || median(times[index]) < median(times[*best])))
      best = index;
  for (std::size_t index = 0; best && index < times.size(); ++index)
    if (const auto& entrant = workload.entrants[index]; !entrant.isPeer)
      std::printf("  %s: %.2f of the throughput of the best peer, %s\n", entrant.name.c_str(),
                  median(times[*best]) / median(times[index]), workload.entrants[*best].name.c_str());
}

void print(const Workload& workload, const std::vector<Seconds>& times) {
  std::printf("%s\n  %-28s %12s %12s %9s\n", workload.title.c_str(), titleOf(workload.unit), "median", "best",
              "x limit");
  for (std::size_t index = 0; index < times.size(); ++index)
    printRow(workload, times, index);
  printComparison(workload, times);
  for (const auto& note : workload.notes)
    std::printf("  (%s)\n", note.c_str());
  std::printf("\n");
  if (std::fflush(stdout) != 0)
    throw std::system_error(errno, std::generic_category(), "standard output");
}

}  // namespace

void measure(const Workload& workload, std::size_t rounds) {
  std::mt19937 engine(1);
  std::vector<Seconds> times(workload.entrants.size());
  oneRound(workload, engine);
  for (std::size_t round = 0; round < rounds; ++round) {
    const auto took = oneRound(workload, engine);
    for (std::size_t index = 0; index < took.size(); ++index)
      times[index].push_back(took[index]);
  }
  print(workload, times);
}

void catchInterrupts() {
  struct sigaction action {};
  action.sa_handler = [](int) { isInterrupted = true; };
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, nullptr);
}

}  // namespace bench
