#pragma once

class QCoreApplication;

namespace platform::ui {

// Has the toolkit's own texts, such as those of a field's context menu, in the language of the application's string
// table, where the toolkit's translations are installed.
void installToolkitTranslation(QCoreApplication& application);

} // namespace platform::ui
