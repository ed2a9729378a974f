// Wiring by name: connections and queued calls whose slots are only known as texts.
#include "ConnectHelpers.h"

#include "LogQt.h"
#include "QtCompat.h"

#include <QMetaMethod>

#include <vector>

namespace qv {

namespace {

/// The bare name of "name", of "name(Type)" and of SLOT(name(Type)), whose text opens with a digit.
QByteArray slotName(const char *slot)
{
    QByteArray name = slot;
    if (!name.isEmpty() && name.front() >= '0' && name.front() <= '9')
        name.remove(0, 1);
    const auto bracket = name.indexOf('(');
    return (bracket < 0 ? name : name.left(bracket)).trimmed();
}

bool isSameType(const QByteArray &declared, const QByteArray &given)
{
    return declared == given || (typeId(declared) != QMetaType::UnknownType && typeId(declared) == typeId(given));
}

bool takes(const QMetaMethod &method, const std::vector<QGenericArgument> &arguments)
{
    const QList<QByteArray> types = method.parameterTypes();
    if (types.size() != int(arguments.size()))
        return false;
    for (int i = 0; i < types.size(); ++i) {
        if (!isSameType(types.at(i), QMetaObject::normalizedType(arguments[size_t(i)].name())))
            return false;
    }
    return true;
}

} // namespace

QMetaObject::Connection connect(const QObject *sender, const char *signal, const QObject *receiver, const char *method,
                                Qt::ConnectionType type)
{
    const QMetaObject::Connection connection = QObject::connect(sender, signal, receiver, method, type);
    if (!connection)
        LogQt::write(Log::Error,
                     QStringLiteral("qv::connect() -> no connection from %1 to %2")
                         .arg(QLatin1String(signal), QLatin1String(method)));
    return connection;
}

bool invokeQueued(QObject *receiver, const char *slot, QGenericArgument argument0, QGenericArgument argument1,
                  QGenericArgument argument2)
{
    const QByteArray name = slotName(slot);
    std::vector<QGenericArgument> arguments;
    for (const QGenericArgument &argument : { argument0, argument1, argument2 }) {
        if (argument.name())
            arguments.push_back(argument);
    }
    const QMetaObject *type = receiver ? receiver->metaObject() : &QObject::staticMetaObject;
    for (int i = type->methodCount() - 1; receiver && i >= 0; --i) {
        const QMetaMethod method = type->method(i);
        if (method.name() == name && takes(method, arguments)) {
            // Qt compares type names letter by letter: give it the receiver's own spelling.
            const QList<QByteArray> spelling = method.parameterTypes();
            for (int j = 0; j < spelling.size(); ++j)
                arguments[size_t(j)] = QGenericArgument(spelling.at(j).constData(), arguments[size_t(j)].data());
            arguments.resize(3);
            return method.invoke(receiver, Qt::QueuedConnection, arguments[0], arguments[1], arguments[2]);
        }
    }
    LogQt::write(Log::Error,
                 QStringLiteral("qv::invokeQueued() -> %1 has no slot %2 for these arguments")
                     .arg(QLatin1String(type->className()), QString::fromLatin1(name)));
    return false;
}

} // namespace qv
