#include "firststart/model/FirstStartCondition.h"
#include "firststart/model/FirstStartDraft.h"
#include "protocol/BackupProgram.h"
#include "protocol/ScheduleRanges.h"

#include <doctest/doctest.h>

using platform::Array;
using platform::Dictionary;

namespace {

const OfferedField folders{"Folders", BackupFieldKind::Folders, true};
const OfferedField repository{"Repository", BackupFieldKind::Destination, true};
const OfferedField passwordFile{"PasswordFile", BackupFieldKind::SecretFile, true};
const OfferedField excludes{"Excludes", BackupFieldKind::Patterns, false};

OfferedProgram programWith(const char* identifier, std::vector<OfferedField> fields)
{
    OfferedProgram program;
    program.identifier = identifier;
    program.name = identifier;
    program.package = identifier;
    program.isInstalled = true;
    program.fields = std::move(fields);
    return program;
}

const OfferedProgram borg = programWith("borg", {folders, repository, excludes});
const OfferedProgram restic = programWith("restic", {folders, repository, passwordFile, excludes});

ProgramOffer offerOf(std::vector<OfferedProgram> programs)
{
    return {.programs = std::move(programs), .chosen = {}};
}

std::vector<std::string> identifiersOf(const ProgramOffer& offer)
{
    std::vector<std::string> identifiers;
    for (const auto* const each : FirstStartDraft::programs(offer))
        identifiers.push_back(each->identifier);
    return identifiers;
}

std::string destinationFor(const std::vector<std::string>& disks)
{
    return FirstStartDraft::suggested(offerOf({borg}), "/home/anna", disks).destination;
}

EditorCapabilities everything()
{
    return EditorCapabilities::of(true, [](unsigned) { return true; });
}

} // namespace

TEST_CASE("only the very record of a fresh installation may be a first start")
{
    CHECK(mayBeFirstStart(defaultScheduleSettings()));
    CHECK_FALSE(mayBeFirstStart({}));
    for (const auto& [key, value] : defaultScheduleSettings()) {
        CAPTURE(key);
        auto other = defaultScheduleSettings();
        other.remove(key);
        CHECK_FALSE(mayBeFirstStart(other));
        other.set(key, "something else");
        CHECK_FALSE(mayBeFirstStart(other));
    }
    for (const bool isDisabled : {false, true}) {
        auto marked = defaultScheduleSettings();
        marked.set("Disabled", isDisabled);
        CHECK_FALSE(mayBeFirstStart(marked));
    }
}

TEST_CASE("it is one when the scheduler helper says so and nothing is chosen")
{
    CHECK(isFirstStart({{"NeverApplied", true}, {"Programs", Array()}}));
    CHECK(isFirstStart({{"NeverApplied", true}, {"Program", ""}}));
    CHECK_FALSE(isFirstStart({{"Programs", Array()}}));
    CHECK_FALSE(isFirstStart({{"NeverApplied", false}}));
    CHECK_FALSE(isFirstStart({{"NeverApplied", true}, {"Program", "borg"}}));
}

TEST_CASE("the page offers what is ready and needs no more than folders and a password")
{
    CHECK(identifiersOf(offerOf({borg, restic})) == std::vector<std::string>{"borg", "restic"});
    CHECK(identifiersOf(offerOf({programWith("timeshift", {})})) == std::vector<std::string>{"timeshift"});
    auto missing = programWith("borgmatic", {});
    missing.missing = "/etc/borgmatic/config.yaml";
    auto absent = borg;
    absent.isInstalled = false;
    auto service = programWith("service", {});
    service.package.clear();
    const auto rsnapshot = programWith("rsnapshot", {{"Level", BackupFieldKind::Word, true}});
    CHECK(identifiersOf(offerOf({missing, absent, service, rsnapshot})).empty());
    CHECK(identifiersOf(offerOf({programWith("x", {{"Level", BackupFieldKind::Word, false}})})).size() == 1);
}

TEST_CASE("without such a program the first one that the page could set up is to be installed")
{
    auto absentBorg = borg;
    absentBorg.isInstalled = false;
    auto absentRestic = restic;
    absentRestic.isInstalled = false;
    auto absentTimeshift = programWith("timeshift", {});
    absentTimeshift.isInstalled = false;
    const auto offer = offerOf({absentTimeshift, absentBorg, absentRestic});
    REQUIRE(FirstStartDraft::programToInstall(offer));
    CHECK(FirstStartDraft::programToInstall(offer)->identifier == "borg");
    CHECK_FALSE(FirstStartDraft::programToInstall(offerOf({restic, absentBorg})));
    CHECK_FALSE(FirstStartDraft::programToInstall(offerOf({})));
}

TEST_CASE("at first the home goes, with the first program, to a disk that was plugged in or else beside the system")
{
    const auto draft = FirstStartDraft::suggested(offerOf({borg, restic}), "/home/anna", {});
    CHECK(draft.program == "borg");
    CHECK(draft.folder == "/home/anna");
    CHECK(draft.secretFile.empty());
    CHECK(draft.when == FirstStartDraft::WhenInactive);
    CHECK(draft.time == platform::TimeOfDay{12, 0});
    CHECK(destinationFor({}) == "/var/backups/brevane");
    CHECK(destinationFor({"/", "/home", "/boot/efi", "/media"}) == "/var/backups/brevane");
    CHECK(destinationFor({"/", "/media/anna/Blue", "/media/anna/Red"}) == "/media/anna/Blue/Brevane");
    CHECK(destinationFor({"/", "/run/media/anna/Red"}) == "/run/media/anna/Red/Brevane");
    CHECK(FirstStartDraft::suggested(offerOf({}), "/home/anna", {}).program.empty());
}

TEST_CASE("answers stay when something else can be chosen, and so does a program that is still there")
{
    auto draft = FirstStartDraft::suggested(offerOf({}), "/home/anna", {});
    draft.folder = "/srv/photos";
    draft.destination = "/mnt/backups";
    draft.when = FirstStartDraft::EveryDay;
    auto expected = draft;
    expected.program = "borg";
    draft = draft.with(offerOf({borg, restic}));
    CHECK(draft == expected);
    draft.program = "restic";
    CHECK(draft.with(offerOf({borg, restic})) == draft);
    CHECK(draft.with(offerOf({borg})) == expected);
    CHECK(draft.with(offerOf({})).program.empty());
}

TEST_CASE("the choice that is sent holds the fields of its program and no empty ones")
{
    const auto offer = offerOf({borg, restic});
    auto draft = FirstStartDraft::suggested(offer, "/home/anna", {});
    draft.secretFile = "/root/secret";
    const Dictionary fields{{"Folders", Array{"/home/anna"}}, {"Repository", "/var/backups/brevane"}};
    CHECK(draft.programDraft(offer).choice(offer)
          == Dictionary{{"Program", "borg"}, {"Fields", fields}, {"PreventSleep", false}});
    draft.program = "restic";
    auto withSecret = fields;
    withSecret.set("PasswordFile", "/root/secret");
    CHECK(draft.programDraft(offer).fields == withSecret);
    draft.folder.clear();
    draft.destination.clear();
    CHECK(draft.programDraft(offer).fields == Dictionary{{"PasswordFile", "/root/secret"}});
    draft.program.clear();
    CHECK(draft.programDraft(offer) == ProgramDraft());
}

TEST_CASE("when inactive, the record is the fetched one with backups on")
{
    const FirstStartDraft draft;
    auto expected = defaultScheduleSettings();
    expected.set("Backups", true);
    CHECK(draft.record(defaultScheduleSettings(), everything()) == expected);
    CHECK(draft.record(defaultScheduleSettings(), {}) == expected);
}

TEST_CASE("every day is one time, made up for as soon as possible")
{
    FirstStartDraft draft;
    draft.when = FirstStartDraft::EveryDay;
    draft.time = {21, 30};
    auto expected = defaultScheduleSettings();
    expected.set("Backups", true);
    expected.set("BackupsMode", "CalendarIntervals");
    expected.set("CalendarIntervals",
                 Dictionary{{"Intervals", Array{Dictionary{{"Hour", 21}, {"Minute", 30}}}}, {"ASAP", true}});
    CHECK(draft.record(defaultScheduleSettings(), everything()) == expected);
}
