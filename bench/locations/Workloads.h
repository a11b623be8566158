#pragma once

#include "locations/Corpus.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace bench {

/// Heap in use, the allocator's own headers included, in bytes.
inline std::size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

/// The work on locations, written once. A peer has these static members (the last four may be missing):
///
///     Text text(Spelling)          its own string of one spelling, made untimed
///     Text name(std::string)       the same for a name in UTF-8
///     Value parse(Text)            a value that owns all it needs
///     size_t read(Value)           the path and the name, decoded: the sum of their lengths
///     Folder folder(), Value child(Folder, Text)
///     bool equal(Value, Value), size_t hash(Value), bool less(Value, Value)
template <class Peer>
class Locations {
 public:
  explicit Locations(std::string peer) : peer_(std::move(peer)) {}

  void add() {
    const auto named = [this](const char* workload) { return std::string(workload) + "/" + peer_; };
    benchmark::RegisterBenchmark(named("parse+read").c_str(), [](auto& state) { parse(state, true); });
    benchmark::RegisterBenchmark(named("parse").c_str(), [](auto& state) { parse(state, false); });
    if constexpr (requires { Peer::folder(); })
      benchmark::RegisterBenchmark(named("child").c_str(), child);
    if constexpr (requires(const Value& v) { Peer::equal(v, v); })
      benchmark::RegisterBenchmark(named("equal").c_str(), equal);
    if constexpr (requires(const Value& v) { Peer::hash(v); }) {
      benchmark::RegisterBenchmark(named("hash-again").c_str(), [](auto& state) { hash(state, locationCount); });
      // Few enough to stay in the cache: what is left when memory is no bottleneck.
      benchmark::RegisterBenchmark(named("hash-again-cached").c_str(), [](auto& state) { hash(state, 1000); });
    }
    if constexpr (requires(const Value& v) { Peer::less(v, v); })
      benchmark::RegisterBenchmark(named("sort").c_str(), sort)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(named("held").c_str(), held)->Iterations(1);
  }

 private:
  using Text = decltype(Peer::text(Spelling{}));
  using Value = decltype(Peer::parse(std::declval<Text>()));

  static const std::vector<Text>& texts() {
    static const auto made = [] {
      std::vector<Text> all;
      for (const auto& spelling : locations())
        all.push_back(Peer::text(spelling));
      return all;
    }();
    return made;
  }

  static std::vector<Value> parseAll() {
    std::vector<Value> values;
    values.reserve(texts().size());
    for (const auto& text : texts())
      values.push_back(Peer::parse(text));
    return values;
  }

  /// Reports the time of each of an iteration's operations.
  static void perOperation(benchmark::State& state, std::size_t operations = locationCount) {
    using benchmark::Counter;
    state.counters["each"] =
        Counter(static_cast<double>(operations), Counter::kIsIterationInvariantRate | Counter::kInvert);
  }

  static void parse(benchmark::State& state, bool reads) {
    for ([[maybe_unused]] auto _ : state)
      for (const auto& text : texts()) {
        const auto value = Peer::parse(text);
        if (reads)
          benchmark::DoNotOptimize(Peer::read(value));
        else
          benchmark::DoNotOptimize(&value);
      }
    perOperation(state);
  }

  static void child(benchmark::State& state) {
    const auto folder = Peer::folder();
    std::vector<Text> childNames;
    for (const auto& name : names())
      childNames.push_back(Peer::name(name));
    for ([[maybe_unused]] auto _ : state)
      for (const auto& name : childNames) {
        const auto value = Peer::child(folder, name);
        benchmark::DoNotOptimize(&value);
      }
    perOperation(state);
  }

  static void equal(benchmark::State& state) {
    const auto left = parseAll();
    const auto right = parseAll();
    for ([[maybe_unused]] auto _ : state)
      for (std::size_t i = 0; i < left.size(); ++i)
        if (!Peer::equal(left[i], right[i]))
          state.SkipWithError("equal values compare unequal");
    perOperation(state);
  }

  static void hash(benchmark::State& state, std::size_t count) {
    const auto values = parseAll();
    for (const auto& value : values)
      benchmark::DoNotOptimize(Peer::hash(value));
    for ([[maybe_unused]] auto _ : state)
      for (std::size_t i = 0; i < count; ++i)
        benchmark::DoNotOptimize(Peer::hash(values[i]));
    perOperation(state, count);
  }

  static void sort(benchmark::State& state) {
    std::vector<std::size_t> order(texts().size());
    for (std::size_t i = 0; i < order.size(); ++i)
      order[i] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    for ([[maybe_unused]] auto _ : state) {
      state.PauseTiming();
      std::vector<Value> values;
      values.reserve(order.size());
      for (const auto i : order)
        values.push_back(Peer::parse(texts()[i]));
      state.ResumeTiming();
      std::sort(values.begin(), values.end(), [](const Value& a, const Value& b) { return Peer::less(a, b); });
      state.PauseTiming();
      values.clear();
      state.ResumeTiming();
    }
    perOperation(state);
  }

  static void held(benchmark::State& state) {
    texts();
    const auto before = heapInUse();
    const auto values = parseAll();
    const auto fresh = heapInUse();
    for ([[maybe_unused]] auto _ : state)
      for (const auto& value : values)
        benchmark::DoNotOptimize(Peer::read(value));
    const auto count = static_cast<double>(values.size());
    state.counters["bytes_fresh"] = static_cast<double>(fresh - before) / count;
    state.counters["bytes_read"] = static_cast<double>(heapInUse() - before) / count;
  }

  std::string peer_;
};

/// Adds a peer's benchmarks when the program starts.
template <class Peer>
bool add(const std::string& name) {
  Locations<Peer>(name).add();
  return true;
}

}  // namespace bench
