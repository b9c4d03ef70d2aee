#pragma once

#include <QFileDialog>
#include <QStringList>

class QLineEdit;

namespace platform::ui {

// The toolkit's own file dialog, because a desktop's has no field for tags.
class SavePanelDialog : public QFileDialog {
    Q_OBJECT

public:
    SavePanelDialog(const QStringList& types, const QString& name, QWidget* parent);

    QStringList tagNames() const;

    void accept() override;

private:
    void addTagField();
    QString chosenType() const;
    QLineEdit* nameField() const;
    // The name without an extension that is one of the types.
    QString withoutType(const QString& name) const;

    QStringList _types;
    QLineEdit* _tags;
};

} // namespace platform::ui
