// Who accepts a catalogue. The signatures are made by the minisign tool.
#include "Minisign.h"
#include "Row.h"
#include "Seal.h"
#include "Signer.h"

#include <QTest>

using namespace qv;

Q_DECLARE_METATYPE(qv::Seal::Verdict)

namespace {

const QDateTime now(QDate(2030, 6, 1), QTime(12, 0), Qt::UTC);

QByteArray sealed(const char *attributes)
{
    return QByteArray("<softwareList ") + attributes + "><package name=\"a\"/></softwareList>\n";
}

const QByteArray good = sealed("serial=\"7\" expires=\"2030-07-01T00:00:00Z\"");

} // namespace

class tst_Trust : public QObject
{
    Q_OBJECT

    const Signer publisher, second, stranger;

private slots:
    void seal_data()
    {
        columns<QByteArray, QByteArray, Seal::Verdict>("catalogue", "signature", "verdict");
        const QByteArray signature = publisher.sign(good);
        const auto line = [&signature](int number, const QByteArray &text) {
            QList<QByteArray> lines = signature.split('\n');
            lines[number] = text;
            return lines.join('\n');
        };
        const auto signedRow = [this](const char *name, const char *attributes, Seal::Verdict verdict) {
            row(name, sealed(attributes), publisher.sign(sealed(attributes)), verdict);
        };
        row("sealed", good, signature, Seal::Accepted);
        row("CR LF", good, QByteArray(signature).replace("\n", "\r\n"), Seal::Accepted);
        row("two in one file", good, signature + publisher.sign("other"), Seal::Accepted);
        row("two, the other first", good, publisher.sign("other") + signature, Seal::WrongSignature);
        row("no newline at the end", good, signature.chopped(1), Seal::Accepted);
        row("none", good, QByteArray(), Seal::NoSignature);
        row("three lines", good, signature.left(signature.indexOf("\n", signature.indexOf("\ntrusted") + 1)),
            Seal::NotASignature);
        row("1 MiB", good, signature + QByteArray(1 << 20, '\n'), Seal::NotASignature);
        row("no padding", good, line(1, signature.split('\n').at(1).chopped(1)), Seal::NotASignature);
        row("of the file, not of its hash", good, publisher.sign(good, { "-l" }), Seal::NotASignature);
        row("a page of HTML", good, QByteArray("<html>\n<body>\n</body>\n</html>\n"), Seal::NotASignature);
        row("of another key", good, stranger.sign(good), Seal::UnknownKey);
        row("of another file", good, publisher.sign("other"), Seal::WrongSignature);
        row("of another comment", good, line(2, "trusted comment: another"), Seal::WrongSignature);
        row("a second key", good, second.sign(good), Seal::Accepted);
        signedRow("no serial", "expires='2030-07-01T00:00:00Z'", Seal::NoSerial);
        signedRow("serial 0", "serial='0' expires='2030-07-01T00:00:00Z'", Seal::NoSerial);
        signedRow("serial in words", "serial='7a' expires='2030-07-01T00:00:00Z'", Seal::NoSerial);
        signedRow("serial beyond 2^63", "serial='9223372036854775808' expires='2030-07-01T00:00:00Z'", Seal::NoSerial);
        signedRow("no expiry", "serial='7'", Seal::NoSerial);
        signedRow("expiry in local time", "serial='7' expires='2030-07-01T00:00:00'", Seal::NoSerial);
        signedRow("expired now", "serial='7' expires='2030-06-01T12:00:00Z'", Seal::Expired);
        signedRow("expires in a second", "serial='7' expires='2030-06-01T12:00:01Z'", Seal::Accepted);
        signedRow("serial below", "serial='4' expires='2030-07-01T00:00:00Z'", Seal::OlderThanSeen);
        signedRow("serial as seen, other bytes", "serial='5' expires='2030-07-01T00:00:00Z'", Seal::OlderThanSeen);
        signedRow("serial above", "serial='6' expires='2030-07-01T00:00:00Z'", Seal::Accepted);
        row("not XML", QByteArray("7"), publisher.sign("7"), Seal::NoSerial);
    }

    void seal()
    {
        QFETCH(QByteArray, catalogue);
        QFETCH(QByteArray, signature);
        const SeenSeals seen { { Minisign::keyName(Minisign::keyFromText(publisher.key())->id),
                                 { 5, "other bytes" } } };
        QTEST(examineSeal(catalogue, signature, { "no key", second.key(), publisher.key() }, seen, now).verdict,
              "verdict");
    }

    void seenOnceMore()
    {
        const QByteArray signature = publisher.sign(good);
        const Seal first = examineSeal(good, signature, { publisher.key() }, {}, now);
        QCOMPARE(first.seal.serial, 7);
        QCOMPARE(examineSeal(good, signature, { publisher.key() }, { { first.key, first.seal } }, now).verdict,
                 Seal::Accepted);
        // Each key counts for itself: a new one forgives a serial that was too high.
        const SeenSeals high { { first.key, { 9, QByteArray() } } };
        QCOMPARE(examineSeal(good, signature, { publisher.key() }, high, now).verdict, Seal::OlderThanSeen);
        QCOMPARE(examineSeal(good, second.sign(good), { publisher.key(), second.key() }, high, now).verdict,
                 Seal::Accepted);
    }

    /// But for the untrusted comment: of it only the prefix counts.
    void everyBit()
    {
        const QByteArray signature = publisher.sign(good);
        const int comment = signature.indexOf('\n');
        const auto verdict = [](const QByteArray &bytes, const QByteArray &text, const QByteArray &trusted) {
            return examineSeal(bytes, text, { QString::fromLatin1(trusted) }, {}, now).verdict;
        };
        QByteArray parts[] = { good, signature, publisher.key().toLatin1() };
        QCOMPARE(verdict(parts[0], parts[1], parts[2]), Seal::Accepted);
        for (QByteArray &part : parts) {
            for (int bit = 0; bit < part.size() * 8; ++bit) {
                const char kept = part[bit / 8];
                part[bit / 8] = char(kept ^ (1 << bit % 8));
                const bool isComment = &part == &parts[1] && bit / 8 >= 19 && bit / 8 < comment;
                if (!isComment && verdict(parts[0], parts[1], parts[2]) == Seal::Accepted)
                    QFAIL(qPrintable(QString("part %1, bit %2").arg(&part - parts).arg(bit)));
                part[bit / 8] = kept;
            }
        }
    }
};

QTEST_GUILESS_MAIN(tst_Trust)
#include "tst_trust.moc"
