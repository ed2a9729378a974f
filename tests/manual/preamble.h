// What the blocks of the pages have besides: Qt's headers, and objects that stand elsewhere in a host.
#pragma once

#include <DownloadManager.h>
#include <SoftwareUpdateClient.h>

#include <QtNetwork>
#include <QtWidgets>

#include <memory>

#define QV_OBJECTS_OF_THE_PAGES                                                                                        \
    QApplication &application, QWidget &window, QWidget &mainWindow, QAction *checkForUpdates,                         \
        qv::SoftwareUpdateClient &updates, qv::DownloadManager &manager, const qv::PackageInfo &package,               \
        const QDir &downloads
