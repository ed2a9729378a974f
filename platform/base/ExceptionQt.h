#pragma once

#include "PlatformExport.h"

#include <QByteArray>
#include <QString>

#include <exception>

namespace qv {

/// What the platform libraries throw: a message made for people. Whoever calls them catches
/// it; a declaration says where one is passed on.
class QV_PLATFORM_EXPORT ExceptionQt : public std::exception
{
public:
    explicit ExceptionQt(const QString &message);
    ExceptionQt(const ExceptionQt &) = default;
    ExceptionQt &operator=(const ExceptionQt &) = default;
    ~ExceptionQt() override;

    QString message() const { return text; }

    /// The message as UTF-8.
    const char *what() const noexcept override { return utf8.constData(); }

private:
    QString text;
    QByteArray utf8;
};

} // namespace qv
