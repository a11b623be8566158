#include <foundation/storage/backend/s3/detail/stream/ObjectWriter.h>
#include <foundation/storage/backend/s3/detail/stream/Streams.h>
#include <foundation/storage/backend/s3/detail/stream/Upload.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace foundation::storage::backend::s3::detail::stream {

using client::Existing;
using client::ObjectInfo;

namespace {

/// Asks whether to go on, until the answer is no.
class Course {
 public:
  explicit Course(const std::function<bool()>& proceed) : proceed_(proceed) {}
  bool isEnded() const { return isEnded_; }
  bool goesOn() {
    isEnded_ = isEnded_ || (proceed_ && !proceed_());
    return !isEnded_;
  }

 private:
  const std::function<bool()>& proceed_;
  bool isEnded_ = false;
};

/// Copies in one request.
void copyWhole(const client::Client& client, const std::string& sourceKey, const ObjectInfo& source,
               const std::string& key, Course& course) {
  if (!course.goesOn())
    throw http::Interrupted();
  const auto stops = [&] { return !course.goesOn() || client.interrupt().isRaised(); };
  const auto interrupt = std::make_shared<http::Interrupt>(stops);
  client.endingWith(interrupt).copy(client.bucket(), sourceKey, source.eTag, key);
}

/// Makes an object of the first `size` bytes of another, or of itself.
void copyByParts(const client::Client& client, const std::string& sourceKey, const ObjectInfo& source,
                 std::uint64_t size, const std::string& key, const Limits& limits, std::function<bool()> proceed) {
  Upload upload(client, key, takenOver(source.kept), std::move(proceed));
  for (const auto& range : divide(size, copiedPart(client, sourceKey, limits)))
    upload.add(Upload::Source{sourceKey, source.eTag, range});
  upload.complete(Existing::Replace);
}

void cutOff(const Target& target, const ObjectInfo& object, std::uint64_t newSize, const Limits& limits) {
  if (newSize >= limits.smallestPart)
    return copyByParts(target.client, target.key, object, newSize, target.key, limits, {});
  std::string content;
  if (newSize > 0)
    content = target.client.read(target.key, {0, newSize}, object.eTag).bytes;
  if (content.size() != newSize)
    throw client::StoreFailure(provider::ErrorCode::ResourceInUse, "The object was changed while it was being resized");
  target.client.put(target.key, content, Existing::Replace, takenOver(object.kept));
}

void fillUp(const Target& target, const ObjectInfo& object, std::uint64_t newSize, const Limits& limits) {
  const std::string zeros(64 * 1024, '\0');
  WriteMode mode;
  mode.kept = object;
  ObjectWriter writer(target.client, target.key, std::move(mode), limits);
  while (writer.size() < newSize)
    writer.write(std::string_view(zeros).substr(0, newSize - writer.size()));
  writer.publish();
}

}  // namespace

bool copyObject(const client::Client& client, const std::string& sourceKey, const ObjectInfo& source,
                const std::string& key, const std::function<bool()>& proceed, const Limits& limits) {
  Course course(proceed);
  try {
    if (source.size <= limits.largestCopy)
      copyWhole(client, sourceKey, source, key, course);
    else
      copyByParts(client, sourceKey, source, source.size, key, limits, [&course] { return course.goesOn(); });
    return true;
  } catch (const http::Interrupted&) {
    if (!course.isEnded())
      throw;
    return false;
  }
}

void resizeObject(const Target& target, const ObjectInfo& object, std::uint64_t newSize, const Limits& limits) {
  if (newSize < object.size)
    cutOff(target, object, newSize, limits);
  else if (newSize > object.size)
    fillUp(target, object, newSize, limits);
}

}  // namespace foundation::storage::backend::s3::detail::stream
