#include "MenuText.h"

#include "PlainText.h"

namespace tidemark {

QString menuText(const QString& text, MenuHost host)
{
    QString result = text;
    if (host == MenuHost::widgets)
        return result.replace(QChar{'&'}, QStringLiteral("&&"));
    result.replace(QChar{'_'}, QStringLiteral("__"));
    // Only the first becomes a mark, and not at the very end; so that one is given another to mark.
    const qsizetype first = result.indexOf(QChar{'&'});
    if (first >= 0 && first + 1 < result.size())
        result.insert(first, QChar{'&'});
    return result;
}

QString menuLine(std::string_view text)
{
    constexpr qsizetype widest = 80;
    return shortened(oneLine(text), widest);
}

}  // namespace tidemark
