#include "support/http/FakeObjectStore.h"

#include "support/http/Codec.h"

#include <boost/algorithm/string/replace.hpp>
#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string_view>
#include <tuple>

namespace foundation::storage::testing::http {
namespace {

using detail::escaped;
using detail::unescaped;
using Texts = std::map<std::string, std::string>;

/// What is answered with a document of the store's own.
struct Refusal {
  int status;
  std::string code;
  std::string region = {};
};

/// A document that is made.
class Document {
 public:
  explicit Document(const char* root) : root_(document_.append_child(root)) {}

  pugi::xml_node root() const { return root_; }
  Document& add(const char* name, const std::string& text) {
    add(root_, name, text);
    return *this;
  }
  static void add(pugi::xml_node node, const char* name, const std::string& text) {
    node.append_child(name).text().set(text.c_str());
  }
  ScriptedAnswer answer(int status = 200) const {
    std::ostringstream text;
    document_.save(text, "", pugi::format_raw);
    return {.status = status, .headers = {{"content-type", "application/xml"}}, .body = text.str()};
  }

 private:
  pugi::xml_document document_;
  pugi::xml_node root_;
};

ScriptedAnswer refused(const Refusal& refusal) {
  Document document("Error");
  document.add("Code", refusal.code).add("Message", "The fake store refuses: " + refusal.code);
  document.add("RequestId", "in the header");
  if (!refusal.region.empty())
    document.add("Region", refusal.region);
  return document.answer(refusal.status);
}

pugi::xml_document parsed(const std::string& body) {
  pugi::xml_document document;
  if (!document.load_buffer(body.data(), body.size()))
    throw Refusal{400, "MalformedXML"};
  return document;
}

std::string quoted(const std::string& eTag) { return '"' + eTag + '"'; }

std::string unquoted(std::string eTag) {
  eTag.erase(std::remove(eTag.begin(), eTag.end(), '"'), eTag.end());
  return eTag;
}

std::string eTagOf(const std::string& content) { return detail::hex(detail::digest("MD5", content)); }

/// Offset and size of what a "bytes=..." stands for.
std::pair<std::size_t, std::size_t> rangeIn(const std::string& content, std::string_view range) {
  range.remove_prefix(std::string_view("bytes=").size());
  const auto dash = range.find('-');
  std::size_t first = 0;
  auto last = content.size() - 1;
  std::from_chars(range.data(), range.data() + dash, first);
  std::from_chars(range.data() + dash + 1, range.data() + range.size(), last);
  if (dash == 0)
    std::tie(first, last) = std::pair(content.size() - std::min(last, content.size()), content.size() - 1);
  if (first >= content.size() || last < first)
    throw Refusal{416, "InvalidRange"};
  return {first, std::min(last, content.size() - 1) - first + 1};
}

/// Real ones compute the signature over the canonical form, so that any other does not fit.
std::string strictlyUnescaped(const std::string& text) {
  auto bytes = unescaped(text);
  if (detail::escapedPath(bytes) != text && escaped(bytes) != text)
    throw Refusal{403, "SignatureDoesNotMatch"};
  return bytes;
}

}  // namespace

/// A request, taken apart.
struct FakeObjectStore::Call {
  explicit Call(const ReceivedRequest& received) : request(received) {
    const auto mark = std::min(request.target.find('?'), request.target.size());
    const auto slash = std::min(request.target.find('/', 1), mark);
    path = request.target.substr(0, mark);
    bucket = unescaped(path.substr(1, slash - 1));
    key = unescaped(path.substr(std::min(slash + 1, mark)));
    std::istringstream parameters(request.target.substr(std::min(mark + 1, request.target.size())));
    for (std::string parameter; std::getline(parameters, parameter, '&');) {
      const auto equals = std::min(parameter.find('='), parameter.size());
      escapedQuery[parameter.substr(0, equals)] = parameter.substr(std::min(equals + 1, parameter.size()));
    }
  }

  bool has(const char* name) const { return escapedQuery.count(name) > 0; }
  std::string query(const char* name) const { return has(name) ? unescaped(escapedQuery.at(name)) : ""; }
  std::size_t number(const char* name, std::size_t otherwise) const {
    return has(name) ? std::strtoul(escapedQuery.at(name).c_str(), nullptr, 10) : otherwise;
  }
  /// A key as listings give it: blanks become '+', and '/' stays, when asked for with encoding-type=url.
  std::string listed(const std::string& text) const {
    return query("encoding-type") == "url" ? boost::replace_all_copy(detail::escapedPath(text), "%20", "+") : text;
  }
  Texts kept() const {
    Texts result;
    for (const auto& [name, value] : request.headers)
      if ((name.rfind("content-", 0) == 0 && name != "content-length" && name != "content-md5") ||
          name.rfind("x-amz-meta-", 0) == 0 || name == "cache-control" || name == "expires")
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

namespace {

template <class Call>
std::string operationOnBucket(const Call& call) {
  const auto& method = call.request.method;
  if (method == "GET" && call.has("list-type"))
    return "ListObjectsV2";
  if (method == "GET" && call.has("uploads"))
    return "ListMultipartUploads";
  if (method == "GET" && call.has("location"))
    return "GetBucketLocation";
  if (method == "POST" && call.has("delete"))
    return "DeleteObjects";
  return method == "HEAD" ? "HeadBucket" : "Unknown";
}

template <class Call>
std::string operationOn(const Call& call) {
  if (call.key.empty())
    return operationOnBucket(call);
  const auto& method = call.request.method;
  const bool isUpload = call.has("uploadId");
  if (method == "PUT" && !call.request.header("x-amz-copy-source").empty())
    return isUpload ? "UploadPartCopy" : "CopyObject";
  if (method == "PUT")
    return isUpload ? "UploadPart" : "PutObject";
  if (method == "POST" && call.has("uploads"))
    return "CreateMultipartUpload";
  if (method == "POST" && isUpload)
    return "CompleteMultipartUpload";
  if (method == "DELETE")
    return isUpload ? "AbortMultipartUpload" : "DeleteObject";
  return method == "GET" ? "GetObject" : method == "HEAD" ? "HeadObject" : "Unknown";
}

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

void checkMatch(const std::string& eTag, const std::string& condition) {
  if (!condition.empty() && condition != "*" && unquoted(condition) != eTag)
    throw Refusal{412, "PreconditionFailed"};
}

}  // namespace

Fault answering(ScriptedAnswer answer) {
  return [answer = std::move(answer)](const auto&, const auto&) { return answer; };
}

Fault failing(int status, const std::string& code) { return answering(refused({status, code})); }

Fault damaging(std::function<ScriptedAnswer(const ScriptedAnswer&)> change) {
  return [change = std::move(change)](const auto&, const auto& act) { return change(act()); };
}

Fault losingTheAnswer() {
  return damaging([](const ScriptedAnswer& answer) { return answer.resetAtOnce(); });
}

FakeObjectStore::FakeObjectStore(StoreTraits traits) : traits_(std::move(traits)) { addBucket("bucket"); }

ScriptedServer::Handler FakeObjectStore::handler() {
  return [this](const ReceivedRequest& request) { return answer(request); };
}

// --- What tests do with it ---

void FakeObjectStore::failNext(const std::string& operation, std::size_t count, Fault fault) {
  const std::lock_guard lock(mutex_);
  faults_.push_back({operation, count, std::move(fault)});
}

void FakeObjectStore::onRequest(std::function<void(const std::string&, const ReceivedRequest&)> hook) {
  hook_ = std::move(hook);
}

std::size_t FakeObjectStore::count(const std::string& operation) const {
  const auto all = operations();
  return operation == "*" ? all.size() : static_cast<std::size_t>(std::count(all.begin(), all.end(), operation));
}

std::vector<std::string> FakeObjectStore::operations() const {
  const std::lock_guard lock(mutex_);
  return operations_;
}

void FakeObjectStore::addBucket(const std::string& bucket) {
  const std::lock_guard lock(mutex_);
  buckets_[bucket];
}

void FakeObjectStore::put(const std::string& key, std::string content, const std::string& bucket) {
  const std::lock_guard lock(mutex_);
  buckets_.at(bucket).objects[key] = made(std::move(content), {{"content-type", "binary/octet-stream"}});
}

void FakeObjectStore::erase(const std::string& key, const std::string& bucket) {
  const std::lock_guard lock(mutex_);
  buckets_.at(bucket).objects.erase(key);
}

std::optional<StoredObject> FakeObjectStore::get(const std::string& key, const std::string& bucket) const {
  const std::lock_guard lock(mutex_);
  const auto& objects = buckets_.at(bucket).objects;
  const auto found = objects.find(key);
  return found == objects.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> FakeObjectStore::keys(const std::string& bucket) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> result;
  for (const auto& [key, object] : buckets_.at(bucket).objects)
    result.push_back(key);
  return result;
}

std::vector<std::string> FakeObjectStore::uploads(const std::string& bucket) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> result;
  for (const auto& [keyAndId, upload] : buckets_.at(bucket).uploads)
    result.push_back(keyAndId.first);
  return result;
}

// --- What is common to all requests ---

ScriptedAnswer FakeObjectStore::answer(const ReceivedRequest& request) {
  const Call call(request);
  const auto operation = operationOn(call);
  Fault fault;
  std::size_t number = 0;
  {
    const std::lock_guard lock(mutex_);
    operations_.push_back(operation);
    number = operations_.size();
    fault = takeFault(operation);
  }
  if (hook_)
    hook_(operation, request);
  const auto acting = [&] { return act(operation, call); };
  auto answer = fault ? fault(request, acting) : acting();
  answer.headers.emplace_back("date", detail::formatted(now(), detail::httpTime));
  answer.headers.emplace_back("x-amz-request-id", "request-" + std::to_string(number));
  return answer;
}

Fault FakeObjectStore::takeFault(const std::string& operation) {
  const auto found = std::find_if(faults_.begin(), faults_.end(), [&](const auto& planned) {
    return planned.left > 0 && (planned.operation == operation || planned.operation == "*");
  });
  if (found == faults_.end())
    return nullptr;
  --found->left;
  return found->fault;
}

ScriptedAnswer FakeObjectStore::act(const std::string& operation, const Call& call) {
  using Act = ScriptedAnswer (FakeObjectStore::*)(const Call&, Bucket&);
  static const std::map<std::string, Act> acts = {
      {"GetObject", &FakeObjectStore::getObject},
      {"HeadObject", &FakeObjectStore::getObject},
      {"PutObject", &FakeObjectStore::putObject},
      {"CopyObject", &FakeObjectStore::copyObject},
      {"DeleteObject", &FakeObjectStore::deleteObject},
      {"DeleteObjects", &FakeObjectStore::deleteObjects},
      {"ListObjectsV2", &FakeObjectStore::listObjects},
      {"HeadBucket", &FakeObjectStore::headBucket},
      {"GetBucketLocation", &FakeObjectStore::getBucketLocation},
      {"CreateMultipartUpload", &FakeObjectStore::createUpload},
      {"UploadPart", &FakeObjectStore::uploadPart},
      {"UploadPartCopy", &FakeObjectStore::uploadPart},
      {"CompleteMultipartUpload", &FakeObjectStore::completeUpload},
      {"AbortMultipartUpload", &FakeObjectStore::abortUpload},
      {"ListMultipartUploads", &FakeObjectStore::listUploads},
  };
  const std::lock_guard lock(mutex_);
  try {
    checkSignature(call);
    checkBody(call.request);
    if (acts.count(operation) == 0 || traits_.missingOperations.count(operation) > 0)
      throw Refusal{501, "NotImplemented"};
    if (call.key.size() > 1024)
      throw Refusal{400, "KeyTooLongError"};
    return (this->*acts.at(operation))(call, bucketOf(call.bucket));
  } catch (const Refusal& refusal) {
    return refused(refusal);
  }
}

void FakeObjectStore::checkSignature(const Call& call) const {
  const auto authorization = call.request.header("authorization");
  if (authorization.empty())
    throw Refusal{403, "AccessDenied"};
  if (authorization.find("Credential=" + traits_.accessKey + "/") == authorization.npos)
    throw Refusal{403, "InvalidAccessKeyId"};
  if (authorization.find("/" + traits_.region + "/s3/aws4_request") == authorization.npos)
    throw Refusal{400, "AuthorizationHeaderMalformed", traits_.region};
  strictlyUnescaped(call.path);
  for (const auto& [name, value] : call.escapedQuery)
    strictlyUnescaped(value);
  std::tm sent{};
  if (::strptime(call.request.header("x-amz-date").c_str(), "%Y%m%dT%H%M%SZ", &sent) == nullptr)
    throw Refusal{403, "AccessDenied"};
  if (std::abs(::timegm(&sent) - now()) > 15 * 60)
    throw Refusal{403, "RequestTimeTooSkewed"};
}

void FakeObjectStore::checkCondition(const Call& call, const Bucket& bucket) const {
  const auto ifMatch = call.request.header("if-match");
  const auto ifNoneMatch = call.request.header("if-none-match");
  if ((ifMatch.empty() && ifNoneMatch.empty()) || traits_.conditions == StoreTraits::Conditions::Ignored)
    return;
  if (traits_.conditions == StoreTraits::Conditions::Refused)
    throw Refusal{501, "NotImplemented"};
  const auto found = bucket.objects.find(call.key);
  if (found == bucket.objects.end() && !ifMatch.empty())
    throw Refusal{404, "NoSuchKey"};
  if (found != bucket.objects.end() && !ifNoneMatch.empty())
    throw Refusal{412, "PreconditionFailed"};
  if (found != bucket.objects.end())
    checkMatch(found->second.eTag, ifMatch);
}

FakeObjectStore::Bucket& FakeObjectStore::bucketOf(const std::string& name) {
  const auto found = buckets_.find(name);
  if (found == buckets_.end())
    throw Refusal{404, "NoSuchBucket"};
  return found->second;
}

StoredObject& FakeObjectStore::sourceOf(const Call& call) {
  auto source = call.request.header("x-amz-copy-source");
  source.erase(0, source.find_first_not_of('/'));
  source = strictlyUnescaped(source);
  const auto slash = std::min(source.find('/'), source.size() - 1);
  auto& objects = bucketOf(source.substr(0, slash)).objects;
  const auto found = objects.find(source.substr(slash + 1));
  if (found == objects.end())
    throw Refusal{404, "NoSuchKey"};
  checkMatch(found->second.eTag, call.request.header("x-amz-copy-source-if-match"));
  return found->second;
}

FakeObjectStore::Upload& FakeObjectStore::uploadOf(const Call& call, Bucket& bucket) {
  const auto found = bucket.uploads.find({call.key, call.query("uploadId")});
  if (found == bucket.uploads.end())
    throw Refusal{404, "NoSuchUpload"};
  return found->second;
}

std::time_t FakeObjectStore::now() const { return std::time(nullptr) + traits_.clockOffset.count(); }

StoredObject FakeObjectStore::made(std::string content, Texts kept) const {
  StoredObject object{.content = std::move(content), .kept = std::move(kept)};
  object.eTag = eTagOf(object.content);
  object.modified = now();
  return object;
}

// --- Objects ---

ScriptedAnswer FakeObjectStore::getObject(const Call& call, Bucket& bucket) {
  const auto found = bucket.objects.find(call.key);
  if (found == bucket.objects.end())
    throw Refusal{404, "NoSuchKey"};
  const auto& object = found->second;
  checkMatch(object.eTag, call.request.header("if-match"));
  ScriptedAnswer answer{.headers = {object.kept.begin(), object.kept.end()}, .body = object.content};
  answer.headers.emplace_back("etag", quoted(object.eTag));
  answer.headers.emplace_back("last-modified", detail::formatted(object.modified, detail::httpTime));
  answer.headers.emplace_back("accept-ranges", "bytes");
  const auto range = call.request.header("range");
  if (range.empty())
    return answer;
  const auto [offset, size] = rangeIn(object.content, range);
  answer.status = 206;
  answer.body = object.content.substr(offset, size);
  answer.headers.emplace_back("content-range", "bytes " + std::to_string(offset) + "-" +
                                                   std::to_string(offset + size - 1) + "/" +
                                                   std::to_string(object.content.size()));
  return answer;
}

ScriptedAnswer FakeObjectStore::putObject(const Call& call, Bucket& bucket) {
  checkCondition(call, bucket);
  const auto& object = bucket.objects[call.key] = made(call.request.body, call.kept());
  return {.headers = {{"etag", quoted(object.eTag)}}};
}

ScriptedAnswer FakeObjectStore::copyObject(const Call& call, Bucket& bucket) {
  const auto source = sourceOf(call);
  const bool replaces = call.request.header("x-amz-metadata-directive") == "REPLACE";
  const auto& object = bucket.objects[call.key] = made(source.content, replaces ? call.kept() : source.kept);
  Document document("CopyObjectResult");
  document.add("LastModified", detail::formatted(object.modified, detail::isoTime));
  return document.add("ETag", quoted(object.eTag)).answer();
}

ScriptedAnswer FakeObjectStore::deleteObject(const Call& call, Bucket& bucket) {
  if (traits_.lockedKeys.count(call.key) > 0)
    throw Refusal{403, "AccessDenied"};
  bucket.objects.erase(call.key);
  return {.status = 204};
}

ScriptedAnswer FakeObjectStore::deleteObjects(const Call& call, Bucket& bucket) {
  if (call.request.header("content-md5").empty())
    throw Refusal{400, "InvalidRequest"};
  const auto wanted = parsed(call.request.body);
  const bool isQuiet = wanted.child("Delete").child("Quiet").text().as_bool();
  Document document("DeleteResult");
  for (const auto& object : wanted.child("Delete").children("Object")) {
    const std::string key = object.child("Key").text().get();
    const bool isLocked = traits_.lockedKeys.count(key) > 0;
    if (!isLocked)
      bucket.objects.erase(key);
    if (isLocked || !isQuiet)
      Document::add(document.root().append_child(isLocked ? "Error" : "Deleted"), "Key", key);
    if (isLocked)
      Document::add(document.root().last_child(), "Code", "AccessDenied");
  }
  return document.answer();
}

// --- Buckets ---

ScriptedAnswer FakeObjectStore::headBucket(const Call&, Bucket&) { return {}; }

ScriptedAnswer FakeObjectStore::getBucketLocation(const Call&, Bucket&) {
  Document document("LocationConstraint");
  document.root().text().set(traits_.region == "us-east-1" ? "" : traits_.region.c_str());
  return document.answer();
}

ScriptedAnswer FakeObjectStore::listObjects(const Call& call, Bucket& bucket) {
  const auto prefix = call.query("prefix");
  const auto delimiter = call.query("delimiter");
  const auto most = std::min<std::size_t>(call.number("max-keys", 1000), 1000);
  // What the last page ended with, a key or a folded prefix.
  auto last = call.has("continuation-token") ? call.query("continuation-token").substr(1) : call.query("start-after");
  Document document("ListBucketResult");
  std::size_t count = 0;
  auto found = bucket.objects.lower_bound(std::max(prefix, last));
  for (; found != bucket.objects.end() && found->first.compare(0, prefix.size(), prefix) == 0; ++found) {
    const auto& [key, object] = *found;
    const auto end = delimiter.empty() ? key.npos : key.find(delimiter, prefix.size());
    const auto shown = end == key.npos ? key : key.substr(0, end + delimiter.size());
    const bool isBehind = end == key.npos ? shown > last : last.compare(0, shown.size(), shown) != 0;
    if (!isBehind)
      continue;
    if (count == most)
      break;
    ++count;
    last = shown;
    auto entry = document.root().append_child(end == key.npos ? "Contents" : "CommonPrefixes");
    Document::add(entry, end == key.npos ? "Key" : "Prefix", call.listed(shown));
    if (end != key.npos)
      continue;
    Document::add(entry, "LastModified", detail::formatted(object.modified, detail::isoTime));
    Document::add(entry, "ETag", quoted(object.eTag));
    Document::add(entry, "Size", std::to_string(object.content.size()));
  }
  const bool isTruncated = found != bucket.objects.end() && found->first.compare(0, prefix.size(), prefix) == 0;
  if (isTruncated)
    document.add("NextContinuationToken", ">" + last);
  if (call.has("encoding-type"))
    document.add("EncodingType", call.query("encoding-type"));
  return document.add("IsTruncated", isTruncated ? "true" : "false").add("KeyCount", std::to_string(count)).answer();
}

// --- Uploads ---

ScriptedAnswer FakeObjectStore::createUpload(const Call& call, Bucket& bucket) {
  const auto number = std::to_string(++lastUpload_);
  const auto id = "upload/" + std::string(6 - std::min<std::size_t>(6, number.size()), '0') + number;
  bucket.uploads.emplace(std::pair(call.key, id), Upload{call.kept(), now()});
  Document document("InitiateMultipartUploadResult");
  return document.add("Key", call.key).add("UploadId", id).answer();
}

ScriptedAnswer FakeObjectStore::uploadPart(const Call& call, Bucket& bucket) {
  auto& upload = uploadOf(call, bucket);
  const auto number = call.number("partNumber", 0);
  if (number < 1 || number > 10'000)
    throw Refusal{400, "InvalidArgument"};
  const bool copies = !call.request.header("x-amz-copy-source").empty();
  auto content = copies ? sourceOf(call).content : call.request.body;
  const auto range = call.request.header("x-amz-copy-source-range");
  if (copies && !range.empty()) {
    const auto [offset, size] = rangeIn(content, range);
    content = content.substr(offset, size);
  }
  const auto& part = upload.parts[static_cast<int>(number)] = made(std::move(content), {});
  if (!copies)
    return {.headers = {{"etag", quoted(part.eTag)}}};
  Document document("CopyPartResult");
  return document.add("ETag", quoted(part.eTag)).answer();
}

ScriptedAnswer FakeObjectStore::completeUpload(const Call& call, Bucket& bucket) {
  auto& upload = uploadOf(call, bucket);
  std::vector<const StoredObject*> chosen;
  int last = 0;
  const auto wanted = parsed(call.request.body);
  for (const auto& part : wanted.child("CompleteMultipartUpload").children("Part")) {
    const int number = part.child("PartNumber").text().as_int();
    const auto found = upload.parts.find(number);
    if (found == upload.parts.end() || unquoted(part.child("ETag").text().get()) != found->second.eTag)
      throw Refusal{400, "InvalidPart"};
    if (number <= last)
      throw Refusal{400, "InvalidPartOrder"};
    if (!chosen.empty() && chosen.back()->content.size() < traits_.smallestPart)
      throw Refusal{400, "EntityTooSmall"};
    chosen.push_back(&found->second);
    last = number;
  }
  if (chosen.empty())
    throw Refusal{400, "MalformedXML"};
  checkCondition(call, bucket);
  std::string content;
  std::string digests;
  for (const auto* part : chosen) {
    content += part->content;
    digests += detail::digest("MD5", part->content);
  }
  auto object = made(std::move(content), upload.kept);
  object.eTag = eTagOf(digests) + "-" + std::to_string(chosen.size());
  Document document("CompleteMultipartUploadResult");
  document.add("Key", call.key);
  document.add("ETag", traits_.completionETag == StoreTraits::CompletionETag::Empty ? "" : quoted(object.eTag));
  bucket.objects[call.key] = std::move(object);
  bucket.uploads.erase({call.key, call.query("uploadId")});
  return document.answer();
}

ScriptedAnswer FakeObjectStore::abortUpload(const Call& call, Bucket& bucket) {
  uploadOf(call, bucket);
  bucket.uploads.erase({call.key, call.query("uploadId")});
  return {.status = 204};
}

ScriptedAnswer FakeObjectStore::listUploads(const Call& call, Bucket& bucket) {
  const auto prefix = call.query("prefix");
  const auto most = std::min<std::size_t>(call.number("max-uploads", 1000), 1000);
  const std::pair marker(call.query("key-marker"), call.query("upload-id-marker"));
  Document document("ListMultipartUploadsResult");
  std::size_t count = 0;
  bool isTruncated = false;
  for (const auto& [keyAndId, upload] : bucket.uploads) {
    const auto& [key, id] = keyAndId;
    if (key.compare(0, prefix.size(), prefix) != 0 || keyAndId <= marker ||
        (marker.second.empty() && key == marker.first))
      continue;
    isTruncated = count == most;
    if (isTruncated)
      break;
    ++count;
    auto entry = document.root().append_child("Upload");
    Document::add(entry, "Key", call.listed(key));
    Document::add(entry, "UploadId", id);
    Document::add(entry, "Initiated", detail::formatted(upload.initiated, detail::isoTime));
  }
  if (const auto shown = document.root().last_child(); isTruncated && shown) {
    document.add("NextKeyMarker", shown.child("Key").text().get());
    document.add("NextUploadIdMarker", shown.child("UploadId").text().get());
  }
  if (call.has("encoding-type"))
    document.add("EncodingType", call.query("encoding-type"));
  return document.add("IsTruncated", isTruncated ? "true" : "false").answer();
}

}  // namespace foundation::storage::testing::http
