#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

// The structures of the authority's interface, as they travel.

using Details = QMap<QString, QString>;

struct Subject { // (sa{sv})
    QString kind;
    QVariantMap details;
};

struct AuthorizationResult { // (bba{ss})
    bool isAuthorized = false;
    bool isChallenge = false;
    Details details;
};

struct TemporaryAuthorization { // (ss(sa{sv})tt)
    QString identifier;
    QString action;
    Subject subject;
    quint64 obtained = 0; // seconds since 1970
    quint64 expires = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Subject& subject);
const QDBusArgument& operator>>(const QDBusArgument& argument, Subject& subject);
QDBusArgument& operator<<(QDBusArgument& argument, const AuthorizationResult& result);
const QDBusArgument& operator>>(const QDBusArgument& argument, AuthorizationResult& result);
QDBusArgument& operator<<(QDBusArgument& argument, const TemporaryAuthorization& authorization);
const QDBusArgument& operator>>(const QDBusArgument& argument, TemporaryAuthorization& authorization);

Q_DECLARE_METATYPE(Details)
Q_DECLARE_METATYPE(Subject)
Q_DECLARE_METATYPE(AuthorizationResult)
Q_DECLARE_METATYPE(TemporaryAuthorization)

// Before any of them is sent or received.
void registerAuthorityTypes();
