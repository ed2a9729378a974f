// The German and French texts that travel inside the library, as a host's translator finds them.
#include "Row.h"
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

QString compiled(const QString &language)
{
    return QString(":/translations/SoftwareUpdateClient_%1.qm").arg(language);
}

std::unique_ptr<QTranslator> translatorFor(const QString &language)
{
    auto translator = std::make_unique<QTranslator>();
    return translator->load(compiled(language)) ? std::move(translator) : nullptr;
}

} // namespace

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    void languages_data()
    {
        columns<QString>("language");
        row("German", "de_DE");
        row("French", "fr_FR");
    }

    void languages()
    {
        QFETCH(QString, language);
        const auto translator = translatorFor(language);
        QVERIFY(translator);
        QCOMPARE(QResource(compiled(language)).compressionAlgorithm(), QResource::NoCompression);

        QFile file(QString(CATALOGUES "/SoftwareUpdateClient_%1.ts").arg(language));
        QDomDocument document;
        QVERIFY(file.open(QIODevice::ReadOnly) && document.setContent(&file));
        const QDomNodeList messages = document.elementsByTagName("message");
        QCOMPARE(messages.size(), 48);
        QMap<QString, int> contexts;
        const QRegularExpression url("https?://[^\"<]*"), noGap("[^\u00a0][:!]");
        for (int i = 0; i < messages.size(); ++i) {
            const QDomNode message = messages.at(i);
            const QDomElement translation = message.firstChildElement("translation");
            const QString name = message.parentNode().firstChildElement("name").text();
            const QByteArray context = name.toLatin1(), source = message.firstChildElement("source").text().toUtf8();
            ++contexts[name];
            QCOMPARE(translator->translate(context, source), translation.text());
            QVERIFY2(!translation.text().isEmpty() && !translation.hasAttribute("type"), source);
            QVERIFY2(!source.contains("%1") || translation.text().contains("%1"), source);
            if (language == "fr_FR")
                QVERIFY2(!translation.text().remove(url).contains(noGap), source);
            QVERIFY(translator->translate(context, "Unpacking failed").isEmpty());
        }
        QCOMPARE(contexts,
                 (QMap<QString, int> { { "DownloadManager", 3 },
                                       { "SoftwareUpdateAvailableGui", 9 },
                                       { "SoftwareUpdateClient", 24 },
                                       { "SoftwareUpdateDialogGui", 12 } }));
    }

    // Deliberate, however odd: hosts and their users know these texts.
    void oddRenderings()
    {
        const struct
        {
            const char *language, *context, *source, *text;
        } cases[] = {
            { "fr_FR", "SoftwareUpdateDialogGui", "Check for Updates", "Rechercher de nouveaux mises à jour" },
            { "fr_FR", "SoftwareUpdateAvailableGui", "Show all languages", "Afficher tous les langues" },
            { "fr_FR", "SoftwareUpdateClient", "Installation failed", "L'installation a échouée" },
            { "de_DE", "SoftwareUpdateClient",
              "After downloading the package, the installer will automatically exit and restart your application!",
              "Nach der Installation des Pakets wird die Anwendung automatisch beendet und neu gestartet!" },
        };
        for (const auto &one : cases)
            QCOMPARE(translatorFor(one.language)->translate(one.context, one.source), QString(one.text));
    }

    void dialogs_data()
    {
        columns<QString, QString, QString, QString>("language", "title", "checkNow", "support");
        row("English", "", "Update Available", "Check Now", "For more information and updates visit <a href=\"");
        row("German", "de_DE", "Update verfügbar", "Jetzt suchen",
            "Weitere Informationen und Updates finden Sie unter <a href=\"");
        row("French", "fr_FR", "Mise à jour disponible", "Rechercher maintenant",
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
        const qv::SoftwareUpdateDialog settings(nullptr, {});
        const qv::SoftwareUpdateAvailableDialog available(nullptr, {});
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
