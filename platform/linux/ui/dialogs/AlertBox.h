#pragma once

#include "platform/ui/Alert.h"

#include <memory>
#include <optional>
#include <QMessageBox>
#include <string>
#include <vector>

namespace platform::ui {

// A message box that knows its buttons by their order. A class of its own also keeps the toolkit from handing the
// message to a desktop's dialog, which would not show the two texts and the button order.
class AlertBox : public QMessageBox {
    Q_OBJECT

public:
    struct Content {
        std::optional<AlertStyle> style = {};
        std::string messageText;
        std::string informativeText;
        std::vector<std::string> buttons;
        std::shared_ptr<View> accessoryView = nullptr;
    };

    AlertBox(const Content& content, QWidget* parent);
    ~AlertBox() override;

    AlertStyle alertStyle() const { return _style; }
    const QList<QPushButton*>& buttonsInOrder() const { return _inOrder; }
    // Of the button that was pressed; Alert::Stop when it was closed, Alert::Abort while it was not.
    int answer() const;

    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void cancel();
    void addButtons(const std::vector<std::string>& titles);
    void setTexts(const Content& content);

    void insertAccessory(QWidget& accessory);

    AlertStyle _style;
    QList<QPushButton*> _inOrder;
    QPushButton* _cancel = nullptr; // null where none is titled so
    bool _isDone = false;
    std::shared_ptr<View> _accessoryView;
};

} // namespace platform::ui
