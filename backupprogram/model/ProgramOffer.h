#pragma once

#include "platform/PropertyList.h"

#include <string>
#include <string_view>
#include <vector>

// A field that a backup program needs; the kinds are those of BackupFieldKind.
struct OfferedField {
    std::string key;
    std::string kind;
    bool isRequired = false;
};

// A backup program as the scheduler helper tells of it; the texts are those of BackupProgramKey, empty when absent.
struct OfferedProgram {
    std::string identifier;
    std::string name;
    std::string package;
    std::string install;
    std::string missing;
    std::string place;
    std::string restore;
    bool isInstalled = false;
    std::vector<OfferedField> fields;

    // Null when the program has none of this kind, or of this key.
    const OfferedField* fieldOfKind(std::string_view kind) const;
    const OfferedField* fieldOfKey(std::string_view key) const;
    // Whether it could back up as soon as it is chosen.
    bool isReady() const { return isInstalled && missing.empty(); }
};

// What can be chosen, and what is chosen.
struct ProgramOffer {
    std::vector<OfferedProgram> programs; // first those that are installed, then the others
    platform::Dictionary chosen;          // Program, Fields and PreventSleep of BackupProgramKey; empty: nothing

    static ProgramOffer inReply(const platform::Dictionary& reply);

    // Null when it is none of them.
    const OfferedProgram* program(std::string_view identifier) const;
    // Whether a program other than the system's services is installed.
    bool hasInstalledPackage() const;
    // Whether a program is chosen, be it there or not.
    bool hasChoice() const;
};

// A text of the program for people, with the fields put in for their "{Key}". What is not filled in yet stays as its
// key in capitals.
std::string withFields(std::string_view text, const platform::Dictionary& fields);
// The same, as it is typed into a shell.
std::string commandWithFields(std::string_view text, const platform::Dictionary& fields);
