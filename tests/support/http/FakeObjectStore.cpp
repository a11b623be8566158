#include "support/http/FakeObjectStore.h"

#include "support/http/Codec.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

namespace foundation::storage::testing::http {
namespace {

using boost::starts_with;
using detail::element;
using detail::unescaped;
using Texts = std::map<std::string, std::string>;

/// Answered with a document of the store's own.
struct Refusal {
  int status;
  std::string code;
  std::string region = {};
};

ScriptedAnswer document(const std::string& root, const std::string& content, int status = 200) {
  return {.status = status,
          .headers = {{"content-type", "application/xml"}},
          .body = "<" + root + ">" + content + "</" + root + ">"};
}

ScriptedAnswer refused(const Refusal& refusal) {
  const auto region = refusal.region.empty() ? "" : element("Region", refusal.region);
  return document("Error", element("Code", refusal.code) + element("Message", "No: " + refusal.code) + region,
                  refusal.status);
}

std::string inQuotes(const std::string& eTag) { return '"' + eTag + '"'; }

std::string unquoted(const std::string& eTag) { return boost::replace_all_copy(eTag, "\"", ""); }

std::string eTagOf(const std::string& content) { return detail::hex(detail::digest("MD5", content)); }

void checkMatch(const std::string& eTag, const std::string& condition) {
  if (!condition.empty() && condition != "*" && unquoted(condition) != eTag)
    throw Refusal{412, "PreconditionFailed"};
}

struct Range {
  /// Of "bytes=1-2" or "bytes=1-".
  Range(const std::string& text, std::size_t whole) {
    std::size_t last = whole;
    std::sscanf(text.c_str(), "bytes=%zu-%zu", &first, &last);
    if (first >= whole || last < first)
      throw Refusal{416, "InvalidRange"};
    last = std::min(last, whole - 1);
    size = last - first + 1;
    header = "bytes " + std::to_string(first) + "-" + std::to_string(last) + "/" + std::to_string(whole);
  }
  std::size_t first = 0;
  std::size_t size;
  std::string header;
};

/// A request, taken apart.
struct Call {
  explicit Call(const ReceivedRequest& received) : request(received) {
    const auto mark = std::min(request.target.find('?'), request.target.size());
    const auto slash = std::min(request.target.find('/', 1), mark);
    path = request.target.substr(0, mark);
    bucket = unescaped(path.substr(1, slash - 1));
    key = unescaped(path.substr(std::min(slash + 1, mark)));
    std::vector<std::string> parameters;
    boost::split(parameters, request.target.substr(std::min(mark + 1, request.target.size())), boost::is_any_of("&"));
    for (const auto& parameter : parameters) {
      const auto equals = std::min(parameter.find('='), parameter.size());
      escapedQuery[parameter.substr(0, equals)] = parameter.substr(std::min(equals + 1, parameter.size()));
    }
  }

  std::string header(const char* name) const { return request.header(name); }
  bool has(const std::string& name) const { return escapedQuery.count(name) + request.headers.count(name) > 0; }
  std::string query(const std::string& name) const {
    const auto found = escapedQuery.find(name);
    return found == escapedQuery.end() ? "" : unescaped(found->second);
  }
  std::size_t number(const char* name) const {
    return has(name) ? std::strtoul(query(name).c_str(), nullptr, 10) : 1000;
  }
  /// As keys stand in listings. In those with encoding-type=url, '/' stays, and blanks become '+'.
  std::string listed(const std::string& text) const {
    return has("encoding-type") ? boost::replace_all_copy(detail::escapedPath(text), "%20", "+") : text;
  }
  Texts kept() const {
    Texts result;
    for (const auto& [name, value] : request.headers)
      if (starts_with(name, "x-amz-meta-") || name == "cache-control" || name == "expires" ||
          (starts_with(name, "content-") && name != "content-length" && name != "content-md5"))
        result[name] = value;
    result.emplace("content-type", "binary/octet-stream");
    return result;
  }

  const ReceivedRequest& request;
  std::string path;
  std::string bucket;
  std::string key;
  Texts escapedQuery;
};

void checkBody(const ReceivedRequest& request) {
  const auto hash = request.header("x-amz-content-sha256");
  if (hash.empty())
    throw Refusal{400, "InvalidRequest"};
  if (hash != "UNSIGNED-PAYLOAD" && hash != detail::hex(detail::digest("SHA256", request.body)))
    throw Refusal{400, "XAmzContentSHA256Mismatch"};
  const auto md5 = request.header("content-md5");
  if (!md5.empty() && md5 != detail::base64(detail::digest("MD5", request.body)))
    throw Refusal{400, "BadDigest"};
}

/// Real ones sign the canonical form, so that a signature of any other does not fit.
std::string strictlyUnescaped(const std::string& text) {
  auto bytes = unescaped(text);
  if (detail::escapedPath(bytes) != text && detail::escaped(bytes) != text)
    throw Refusal{403, "SignatureDoesNotMatch"};
  return bytes;
}

struct Upload {
  Texts kept;
  std::time_t initiated;
  std::map<int, StoredObject> parts = {};
};

struct Bucket {
  std::map<std::string, StoredObject> objects = {};
  std::map<std::pair<std::string, std::string>, Upload> uploads = {};  ///< by key and id

  StoredObject& object(const std::string& key) {
    const auto found = objects.find(key);
    return found == objects.end() ? throw Refusal{404, "NoSuchKey"} : found->second;
  }
  Upload& upload(const Call& call) {
    const auto found = uploads.find({call.key, call.query("uploadId")});
    return found == uploads.end() ? throw Refusal{404, "NoSuchUpload"} : found->second;
  }
};

}  // namespace

Fault answering(ScriptedAnswer answer) {
  return [answer = std::move(answer)](const auto&, const auto&) { return answer; };
}

Fault failing(int status, const std::string& code) { return answering(refused({status, code})); }

Fault damaging(std::function<ScriptedAnswer(const ScriptedAnswer&)> change) {
  return [change = std::move(change)](const auto& request, const auto& act) { return change(act(request)); };
}

Fault losingTheAnswer() {
  return damaging([](const auto& answer) { return answer.resetAtOnce(); });
}

Fault damagingTheBody() {
  return [](auto request, const auto& act) {
    request.body.at(0) = static_cast<char>(request.body.at(0) ^ 1);
    return act(request);
  };
}

/// Buckets, and what is done with them.
class FakeObjectStore::State {
 public:
  explicit State(StoreTraits traits) : traits_(std::move(traits)) {}

  ScriptedAnswer answer(const ReceivedRequest& request) {
    const auto* route = routeOf(Call(request));
    const std::string operation = route ? route->operation : "Unknown";
    std::unique_lock lock(mutex);
    operations.push_back(operation);
    const auto number = std::to_string(operations.size());
    const auto fault = takeFault(operation);
    lock.unlock();
    if (hook)
      hook(operation, request);
    auto answer = fault(request, [&](const auto& received) { return act(route, Call(received)); });
    answer.headers.emplace_back("date", detail::formatted(now(), detail::httpTime));
    answer.headers.emplace_back("x-amz-request-id", "request-" + number);
    return answer;
  }

  StoredObject made(std::string content, Texts kept) const {
    const auto eTag = eTagOf(content);
    return {std::move(content), std::move(kept), eTag, now()};
  }

  std::function<void(const std::string&, const ReceivedRequest&)> hook;
  std::mutex mutex;  ///< guards what follows
  std::map<std::string, Bucket> buckets;
  std::vector<std::string> operations;
  struct PlannedFault {
    std::string operation;
    std::size_t left;
    Fault fault;
  };
  std::vector<PlannedFault> faults;

 private:
  enum class On { Bucket, Key };
  struct Route {
    const char* operation;
    const char* method;
    On on;
    std::vector<std::string> needs;  ///< parameters and headers
    ScriptedAnswer (State::*act)(const Call&, Bucket&);
  };

  /// The first that fits; null where none does.
  static const Route* routeOf(const Call& call) {
    static const std::vector<Route> routes = {
        {"ListObjectsV2", "GET", On::Bucket, {"list-type"}, &State::listObjects},
        {"ListMultipartUploads", "GET", On::Bucket, {"uploads"}, &State::listUploads},
        {"DeleteObjects", "POST", On::Bucket, {"delete", "content-md5"}, &State::deleteObjects},
        {"HeadBucket", "HEAD", On::Bucket, {}, &State::headBucket},
        {"GetObject", "GET", On::Key, {}, &State::getObject},
        {"HeadObject", "HEAD", On::Key, {}, &State::getObject},
        {"UploadPartCopy", "PUT", On::Key, {"uploadId", "partNumber", "x-amz-copy-source"}, &State::copyPart},
        {"UploadPart", "PUT", On::Key, {"uploadId", "partNumber"}, &State::uploadPart},
        {"CopyObject", "PUT", On::Key, {"x-amz-copy-source"}, &State::copyObject},
        {"PutObject", "PUT", On::Key, {}, &State::putObject},
        {"CreateMultipartUpload", "POST", On::Key, {"uploads"}, &State::createUpload},
        {"CompleteMultipartUpload", "POST", On::Key, {"uploadId"}, &State::completeUpload},
        {"AbortMultipartUpload", "DELETE", On::Key, {"uploadId"}, &State::abortUpload},
        {"DeleteObject", "DELETE", On::Key, {}, &State::deleteObject},
    };
    const auto found = std::find_if(routes.begin(), routes.end(), [&](const Route& route) {
      return route.method == call.request.method && (route.on == On::Bucket) == call.key.empty() &&
             std::all_of(route.needs.begin(), route.needs.end(), [&](const auto& name) { return call.has(name); });
    });
    return found == routes.end() ? nullptr : &*found;
  }

  Fault takeFault(const std::string& operation) {
    for (auto& planned : faults)
      if (planned.left > 0 && (planned.operation == operation || planned.operation == "*")) {
        --planned.left;
        return planned.fault;
      }
    return [](const auto& request, const auto& act) { return act(request); };
  }

  ScriptedAnswer act(const Route* route, const Call& call) {
    const std::lock_guard lock(mutex);
    try {
      checkSignature(call);
      checkBody(call.request);
      if (route == nullptr || traits_.missingOperations.count(route->operation) > 0)
        throw Refusal{501, "NotImplemented"};
      if (call.key.size() > 1024)
        throw Refusal{400, "KeyTooLongError"};
      return (this->*route->act)(call, bucket(call.bucket));
    } catch (const Refusal& refusal) {
      return refused(refusal);
    }
  }

  void checkSignature(const Call& call) const {
    const auto authorization = call.header("authorization");
    std::tm sent{};
    if (::strptime(call.header("x-amz-date").c_str(), "%Y%m%dT%H%M%SZ", &sent) == nullptr || authorization.empty())
      throw Refusal{403, "AccessDenied"};
    if (!boost::contains(authorization, "Credential=" + traits_.accessKey + "/"))
      throw Refusal{403, "InvalidAccessKeyId"};
    if (!boost::contains(authorization, "/" + traits_.region + "/s3/aws4_request"))
      throw Refusal{400, "AuthorizationHeaderMalformed", traits_.region};
    if (std::abs(::timegm(&sent) - now()) > 15 * 60)
      throw Refusal{403, "RequestTimeTooSkewed"};
    strictlyUnescaped(call.path);
    for (const auto& [name, value] : call.escapedQuery)
      strictlyUnescaped(value);
  }

  void checkCondition(const Call& call, const Bucket& bucket) const {
    if (traits_.conditions == StoreTraits::Conditions::Ignored || !(call.has("if-match") || call.has("if-none-match")))
      return;
    if (traits_.conditions == StoreTraits::Conditions::Refused)
      throw Refusal{501, "NotImplemented"};
    const auto found = bucket.objects.find(call.key);
    const bool exists = found != bucket.objects.end();
    if (call.has("if-match"))
      checkMatch(exists ? found->second.eTag : throw Refusal{404, "NoSuchKey"}, call.header("if-match"));
    if (exists && call.has("if-none-match"))
      throw Refusal{412, "PreconditionFailed"};
  }

  std::time_t now() const { return std::time(nullptr) + traits_.clockOffset.count(); }

  Bucket& bucket(const std::string& name) {
    const auto found = buckets.find(name);
    return found == buckets.end() ? throw Refusal{404, "NoSuchBucket"} : found->second;
  }

  const StoredObject& source(const Call& call) {
    const auto path =
        strictlyUnescaped(boost::trim_left_copy_if(call.header("x-amz-copy-source"), boost::is_any_of("/")));
    const auto slash = std::min(path.find('/'), path.size() - 1);
    const auto& object = bucket(path.substr(0, slash)).object(path.substr(slash + 1));
    checkMatch(object.eTag, call.header("x-amz-copy-source-if-match"));
    return object;
  }

  // --- Objects ---

  ScriptedAnswer getObject(const Call& call, Bucket& bucket) {
    const auto& object = bucket.object(call.key);
    checkMatch(object.eTag, call.header("if-match"));
    ScriptedAnswer answer{.headers = {object.kept.begin(), object.kept.end()}, .body = object.content};
    answer.headers.emplace_back("etag", inQuotes(object.eTag));
    answer.headers.emplace_back("last-modified", detail::formatted(object.modified, detail::httpTime));
    if (call.has("range")) {
      const Range range(call.header("range"), object.content.size());
      answer.status = 206;
      answer.body = object.content.substr(range.first, range.size);
      answer.headers.emplace_back("content-range", range.header);
    }
    return answer;
  }

  ScriptedAnswer putObject(const Call& call, Bucket& bucket) {
    checkCondition(call, bucket);
    const auto& object = bucket.objects[call.key] = made(call.request.body, call.kept());
    return {.headers = {{"etag", inQuotes(object.eTag)}}};
  }

  ScriptedAnswer copyObject(const Call& call, Bucket& bucket) {
    const auto& from = source(call);
    auto copy = made(from.content, call.header("x-amz-metadata-directive") == "REPLACE" ? call.kept() : from.kept);
    const auto& object = bucket.objects[call.key] = std::move(copy);
    return document("CopyObjectResult", element("ETag", inQuotes(object.eTag)));
  }

  ScriptedAnswer deleteObject(const Call& call, Bucket& bucket) {
    if (traits_.lockedKeys.count(call.key) > 0)
      throw Refusal{403, "AccessDenied"};
    bucket.objects.erase(call.key);
    return {.status = 204};
  }

  ScriptedAnswer deleteObjects(const Call& call, Bucket& bucket) {
    pugi::xml_document wanted;
    wanted.load_string(call.request.body.c_str());
    std::string failures;
    for (const auto& object : wanted.child("Delete").children("Object")) {
      const std::string key = object.child("Key").text().get();
      if (traits_.lockedKeys.count(key) == 0)
        bucket.objects.erase(key);
      else
        failures += "<Error>" + element("Key", key) + element("Code", "AccessDenied") + "</Error>";
    }
    return document("DeleteResult", failures);  // as if asked to be quiet
  }

  // --- Buckets ---

  ScriptedAnswer headBucket(const Call&, Bucket&) { return {}; }

  ScriptedAnswer listObjects(const Call& call, Bucket& bucket) {
    const auto prefix = call.query("prefix");
    const auto delimiter = call.query("delimiter");
    // What is listed already: up to a key, or to the end of a folded prefix.
    auto last = call.has("continuation-token") ? call.query("continuation-token").substr(1) : call.query("start-after");
    auto left = call.number("max-keys");
    std::string entries;
    for (auto at = bucket.objects.lower_bound(std::max(prefix, last)); at != bucket.objects.end(); ++at) {
      const auto& [key, object] = *at;
      const auto end = delimiter.empty() ? key.npos : key.find(delimiter, prefix.size());
      const auto fold = end == key.npos ? "" : key.substr(0, end + delimiter.size());
      if (!starts_with(key, prefix))
        break;
      if (fold.empty() ? key <= last : starts_with(last, fold))
        continue;
      if (left-- == 0)
        return listed("ListBucketResult", call, entries + element("NextContinuationToken", ">" + last), true);
      entries += fold.empty() ? listedObject(call, key, object)
                              : "<CommonPrefixes>" + element("Prefix", call.listed(fold)) + "</CommonPrefixes>";
      last = fold.empty() ? key : fold;
    }
    return listed("ListBucketResult", call, entries, false);
  }

  static std::string listedObject(const Call& call, const std::string& key, const StoredObject& object) {
    return "<Contents>" + element("Key", call.listed(key)) + element("ETag", inQuotes(object.eTag)) +
           element("Size", std::to_string(object.content.size())) +
           element("LastModified", detail::formatted(object.modified, detail::isoTime)) + "</Contents>";
  }

  static ScriptedAnswer listed(const char* root, const Call& call, const std::string& entries, bool isTruncated) {
    const auto encoding = call.has("encoding-type") ? element("EncodingType", "url") : "";
    return document(root, encoding + element("IsTruncated", isTruncated ? "true" : "false") + entries);
  }

  // --- Uploads ---

  ScriptedAnswer createUpload(const Call& call, Bucket& bucket) {
    const auto id = "upload/" + std::to_string(++lastUpload_);
    bucket.uploads.emplace(std::pair(call.key, id), Upload{call.kept(), now()});
    return document("InitiateMultipartUploadResult", element("Key", call.key) + element("UploadId", id));
  }

  const StoredObject& addPart(const Call& call, Bucket& bucket, std::string content) {
    const auto number = call.number("partNumber");
    if (number < 1 || number > 10'000)
      throw Refusal{400, "InvalidArgument"};
    return bucket.upload(call).parts[static_cast<int>(number)] = made(std::move(content), {});
  }

  ScriptedAnswer uploadPart(const Call& call, Bucket& bucket) {
    return {.headers = {{"etag", inQuotes(addPart(call, bucket, call.request.body).eTag)}}};
  }

  ScriptedAnswer copyPart(const Call& call, Bucket& bucket) {
    auto content = source(call).content;
    if (call.has("x-amz-copy-source-range")) {
      const Range range(call.header("x-amz-copy-source-range"), content.size());
      content = content.substr(range.first, range.size);
    }
    return document("CopyPartResult", element("ETag", inQuotes(addPart(call, bucket, std::move(content)).eTag)));
  }

  std::vector<const StoredObject*> chosenParts(const Call& call, const Upload& upload) const {
    pugi::xml_document wanted;
    wanted.load_string(call.request.body.c_str());
    std::vector<const StoredObject*> chosen;
    int last = 0;
    for (const auto& part : wanted.child("CompleteMultipartUpload").children("Part")) {
      const auto found = upload.parts.find(part.child("PartNumber").text().as_int());
      if (found == upload.parts.end() || unquoted(part.child("ETag").text().get()) != found->second.eTag)
        throw Refusal{400, "InvalidPart"};
      if (std::exchange(last, found->first) >= found->first)
        throw Refusal{400, "InvalidPartOrder"};
      if (!chosen.empty() && chosen.back()->content.size() < traits_.smallestPart)
        throw Refusal{400, "EntityTooSmall"};
      chosen.push_back(&found->second);
    }
    return chosen.empty() ? throw Refusal{400, "MalformedXML"} : chosen;
  }

  ScriptedAnswer completeUpload(const Call& call, Bucket& bucket) {
    const auto& upload = bucket.upload(call);
    const auto parts = chosenParts(call, upload);
    checkCondition(call, bucket);
    StoredObject object{.content = {}, .kept = upload.kept, .modified = now()};
    std::string digests;
    for (const auto* part : parts) {
      object.content += part->content;
      digests += detail::digest("MD5", part->content);
    }
    object.eTag = eTagOf(digests) + "-" + std::to_string(parts.size());
    const bool tellsETag = traits_.completionETag == StoreTraits::CompletionETag::Given;
    const auto result = element("Key", call.key) + element("ETag", tellsETag ? inQuotes(object.eTag) : "");
    bucket.objects[call.key] = std::move(object);
    bucket.uploads.erase({call.key, call.query("uploadId")});
    return document("CompleteMultipartUploadResult", result);
  }

  ScriptedAnswer abortUpload(const Call& call, Bucket& bucket) {
    bucket.upload(call);
    bucket.uploads.erase({call.key, call.query("uploadId")});
    return {.status = 204};
  }

  ScriptedAnswer listUploads(const Call& call, Bucket& bucket) {
    std::pair last(call.query("key-marker"), call.query("upload-id-marker"));
    auto left = call.number("max-uploads");
    constexpr auto root = "ListMultipartUploadsResult";
    std::string entries;
    for (const auto& [keyAndId, upload] : bucket.uploads) {
      const auto& [key, id] = keyAndId;
      if (!starts_with(key, call.query("prefix")) || keyAndId <= last || (last.second.empty() && key == last.first))
        continue;
      if (left-- == 0)
        return listed(
            root, call,
            entries + element("NextKeyMarker", call.listed(last.first)) + element("NextUploadIdMarker", last.second),
            true);
      entries += "<Upload>" + element("Key", call.listed(key)) + element("UploadId", id) +
                 element("Initiated", detail::formatted(upload.initiated, detail::isoTime)) + "</Upload>";
      last = keyAndId;
    }
    return listed(root, call, entries, false);
  }

  const StoreTraits traits_;
  std::size_t lastUpload_ = 0;
};

FakeObjectStore::FakeObjectStore(StoreTraits traits) : state_(std::make_shared<State>(std::move(traits))) {
  addBucket("bucket");
}

ScriptedServer::Handler FakeObjectStore::handler() {
  return [state = state_](const ReceivedRequest& request) { return state->answer(request); };
}

void FakeObjectStore::failNext(const std::string& operation, std::size_t count, Fault fault) {
  const std::lock_guard lock(state_->mutex);
  state_->faults.push_back({operation, count, std::move(fault)});
}

void FakeObjectStore::onRequest(std::function<void(const std::string&, const ReceivedRequest&)> hook) {
  state_->hook = std::move(hook);
}

std::vector<std::string> FakeObjectStore::operations() const {
  const std::lock_guard lock(state_->mutex);
  return state_->operations;
}

std::size_t FakeObjectStore::count(const std::string& operation) const {
  const auto all = operations();
  return static_cast<std::size_t>(
      std::count_if(all.begin(), all.end(), [&](const auto& each) { return operation == "*" || operation == each; }));
}

void FakeObjectStore::addBucket(const std::string& bucket) {
  const std::lock_guard lock(state_->mutex);
  state_->buckets[bucket];
}

void FakeObjectStore::put(const std::string& key, std::string content, const std::string& bucket) {
  const std::lock_guard lock(state_->mutex);
  state_->buckets.at(bucket).objects[key] = state_->made(std::move(content), {});
}

void FakeObjectStore::erase(const std::string& key, const std::string& bucket) {
  const std::lock_guard lock(state_->mutex);
  state_->buckets.at(bucket).objects.erase(key);
}

std::optional<StoredObject> FakeObjectStore::get(const std::string& key, const std::string& bucket) const {
  const std::lock_guard lock(state_->mutex);
  const auto& objects = state_->buckets.at(bucket).objects;
  const auto found = objects.find(key);
  return found == objects.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> FakeObjectStore::keys(const std::string& bucket) const {
  const std::lock_guard lock(state_->mutex);
  std::vector<std::string> result;
  for (const auto& each : state_->buckets.at(bucket).objects)
    result.push_back(each.first);
  return result;
}

std::vector<std::string> FakeObjectStore::uploads(const std::string& bucket) const {
  const std::lock_guard lock(state_->mutex);
  std::vector<std::string> result;
  for (const auto& each : state_->buckets.at(bucket).uploads)
    result.push_back(each.first.first);
  return result;
}

}  // namespace foundation::storage::testing::http
