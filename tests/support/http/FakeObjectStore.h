#pragma once

#include "support/http/ScriptedServer.h"

#include <chrono>
#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace foundation::storage::testing::http {

/// What a store keeps of an object.
struct StoredObject {
  std::string content;
  std::map<std::string, std::string> kept = {};  ///< content-type and the like, x-amz-meta-*
  std::string eTag = {};                         ///< without quotes
  std::time_t modified = 0;
};

/// In what a store differs from a good one.
struct StoreTraits {
  /// Of PutObject and CompleteMultipartUpload.
  enum class Conditions { Kept, Ignored, Refused };
  enum class CompletionETag { Given, Empty };

  Conditions conditions = Conditions::Kept;
  CompletionETag completionETag = CompletionETag::Given;
  std::set<std::string> missingOperations = {};  ///< answered with 501 NotImplemented
  std::set<std::string> lockedKeys = {};         ///< removing them is answered with AccessDenied
  std::size_t smallestPart = 1;                  ///< in bytes; real ones ask for 5 MiB
  std::chrono::seconds clockOffset{0};           ///< how much its clock is ahead; it bears 15 minutes of difference
  std::string accessKey = "testkey";             ///< the only one that is let in; signatures are not checked
  std::string region = "us-east-1";
};

/// What happens to a request.
/// @param act  does what is asked for, and answers
using Act = std::function<ScriptedAnswer(const ReceivedRequest& request)>;
using Fault = std::function<ScriptedAnswer(const ReceivedRequest& request, const Act& act)>;

/// An answer of any kind, and nothing is done.
Fault answering(ScriptedAnswer answer);
/// An error of the store, and nothing is done; with status 200, it hides in a success.
Fault failing(int status, const std::string& code);
/// The request is done, and `change` made to the answer, such as `[](auto answer) { return answer.cutOffAfter(3); }`.
Fault damaging(std::function<ScriptedAnswer(const ScriptedAnswer&)> change);
/// The request is done, but the connection is reset before the answer.
Fault losingTheAnswer();
/// A bit of the request's body, which must not be empty, has flipped on the way.
Fault damagingTheBody();

/// An object store in memory, asked in the S3 protocol, path-style:
///
///     FakeObjectStore store;  // has a bucket, "bucket"
///     ScriptedServer server(store.handler());
///     store.put("a/b", "content");
///     store.failNext("GetObject", 2, failing(503, "SlowDown"));
///     store.failNext("CompleteMultipartUpload", 1, losingTheAnswer());
///     ... // use server.url(), region "us-east-1", access key "testkey", any secret
///     EXPECT_EQ(store.count("GetObject"), 3u);
///     EXPECT_EQ(store.get("a/c")->content, "content");
///     EXPECT_TRUE(store.uploads().empty());
///
/// It checks what real ones check: how paths and queries are escaped, access key, region and time of the signature,
/// "x-amz-content-sha256" and "content-md5" of the body. Operations have the protocol's names. Any number of threads
/// may use one; copies are the same store.
class FakeObjectStore {
 public:
  explicit FakeObjectStore(StoreTraits traits = {});
  ScriptedServer::Handler handler();

  /// Has the next requests of that operation ("*": any) go wrong. Of several, the first that fits is used up first.
  void failNext(const std::string& operation, std::size_t count, Fault fault);
  /// Has that called before each request is done, with none of the store's locks held, so that it may change the store
  /// or wait. To be set before the first request.
  void onRequest(std::function<void(const std::string& operation, const ReceivedRequest&)> hook);

  /// How many requests of that operation ("*": any) came in so far, those that failed included.
  std::size_t count(const std::string& operation) const;
  /// All of them, in the order of their coming.
  std::vector<std::string> operations() const;

  void addBucket(const std::string& bucket);
  /// Straight in a bucket, without a request.
  /// @{
  void put(const std::string& key, std::string content, const std::string& bucket = "bucket");
  void erase(const std::string& key, const std::string& bucket = "bucket");
  std::optional<StoredObject> get(const std::string& key, const std::string& bucket = "bucket") const;
  std::vector<std::string> keys(const std::string& bucket = "bucket") const;
  /// The keys of uploads that are neither completed nor aborted.
  std::vector<std::string> uploads(const std::string& bucket = "bucket") const;
  /// @}

 private:
  class State;
  std::shared_ptr<State> state_;
};

}  // namespace foundation::storage::testing::http
