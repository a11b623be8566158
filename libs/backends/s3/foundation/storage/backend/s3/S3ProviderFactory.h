#pragma once

#include <foundation/core/Export.h>
#include <foundation/storage/provider/Capability.h>
#include <foundation/storage/provider/PhysicalProviderFactory.h>

/// Object stores over the S3 protocol.
namespace foundation::storage::backend::s3 {

/// Makes providers of buckets in object stores that speak the S3 protocol: Amazon's, Ceph and others.
///
///     const provider::StorageIRI folder(u"s3://bucket/photos");
///     const provider::StorageItem photos(S3ProviderFactory().buildProvider(folder), folder);
///
/// Each bucket is a store of its own, `s3://BUCKET/`, and has to be there: buckets are neither created nor removed.
/// Making a provider sends nothing; the first operation finds out whether it works. Locations have no query, fragment,
/// user or port.
///
/// **Keys.** The path behind the first '/' is the key of an object, in UTF-8, less one '/' at the end: "..", and what
/// lies between two '/', are names like any others. Names that are no Unicode and keys of more than 1,024 bytes, those
/// of folders with the '/' behind them, are refused with `InvalidLocation`. Case matters. Names that begin with '.' are
/// hidden. There are no links.
///
/// **Folders** are what keys have in common up to a '/'. One that this provider creates is an empty object whose key
/// ends in '/', and stays until it is removed; what other programs have put into such an object goes with it, shows in
/// no listing, and is read at the location with "//" at its end. One that came about by the keys of what lies in it is
/// there as long as any of these is, and goes with the last. An object "a" and a folder "a/" may both be there: then
/// listings have the name twice, and `exists` says that it is a file. Entries with an empty name ("a//b") are not
/// listed, as no child of the folder names them, but are moved and removed with it. A file is written only where its
/// folder is and no folder has its name; what was found out about that is remembered until a minute after the last
/// write there (`provider::invalidateProvider` forgets it), so that many files cost one request each, or two where the
/// folder held more than 1,000 entries before. What other programs and providers do in that time may be overlooked: a
/// folder that they remove is there again with the next file in it, and one that they make may have the name of a file.
///
/// **Reading** takes one request for a small file, and fetches a large one in several parts at once, more of them the
/// longer it is read in order. An open stream gives the content that was there when it was opened, or fails with
/// `ResourceInUse`. **Writing** takes one request below the size of a part, else an upload of several parts at once.
/// Nothing shows before `close`, or the commit of a transaction, and then all of it in one step; what is dropped before
/// that leaves nothing. There are no scratch objects; the parts that a killed program leaves behind,
/// `abortUnfinishedUploads` throws away. What is written cannot be read back or changed before that
/// (`UnsupportedOperation`), nor can what is there be written into. Appending copies what is there on the server; who
/// appends at the same time loses or fails with `ResourceInUse`.
///
/// **One of several.** `createFile` and `createFolder` have the store refuse what exists, so that exactly one of
/// several succeeds, if the store can do that; where it turns out that it cannot, the log says so, and they look before
/// they write. The extended attribute "conditions" of the bucket's root tells: "kept", "ignored", or "unknown" as long
/// as nothing was created. Of two who create a file and a folder of one name, both may succeed. Of several who move or
/// remove one file, or move something to one place with a policy that keeps what is there, more than one may succeed.
///
/// **Moves and copies** are the store's own; within a bucket, nothing passes through this program, but objects of more
/// than 5 GiB with a '%' in the key, as some stores would take another. A copy is done as a whole, with what else is
/// stored with the object (its type, its own headers). One that its callback ends may be there in the end, as a whole,
/// where the store had begun it. A move is a copy, and then a removal: when that fails, both are there, and what others
/// write to the source in between is lost. A moved folder is copied as a whole before anything of it is removed, and
/// where copying fails, the copies are removed, as far as the store answers; it takes a request for each object, and
/// memory for their keys. A recursive removal tries everything, and then throws its first failure. Listings read a page
/// of 1,000 entries at a time; wildcards are those of `support::Wildcard`, by case, and what one begins with narrows
/// what the store is asked for.
///
/// Times are those of the store, to the second; they cannot be set, and folders have none. Everything counts as
/// writable. Extended attributes of a file are what the store says of it, as `std::string`: "etag", "content-type" and
/// the like, "x-amz-meta-...". There is no figure of how full a store is, and there are no change events of its own.
///
/// `shutdownProvider` ends all waiting: what is under way, open streams and whatever comes after it fail with
/// `IOError`. Uploads of streams that are dropped then are still aborted.
///
/// **Options**, all of which `configure` sets, those that it is not given to what they are here. What is under way, and
/// open streams, go on as they began. Throws `support::InvalidOptionException` for any other key and for a bad value.
/// - `endpoint`: "http://" or "https://", host, and perhaps a port; by default that of AWS_ENDPOINT_URL_S3 or
///   AWS_ENDPOINT_URL in the environment, else Amazon's for the region.
/// - `region`: by default that of AWS_REGION or AWS_DEFAULT_REGION, else us-east-1.
/// - `addressing`: `path` puts the bucket's name into the path, `virtual-host` before the host's name; by default the
///   latter for Amazon's hosts only. Names that no host can have go into the path in any case.
/// - `access-key`, `secret-key`, and `session-token` for keys that expire: by default those of AWS_ACCESS_KEY_ID,
///   AWS_SECRET_ACCESS_KEY and AWS_SESSION_TOKEN, else of `profile` in the file that AWS_SHARED_CREDENTIALS_FILE names,
///   or in ~/.aws/credentials. Where there are none at all, requests are not signed.
/// - `profile`: by default that of AWS_PROFILE, else `default`. One that is named has to be there.
/// - `ca-file`: certificates, in PEM, to trust in place of the system's.
/// - `connect-timeout`: for name, connection and TLS, in milliseconds; by default 10,000.
/// - `idle-timeout`: for as long as no byte moves either way, in milliseconds; by default 30,000.
/// - `operation-timeout`: for a request with all its attempts and pauses, in milliseconds; by default 120,000.
/// - `attempts`: at each request, where trying again may help; by default 5.
/// - `part-size`: in bytes, 5 MiB to 5 GiB; by default 8 MiB. What is longer is written, and read, in parts. An open
///   stream holds that much for each of its parallel parts.
/// - `parallel-parts`: of one stream, copy or move, 1 to 64; by default 4.
///
/// Every failure has a context with the key "s3", whose info gives the reason in words, and, where the store has
/// answered, the store's own message and code, the request's id and the number of attempts.
class FOUNDATION_EXPORT S3ProviderFactory : public provider::PhysicalProviderFactory {
 public:
  /// With the options as they are by default.
  S3ProviderFactory();
  ~S3ProviderFactory() override;
  S3ProviderFactory(const S3ProviderFactory&) = default;
  S3ProviderFactory& operator=(const S3ProviderFactory&) = default;

  /// What its providers can do.
  static provider::Capabilities capabilities();

 private:
  std::shared_ptr<provider::IProvider> doBuildProvider(const provider::StorageIRI& location) const override;
  /// The root of the bucket. Throws `Exception` with `InvalidLocation` for a location that names none.
  provider::StorageIRI doGetKey(const provider::StorageIRI& location) const override;
};

}  // namespace foundation::storage::backend::s3
