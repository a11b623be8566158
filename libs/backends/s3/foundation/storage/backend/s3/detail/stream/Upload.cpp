#include <foundation/storage/backend/s3/detail/stream/Upload.h>

#include <foundation/storage/backend/s3/detail/stream/Limits.h>
#include <foundation/storage/backend/support/Log.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using namespace std::chrono_literals;
using client::StoreFailure;

namespace {

/// How long the end of a stream may take beyond its operation, where the store does not answer.
constexpr auto patience = 10s;

/// How long an answer that must not be lost is waited for after an interrupt.
constexpr auto grace = 5s;

std::shared_ptr<http::Interrupt> soonAfter(http::Interrupt& interrupt) {
  using Clock = std::chrono::steady_clock;
  return std::make_shared<http::Interrupt>([&interrupt, end = std::optional<Clock::time_point>()]() mutable {
    if (!interrupt.isRaised())
      return false;
    end = end.value_or(Clock::now() + grace);
    return Clock::now() >= *end;
  });
}

std::function<void()> asking(std::function<bool()> proceed) {
  if (!proceed)
    return {};
  return [proceed = std::move(proceed)] {
    if (!proceed())
      throw http::Interrupted();
  };
}

}  // namespace

Upload::Upload(const client::Client& client, std::string key, wire::Headers headers, std::function<bool()> proceed)
    : client_(client),
      endable_(client),
      key_(std::move(key)),
      headers_(std::move(headers)),
      ask_(asking(std::move(proceed))) {}

Upload::~Upload() { abandon(); }

void Upload::add(std::string&& bytes) {
  makeRoom();
  const auto size = bytes.size();
  const auto body = std::make_shared<std::string>(std::move(bytes));
  try {
    add([this, body](const auto& id, int number) { return endable_.get().uploadPart(id, number, *body); }, size);
  } catch (...) {
    bytes = std::move(*body);
    throw;
  }
}

void Upload::add(Source source) {
  makeRoom();
  const auto size = source.range.size;
  add(
      [this, source = std::move(source)](const auto& id, int number) {
        return endable_.get().copyPart(id, number, client_.bucket(), source.key, source.range, source.eTag);
      },
      size);
}

void Upload::makeRoom() {
  if (nextNumber() > mostParts)
    throw StoreFailure(provider::ErrorCode::FileTooLarge,
                       "No object has more than 10,000 parts; larger parts hold more content");
  waitForFewerThan(client_.settings().parallelParts);
  check();
  if (!id_)
    begin();
}

/// An upload whose name does not arrive stays open, since nobody can abort it.
void Upload::begin() {
  if (client_.interrupt().isRaised())
    throw http::Interrupted();
  id_ = client_.endingWith(soonAfter(client_.interrupt())).beginUpload(key_, headers_);
}

void Upload::add(Send send, std::uint64_t size) {
  parts_.push_back({std::move(send)});
  parts_.back().stored.number = static_cast<int>(parts_.size());
  size_ += size;
  start(parts_.back());
}

void Upload::start(Part& part) noexcept {
  try {
    tasks_.start([this, &part] { run(part); });
  } catch (const std::exception&) {
    noteFailure(std::current_exception());
  }
}

void Upload::run(Part& part) noexcept {
  std::exception_ptr failure;
  try {
    part.stored = part.send(*id_, part.stored.number);
    part.send = nullptr;
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure)
    noteFailure(std::move(failure));
}

void Upload::noteFailure(std::exception_ptr failure) noexcept {
  const std::lock_guard lock(mutex_);
  if (!failure_)
    failure_ = std::move(failure);
}

void Upload::check() const {
  const std::lock_guard lock(mutex_);
  if (failure_)
    std::rethrow_exception(failure_);
}

void Upload::retry() {
  waitForFewerThan(1);
  failure_ = nullptr;
  for (auto& part : parts_) {
    if (!part.send)
      continue;
    waitForFewerThan(client_.settings().parallelParts);
    start(part);
  }
}

void Upload::complete(client::Existing existing) {
  waitForFewerThan(1);
  check();
  client_.completeUpload(*id_, stored(), size_, existing);
  id_.reset();
}

/// While no part is under way.
std::vector<wire::Part> Upload::stored() const {
  std::vector<wire::Part> parts;
  parts.reserve(parts_.size());
  for (const auto& part : parts_)
    parts.push_back(part.stored);
  return parts;
}

void Upload::abort() { abortWith(std::make_shared<http::Interrupt>()); }

void Upload::abandon() noexcept {
  try {
    const auto end = std::chrono::steady_clock::now() + patience;
    abortWith(std::make_shared<http::Interrupt>([end] { return std::chrono::steady_clock::now() >= end; }));
  } catch (...) {
    support::logCaughtFailure("An upload could not be aborted, and takes up space in the store.");
  }
}

/// Asks with another interrupt than the client's, which may be what has ended the upload.
void Upload::abortWith(const std::shared_ptr<http::Interrupt>& interrupt) {
  endable_.end();
  tasks_.waitForFewerThan(1);
  if (!id_)
    return;
  try {
    client_.endingWith(interrupt).abortUpload(*id_);
  } catch (const http::Interrupted&) {
    throw StoreFailure(provider::ErrorCode::IOError, "The store does not answer", {"AbortMultipartUpload"});
  }
  id_.reset();
}

void Upload::waitForFewerThan(unsigned count) { tasks_.waitForFewerThan(count, ask_); }

}  // namespace foundation::storage::backend::s3::detail::stream
