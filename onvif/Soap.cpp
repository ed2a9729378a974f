// Messages to a camera and what its answers mean. Called by CameraLink and CameraUpdate; knows no network.
#include "Soap.h"

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace qv {

namespace {

constexpr int maxDepth = 32;
constexpr int maxElements = 4000;
constexpr int maxAttributes = 64;
constexpr int maxPathLength = 1000;

constexpr QLatin1String envelopeNamespace("http://www.w3.org/2003/05/soap-envelope");
constexpr QLatin1String deviceNamespace("http://www.onvif.org/ver10/device/wsdl");
constexpr QLatin1String schemaNamespace("http://www.onvif.org/ver10/schema");

/// Qt takes its time for very many attributes and for a DTD, before it reports any of them.
bool isCostly(const QByteArray &bytes)
{
    int equalsSigns = 0;
    for (const char c : bytes) {
        equalsSigns = c == '<' ? 0 : equalsSigns + int(c == '=');
        if (equalsSigns > maxAttributes)
            return true;
    }
    return bytes.size() > mostSoapBytes || bytes.contains("<!DOCTYPE");
}

QString stepOf(const QXmlStreamReader &reader)
{
    static const QHash<QString, QString> prefixes { { envelopeNamespace, QStringLiteral("s:") },
                                                    { deviceNamespace, QStringLiteral("tds:") },
                                                    { schemaNamespace, QStringLiteral("tt:") } };
    return prefixes.value(reader.namespaceUri().toString(), QStringLiteral("?:")) + reader.name().toString();
}

} // namespace

SoapAnswer readSoap(const QByteArray &bytes)
{
    if (isCostly(bytes))
        return SoapAnswer();
    const QString body = QStringLiteral("/s:Envelope/s:Body");
    const QString subcode = QStringLiteral("s:Fault/s:Code/s:Subcode/");
    SoapAnswer answer;
    QXmlStreamReader reader(QString::fromUtf8(bytes));
    QString path;
    QStringList texts; // of the elements that are open
    int elements = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            path += QLatin1Char('/') + stepOf(reader);
            texts += QString();
            if (texts.size() > maxDepth || ++elements > maxElements || path.size() > maxPathLength)
                return SoapAnswer();
        } else if (token == QXmlStreamReader::Characters && !texts.isEmpty()) {
            texts.last() += reader.text();
        } else if (token == QXmlStreamReader::EndElement) {
            const QString text = texts.takeLast().trimmed();
            const QString inner = path.mid(body.size() + 1);
            answer.isValid = answer.isValid || path == body;
            if (path.startsWith(body) && !inner.isEmpty() && !answer.texts.contains(inner))
                answer.texts.insert(inner, text);
            if (path.startsWith(body) && inner.startsWith(subcode) && inner.endsWith(QStringLiteral("/s:Value")))
                answer.subcodes += text.mid(text.indexOf(QLatin1Char(':')) + 1);
            path.truncate(path.lastIndexOf(QLatin1Char('/')));
        }
    }
    return reader.hasError() ? SoapAnswer() : answer;
}

QByteArray soapMessage(const QString &body, const QString &header)
{
    return (QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?><s:Envelope xmlns:s=\"") + envelopeNamespace
            + QStringLiteral("\" xmlns:tds=\"") + deviceNamespace + QStringLiteral("\"><s:Header>") + header
            + QStringLiteral("</s:Header><s:Body>") + body + QStringLiteral("</s:Body></s:Envelope>"))
        .toUtf8();
}

QString usernameToken(const QString &user, const QString &password, const QByteArray &nonce, const QDateTime &created)
{
    const auto oasis = QStringLiteral("http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-");
    const QString time = created.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
    const QByteArray digest =
        QCryptographicHash::hash(nonce + time.toUtf8() + password.toUtf8(), QCryptographicHash::Sha1).toBase64();
    return QStringLiteral("<wsse:Security s:mustUnderstand=\"1\" xmlns:wsse=\"%1wssecurity-secext-1.0.xsd\""
                          " xmlns:wsu=\"%1wssecurity-utility-1.0.xsd\"><wsse:UsernameToken><wsse:Username>")
               .arg(oasis)
        + user.toHtmlEscaped()
        + QStringLiteral("</wsse:Username><wsse:Password Type=\"%1username-token-profile-1.0#PasswordDigest\">%2"
                         "</wsse:Password><wsse:Nonce EncodingType=\"%1soap-message-security-1.0#Base64Binary\">%3"
                         "</wsse:Nonce><wsu:Created>%4</wsu:Created></wsse:UsernameToken></wsse:Security>")
              .arg(oasis, QString::fromLatin1(digest), QString::fromLatin1(nonce.toBase64()), time);
}

QDateTime cameraTime(const SoapAnswer &answer)
{
    const auto number = [&answer](const char *step) {
        const QString utc = QStringLiteral("tds:GetSystemDateAndTimeResponse/tds:SystemDateAndTime/tt:UTCDateTime/");
        return answer.texts.value(utc + QLatin1String(step), QStringLiteral("-1")).toInt();
    };
    const QDate date(number("tt:Date/tt:Year"), number("tt:Date/tt:Month"), number("tt:Date/tt:Day"));
    const QTime time(number("tt:Time/tt:Hour"), number("tt:Time/tt:Minute"), std::min(number("tt:Time/tt:Second"), 59));
    return date.isValid() && time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
}

int msDuration(const QString &text, int msMost)
{
    static const QRegularExpression duration(QRegularExpression::anchoredPattern(
        QStringLiteral("P(?=.)(?:(\\d+)Y)?(?:(\\d+)M)?(?:(\\d+)D)?"
                       "(?:T(?=.)(?:(\\d+)H)?(?:(\\d+)M)?(?:(\\d+(?:\\.\\d*)?)S)?)?")));
    const QRegularExpressionMatch match = duration.match(text.trimmed().left(100));
    if (!match.hasMatch())
        return -1;
    double seconds = 0;
    int part = 0;
    for (const double each : { 365 * 86400., 30 * 86400., 86400., 3600., 60., 1. })
        seconds += each * match.captured(++part).toDouble();
    return int(std::min(seconds * 1000, double(msMost)));
}

QUrl uploadAddress(const QString &told, const QUrl &asked)
{
    QUrl url = asked.resolved(QUrl(told.trimmed().left(2048)));
    const QString https = QStringLiteral("https");
    if (!url.isValid() || (url.scheme() != https && url.scheme() != QStringLiteral("http")) || url.host().isEmpty())
        return QUrl();
    const bool isWeaker = asked.scheme() == https && url.scheme() != https;
    const bool isElsewhere = url.host() != asked.host() && url.scheme() == asked.scheme();
    if (isWeaker || (isElsewhere && url.port() < 0))
        url.setPort(asked.port());
    if (isWeaker)
        url.setScheme(https);
    url.setHost(asked.host());
    url.setUserInfo(QString());
    url.setFragment(QString());
    return url;
}

QString oneLine(const QString &text)
{
    QString line = text.simplified().left(200);
    for (QChar &c : line) {
        if (!c.isPrint() && !c.isSurrogate())
            c = QLatin1Char('?');
    }
    return line;
}

} // namespace qv
