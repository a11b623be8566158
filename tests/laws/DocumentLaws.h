#pragma once

#include "laws/Violation.h"

#include <foundation/storage/backend/s3/detail/wire/Documents.h>
#include <foundation/storage/backend/s3/detail/wire/Encoding.h>
#include <foundation/storage/backend/s3/detail/wire/XmlWriter.h>

#include <functional>
#include <string>
#include <string_view>

namespace foundation::laws {

/// Whatever an object store answers is read, or refused as malformed.
inline void checkDocument(std::string_view body) {
  namespace wire = storage::backend::s3::detail::wire;
  using Parse = std::function<void(std::string_view)>;
  int taken = wire::parseError(body) ? 1 : 0;
  for (const auto& parse : {Parse(wire::parseListPage), Parse(wire::parseUploadsPage), Parse(wire::parseUploadId),
                            Parse(wire::parseETag), Parse(wire::parseDeletionResult)})
    try {
      parse(body);
      ++taken;
    } catch (const wire::MalformedDocument&) {
    }
  require(taken <= 1, "a document is of one kind", fl::i18n::to_ustring(body));
}

/// A key comes back from wherever it is written.
inline void checkKey(const std::string& key) {
  namespace wire = storage::backend::s3::detail::wire;
  const auto text = fl::i18n::to_ustring(key);
  const auto encoded = wire::encode(key);
  require(wire::decode(encoded) == key, "an encoded key comes back", text);
  require(wire::decode(wire::encodePath(key)) == key, "a path comes back", text);
  if (key.empty())
    return;
  const auto page = wire::parseListPage("<ListBucketResult><EncodingType>url</EncodingType><Contents><Key>" + encoded +
                                        "</Key><Size>0</Size></Contents></ListBucketResult>");
  require(page.objects.at(0).key == key, "a listed key comes back", text);
  if (!wire::canBeInXml(key))
    return;
  const auto failures =
      wire::parseDeletionResult("<DeleteResult><Error>" + wire::element("Key", key) + "</Error></DeleteResult>");
  require(failures.at(0).key == key, "a key in XML comes back", text);
}

}  // namespace foundation::laws
