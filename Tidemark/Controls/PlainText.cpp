#include "PlainText.h"

#include <QTextDocument>

#include <algorithm>

namespace tidemark {

static bool isHarmful(QChar character)
{
    const char16_t code = character.unicode();
    const bool changesDirection = (code >= 0x202A && code <= 0x202E)
        || (code >= 0x2066 && code <= 0x2069) || code == 0x200E || code == 0x200F || code == 0x61C;
    return changesDirection || code == 0x2028 || code == 0x2029
        || character.category() == QChar::Other_Control;
}

QString oneLine(std::string_view text)
{
    QString line = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    std::replace_if(line.begin(), line.end(), isHarmful, QChar{QChar::ReplacementCharacter});
    return line;
}

QString plainToolTip(const QString& text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    return QStringLiteral("<p style='white-space:pre-wrap'>") + text.toHtmlEscaped()
        + QStringLiteral("</p>");
}

QString shortened(const QString& text, qsizetype characters)
{
    if (text.size() <= characters)
        return text;
    qsizetype head = characters / 2;
    qsizetype tail = characters - head - 1;
    // Neither half may end inside of a character that takes two places.
    if (text.at(head - 1).isHighSurrogate())
        --head;
    if (text.at(text.size() - tail).isLowSurrogate())
        --tail;
    return text.first(head) + QChar{0x2026} + text.last(tail);
}

}  // namespace tidemark
