#pragma once

#include <QString>

namespace qv {

/// What became of a camera, or what it is at.
enum class CameraNews {
    Asked,
    Sending,
    Restarting,     ///< it has the whole file
    Installed,      ///< detail: the version
    UpToDate,       ///< likewise
    Skipped,        ///< cancelled
    NotMeant,       ///< of another model; no text
    Unreachable,    ///< detail: why
    NotAuthorized,  ///< user and password are refused
    OtherCamera,    ///< its certificate is not the pinned one
    Unintelligible, ///< no answer of a device service
    Fault,          ///< detail: what it says
    NotThisWay,     ///< takes no file over HTTP
    NoAddress,      ///< names none for the file
    NoFile,         ///< it cannot be read; detail: why
    FileRefused,
    NotSent,  ///< the connection broke off; detail: why
    StillOld, ///< it came back with the version in detail
    NotBack,
};

/// One line for users.
QString cameraText(CameraNews news, const QString &detail = QString());

/// That of a camera with a name: "192.0.2.7: Sending the firmware..."
QString cameraLine(const QString &camera, const QString &text);

QString noAnswerText();   ///< why a camera cannot be reached: none came in time
QString noCameraText();   ///< no camera needs the firmware
QString noFirmwareText(); ///< the package is none

} // namespace qv
