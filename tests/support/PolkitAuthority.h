#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Stands in for the system's authority on the bus that DBUS_SYSTEM_BUS_ADDRESS names, with answers that a test scripts.
// It serves on a thread of its own.
class PolkitAuthority {
public:
    enum class Answer {
        Authorized, // granted without a question
        KeptGrant,  // the user says yes, once for each subject; without interaction only what was granted before
        Challenge,  // nobody is there to answer the question
        Dismissed,  // the user closes the dialog; without interaction there is no dialog
        Denied,     // a wrong password, or not an administrator
        Hang,       // the dialog stays open until the next setAnswer
        Crash,      // the authority goes away without an answer
        Unknown,    // there is no such action; every action without a script
    };

    struct Call {
        std::string subjectKind;
        std::string subjectName;
        std::string action;
        std::uint32_t flags;
        std::size_t detailCount;
    };

    PolkitAuthority();
    ~PolkitAuthority();
    PolkitAuthority(const PolkitAuthority&) = delete;
    PolkitAuthority& operator=(const PolkitAuthority&) = delete;

    void setAnswer(const std::string& action, Answer answer);
    // Takes the name again after a crash; the grants are gone.
    void restart();

    std::vector<Call> calls() const;
    // The calls once there are that many, or after ten seconds.
    std::vector<Call> waitForCalls(std::size_t count) const;
    // The ids of grants that were revoked, in order.
    std::vector<std::string> revoked() const;

private:
    struct State;
    std::unique_ptr<State> _state;
};
