#pragma once

namespace fstore {

/// SIGINT, SIGTERM and SIGHUP (unless nohup(1) has it ignored), from its construction on, ask the program to stop
/// instead of ending it: long work looks now and then whether it is to go on. A second such signal, but for SIGHUP,
/// ends the program at once. There is one object in a program.
///
/// Any number of threads may use it.
class StopSignal {
 public:
  /// Throws `std::system_error`.
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  bool isAsked() const { return number() != 0; }
  /// Which signal asked; 0 if none did.
  int number() const;

  /// Ends the program at once, by the signal that asked.
  [[noreturn]] void endProgram() const;

  /// Sleeps until there is a signal or `wakeUp` is called, also if that was before. Throws `std::system_error`.
  void wait() const;
  void wakeUp() const;

 private:
  int wakeUp_;
};

}  // namespace fstore
