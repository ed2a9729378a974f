// The German and French texts that travel inside the library, as a host's translator finds them.
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QDomDocument>
#include <QLabel>
#include <QPushButton>
#include <QResource>
#include <QTranslator>
#include <QtTest>

#include <memory>

namespace {

struct Message
{
    QString context, source, translation, type;
};

QString compiled(const QString &language)
{
    return QString(":/translations/SoftwareUpdateClient_%1.qm").arg(language);
}

std::unique_ptr<QTranslator> translatorFor(const QString &language)
{
    auto translator = std::make_unique<QTranslator>();
    return translator->load(compiled(language)) ? std::move(translator) : nullptr;
}

QList<Message> messagesOf(const QString &language)
{
    QFile file(QString(CATALOGUES "/SoftwareUpdateClient_%1.ts").arg(language));
    QDomDocument document;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return {};
    QList<Message> messages;
    const QDomNodeList nodes = document.elementsByTagName("message");
    for (int i = 0; i < nodes.size(); ++i) {
        const auto text = [node = nodes.at(i)](const char *tag) { return node.firstChildElement(tag).text(); };
        messages << Message { nodes.at(i).parentNode().firstChildElement("name").text(), text("source"),
                              text("translation"), nodes.at(i).firstChildElement("translation").attribute("type") };
    }
    return messages;
}

} // namespace

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    void languages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::newRow("German") << "de_DE";
        QTest::newRow("French") << "fr_FR";
    }

    void languages()
    {
        QFETCH(QString, language);
        const auto translator = translatorFor(language);
        QVERIFY(translator);
        QCOMPARE(QResource(compiled(language)).compressionAlgorithm(), QResource::NoCompression);

        const QList<Message> messages = messagesOf(language);
        QCOMPARE(messages.size(), 48);
        QMap<QString, int> contexts;
        const QRegularExpression url("https?://[^\"<]*"), noGap("[^\u00a0][:!]");
        for (const Message &message : messages) {
            ++contexts[message.context];
            const QByteArray context = message.context.toLatin1(), source = message.source.toUtf8();
            QCOMPARE(translator->translate(context, source), message.translation);
            QVERIFY2(!message.translation.isEmpty() && message.type.isEmpty(), source);
            if (message.source.contains("%1"))
                QVERIFY2(message.translation.contains("%1"), source);
            if (language == "fr_FR")
                QVERIFY2(!QString(message.translation).remove(url).contains(noGap), source);
            QVERIFY(translator->translate(context, "Unpacking failed").isEmpty());
        }
        QCOMPARE(contexts,
                 (QMap<QString, int> { { "DownloadManager", 3 },
                                       { "SoftwareUpdateAvailableGui", 9 },
                                       { "SoftwareUpdateClient", 24 },
                                       { "SoftwareUpdateDialogGui", 12 } }));
    }

    void renderings_data()
    {
        QTest::addColumn<QByteArray>("context");
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QString>("german");
        QTest::addColumn<QString>("french");
        const auto row = [](const char *context, const char *source, const char *german, const char *french) {
            QTest::newRow(source) << QByteArray(context) << QByteArray(source) << QString(german) << QString(french);
        };
        row("DownloadManager", "Unpacking '%1'", "'%1' wird entpackt", "Décompresser '%1'");
        row("DownloadManager", "Downloaded file could not be unpacked:<br>",
            "Die heruntergeladene Datei konnte nicht entpackt werden:<br>",
            "Le fichier téléchargé n'a pas pu être décompressé\u00a0:<br>");
        row("SoftwareUpdateDialogGui", "Check for Updates", "Nach Updates suchen",
            "Rechercher de nouveaux mises à jour");
        row("SoftwareUpdateAvailableGui", "Show all languages", "Alle Sprachen anzeigen", "Afficher tous les langues");
        row("SoftwareUpdateClient", "Installation failed", "Installation fehlgeschlagen", "L'installation a échouée");
        row("SoftwareUpdateClient",
            "After downloading the package, the installer will automatically exit and restart your application!",
            "Nach der Installation des Pakets wird die Anwendung automatisch beendet und neu gestartet!",
            "Une fois le package téléchargé, le programme d'installation fermera et redémarrera automatiquement votre "
            "application\u00a0!");
        row("SoftwareUpdateClient", "No update available!", "Kein Update vorhanden!",
            "Aucune mise à jour disponible\u00a0!");
    }

    void renderings()
    {
        QFETCH(QByteArray, context);
        QFETCH(QByteArray, source);
        QTEST(translatorFor("de_DE")->translate(context, source), "german");
        QTEST(translatorFor("fr_FR")->translate(context, source), "french");
    }

    void dialogs_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("checkNow");
        QTest::addColumn<QString>("support");
        const auto row = [](const char *language, const char *title, const char *checkNow, const char *support) {
            QTest::newRow(language) << QString(language) << QString(title) << QString(checkNow) << QString(support);
        };
        row("", "Update Available", "Check Now", "For more information and updates visit <a href=\"");
        row("de_DE", "Update verfügbar", "Jetzt suchen",
            "Weitere Informationen und Updates finden Sie unter <a href=\"");
        row("fr_FR", "Mise à jour disponible", "Rechercher maintenant",
            "Pour plus d'informations et pour les mises à jour, consultez <a href=\"");
    }

    void dialogs()
    {
        QFETCH(QString, language);
        QFETCH(QString, support);
        const auto translator = translatorFor(language);
        QCOMPARE(translator != nullptr, !language.isEmpty());
        if (translator)
            QCoreApplication::installTranslator(translator.get());
        const qv::SoftwareUpdateDialog settings(nullptr, Qt::WindowFlags());
        const qv::SoftwareUpdateAvailableDialog available(nullptr, Qt::WindowFlags());
        QTEST(settings.findChild<QPushButton *>("updatePushButton")->text(), "checkNow");
        QTEST(available.windowTitle(), "title");
        const QString line = available.findChild<QLabel *>("qvLinkLabel")->text();
        QVERIFY2(line.startsWith(support) && !line.contains('@'), qPrintable(line));
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
