// What a policy changes about where catalogues come from: the file of those that are kept, and the mirrors. Asked by
// client and manager for each request and each answer of a check; leaves behind that file.
#include "CatalogueSource.h"

#include "FileUtils.h"
#include "LogQt.h"
#include "UpdatePolicy.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QRandomGenerator>
#include <QThreadPool>

#include <algorithm>

#include <sodium.h>

namespace qv {

static QDataStream &operator<<(QDataStream &out, const CatalogueAnswer &answer)
{
    return out << answer.url << answer.condition.first << answer.condition.second << answer.body;
}

static QDataStream &operator>>(QDataStream &in, CatalogueAnswer &answer)
{
    return in >> answer.url >> answer.condition.first >> answer.condition.second >> answer.body;
}

namespace {

constexpr int ok = 200, notModified = 304;
constexpr quint32 format = 1;
constexpr qint64 mostBytes = 17 << 20; // more than any catalogue that would be read, with its signature
constexpr int longestTag = 1024;       // servers refuse long requests

QUrl withoutLogin(const QUrl &url)
{
    return url.adjusted(QUrl::RemoveUserInfo);
}

bool isOfCache(const CatalogueAnswer &answer)
{
    return answer.status == notModified;
}

CatalogueAnswer find(const QList<CatalogueAnswer> &answers, const QUrl &url)
{
    const auto isSame = [&url](const CatalogueAnswer &answer) { return answer.url == url; };
    const auto found = std::find_if(answers.cbegin(), answers.cend(), isSame);
    return found == answers.cend() ? CatalogueAnswer() : *found;
}

/// A time of HTTP's (RFC 9110, 5.6.7) that has been. One to come might be later than those of all catalogues to come.
bool isPast(const QByteArray &time)
{
    QDateTime parsed =
        QLocale::c().toDateTime(QString::fromLatin1(time), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss 'GMT'"));
    parsed.setTimeSpec(Qt::UTC);
    return parsed.isValid() && parsed <= QDateTime::currentDateTimeUtc();
}

QByteArray checksum(const QByteArray &bytes)
{
    QByteArray sum(crypto_generichash_BYTES, Qt::Uninitialized);
    crypto_generichash(reinterpret_cast<unsigned char *>(sum.data()), size_t(sum.size()),
                       reinterpret_cast<const unsigned char *>(bytes.constData()), quint64(bytes.size()), nullptr, 0);
    return sum;
}

/// The file: a checksum of what is behind it, the number of the format, the answers.
QByteArray written(const QList<CatalogueAnswer> &answers)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << format << answers;
    return checksum(bytes) + bytes;
}

/// False where the @p file is broken.
bool read(const QString &file, QList<CatalogueAnswer> &answers)
{
    const QFileInfo info(file);
    if (!info.exists())
        return true;
    const QByteArray all = info.isFile() && info.size() <= mostBytes ? FileUtils::readBytes(file) : QByteArray();
    const QByteArray bytes = all.mid(crypto_generichash_BYTES);
    if (bytes.isEmpty() || !all.startsWith(checksum(bytes)))
        return false;
    QDataStream in(bytes);
    in.setVersion(QDataStream::Qt_5_15);
    quint32 version = 0;
    in >> version;
    if (version == format)
        in >> answers;
    return version != format || in.status() == QDataStream::Ok;
}

} // namespace

CatalogueAnswer::CatalogueAnswer(const QUrl &url, int status, const QByteArray &body,
                                 const std::function<QByteArray(const char *name)> &header)
    : url(withoutLogin(url)), status(status), body(body)
{
    // Only what is as long as announced: Qt may tell an answer as whole that was cut off.
    if (status != ok || header("Content-Length") != QByteArray::number(body.size())
        || header("Cache-Control").toLower().contains("no-store"))
        return;
    const QByteArray tag = header("ETag"), time = header("Last-Modified");
    if (!tag.isEmpty())
        condition = { "If-None-Match", tag };
    else if (isPast(time))
        condition = { "If-Modified-Since", time };
    if (condition.second.size() > longestTag)
        condition = {};
}

bool CatalogueAnswer::isThere() const
{
    return status == ok || status == notModified;
}

CatalogueSource::CatalogueSource(const UpdatePolicy &policy) : file(policy.catalogueCache), mirrors(policy.mirrors)
{
    if (!file.isEmpty() && !read(file, kept))
        LogQt::write(Log::Warning, QStringLiteral("UpdatePolicy::catalogueCache -> broken: ") + file);
    std::shuffle(mirrors.begin(), mirrors.end(), *QRandomGenerator::global());
}

HeaderLine CatalogueSource::condition(const QUrl &url) const
{
    return find(kept, withoutLogin(url)).condition;
}

bool CatalogueSource::isConditionRefused(const QUrl &url, int status) const
{
    return status / 100 == 4 && !condition(url).first.isEmpty();
}

CatalogueAnswer CatalogueSource::take(CatalogueAnswer answer)
{
    if (isOfCache(answer)) {
        answer = find(kept, answer.url);
        answer.status = notModified;
    }
    taken << answer;
    return answer;
}

bool CatalogueSource::isOld() const
{
    return std::any_of(taken.cbegin(), taken.cend(), isOfCache);
}

void CatalogueSource::askAnew()
{
    kept.clear();
    taken.clear();
}

void CatalogueSource::keep() const
{
    QList<CatalogueAnswer> answers;
    std::copy_if(taken.cbegin(), taken.cend(), std::back_inserter(answers),
                 [](const CatalogueAnswer &answer) { return !answer.condition.first.isEmpty(); });
    if (file.isEmpty() || std::all_of(answers.cbegin(), answers.cend(), isOfCache))
        return;
    if (isOfMirror && !kept.isEmpty() && kept.constFirst().body == taken.constFirst().body)
        return; // as the server knows it, which may be back next time
    QThreadPool::globalInstance()->start([answers, file = file] {
        QDir().mkpath(QFileInfo(file).path());
        if (!FileUtils::writeBytes(written(answers), file))
            LogQt::write(Log::Warning, QStringLiteral("UpdatePolicy::catalogueCache -> cannot be written: ") + file);
    });
}

QUrl CatalogueSource::nextMirror()
{
    taken.clear();
    isOfMirror = true;
    return mirrors.isEmpty() ? QUrl() : mirrors.takeFirst();
}

} // namespace qv
