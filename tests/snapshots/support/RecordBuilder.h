#pragma once

#include "platform/Snapshots.h"
#include "tests/platform/ScriptedSnapshots.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// A packed attribute record, written out by hand: each field as the format has it, and each may be left out or be
// wrong.
struct RecordBuilder {
    std::optional<std::string> name = {};
    std::optional<std::uint64_t> objectIdentifier = {};
    std::optional<std::int64_t> creationTime = {};

    bool endsWithZero = true;
    std::optional<std::int32_t> nameOffset = {};
    std::optional<std::uint32_t> nameLength = {};
    std::optional<std::uint32_t> length = {};
    std::uint32_t otherMasks = 0; // of the other four groups, whose attributes are not there
    std::size_t padding = 0;

    std::vector<std::byte> bytes() const;
};

std::vector<std::byte> joinedRecords(const std::vector<RecordBuilder>& records);
scripted::snapshots::Answer answerOf(const std::vector<RecordBuilder>& records);
