#include "locations/Workloads.h"

#include <QByteArray>
#include <QHashFunctions>
#include <QString>
#include <QUrl>

namespace bench {
namespace {

struct Qt {
  static QString text(const Spelling& spelling) { return QString::fromStdString(spelling.shown); }
  static QString name(const std::string& name) { return QString::fromStdString(name); }
  static QUrl parse(const QString& text) { return QUrl(text, QUrl::StrictMode); }
  static std::size_t read(const QUrl& value) {
    return static_cast<std::size_t>(value.path(QUrl::FullyDecoded).size() + value.fileName(QUrl::FullyDecoded).size());
  }
  static QUrl folder() { return QUrl(QString::fromStdString(folderText)); }
  static QUrl child(const QUrl& folder, const QString& name) {
    QUrl url = folder;
    url.setPath(folder.path(QUrl::FullyDecoded) + QLatin1Char('/') + name, QUrl::DecodedMode);
    return url;
  }
  static bool equal(const QUrl& a, const QUrl& b) { return a == b; }
  static std::size_t hash(const QUrl& value) { return qHash(value); }
  static bool less(const QUrl& a, const QUrl& b) { return a < b; }
};

const bool added = add<Qt>("QUrl");

}  // namespace
}  // namespace bench
