#include "sandbox/authority/AuthorityTypes.h"

#include <QDBusMetaType>

// The readers return what they were given, as the toolkit wants them to.
// NOLINTBEGIN(bugprone-return-const-ref-from-parameter)

QDBusArgument& operator<<(QDBusArgument& argument, const Subject& subject)
{
    argument.beginStructure();
    argument << subject.kind << subject.details;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Subject& subject)
{
    argument.beginStructure();
    argument >> subject.kind >> subject.details;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const AuthorizationResult& result)
{
    argument.beginStructure();
    argument << result.isAuthorized << result.isChallenge << result.details;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, AuthorizationResult& result)
{
    argument.beginStructure();
    argument >> result.isAuthorized >> result.isChallenge >> result.details;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const TemporaryAuthorization& authorization)
{
    argument.beginStructure();
    argument << authorization.identifier << authorization.action << authorization.subject << authorization.obtained
             << authorization.expires;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TemporaryAuthorization& authorization)
{
    argument.beginStructure();
    argument >> authorization.identifier >> authorization.action >> authorization.subject >> authorization.obtained
        >> authorization.expires;
    argument.endStructure();
    return argument;
}

// NOLINTEND(bugprone-return-const-ref-from-parameter)

void registerAuthorityTypes()
{
    qDBusRegisterMetaType<Details>();
    qDBusRegisterMetaType<Subject>();
    qDBusRegisterMetaType<AuthorizationResult>();
    qDBusRegisterMetaType<TemporaryAuthorization>();
    qDBusRegisterMetaType<QList<TemporaryAuthorization>>();
}
