// What users read of updates of cameras, in the context "SoftwareUpdatePolicy" and here alone: in onvif/,
// scripts/check-translations.cmake finds no text elsewhere.
#include "OnvifTexts.h"

#include <QCoreApplication>

namespace qv {

QString cameraText(CameraNews news, const QString &detail)
{
    const auto text = [&detail](const char *english) {
        const QString text = QCoreApplication::translate("SoftwareUpdatePolicy", english);
        return text.contains(QStringLiteral("%1")) ? text.arg(detail) : text;
    };
    switch (news) {
    case CameraNews::Asked:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "Asking the camera..."));
    case CameraNews::Sending:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "Sending the firmware..."));
    case CameraNews::Restarting:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy",
                                      "The camera installs the firmware and restarts. Do not switch it off!"));
    case CameraNews::Installed:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "Version %1 is installed."));
    case CameraNews::UpToDate:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "Version %1 is already there."));
    case CameraNews::Skipped:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "Cancelled before the camera had the firmware."));
    case CameraNews::Unreachable:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera cannot be reached: %1"));
    case CameraNews::NotAuthorized:
        return text(
            QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera does not accept the user name and the password."));
    case CameraNews::OtherCamera:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy",
                                      "The certificate is not that of the camera. No password was sent."));
    case CameraNews::Unintelligible:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera's answer cannot be understood."));
    case CameraNews::Fault:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera reports: %1"));
    case CameraNews::NotThisWay:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera cannot be updated this way."));
    case CameraNews::NoAddress:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera does not say where the firmware is to go."));
    case CameraNews::NoFile:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The firmware cannot be read: %1"));
    case CameraNews::FileRefused:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy",
                                      "The camera refuses the file: it is no firmware for this camera."));
    case CameraNews::NotSent:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The firmware could not be sent: %1"));
    case CameraNews::StillOld:
        return text(
            QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "After the update the camera runs version %1, not the new one."));
    case CameraNews::NotBack:
        return text(QT_TRANSLATE_NOOP("SoftwareUpdatePolicy", "The camera has not come back after the update."));
    case CameraNews::NotMeant:
        break;
    }
    return QString();
}

QString cameraLine(const QString &camera, const QString &text)
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "%1: %2").arg(camera, text);
}

QString noAnswerText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "It does not answer in time.");
}

QString noCameraText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "No camera needs this firmware.");
}

QString noFirmwareText()
{
    return QCoreApplication::translate("SoftwareUpdatePolicy", "This package is no firmware for cameras.");
}

} // namespace qv
