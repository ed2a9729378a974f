// The German and French texts that travel inside the library, as a host's translator finds them.
#include "Row.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QDomDocument>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

namespace {

QString compiled(const QString &language, const QString &texts)
{
    return QString(":/translations/SoftwareUpdate%1_%2.qm").arg(texts, language);
}

std::unique_ptr<QTranslator> translatorFor(const QString &language, const QString &texts = "Client")
{
    auto translator = std::make_unique<QTranslator>();
    return translator->load(compiled(language, texts)) ? std::move(translator) : nullptr;
}

} // namespace

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    // What the library carries is what the catalogues say; scripts/check-translations.cmake looks after these.
    void languages()
    {
        for (const QString catalogue : { "Client_de_DE", "Client_fr_FR", "Policy_de_DE", "Policy_fr_FR" }) {
            const QString language = catalogue.mid(7);
            const auto translator = translatorFor(language, catalogue.left(6));
            QVERIFY(translator);
            QCOMPARE(QResource(compiled(language, catalogue.left(6))).compressionAlgorithm(), QResource::NoCompression);

            QFile file(QString(CATALOGUES "/SoftwareUpdate%1.ts").arg(catalogue));
            QDomDocument document;
            QVERIFY(file.open(QIODevice::ReadOnly) && document.setContent(&file));
            const QDomNodeList messages = document.elementsByTagName("message");
            QVERIFY(!messages.isEmpty());
            const QRegularExpression url("https?://[^\"<]*"), noGap("[^\u00a0][:!]");
            for (int i = 0; i < messages.size(); ++i) {
                const QDomNode message = messages.at(i);
                const QString text = message.firstChildElement("translation").text();
                const QByteArray context = message.parentNode().firstChildElement("name").text().toLatin1();
                const QByteArray source = message.firstChildElement("source").text().toUtf8();
                QCOMPARE(translator->translate(context, source), text);
                QVERIFY2(!text.isEmpty() && text.contains("%1") == source.contains("%1"), source);
                QVERIFY2(language != "fr_FR" || !QString(text).remove(url).contains(noGap), source);
                QVERIFY(translator->translate(context, "Unpacking failed").isEmpty());
            }
        }
    }

    // Deliberate, however odd: hosts and their users know these texts.
    void oddRenderings()
    {
        const auto german = translatorFor("de_DE"), french = translatorFor("fr_FR");
        QCOMPARE(french->translate("SoftwareUpdateDialogGui", "Check for Updates"),
                 QString("Rechercher de nouveaux mises à jour"));
        QCOMPARE(french->translate("SoftwareUpdateAvailableGui", "Show all languages"),
                 QString("Afficher tous les langues"));
        QCOMPARE(french->translate("SoftwareUpdateClient", "Installation failed"), QString("L'installation a échouée"));
        const char *const restart =
            "After downloading the package, the installer will automatically exit and restart your application!";
        QVERIFY(german->translate("SoftwareUpdateClient", restart).startsWith("Nach der Installation des Pakets"));
    }

    void dialogs()
    {
        for (const QString words : { "en For more", "de_DE Weitere", "fr_FR Pour plus" }) {
            const auto translator = translatorFor(words.section(' ', 0, 0));
            if (translator)
                QCoreApplication::installTranslator(translator.get());
            const qv::SoftwareUpdateDialog settings(nullptr, {});
            const qv::SoftwareUpdateAvailableDialog available(nullptr, {});
            QCOMPARE(settings.findChild<QPushButton *>("updatePushButton")->text() == "Check Now", !translator);
            QCOMPARE(available.windowTitle() == "Update Available", !translator);
            const QString line = available.findChild<QLabel *>("qvLinkLabel")->text();
            QVERIFY2(line.startsWith(words.section(' ', 1)) && !line.contains('@'), qPrintable(line));
        }
    }

    void hostsMayRegisterByHand()
    {
        Q_CLEANUP_RESOURCE(SoftwareUpdateClient);
        QVERIFY(!translatorFor("de_DE"));
        Q_INIT_RESOURCE(SoftwareUpdateClient);
        QVERIFY(translatorFor("de_DE"));
    }
};

QTEST_MAIN(TranslationsTest)
#include "tst_translations.moc"
