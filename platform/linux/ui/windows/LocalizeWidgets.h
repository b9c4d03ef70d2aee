#pragma once

class QWidget;

namespace platform::ui {

// Looks the texts of an interface file up in the application's string table: of the widget and of all widgets in it.
// Where one reads from right to left, also swaps the margins, which the toolkit leaves as they are.
void localizeWidgets(QWidget& top);

} // namespace platform::ui
