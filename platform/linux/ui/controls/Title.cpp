#include "platform/linux/ui/controls/Title.h"

namespace platform::ui {

std::string plainTitle(const QString& marked)
{
    QString plain;
    for (qsizetype i = 0; i < marked.size(); ++i) {
        if (marked[i] == u'&')
            ++i;
        if (i < marked.size())
            plain += marked[i];
    }
    return plain.toStdString();
}

namespace {

// The letter after the first single ampersand, or null.
QChar markedLetter(const QString& marked)
{
    for (qsizetype i = 0; i + 1 < marked.size(); ++i) {
        if (marked[i] != u'&')
            continue;
        if (marked[++i] != u'&')
            return marked[i];
    }
    return {};
}

} // namespace

QString markedTitle(const std::string& title, const QString& before)
{
    const auto letter = markedLetter(before);
    auto marked = QString::fromStdString(title);
    auto position = letter.isNull() ? qsizetype(-1) : marked.indexOf(letter);
    if (position < 0 && !letter.isNull())
        position = marked.indexOf(letter, 0, Qt::CaseInsensitive);
    const auto ampersandsBefore = position < 0 ? 0 : marked.left(position).count(u'&');
    marked.replace(u'&', QStringLiteral("&&"));
    const auto inParentheses = QStringLiteral("(&%1)").arg(letter);
    if (position >= 0)
        marked.insert(position + ampersandsBefore, u'&');
    else if (!letter.isNull() && before.contains(inParentheses))
        marked += inParentheses; // as scripts without such letters write it
    return marked;
}

} // namespace platform::ui
