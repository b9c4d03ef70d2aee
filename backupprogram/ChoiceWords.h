#pragma once

#include "backupprogram/model/BackupTest.h"
#include "backupprogram/model/ProgramOffer.h"
#include "platform/Error.h"

#include <string>

// What the window says, in the user's language.
namespace ChoiceWords {

// How the program stands in the list of programs.
std::string title(const OfferedProgram& program);
// Whether the program is there, and what it lacks. The command to install it follows where there is one.
std::string state(const OfferedProgram& program);
// The same where none is selected. `suggested` is what could be installed; null when a program is there, or none known.
std::string stateOfNone(const OfferedProgram* suggested);

// What is wrong with a refused choice and what can be done.
std::string fault(const platform::Error& error, const OfferedProgram* program);
// What the helper cannot be asked because of.
std::string unavailable(const platform::Error& error);

std::string outcome(const BackupTestOutcome& outcome);

} // namespace ChoiceWords
