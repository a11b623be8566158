#pragma once

#include <foundation/storage/backend/s3/detail/client/Settings.h>
#include <foundation/storage/backend/s3/detail/client/StoreFailure.h>
#include <foundation/storage/backend/s3/detail/http/Interrupt.h>
#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Request.h>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::backend::s3::detail::client {

class Exchange;

/// What the store knows of an object beside its content.
struct ObjectInfo {
  std::uint64_t size = 0;  ///< in bytes, of the whole object
  boost::posix_time::ptime lastModified;
  std::string eTag;              ///< without quotes; may be empty
  bool isETagOpaque = false;     ///< it says nothing of the content, which is encrypted
  std::optional<wire::Md5> md5;  ///< of the content, where the ETag is one
  wire::Headers kept;            ///< what copies by parts have to carry over: content-type, cache-control,
                                 ///< content-disposition, content-encoding, content-language, expires, x-amz-meta-*
};

/// A piece of an object's content.
struct Piece {
  ObjectInfo object;
  std::uint64_t offset = 0;
  std::string bytes;  ///< as many as were asked for, or as there are
};

/// Bytes of an object, from `offset` on.
struct Range {
  std::uint64_t offset;
  std::uint64_t size;  ///< at least 1
};

/// What has to hold for a request to do anything.
enum class Existing {
  Replace,  ///< whatever is there
  Refuse    ///< nothing may be there: `ResourceAlreadyExists` else
};

/// Whether the store keeps the condition `Existing::Refuse`.
enum class Conditions {
  Unknown,  ///< not asked for yet
  Kept,
  Ignored  ///< or refused: creation looks first, then writes, and of two at once both may succeed
};

/// An upload in parts.
struct UploadId {
  std::string key;
  std::string id;
};

/// One bucket, an operation of the protocol a function. Keys are bytes in UTF-8, not encoded. All operations try again
/// what can be tried again, check what they are answered, and throw `StoreFailure`, or `http::Interrupted` when the
/// client's interrupt is raised. Copies share connections, retry budget, clock and what was learnt of the store; any
/// number of threads may use one.
class Client {
 public:
  /// Sends nothing.
  Client(const Settings& settings, std::string bucket);
  Client(const Client&);
  Client& operator=(const Client&);
  ~Client();

  const Settings& settings() const;
  const std::string& bucket() const { return bucket_; }

  /// This client, but its requests end when that interrupt is raised.
  Client endingWith(std::shared_ptr<http::Interrupt> interrupt) const;
  http::Interrupt& interrupt() const { return *interrupt_; }

  // --- Looking ---

  /// Nothing where there is no such object. That the bucket is missing is a failure (`ResourceNotFound`); HEAD does not
  /// tell the two apart, so this asks the bucket, too, the first time that an object is missing.
  std::optional<ObjectInfo> head(const std::string& key) const;

  /// What a page of a listing is to hold.
  struct Listing {
    std::string prefix = {};
    std::string delimiter = {};   ///< "/" or empty
    std::string startAfter = {};  ///< a key; the listing begins behind it
    unsigned most = 1000;         ///< keys and prefixes together, 1 to 1000
  };
  /// @param token  of the page before; empty for the first
  wire::ListPage list(const Listing& listing, const std::string& token = {}) const;

  // --- Reading ---

  /// The content from `range.offset` on, up to `range.size` bytes; less where the object ends, none behind its end. One
  /// answer that holds the whole object, and whose ETag is its MD5, is checked against it.
  /// @param eTag  where not empty, the object must still have it: `ResourceInUse` else, as it was changed meanwhile
  Piece read(const std::string& key, const Range& range, const std::string& eTag = {}) const;

  // --- Writing ---

  /// Writes an object in one request, with MD5 and SHA-256 of the body for the store to check.
  /// @param kept  headers to store with it
  /// @return the ETag
  std::string put(const std::string& key, std::string_view body, Existing existing,
                  const wire::Headers& kept = {}) const;
  /// What is known of the store's keeping conditions.
  Conditions conditions() const;

  /// Where an answer is lost, an upload may stay open that nobody knows; see `listUploads`.
  UploadId beginUpload(const std::string& key, const wire::Headers& kept = {}) const;
  /// @param number  1 to 10,000
  wire::Part uploadPart(const UploadId& upload, int number, std::string_view body) const;
  /// Takes a part from an object in the same store, of any bucket that the credentials may read.
  /// @param eTag  what the source must still be, `ResourceInUse` else; empty: whatever it is
  wire::Part copyPart(const UploadId& upload, int number, const std::string& sourceBucket, const std::string& sourceKey,
                      const Range& range, const std::string& eTag) const;
  /// Whether the store itself makes parts of that object in `copyPart`. Some decode the name twice, and would take
  /// another object: the content of one with a '%' in its name comes here and goes back, the part's size in memory.
  static bool copiesParts(const std::string& sourceKey);
  /// Puts the object together of its parts. Whether it was done is found out where the answer is lost. With
  /// `Existing::Refuse` this looks first, and sends the condition, too; where the store ignores that with uploads, an
  /// object that somebody creates in between is replaced.
  /// @param size  of the whole object, to recognise it by
  void completeUpload(const UploadId& upload, const std::vector<wire::Part>& parts, std::uint64_t size,
                      Existing existing) const;
  /// Forgets the upload with its parts; one that is not there any more is no failure. A part that is still under way
  /// may be kept in spite of it: to be called when all have ended.
  void abortUpload(const UploadId& upload) const;
  /// @param prefix  of the keys
  wire::UploadsPage listUploads(const std::string& prefix, const std::string& keyMarker = {},
                                const std::string& uploadIdMarker = {}) const;

  /// Copies an object of up to 5 GiB in one request, with what is stored with it.
  /// @param eTag  what the source must still be, `ResourceInUse` else; empty: whatever it is. A store that ignores this
  ///              has copied what the source is now when that is found
  void copy(const std::string& sourceBucket, const std::string& sourceKey, const std::string& eTag,
            const std::string& key) const;

  // --- Removing ---

  /// That there is nothing is no failure.
  void remove(const std::string& key) const;
  /// Removes any number, up to 1,000 in one request.
  /// @return those that could not be removed, and why
  std::vector<wire::FailedDeletion> remove(const std::vector<std::string>& keys) const;

 private:
  Client withBucket(std::string bucket) const;
  void requireBucket() const;
  void removeBatch(const std::vector<std::string>& keys, std::vector<wire::FailedDeletion>& failed) const;
  void removeSingly(const std::string& key, std::vector<wire::FailedDeletion>& failed) const;
  Piece nothingBehind(const std::string& key, const Range& range) const;

  std::shared_ptr<Exchange> exchange_;
  std::string bucket_;
  std::shared_ptr<http::Interrupt> interrupt_;
};

}  // namespace foundation::storage::backend::s3::detail::client
