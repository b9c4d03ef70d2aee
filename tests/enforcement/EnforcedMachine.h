#pragma once

#include "helper/enforcement/EnforcementLoop.h"
#include "helper/linux/programs/ProgramChoice.h"
#include "platform/Queue.h"
#include "tests/support/TemporaryDirectory.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The enforcement on a scripted machine: its clocks stand still between calls, it is on mains and on a wired network,
// and somebody uses it. It begins at 2026-01-01 00:00:00 UTC, a Thursday, with a backup program chosen.
class EnforcedMachine {
public:
    explicit EnforcedMachine(ScheduleSettings settings = {});
    ~EnforcedMachine();

    // The helper's end without a word, as by kill -9, and a later start with a record.
    void kill();
    void begin(const ScheduleSettings& settings);

    void apply(const ScheduleSettings& settings);
    platform::Result<void> startNow();
    platform::Dictionary status();

    // Lets everything that was asked for happen.
    void flush();
    // Time goes by, or a backup ends, and everything happens that follows from it.
    void advance(std::chrono::seconds time);
    void advanceTo(const std::string& time); // "hh:mm:ss" of the first day
    void sleep(std::chrono::seconds time);
    void setClockBy(std::chrono::seconds amount);
    void endBackup(std::optional<int> status, const std::string& reason = {});

    void runOtherBackup(bool runs);
    void chooseProgram(bool isChosen, bool preventsSleep = false);
    void setMaintenance(bool isAtWork);
    bool isUnderWay() const { return *_isUnderWay; }

    // The texts of the journal, oldest first; those after the ones that were asked for before.
    std::vector<std::string> told();
    // The same as "hh:mm:ss event reasons".
    std::vector<std::string> events();
    std::size_t starts() const;

    std::string statePath() const { return _root.file("var/db/brevane/state.plist"); }
    std::optional<platform::Dictionary> stored() const;

    static ScheduleSettings everyMinutes(int minutes);
    // At times "hh:mm" of each day.
    static ScheduleSettings daily(const std::vector<std::string>& times, bool asap = false);

private:
    std::vector<platform::Dictionary> journal();

    TemporaryDirectory _root;
    std::shared_ptr<helper::ProgramChoice> _program;
    std::shared_ptr<std::atomic<bool>> _isUnderWay;
    std::atomic<bool> _isMaintained = false;
    std::shared_ptr<platform::Queue> _queue;
    std::unique_ptr<helper::EnforcementLoop> _loop;
    std::size_t _read = 0;
};
