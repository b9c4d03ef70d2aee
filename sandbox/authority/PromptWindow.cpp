#include "sandbox/authority/PromptWindow.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace {

QLabel* wrappedLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(360);
    return label;
}

QPushButton* namedButton(QDialogButtonBox& box, QDialogButtonBox::ButtonRole role, const QString& title,
                         const QString& objectName)
{
    auto* button = box.addButton(title, role);
    button->setObjectName(objectName);
    button->setAccessibleName(title);
    return button;
}

} // namespace

PromptWindow::PromptWindow(const QString& prompt, const QString& asker)
{
    setWindowTitle("Authenticate");
    setWindowFlag(Qt::WindowStaysOnTopHint);

    auto* text = wrappedLabel(prompt);
    text->setObjectName("authenticationPrompt");
    text->setAccessibleName(prompt);
    auto bold = text->font();
    bold.setBold(true);
    text->setFont(bold);

    auto* note =
        wrappedLabel(QString("%1 asks for this. The sandbox wants your consent only, not a password.").arg(asker));
    auto small = note->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    note->setFont(small);

    auto* icon = new QLabel;
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(48, 48));
    icon->setAlignment(Qt::AlignTop);

    auto* buttons = new QDialogButtonBox;
    namedButton(*buttons, QDialogButtonBox::AcceptRole, "Authenticate", "authenticateButton")->setDefault(true);
    namedButton(*buttons, QDialogButtonBox::RejectRole, "Cancel", "cancelButton");
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* texts = new QVBoxLayout;
    texts->addWidget(text);
    texts->addWidget(note);
    texts->addStretch();
    auto* row = new QHBoxLayout;
    row->setSpacing(16);
    row->addWidget(icon);
    row->addLayout(texts, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(20, 20, 20, 20);
    column->setSpacing(16);
    column->addLayout(row);
    column->addWidget(buttons);
}
