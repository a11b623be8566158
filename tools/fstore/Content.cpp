#include "Content.h"

#include "Arguments.h"
#include "Output.h"
#include "Report.h"

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamFailure.h>
#include <foundation/storage/provider/Exception.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace fstore {

using namespace foundation::storage::provider;

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

/// Whether an open standard stream is the file itself, so that the one would never end, or be gone before
/// it was read.
bool isOpenAs(const StorageItem& file, int standardStream) {
  struct stat stream, itself;
  return fstat(standardStream, &stream) == 0 && S_ISREG(stream.st_mode) &&
         stat(fl::i18n::to_string(file.getLocation().toUPath().string()).c_str(), &itself) == 0 &&
         stream.st_dev == itself.st_dev && stream.st_ino == itself.st_ino;
}

void writeContent(const StorageItem& file, Output& output, Report& report) {
  if (isOpenAs(file, STDOUT_FILENO))
    return report.fail(file.getLocation(), ErrorCode::InvalidLocation, "The file is standard output itself");
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
  if (isOpenAs(file, STDIN_FILENO))
    return report.fail(file.getLocation(), ErrorCode::InvalidLocation, "The file is standard input itself");
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
      report.attempt(file.getLocation(), [&] { writeContent(file, output, report); });
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
