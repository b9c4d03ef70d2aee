#include "platform/linux/ui/styledtext/FindBar.h"

#include "platform/Localization.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace platform::ui {

namespace {

QString findBarText(const char* key)
{
    return QString::fromStdString(localizedString(key));
}

} // namespace

FindBar::FindBar(QWidget* parent) : QWidget(parent), _field(new QLineEdit(this)), _notice(new QLabel(this))
{
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    _field->setObjectName(QStringLiteral("findField"));
    _field->setPlaceholderText(findBarText("Find"));
    _field->setAccessibleName(findBarText("Find"));
    _field->setClearButtonEnabled(true);
    _field->setMaximumWidth(280);
    row->addWidget(_field, 1);
    addButton("▲", "Previous Match", &FindBar::previousRequested);
    addButton("▼", "Next Match", &FindBar::nextRequested);
    _notice->setObjectName(QStringLiteral("findNotice"));
    row->addWidget(_notice);
    row->addStretch(1);
    addButton("✕", "Close", &FindBar::closed);
    connect(_field, &QLineEdit::textEdited, this, &FindBar::wordEdited);
    connect(_field, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty())
            setNotice({});
    });
}

void FindBar::addButton(const char* arrow, const char* name, void (FindBar::*signal)())
{
    auto* const button = new QToolButton(this);
    button->setText(QString::fromUtf8(arrow));
    button->setToolTip(findBarText(name));
    button->setAccessibleName(findBarText(name));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    connect(button, &QToolButton::clicked, this, signal);
    layout()->addWidget(button);
}

QString FindBar::word() const
{
    return _field->text();
}

void FindBar::open()
{
    show();
    _field->setFocus(Qt::ShortcutFocusReason);
    _field->selectAll();
}

void FindBar::setNotice(const QString& notice)
{
    _notice->setText(notice);
    _notice->setAccessibleName(notice);
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        Q_EMIT closed();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!_field->hasFocus())
            break;
        // On upwards, as the search for what is typed goes.
        if (event->modifiers() & Qt::ShiftModifier)
            Q_EMIT nextRequested();
        else
            Q_EMIT previousRequested();
        return;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

} // namespace platform::ui
