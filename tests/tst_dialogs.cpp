// The two dialogs on their own: what they show for what they are given, and which signals leave them. On a small
// screen. And the German and French texts that travel inside the library, as a host's translator finds them.
#include "LogCapture.h"
#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateDialog.h"

#include <QDomDocument>
#include <QtTest>
#include <QtWidgets>

using namespace qv;
using Rows = SoftUpIndexList;

namespace {

// 500 pixels high, of the 600 or 800 that "offscreen" has
const bool onSmallScreen = qputenv("QT_SCALE_FACTOR", QT_VERSION_MAJOR == 5 ? "1.2" : "1.6");

template<class Widget>
Widget &child(const QWidget &dialog, const char *name)
{
    auto found = dialog.findChild<Widget *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s of that class", name);
    return *found;
}

QString plain(const QString &html)
{
    return QTextDocumentFragment::fromHtml(html).toPlainText().remove(QChar(0x200b));
}

QString compiled(const QString &language, const QString &texts)
{
    return QString(":/translations/SoftwareUpdate%1_%2.qm").arg(texts, language);
}

std::unique_ptr<QTranslator> translatorFor(const QString &language, const QString &texts = "Client")
{
    auto translator = std::make_unique<QTranslator>();
    return translator->load(compiled(language, texts)) ? std::move(translator) : nullptr;
}

/// An update-available dialog with four rows, a host that may hide some whenever it is told, and what it was told.
struct Table
{
    explicit Table(const Rows &hiddenBySlot = {})
    {
        dialog.setTableEntries(
            { { "Viewer 2", "2 MB" }, { "QC-20", "7 MB" }, { "QC-30", "9 MB" }, { "QC-40", "9 MB" } });
        QObject::connect(&dialog, &SoftwareUpdateAvailableDialog::currentItemsChangedSig,
                         [this, hiddenBySlot](const Rows &rows) {
                             if (!hiddenBySlot.isEmpty())
                                 dialog.setHiddenEntries(hiddenBySlot);
                             told << rows;
                         });
    }

    SoftwareUpdateAvailableDialog dialog { nullptr, {} };
    QTableWidget &table = child<QTableWidget>(dialog, "tableWidget");
    QTextBrowser &comment = child<QTextBrowser>(dialog, "commentText");
    QList<Rows> told;
};

} // namespace

class DialogsTest : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;
    Q_INVOKABLE void open(const QUrl &url) { opened << url; }

private slots:
    void initTestCase()
    {
        QFont font = QApplication::font();
        font.setPointSize(9); // what Qt 6 has here
        QApplication::setFont(font);
    }

    void settingsPassThrough()
    {
        SoftwareUpdateDialog dialog(nullptr, {});
        for (const QString &text : { QString("2.1"), QString(""), QString() }) {
            dialog.setDialogSettings({ true, false, 1, "http://old.example", "1.0", "long ago" });
            dialog.setDialogSettings({ false, true, 3, "http://new.example/?a=1&b=2", text, text });
            QCOMPARE(child<QLabel>(dialog, "currentVersionLabel").isHidden(), text.isNull());
            QCOMPARE(child<QLabel>(dialog, "lastCheckLabel").isHidden(), text.isNull());
            const SoftwareUpdateDialogSettings read = dialog.getDialogSettings();
            QVERIFY(!read.doUpdateCheck && read.checkForBeta && read.updateInterval == 3);
            QCOMPARE(read.serverURL, QString("http://new.example/?a=1&b=2"));
            QCOMPARE(read.currentVersion, text.isNull() ? QString("1.0") : text);
            QCOMPARE(read.lastCheck, text.isNull() ? QString("long ago") : text);
        }
    }

    void closing()
    {
        for (const auto button : { QDialogButtonBox::Ok, QDialogButtonBox::Cancel, QDialogButtonBox::NoButton }) {
            SoftwareUpdateDialog dialog(nullptr, {});
            QStringList log;
            connect(&dialog, &SoftwareUpdateDialog::applySettings, [&](const auto &is) { log << is.serverURL; });
            connect(&dialog, &QDialog::finished, [&](int result) { log << QString::number(result); });
            dialog.setDialogSettings({ true, false, 2, "http://typed.example", "1", "2" });
            dialog.show();
            if (button)
                child<QDialogButtonBox>(dialog, "buttonBox").button(button)->click();
            else
                dialog.close(); // by the window's own button
            QCOMPARE(log.join(' '), QString(button == QDialogButtonBox::Ok ? "http://typed.example 1" : "0"));
        }
    }

    // Space and Enter of the impatient reach neither the check box beside "Check Now" nor OK.
    void aCheckMovesNothing()
    {
        SoftwareUpdateDialog dialog(nullptr, {});
        auto &button = child<QPushButton>(dialog, "updatePushButton");
        auto &bar = child<QProgressBar>(dialog, "progressBar");
        auto &box = child<QCheckBox>(dialog, "updateCheckBox");
        const auto isIn = [&](bool progress) {
            return bar.isHidden() != progress && bar.isEnabled() == progress && button.isEnabled() != progress;
        };
        QSignalSpy check(&dialog, &SoftwareUpdateDialog::checkForUpdate);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const QSize size = dialog.sizeHint();
        button.setFocus();
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Space);
        QVERIFY(check.count() == 1 && isIn(false));
        QVERIFY(QMetaObject::invokeMethod(&dialog, "enableProgress")); // hosts call these two by name
        for (const Qt::Key key : { Qt::Key_Space, Qt::Key_Enter, Qt::Key_Return })
            QTest::keyClick(dialog.windowHandle(), key);
        QVERIFY(dialog.isVisible() && !box.isChecked() && isIn(true));
        QCOMPARE(dialog.sizeHint(), size);
        QVERIFY(QMetaObject::invokeMethod(&dialog, "disbaleProgress"));
        QVERIFY(button.hasFocus() && isIn(false));
        dialog.enableProgress();
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Tab);
        dialog.disbaleProgress();
        QVERIFY(box.hasFocus()); // where the user went meanwhile
    }

    void notificationIsAllThere()
    {
        for (const QString &text :
             { QString("<b>server replied</b>"), QString("server replied ").repeated(30).trimmed(),
               QString("0123456789").repeated(40) }) {
            SoftwareUpdateDialog dialog(nullptr, {});
            const auto &label = child<QLabel>(dialog, "updateNotificationLabel");
            const int width = dialog.sizeHint().width();
            dialog.setNotificationText(text);
            dialog.show();
            QVERIFY(label.text() == text && label.textFormat() == Qt::PlainText);
            QCOMPARE(dialog.width(), width);
            const QFontMetrics metrics = label.fontMetrics();
            QVERIFY(label.width() * label.height() >= metrics.horizontalAdvance(text) * metrics.lineSpacing());
            QCOMPARE(plain(label.toolTip()), text);
        }
    }

    void newEntriesReplaceAll()
    {
        Table t;
        t.dialog.setTableHeaders({ "Name", "File Size" });
        t.table.selectRow(1);
        t.dialog.setHiddenEntries({ 0, 2 });
        t.dialog.setCommentText("<b>old</b>");
        t.told.clear();
        t.dialog.setTableEntries({ { "a", "b" }, { "c" }, { "d", "e", "f" } });
        QVERIFY(t.table.rowCount() == 3 && t.table.columnCount() == 2 && !t.table.horizontalHeaderItem(0));
        QVERIFY(!t.table.isRowHidden(0) && !t.table.isRowHidden(2));
        QVERIFY(!t.table.item(1, 1) && t.table.item(2, 1)->text() == "e");
        QVERIFY(t.comment.isHidden() && t.comment.toPlainText().isEmpty());
        const LogCapture log;
        t.dialog.setTableEntries({});
        QCOMPARE(t.table.rowCount(), 0);
        QCOMPARE(log.lines(), QStringList("SoftwareUpdateAvailableDialog::setTableEntries() -> no table entries set!"));
        QCOMPARE(t.told, QList<Rows> { {} }); // of the first of the two
    }

    void hiddenRows()
    {
        Table t;
        t.table.selectAll();
        for (const Rows &hidden : { Rows { 0, 1 }, { 2, 3 }, {}, { 0, 1, 2 }, {}, { -1, 1, 1, 99 } }) {
            t.dialog.setHiddenEntries(hidden);
            for (int row = 0; row < 4; ++row)
                QCOMPARE(t.table.isRowHidden(row), hidden.contains(row));
        }
        QCOMPARE(t.told.mid(1), (QList<Rows> { { 2, 3 }, {} })); // what is hidden is no longer selected
        t.table.selectRow(0);
        for (const Qt::Key key : { Qt::Key_Down, Qt::Key_Down, Qt::Key_Up }) // grows past row 1, then shrinks
            QTest::keyClick(&t.table, key, Qt::ShiftModifier);
        QCOMPARE(t.told.last(), (Rows { 0, 2 }));
    }

    void selection()
    {
        // pressed: rows, from the second on with Ctrl, or keys, with Ctrl; hidden by the host's slot; told; installed
        using Case = std::tuple<Rows, Rows, QList<Rows>, int>;
        for (const auto &[pressed, hiddenBySlot, told, installed] :
             { Case({ 2, 0 }, {}, { { 2 }, { 2, 0 } }, 0), // as selected
               Case({ 2, 0, 0 }, {}, { { 2 }, { 2, 0 }, { 2 } }, 2),
               Case({ 0, 2, 3, 3 }, {}, { { 0 }, { 0, 2 }, { 0, 2, 3 }, { 0, 2 } }, 2), // the nearest left
               Case({ 2, Qt::Key_Up }, {}, { { 2 } }, 2),                               // cursor moved off
               Case({ 1 }, { 1 }, { { 1 }, {} }, 1), Case({ 3, Qt::Key_A }, { 0 }, { { 3 }, { 1, 2, 3 } }, 3) }) {
            Table t(hiddenBySlot);
            Qt::KeyboardModifiers modifiers;
            for (const int row : pressed) {
                if (const QTableWidgetItem *item = t.table.item(row, 0))
                    QTest::mouseClick(t.table.viewport(), Qt::LeftButton, modifiers,
                                      t.table.visualItemRect(item).center());
                else
                    QTest::keyClick(&t.table, Qt::Key(row), Qt::ControlModifier);
                modifiers = Qt::ControlModifier;
            }
            QCOMPARE(t.told, told);
            QSignalSpy install(&t.dialog, &SoftwareUpdateAvailableDialog::installPackage);
            child<QPushButton>(t.dialog, "installPushButton").click();
            QCOMPARE(install.value(0).value(0).toInt(), installed);
        }
    }

    void smallScreen()
    {
        Table t;
        t.dialog.show();
        t.dialog.setCommentText("<b>Viewer</b>");
        t.dialog.layout()->activate();
        QVERIFY(t.table.viewport()->height() >= 5 * t.table.rowHeight(0));
        QVERIFY(t.dialog.height() < 470); // with a title bar on 500
    }

    void links()
    {
        QApplication::setPalette(QPalette(Qt::black));
        Table t;
        QApplication::setPalette(QPalette());
        t.dialog.setCommentText("<a href=\"http://h/\">download</a>");
        const auto &link = child<QLabel>(t.dialog, "qvLinkLabel");
        for (const QString &html : { t.comment.toHtml(), link.text() }) {
            QTextDocument document;
            document.setHtml(html);
            const QTextFragment last = (--document.lastBlock().end()).fragment();
            QVERIFY(last.charFormat().foreground().color().lightness() > 150);
        }
        const QString address = plain(link.text()).section(' ', -1);
        QVERIFY(link.minimumSizeHint().width() >= link.fontMetrics().horizontalAdvance(address)); // never broken

        QSignalSpy install(&t.dialog, &SoftwareUpdateAvailableDialog::installPackage);
        QDesktopServices::setUrlHandler("https", this, "open");
        t.dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&t.dialog));
        child<QPushButton>(t.dialog, "installPushButton").setFocus();
        for (const Qt::Key key : { Qt::Key_Tab, Qt::Key_Enter, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return })
            QTest::keyClick(t.dialog.windowHandle(), key);
        QDesktopServices::unsetUrlHandler("https");
        QVERIFY(opened.size() == 2 && install.isEmpty());
    }

    void screenReadersFindNames()
    {
        const Table t;
        QCOMPARE(QAccessible::queryAccessibleInterface(&t.table)->text(QAccessible::Name),
                 child<QLabel>(t.dialog, "label_3").text());
        const SoftwareUpdateDialog settings(nullptr, {});
        auto &interval = child<QComboBox>(settings, "updateComboBox");
        const auto labels = QAccessible::queryAccessibleInterface(&interval)->relations(QAccessible::Label);
        QVERIFY(!labels.isEmpty());
        QCOMPARE(labels[0].first->text(QAccessible::Name), child<QCheckBox>(settings, "updateCheckBox").text());
    }

    void commentReadsNoFiles()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("big.png");
        QVERIFY(QImage(40, 40, QImage::Format_RGB32).save(file));
        Table t;
        for (const QUrl &url :
             { QUrl::fromLocalFile(file), QUrl(file), QUrl(":/qt-project.org/styles/commonstyle/images/up-16.png") }) {
            t.dialog.setCommentText(QString("<b>Viewer</b><img src=\"%1\">").arg(url.toString()));
            const QVariant image = t.comment.document()->resource(QTextDocument::ImageResource, url);
            QCOMPARE(image.value<QImage>().size(), QSize(1, 1));
        }
        QVERIFY(!t.comment.isHidden() && t.comment.toPlainText().startsWith("Viewer"));
        for (const char *link : { "/etc/passwd", "file:///etc/passwd", "smb://h/x", "https://h/x" }) {
            opened.clear();
            t.dialog.setCommentText(QString("<a href=\"%1\">%1</a>").arg(link));
            QDesktopServices::setUrlHandler(QUrl(link).scheme(), this, "open");
            QTest::mouseClick(t.comment.viewport(), Qt::LeftButton, {},
                              t.comment.cursorRect().bottomLeft() + QPoint(9, -5));
            QDesktopServices::unsetUrlHandler(QUrl(link).scheme());
            QCOMPARE(t.comment.toPlainText(), QString(link));
            QCOMPARE(opened.size(), link[4] == 's' ? 1 : 0);
        }
        t.dialog.setCommentText(QString());
        QVERIFY(t.comment.isHidden());
    }

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

    void dialogsSpeakTheLanguage()
    {
        for (const QString words : { "en For more", "de_DE Weitere", "fr_FR Pour plus" }) {
            const auto translator = translatorFor(words.section(' ', 0, 0));
            if (translator)
                QCoreApplication::installTranslator(translator.get());
            const SoftwareUpdateDialog settings(nullptr, {});
            const SoftwareUpdateAvailableDialog available(nullptr, {});
            QCOMPARE(child<QPushButton>(settings, "updatePushButton").text() == "Check Now", !translator);
            QCOMPARE(available.windowTitle() == "Update Available", !translator);
            const QString line = child<QLabel>(available, "qvLinkLabel").text();
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

QTEST_MAIN(DialogsTest)
#include "tst_dialogs.moc"
