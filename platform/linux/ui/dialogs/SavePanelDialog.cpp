#include "platform/linux/ui/dialogs/SavePanelDialog.h"

#include "platform/Localization.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMimeDatabase>
#include <QStandardPaths>

namespace platform::ui {

namespace {

QString filterFor(const QString& type)
{
    const auto pattern = QStringLiteral("*.") + type;
    return QMimeDatabase().mimeTypeForFile(pattern, QMimeDatabase::MatchExtension).comment() + QStringLiteral(" (")
        + pattern + QLatin1Char(')');
}

} // namespace

SavePanelDialog::SavePanelDialog(const QStringList& types, const QString& name, QWidget* parent)
    : QFileDialog(parent),
      _types(types),
      _tags(new QLineEdit(this))
{
    setOption(DontUseNativeDialog);
    setAcceptMode(AcceptSave);
    setLabelText(LookIn, QString::fromStdString(localizedString("Save in:")));
    setFileMode(AnyFile);
    setAttribute(Qt::WA_QuitOnClose, false);
    QStringList filters;
    for (const auto& type : types)
        filters += filterFor(type);
    setNameFilters(filters);
    setDefaultSuffix(types.value(0));
    const auto folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    setDirectory(QFileInfo(folder).isDir() ? folder : QDir::homePath());
    selectFile(types.isEmpty() ? name : name + QLatin1Char('.') + types.first());
    addTagField();
    connect(this, &QFileDialog::filterSelected, this, [this] {
        setDefaultSuffix(chosenType());
        nameField()->setText(withoutType(nameField()->text()) + QLatin1Char('.') + chosenType());
    });
}

void SavePanelDialog::addTagField()
{
    auto* const grid = qobject_cast<QGridLayout*>(layout());
    if (!grid)
        return;
    const auto title = QString::fromStdString(localizedString("Tags:"));
    auto* const label = new QLabel(title, this);
    label->setBuddy(_tags);
    _tags->setObjectName(QStringLiteral("tagNamesField"));
    _tags->setAccessibleName(title);
    _tags->setPlaceholderText(QString::fromStdString(localizedString("Separated by commas")));
    const int row = grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(_tags, row, 1);
}

QLineEdit* SavePanelDialog::nameField() const
{
    return findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
}

QString SavePanelDialog::chosenType() const
{
    return _types.value(static_cast<int>(nameFilters().indexOf(selectedNameFilter())), _types.value(0));
}

QString SavePanelDialog::withoutType(const QString& name) const
{
    const QFileInfo info(name);
    return _types.contains(info.suffix(), Qt::CaseInsensitive) ? name.chopped(info.suffix().size() + 1) : name;
}

QStringList SavePanelDialog::tagNames() const
{
    QStringList names;
    for (const auto& name : _tags->text().split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        if (!name.trimmed().isEmpty())
            names += name.trimmed();
    }
    return names;
}

void SavePanelDialog::accept()
{
    auto* const field = nameField();
    const auto name = field ? field->text() : QString();
    const bool isFolder = QFileInfo(directory(), name).isDir();
    if (!name.isEmpty() && !isFolder && withoutType(name) == name && !_types.isEmpty())
        field->setText(name + QLatin1Char('.') + chosenType());
    QFileDialog::accept();
}

} // namespace platform::ui
