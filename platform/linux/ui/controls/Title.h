#pragma once

#include <QString>
#include <string>

namespace platform::ui {

// Titles are plain text; the toolkit writes them with an ampersand before the letter that Alt presses.
std::string plainTitle(const QString& marked);

// The title with the letter of `before` still marked, if the title has it.
QString markedTitle(const std::string& title, const QString& before);

} // namespace platform::ui
