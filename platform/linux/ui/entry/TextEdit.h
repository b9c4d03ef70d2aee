#pragma once

#include <QString>
#include <span>

namespace platform::ui {

// The replacement of a part of a text. Positions in UTF-16 code units.
struct TextEdit {
    qsizetype location = 0;
    qsizetype length = 0;
    QString replacement;

    // What the two texts alone cannot tell ("11" from "1") is told by the place, if the change fits there: its start,
    // and the length of what it replaced.
    struct Place {
        qsizetype location = 0;
        qsizetype length = 0;
    };

    // The edit that makes `after` of `before`: at the first of the places that it fits, else the smallest one. It never
    // splits a character.
    static TextEdit between(const QString& before, const QString& after, std::span<const Place> places);
};

} // namespace platform::ui
