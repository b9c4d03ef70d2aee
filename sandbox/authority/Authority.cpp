#include "sandbox/authority/Authority.h"

#include "sandbox/authority/PromptWindow.h"

#include <QDateTime>
#include <QDBusConnectionInterface>
#include <QFileInfo>
#include <utility>

namespace {

constexpr uint allowUserInteraction = 1;
constexpr const char* failedError = "org.freedesktop.PolicyKit1.Error.Failed";
constexpr const char* cancelledError = "org.freedesktop.PolicyKit1.Error.Cancelled";

QString programOfProcess(const Process& process)
{
    auto program = QFileInfo(QString("/proc/%1/exe").arg(process.identifier)).symLinkTarget();
    return QString("%1 (process %2)").arg(QFileInfo(program).fileName()).arg(process.identifier);
}

} // namespace

Authority::Authority(QDBusConnection bus, PolicyFile::Prompts prompts)
    : _bus(std::move(bus)),
      _prompts(std::move(prompts))
{
    registerAuthorityTypes();
    _askers.setConnection(_bus);
    _askers.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&_askers, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& name) {
        _askers.removeWatchedService(name);
        drop([&](const Question& question) { return question.call.service() == name; }, false);
    });
}

Authority::~Authority() = default;

bool Authority::serve()
{
    return _bus.registerObject("/org/freedesktop/PolicyKit1/Authority", this, QDBusConnection::ExportAllSlots)
        && _bus.registerService("org.freedesktop.PolicyKit1");
}

AuthorizationResult Authority::CheckAuthorization(const Subject& subject, const QString& action, const Details&,
                                                  uint flags, const QString& cancellation)
{
    if (!_prompts.contains(action.toStdString())) {
        fail(QString("Action %1 is not registered").arg(action));
        return {};
    }
    auto process = processOfSubject(subject);
    if (!process) {
        fail("No such subject");
        return {};
    }
    if (auto known = knownAnswer(*process, action))
        return *known;
    if (!(flags & allowUserInteraction))
        return {false, true, {}};

    setDelayedReply(true);
    _askers.addWatchedService(message().service());
    _questions.push_back({message(), *process, action, cancellation});
    if (_questions.size() == 1)
        askNext();
    return {};
}

void Authority::CancelCheckAuthorization(const QString& cancellation)
{
    auto asker = message().service();
    drop(
        [&](const Question& question) {
            return question.call.service() == asker && question.cancellation == cancellation;
        },
        true);
}

QList<TemporaryAuthorization> Authority::EnumerateTemporaryAuthorizations(const Subject& subject)
{
    QList<TemporaryAuthorization> found;
    auto now = Grants::Clock::now();
    auto process = processOfSubject(subject);
    for (const auto& grant : _grants.all(now)) {
        if (process && *process != grant.process)
            continue;
        auto age = std::chrono::duration_cast<std::chrono::seconds>(now - grant.since).count();
        auto obtained = static_cast<quint64>(QDateTime::currentSecsSinceEpoch() - age);
        Subject holder{"unix-process",
                       {{"pid", grant.process.identifier}, {"start-time", quint64(grant.process.startTime)}}};
        found.push_back({QString::fromStdString(grant.identifier), QString::fromStdString(grant.action), holder,
                         obtained, obtained + static_cast<quint64>(Grants::lifetime.count())});
    }
    return found;
}

void Authority::RevokeTemporaryAuthorizations(const Subject& subject)
{
    if (auto process = processOfSubject(subject))
        _grants.revokeAll(*process);
    else
        fail("No such subject");
}

void Authority::RevokeTemporaryAuthorizationById(const QString& identifier)
{
    if (!_grants.revoke(identifier.toStdString()))
        fail(QString("No such authorization: %1").arg(identifier));
}

// Only connections of this bus: they are what the product asks about.
std::optional<Process> Authority::processOfSubject(const Subject& subject)
{
    if (subject.kind != "system-bus-name")
        return std::nullopt;
    QDBusReply<uint> identifier = _bus.interface()->servicePid(subject.details.value("name").toString());
    return identifier.isValid() ? Process::running(identifier.value()) : std::nullopt;
}

std::optional<AuthorizationResult> Authority::knownAnswer(const Process& process, const QString& action)
{
    if (isAllowedByRule(action))
        return AuthorizationResult{true, false, {}};
    const auto* grant = _grants.find(process, action.toStdString(), Grants::Clock::now());
    if (!grant)
        return std::nullopt;
    return AuthorizationResult{
        true, false, {{"polkit.temporary_authorization_id", QString::fromStdString(grant->identifier)}}};
}

// The file says one thing only, so that its being there is enough.
bool Authority::isAllowedByRule(const QString& action) const
{
    return action == "com.zerkolin.brevane.settings.modify-1" && !_rulesFolder.isEmpty()
        && QFileInfo::exists(_rulesFolder + "/49-com.zerkolin.brevane.rules");
}

void Authority::askNext()
{
    while (!_questions.empty()) {
        const auto& question = _questions.front();
        if (auto known = knownAnswer(question.process, question.action)) {
            _bus.send(question.call.createReply(QVariant::fromValue(*known)));
            _questions.pop_front();
            continue;
        }
        _prompt = std::make_unique<PromptWindow>(QString::fromStdString(_prompts[question.action.toStdString()]),
                                                 programOfProcess(question.process));
        connect(_prompt.get(), &QDialog::finished, this, [this](int result) { answer(result == QDialog::Accepted); });
        _prompt->show();
        _prompt->raise();
        _prompt->activateWindow();
        return;
    }
}

void Authority::answer(bool consent)
{
    auto question = std::move(_questions.front());
    _questions.pop_front();
    _prompt.release()->deleteLater(); // it is still telling the answer
    AuthorizationResult result{false, false, {{"polkit.dismissed", "true"}}};
    if (consent) {
        const auto& grant = _grants.add(question.process, question.action.toStdString(), Grants::Clock::now());
        result = {true, false, {{"polkit.temporary_authorization_id", QString::fromStdString(grant.identifier)}}};
    }
    _bus.send(question.call.createReply(QVariant::fromValue(result)));
    askNext();
}

void Authority::drop(const std::function<bool(const Question&)>& unwanted, bool tell)
{
    bool first = true;
    bool closePrompt = false;
    std::erase_if(_questions, [&](const Question& question) {
        bool dropped = unwanted(question);
        if (dropped && tell)
            _bus.send(question.call.createErrorReply(cancelledError, "The check was cancelled"));
        closePrompt |= dropped && first;
        first = false;
        return dropped;
    });
    if (closePrompt) {
        _prompt.reset();
        askNext();
    }
}

void Authority::fail(const QString& text)
{
    sendErrorReply(failedError, text);
}
