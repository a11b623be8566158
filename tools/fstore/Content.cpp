#include "Content.h"

#include "Arguments.h"
#include "Output.h"
#include "Report.h"

#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

void writeContent(const StorageItem& file, Output& output) {
  const auto stream = file.openReadOnlyStream();
  std::vector<char> buffer(bufferSize);
  while (!output.hasFailed()) {
    const auto got = stream->read(buffer.data(), static_cast<std::int64_t>(buffer.size()));
    if (got <= 0)
      break;
    output.write({buffer.data(), static_cast<std::size_t>(got)});
  }
  stream->close();
}

/// @return the number of bytes, 0 at the end; -1 where standard input failed
ssize_t readInput(std::vector<char>& buffer) {
  ssize_t got = -1;
  do {
    got = read(STDIN_FILENO, buffer.data(), buffer.size());
  } while (got == -1 && errno == EINTR);
  return got;
}

void writeAll(ByteStream& stream, const char* data, std::int64_t size) {
  while (size > 0) {
    const auto written = stream.write(data, size);
    if (written <= 0)
      throw ByteStreamWriteFailure(ErrorCode::IOError);
    data += written;
    size -= written;
  }
}

void readContent(const StorageItem& file, bool append, Report& report) {
  const auto stream =
      file.openStream({.truncate = append ? ByteStreamTruncate::PreserveExisting : ByteStreamTruncate::TruncateExisting,
                       .append = append ? ByteStreamAppend::Append : ByteStreamAppend::Overwrite});
  std::vector<char> buffer(bufferSize);
  for (;;) {
    const auto got = readInput(buffer);
    if (got == -1)
      report.fail("standard input", ErrorCode::IOError, std::generic_category().message(errno));
    if (got <= 0)
      break;
    writeAll(*stream, buffer.data(), got);
  }
  stream->close();
}

}  // namespace

int concatenate(const std::vector<std::string>& arguments) {
  Report report("cat");
  Output output;
  for (const auto& argument : arguments)
    report.attempt(argument, [&] {
      const auto file = itemFor(argument);
      report.attempt(file.getLocation(), [&] { writeContent(file, output); });
    });
  output.finish(report);
  return report.exitCode();
}

int put(const std::string& argument, bool append) {
  Report report("put");
  report.attempt(argument, [&] {
    const auto file = itemFor(argument);
    report.attempt(file.getLocation(), [&] { readContent(file, append, report); });
  });
  return report.exitCode();
}

}  // namespace fstore
