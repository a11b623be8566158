#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

/// Requests over HTTP, and waiting for them.
namespace foundation::storage::backend::s3::detail::http {

/// Ends waiting: of requests under way, and of pauses between attempts. Once raised, it stays so. Any number of threads
/// may use one.
class Interrupt {
 public:
  Interrupt() = default;
  /// @param question  asked by threads that wait, 20 times a second or so, one at a time; answers whether to stop. What
  ///                  it throws, waiting throws.
  explicit Interrupt(std::function<bool()> question);
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  void raise() noexcept;
  /// Asks the question, too.
  bool isRaised();
  /// Waits that long at most, in milliseconds; whether it was raised.
  bool waitFor(std::chrono::milliseconds time);
  /// Whether waiting threads have to look themselves from time to time, since there is a question.
  bool hasQuestion() const { return static_cast<bool>(question_); }

  /// Has `action` called when the interrupt is raised, at once where that has happened, by the thread that raises it;
  /// until this object dies, which waits for a call under way.
  class Listener {
   public:
    Listener(Interrupt& interrupt, std::function<void()> action);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

   private:
    Interrupt& interrupt_;
    std::size_t id_;
  };

 private:
  std::function<bool()> question_;
  std::mutex questionMutex_;
  std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  bool isRaised_ = false;
  std::size_t nextId_ = 0;
  std::map<std::size_t, std::function<void()>> listeners_;
};

/// Thrown by whoever stops waiting since an interrupt was raised.
struct Interrupted {};

}  // namespace foundation::storage::backend::s3::detail::http
