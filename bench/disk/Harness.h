#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Peers side by side: in each round all of them do the same work in turns, in a new order each time, so that what
/// the machine and the file system's journal do meanwhile falls on all alike.
namespace bench {

/// One peer's part in a workload. What fails throws.
struct Entrant {
  std::string name;
  std::function<void(std::size_t turn)> run;         ///< timed
  std::function<void(std::size_t turn)> check = {};  ///< not timed; throws where `run` did not do its work
  std::function<std::string()> remark = {};          ///< shown beside the figures
  /// Does its turns of a round when all others have done theirs: it syncs, and so has their files written, too.
  bool isApart = false;
  /// One that the others are held against: a line says how their medians compare with that of the best peer.
  bool isPeer = false;
};

enum class Unit {
  Items,  ///< shown in nanoseconds each
  Bytes,  ///< in GB/s
  Runs,   ///< in milliseconds each
};

struct Workload {
  std::string title;
  Unit unit = Unit::Items;
  double amount = 0;      ///< what one round comes to, in `unit`
  std::size_t turns = 1;  ///< in how many parts a round is done
  std::vector<Entrant> entrants = {};
  std::function<void()> prepare = {};  ///< before each round, not timed
  /// After that, and before those that are apart; where all is done in one turn, before each. Not timed.
  std::function<void()> settle = {};
  std::vector<std::string> notes = {};
};

/// Runs one round to warm up and `rounds` more, and prints for each entrant the median and the best of them, and the
/// median of what each round took as a multiple of the time that the entrant "limit" took in it.
/// Throws what entrants throw, and `std::runtime_error` once the program was interrupted.
void measure(const Workload& workload, std::size_t rounds);

/// From now on SIGINT and SIGTERM end `measure` at the next turn, and a reader of the output that goes away makes it
/// fail, so that temporary files are removed.
void catchInterrupts();

}  // namespace bench
