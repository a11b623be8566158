#include <fstore/Content.h>
#include <fstore/Refusal.h>
#include <fstore/Target.h>

#include <fl/i18n/Convert.h>
#include <foundation/storage/provider/ByteStreamFailure.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace fstore {

namespace provider = foundation::storage::provider;
using provider::ByteStreamAppend;
using provider::ByteStreamTruncate;
using provider::ErrorCode;
using provider::StorageItem;

namespace {

constexpr std::size_t blockSize = 256 * 1024;

/// Whether a standard stream is the file itself: reading and writing it at once would never end, or empty
/// it before it was read.
void requireNotOpenAs(int standardStream, const StorageItem& file, const char16_t* reason) {
  if (physicalLocation(file.getLocation()).getScheme() != u"file")
    return;
  struct stat stream, itself;
  const auto path = fl::i18n::to_string(file.getLocation().toUPath().string());
  if (fstat(standardStream, &stream) == 0 && S_ISREG(stream.st_mode) && stat(path.c_str(), &itself) == 0 &&
      stream.st_dev == itself.st_dev && stream.st_ino == itself.st_ino)
    throw refusal(ErrorCode::InvalidLocation, file.getLocation(), reason);
}

/// Reads up to `count` bytes of standard input.
/// @return how many bytes were read, 0 at the end (and where `count` is 0)
std::size_t readInput(char* buffer, std::size_t count, const StorageItem& target) {
  for (;;) {
    const auto got = ::read(STDIN_FILENO, buffer, count);
    if (got >= 0)
      return static_cast<std::size_t>(got);
    if (errno != EINTR)
      throw refusal(ErrorCode::IOError, target.getLocation(),
                    u"Standard input cannot be read: " + fl::i18n::to_ustring(std::generic_category().message(errno)));
  }
}

/// @tparam Stream  a `ByteStream` or a `TransactionalStream`
template <class Stream>
void writeAll(Stream& stream, const char* data, std::size_t size) {
  for (std::size_t done = 0; done < size;) {
    const auto written = stream.write(data + done, static_cast<std::int64_t>(size - done));
    if (written <= 0)
      throw provider::ByteStreamWriteFailure(ErrorCode::IOError);
    done += static_cast<std::size_t>(written);
  }
}

void printFile(const StorageItem& file, std::string& buffer, Output& output) {
  requireNotOpenAs(STDOUT_FILENO, file, u"The file is standard output itself");
  const auto stream = file.openReadOnlyStream();
  for (;;) {
    const auto got = stream->read(buffer.data(), static_cast<std::int64_t>(buffer.size()));
    if (got <= 0)
      break;
    output.write({buffer.data(), static_cast<std::size_t>(got)});
    output.flush();  // the file may be a device that gives its data bit by bit
  }
  stream->close();
}

template <class Stream>
void writeInputTo(Stream& stream, std::string& buffer, const StorageItem& file) {
  while (const auto got = readInput(buffer.data(), buffer.size(), file))
    writeAll(stream, buffer.data(), got);
}

void putFile(const StorageItem& file, ByteStreamTruncate existing) {
  requireNotOpenAs(STDIN_FILENO, file, u"The file is standard input itself");
  std::string buffer(blockSize, '\0');
  readInput(buffer.data(), 0, file);  // consumes nothing, but says whether reading can work
  const bool keeps = existing == ByteStreamTruncate::PreserveExisting;
  if (!keeps && file.getLocation().hasInnerIRI()) {
    // A container is written as a whole, and never with half a file in it.
    const auto stream = file.openTransactionalStream({});
    writeInputTo(*stream, buffer, file);
    return stream->close(provider::StreamClosePolicy::Commit);
  }
  const auto stream =
      file.openStream({.truncate = existing, .append = keeps ? ByteStreamAppend::Append : ByteStreamAppend::Overwrite});
  writeInputTo(*stream, buffer, file);
  stream->close();
}

}  // namespace

void printContent(const Session& session, const std::vector<std::string>& arguments) {
  std::string buffer(blockSize, '\0');
  session.forEach(arguments,
                  [&](const StorageItem& file, const std::string&) { printFile(file, buffer, session.output); });
}

void putContent(const Session& session, const std::string& argument, ByteStreamTruncate existing) {
  session.forEach({argument}, [&](const StorageItem& file, const std::string&) { putFile(file, existing); });
}

}  // namespace fstore
