#include "backupprogram/model/BackupTest.h"
#include "backupprogram/model/ProgramDraft.h"
#include "backupprogram/model/ProgramOffer.h"
#include "scheduling/InstantDate.h"
#include "scheduling/JournalEntry.h"

#include <chrono>
#include <doctest/doctest.h>
#include <string>
#include <vector>

using platform::Array;
using platform::Dictionary;

namespace {

Dictionary field(const char* key, const char* kind)
{
    return {{"Key", key}, {"Kind", kind}, {"Required", true}};
}

Dictionary reply()
{
    return {
        {"Program", "borg"},
        {"Fields", Dictionary{{"Folders", Array{"/home"}}, {"Repository", "/srv/b"}}},
        {"PreventSleep", true},
        {"Programs",
         Array{Dictionary{{"Program", "restic"}, {"Name", "restic"}, {"Package", "restic"}, {"Installed", false}},
               Dictionary{{"Program", "borg"},
                          {"Name", "Borg"},
                          {"Package", "borgbackup"},
                          {"Installed", true},
                          {"FieldList",
                           Array{field("Folders", "Folders"), field("Repository", "Destination"), 7,
                                 field("Excludes", "Patterns")}}},
               Dictionary{{"Name", "No identifier"}}, "text",
               Dictionary{{"Program", "btrbk"},
                          {"Name", "btrbk"},
                          {"Package", "btrbk"},
                          {"Installed", true},
                          {"Missing", "/etc/btrbk.conf"}}}},
    };
}

std::vector<std::string> identifiers(const ProgramOffer& offer)
{
    std::vector<std::string> identifiers;
    for (const auto& program : offer.programs)
        identifiers.push_back(program.identifier);
    return identifiers;
}

ProgramDraft named(const char* program)
{
    ProgramDraft draft;
    draft.program = program;
    return draft;
}

platform::Date at(std::int64_t seconds)
{
    return scheduling::dateOf(seconds);
}

Dictionary ended(std::int64_t start, std::int64_t end, bool succeeded)
{
    return {{"State", "waiting"},
            {"LastStart", at(start)},
            {"LastEnd", at(end)},
            {"LastSucceeded", at(succeeded ? end : 5)},
            {"Journal",
             Array{Dictionary{{"At", at(end)}, {"Event", "blocked"}, {"Text", "Waiting."}},
                   Dictionary{{"At", at(end)}, {"Event", "end"}, {"Succeeded", succeeded}, {"Text", "It ended."}}}}};
}

} // namespace

TEST_CASE("what is installed comes first, and what makes no sense in a reply is left out")
{
    const auto offer = ProgramOffer::inReply(reply());
    CHECK(identifiers(offer) == std::vector<std::string>{"borg", "btrbk", "restic"});
    CHECK(offer.hasChoice());
    CHECK(offer.hasInstalledPackage());
    const auto* const borg = offer.program("borg");
    REQUIRE(borg);
    CHECK(borg->isReady());
    CHECK(borg->fields.size() == 3);
    CHECK(borg->fieldOfKind("Destination")->key == "Repository");
    CHECK(borg->fieldOfKey("Excludes")->kind == "Patterns");
    CHECK_FALSE(borg->fieldOfKind("Unit"));
    CHECK_FALSE(offer.program("btrbk")->isReady());
    CHECK_FALSE(offer.program("restic")->isReady());
    CHECK_FALSE(offer.program("tar"));
}

TEST_CASE("a reply without anything offers nothing and has no choice")
{
    const auto offer = ProgramOffer::inReply({});
    CHECK(offer.programs.empty());
    CHECK_FALSE(offer.hasChoice());
    CHECK_FALSE(offer.hasInstalledPackage());
    CHECK_FALSE(ProgramOffer::inReply({{"Program", ""}}).hasChoice());
    CHECK(ProgramOffer::inReply({{"Program", "gone"}}).hasChoice());
}

TEST_CASE("a draft begins as the choice in force and says the same when it is sent")
{
    const auto offer = ProgramOffer::inReply(reply());
    const auto draft = ProgramDraft::of(offer.chosen);
    CHECK(draft.program == "borg");
    CHECK(draft.texts("Folders") == std::vector<std::string>{"/home"});
    CHECK(draft.text("Repository") == "/srv/b");
    CHECK(draft.preventsSleep);
    CHECK(draft.choice(offer) == offer.chosen);
    CHECK(ProgramDraft::of(draft.dictionary()) == draft);
}

TEST_CASE("a draft keeps the fields of every program, and sends those of its own")
{
    const auto offer = ProgramOffer::inReply(reply());
    auto draft = ProgramDraft::of(offer.chosen);
    draft.setText("Level", "daily");
    CHECK(draft.choice(offer) == offer.chosen);
    draft.program = "btrbk";
    CHECK(draft.choice(offer) == Dictionary{{"Program", "btrbk"}, {"PreventSleep", true}});
    draft.program.clear();
    CHECK(draft.choice(offer) == Dictionary{{"PreventSleep", true}});
    draft.program = "borg";
    CHECK(draft.choice(offer) == offer.chosen);
}

TEST_CASE("an emptied field is no field")
{
    ProgramDraft draft;
    draft.setText("Repository", "/a");
    draft.setTexts("Folders", {"/home"});
    draft.setText("Repository", "");
    draft.setTexts("Folders", {});
    CHECK(draft == ProgramDraft());
    CHECK(ProgramDraft::of({{"Fields", Dictionary{{"Repository", ""}, {"Folders", Array()}}}}) == ProgramDraft());
}

TEST_CASE("edits are undone one by one, and what is typed into one field is one edit")
{
    DraftHistory history(named("a"));
    CHECK_FALSE(history.canUndo());
    history.edit(named("a"));
    CHECK_FALSE(history.canUndo()); // nothing changed
    history.edit(named("b"));
    auto typed = history.draft();
    for (const auto* const text : {"/", "/s", "/sr"}) {
        typed.setText("Repository", text);
        history.edit(typed, "Repository");
    }
    auto other = typed;
    other.setText("Level", "d");
    history.edit(other, "Level");
    history.undo();
    CHECK(history.draft() == typed);
    history.undo();
    CHECK(history.draft() == named("b"));
    history.edit(typed, "Repository"); // typed anew, which is another edit
    history.undo();
    CHECK(history.draft() == named("b"));
    history.undo();
    CHECK(history.draft() == named("a"));
    CHECK_FALSE(history.canUndo());
    history.undo();
    CHECK(history.draft() == named("a"));
}

TEST_CASE("fields stand in a text as they are, and in a command as one word for a shell")
{
    const Dictionary fields{{"Repository", "/media/anna/My Disk"}, {"Folders", Array{"/a"}}};
    CHECK(withFields("In {Repository}.", fields) == "In /media/anna/My Disk.");
    CHECK(commandWithFields("borg list {Repository} {PasswordFile}", fields)
          == "borg list '/media/anna/My Disk' PASSWORDFILE");
    CHECK(commandWithFields("borg list {Repository}", {{"Repository", "/srv/b-1"}}) == "borg list /srv/b-1");
    CHECK(commandWithFields("x {Repository}", {{"Repository", "/it's $(rm)"}}) == "x '/it'\\''s $(rm)'");
    CHECK(withFields("{Folders} {", fields) == "FOLDERS {");
    CHECK(withFields("{Repository}", {{"Repository", "{Folders}"}}) == "{Folders}");
}

TEST_CASE("a test goes on while the backup runs, and ends as the backup did")
{
    BackupTest test;
    CHECK_FALSE(test.outcomeIn({{"State", "running"}, {"LastStart", at(100)}}));
    CHECK_FALSE(test.outcomeIn({{"State", "running"}, {"LastStart", at(100)}, {"Journal", Array{1}}}));
    CHECK(test.outcomeIn(ended(100, 160, true)) == BackupTestOutcome{true, "It ended."});
    CHECK(BackupTest().outcomeIn(ended(100, 100, false)) == BackupTestOutcome{false, "It ended."});
}

TEST_CASE("an end in the journal that is older than the test is not its end")
{
    auto status = ended(100, 160, false);
    status.set("LastStart", at(200));
    status.set("LastEnd", at(201));
    BackupTest test;
    CHECK(test.outcomeIn(status) == BackupTestOutcome{false, ""});
    status.remove("LastEnd");
    CHECK_FALSE(BackupTest().outcomeIn(status));
    CHECK_FALSE(BackupTest().outcomeIn({}));
}
