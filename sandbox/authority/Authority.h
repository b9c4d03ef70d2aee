#pragma once

#include "sandbox/authority/AuthorityTypes.h"
#include "sandbox/authority/Grants.h"
#include "sandbox/authority/PolicyFile.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

class PromptWindow;

// Answers the questions of polkit's interface that this product asks, by asking the person in front of the screen. One
// prompt at a time; further questions wait for it, those that allow no interaction are answered at once.
class Authority : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.PolicyKit1.Authority")

public:
    Authority(QDBusConnection bus, PolicyFile::Prompts prompts);
    ~Authority() override;

    // From now on, while the product's rules file is in this folder, what it allows needs no question.
    void setRulesFolder(const QString& folder) { _rulesFolder = folder; }

    // Takes polkit's name on the bus. False when it is taken.
    bool serve();

public Q_SLOTS: // the interface
    AuthorizationResult CheckAuthorization(const Subject& subject, const QString& action, const Details& details,
                                           uint flags, const QString& cancellation);
    void CancelCheckAuthorization(const QString& cancellation);
    QList<TemporaryAuthorization> EnumerateTemporaryAuthorizations(const Subject& subject);
    void RevokeTemporaryAuthorizations(const Subject& subject);
    void RevokeTemporaryAuthorizationById(const QString& identifier);

private:
    struct Question {
        QDBusMessage call;
        Process process;
        QString action;
        QString cancellation;
    };

    std::optional<Process> processOfSubject(const Subject& subject);
    std::optional<AuthorizationResult> knownAnswer(const Process& process, const QString& action);
    bool isAllowedByRule(const QString& action) const;
    void askNext();
    void answer(bool consent);
    void drop(const std::function<bool(const Question&)>& unwanted, bool tell);
    void fail(const QString& text);

    QDBusConnection _bus;
    PolicyFile::Prompts _prompts;
    QString _rulesFolder;
    Grants _grants;
    QDBusServiceWatcher _askers;
    std::deque<Question> _questions; // the first is the one on the screen
    std::unique_ptr<PromptWindow> _prompt;
};
