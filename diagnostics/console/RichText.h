#pragma once

#include "platform/StyledText.h"
#include "platform/ui/TextAppearance.h"

#include <string>

// The text as an RTF document, for paper: dark on light. Text without a font is in the reader's own, text in the
// standard colour too. Any thread.
std::string richText(const platform::StyledText& text, const platform::ui::FontDescription& fixedPitchFont);
