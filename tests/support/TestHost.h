#pragma once

#include "SoftwareUpdateAvailableDialog.h"
#include "SoftwareUpdateClient.h"
#include "SoftwareUpdateDialog.h"

#include <QLabel>
#include <QtTest>

/// A host application around a client, as tests need it: a settings store of its own, a window, ways to what is shown.
/// A connection that fails ends the test.
class TestHost
{
public:
    TestHost()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            if (text.contains(QLatin1String("QObject::connect")))
                qt_assert(qPrintable(text), __FILE__, __LINE__);
            fprintf(stderr, "%s\n", qPrintable(text));
        });
        QCoreApplication::setOrganizationName("Example");
        QCoreApplication::setApplicationName("Camera Host");
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
        store().clear();
    }

    static QSettings store() { return QSettings("Example", "Camera Host"); }
    static void set(const QString &key, const QVariant &value) { store().setValue(key, value); }
    static QVariant stored(const QString &key) { return store().value(key); }

    /// The dialogs that exist, hidden or not.
    auto *settingsDialog() const { return window.findChild<qv::SoftwareUpdateDialog *>(); }
    auto *availableDialog() const { return window.findChild<qv::SoftwareUpdateAvailableDialog *>(); }

    QString notification() const { return settingsDialog()->findChild<QLabel *>("updateNotificationLabel")->text(); }

    /// Lets what was released with deleteLater() go.
    static void release() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    QWidget window;

private:
    QTemporaryDir home;
};
