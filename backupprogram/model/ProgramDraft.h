#pragma once

#include "backupprogram/model/ProgramOffer.h"

#include <string>
#include <string_view>
#include <vector>

// A choice that is being edited. It keeps what was entered for other programs, so that looking at one loses nothing.
struct ProgramDraft {
    std::string program;         // empty: none
    platform::Dictionary fields; // of every program that was looked at, by their keys; none of them is empty
    bool preventsSleep = false;

    bool operator==(const ProgramDraft&) const = default;

    // Of a choice by BackupProgramKey; whatever is absent or no such value is as if nothing had been chosen.
    static ProgramDraft of(const platform::Dictionary& choice);
    // All of it, by the same keys.
    platform::Dictionary dictionary() const;
    // What is sent: the program with the fields that it has.
    platform::Dictionary choice(const ProgramOffer& offer) const;

    std::string text(std::string_view key) const;
    std::vector<std::string> texts(std::string_view key) const;
    void setText(const std::string& key, const std::string& text);
    void setTexts(const std::string& key, const std::vector<std::string>& texts);
};

// A draft and how it came about, edit by edit.
class DraftHistory {
public:
    explicit DraftHistory(ProgramDraft draft = {}) : _draft(std::move(draft)) { }

    const ProgramDraft& draft() const { return _draft; }
    // Edits of the same subject that follow each other are one; an empty subject is never the same. An edit that
    // changes nothing is none.
    void edit(ProgramDraft changed, std::string subject = {});

    bool canUndo() const { return !_before.empty(); }
    void undo();

private:
    ProgramDraft _draft;
    std::vector<ProgramDraft> _before; // oldest first
    std::string _subject;              // of the last edit
};
