#include <fstore/CommandLine.h>

#include <exception>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace {

/// Where the program was started without one of the standard streams, the next file to be opened would
/// take its place, and error messages would be written into it. What is put there instead fails to be
/// used in the stream's direction, as a missing stream should.
void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) == -1)
      (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace

int main(int count, char** arguments) {
  try {
    occupyStandardStreams();
    return fstore::run({arguments + (count > 0 ? 1 : 0), arguments + count});
  } catch (const std::exception& failure) {
    std::cerr << "fstore: " << failure.what() << '\n';
    return 1;
  }
}
