#include <foundation/storage/testing/Faults.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace foundation::storage::testing {
namespace {

std::string text(Operation operation, const std::string& subject) {
  std::ostringstream out;
  out << operation << ' ' << subject;
  return out.str();
}

}  // namespace

Faults::Faults() = default;
Faults::~Faults() = default;

void Faults::fail(Operation operation, std::size_t call, provider::ErrorCode code, FaultMoment moment) {
  plan({operation, call, code, moment, {}, {}});
}

void Faults::failAny(std::size_t call, provider::ErrorCode code, FaultMoment moment) {
  plan({{}, call, code, moment, {}, {}});
}

void Faults::shorten(Operation operation, std::size_t call, std::int64_t bytes) {
  plan({operation, call, {}, FaultMoment::Before, std::max<std::int64_t>(bytes, 1), {}});
}

void Faults::delay(Operation operation, std::size_t call, std::function<void()> wait) {
  plan({operation, call, {}, FaultMoment::Before, {}, std::move(wait)});
}

void Faults::plan(Fault fault) {
  const std::scoped_lock lock(mutex_);
  faults_.push_back(std::move(fault));
}

void Faults::clear() {
  const std::scoped_lock lock(mutex_);
  faults_.clear();
  calls_.clear();
  counts_.clear();
  failures_ = 0;
}

std::size_t Faults::countCalls() const {
  const std::scoped_lock lock(mutex_);
  return calls_.size();
}

std::size_t Faults::countCalls(Operation operation) const {
  const std::scoped_lock lock(mutex_);
  const auto found = counts_.find(operation);
  return found == counts_.end() ? 0 : found->second;
}

std::size_t Faults::countFailures() const {
  const std::scoped_lock lock(mutex_);
  return failures_;
}

std::size_t Faults::countOpenStreams() const {
  const std::scoped_lock lock(mutex_);
  return openStreams_;
}

std::vector<std::string> Faults::calls() const {
  const std::scoped_lock lock(mutex_);
  return calls_;
}

bool Faults::concerns(const Fault& fault, Operation operation) const {
  if (fault.operation && *fault.operation != operation)
    return false;
  return fault.call == every || fault.call == (fault.operation ? counts_.at(operation) : calls_.size());
}

Faults::Verdict Faults::enter(Operation operation, const std::string& subject) {
  Verdict verdict;
  std::vector<std::function<void()>> waits;
  {
    const std::scoped_lock lock(mutex_);
    calls_.push_back(text(operation, subject));
    ++counts_[operation];
    for (const auto& fault : faults_) {
      if (!concerns(fault, operation))
        continue;
      if (fault.failure) {
        verdict.failure = fault.failure;
        verdict.moment = fault.moment;
      }
      if (fault.mostBytes)
        verdict.mostBytes = fault.mostBytes;
      if (fault.wait)
        waits.push_back(fault.wait);
    }
    if (verdict.failure)
      ++failures_;
  }
  for (const auto& wait : waits)
    wait();
  return verdict;
}

Faults::OpenStream::OpenStream(Faults& faults) : faults_(faults) {
  const std::scoped_lock lock(faults_.mutex_);
  ++faults_.openStreams_;
}

Faults::OpenStream::~OpenStream() {
  const std::scoped_lock lock(faults_.mutex_);
  --faults_.openStreams_;
}

}  // namespace foundation::storage::testing
